// The machine behind the stand-in for Windows: everything that a program can ask of it, as one value.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace StandIn {

// Passed to [[gnu::init_priority]]. The variables with it, which hold the process's state, are made before all others,
// so before ProgramStart.cpp chooses the program's machine, and destroyed after all others.
constexpr int StatePriority = 200;

using Bytes = std::vector<std::uint8_t>;

// The Windows operations that the stand-in answers and that can fail; Faults.h lists them.
enum class Operation : std::uint16_t;

// One stretch of physical memory. Later regions cover earlier ones; what nothing covers reads FFh.
struct MemoryRegion {
    std::uint64_t Address;
    Bytes Data;
};

// A stretch of physical memory without its bytes.
struct MemoryRange {
    std::uint64_t Address;
    std::uint64_t Length;
};

enum class Wow64 { No, Yes, Unknown };            // Unknown: the operation IsWow64Process does not exist
enum class ConsoleKind { None, Fixed, Terminal }; // Fixed: a console of the size below, keys answered at once
enum class FirmwareKind { None, Variables, Smi }; // how the maker's firmware answers requests, if at all

// A Windows operation that fails: always (At 0), at its At-th call, or from that on (Stays). ControlCode, when not 0,
// restricts it to one device control code, whose calls are then counted on their own.
struct Fault {
    Operation Which;
    std::uint32_t ControlCode = 0;
    std::uint64_t At = 0;
    bool Stays = false;
};

// Another program at work: what it does right before the At-th call of an operation. It may call whatever the program
// under test may; its calls are counted, too.
struct Intrusion {
    Operation Before;
    std::uint64_t At = 1;
    std::function<void()> Act;
};

// A firmware variable; Error, when not 0, is the error number that reading or writing it fails with.
struct FirmwareVariable {
    Bytes Data;
    std::uint32_t Error = 0;
};

// Lets a pause of less than a second pass and gives the time since some fixed point, both in milliseconds.
std::uint64_t SystemClock(std::uint32_t pause);

// What a machine is made of. Plain data: tests build one in a few lines and hand it to MachineSet.
struct Machine {
    std::vector<MemoryRegion> Memory;
    std::optional<Bytes> SmbiosTable;            // answer of the firmware table service for 'RSMB', header included
    std::map<std::string, Bytes> AcpiTables;     // answers for 'ACPI', by signature
    std::map<std::string, Bytes> RegistryBinary; // REG_BINARY values under HKEY_LOCAL_MACHINE: "path\to\key\value"
    bool FirmwareTableService = true;            // false: GetSystemFirmwareTable does not exist
    bool Administrator = true;
    std::uint32_t Processors = 0x3; // process affinity mask
    std::uint32_t WindowsMajor = 10;
    std::uint32_t WindowsMinor = 0;
    Wow64 UnderWow64 = Wow64::Yes;
    ConsoleKind Console = ConsoleKind::Terminal;
    std::uint16_t ConsoleColumns = 80;
    std::uint16_t ConsoleRows = 25;
    std::string Program;     // path of the program's own file; empty: the file of this process
    std::string StateFolder; // registry, services, drivers, files and mutexes shared there; empty:
                             // kept in the process
    std::optional<std::vector<MemoryRange>> WindowsMemory{std::in_place}; // that Windows manages; none: it doesn't tell
    FirmwareKind Firmware = FirmwareKind::None;
    std::map<std::string, FirmwareVariable> Variables; // by "NAME {guid}"; beside those that the firmware model has
    bool VariablePrivilege = true;                     // false: SeSystemEnvironmentPrivilege can't be enabled
    std::set<std::string> FirmwareRefuses;             // command names that the firmware refuses
    std::set<std::string> RegistryReadOnly; // keys under HKEY_LOCAL_MACHINE that nobody may open for more than reading
    std::set<std::string> OtherUsersMutexes;
    bool Utf8 = true; // the code page of operations ending in A; false: ASCII, with ? for all that is not in it
    std::vector<Fault> Faults;
    std::uint64_t (*Clock)(std::uint32_t pause) = SystemClock; // for all waits; a test's own counts without waiting
    std::vector<Intrusion> Intrusions;
};

// The process's machine, an empty one by default. Every operation asks for it, so that this is no call.
extern Machine CurrentMachine;
inline Machine& MachineGet() {
    return CurrentMachine;
}

} // namespace StandIn
