// The machine behind the stand-in for Windows: everything that a program can ask of it, as one value.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace StandIn {

// The place in the order of initialisation of what holds the process's state: it is there before the program's machine
// is chosen, and goes last.
constexpr int StatePriority = 200;

using Bytes = std::vector<std::uint8_t>;

// The Windows operations that the stand-in answers and that can fail, in the order of OperationNames.
enum class Operation : std::uint16_t;

// The operation of that exact name, if the stand-in has it and it can fail.
std::optional<Operation> OperationFind(std::string_view name);

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

// A Windows operation that fails: always (At 0), or at its At-th call. ControlCode, when not 0, restricts it to one
// device control code, whose calls are then counted on their own.
struct Fault {
    Operation Which;
    std::uint32_t ControlCode = 0;
    std::uint64_t At = 0;
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
    std::uint64_t (*Clock)(std::uint32_t pause) = SystemClock; // that waits go by; one's own may count without waiting
    std::vector<Intrusion> Intrusions;
};

// Replaces the process's machine: closes nothing, forgets all in-process state (registry, services, files, handles,
// counts) and starts afresh. The default machine is an empty `Machine`.
void MachineSet(Machine machine);

// The process's machine. Every operation asks for it, so that this is no call.
extern Machine CurrentMachine;
inline Machine& MachineGet() {
    return CurrentMachine;
}

// How often an operation was called since MachineSet, and how often a device control code was requested.
std::uint64_t CallCount(Operation operation);
std::uint64_t CallCount(std::string_view operation);
std::uint64_t ControlCount(std::uint32_t code);

// All calls since MachineSet of operations that can fail by their documented interface. FailCall makes the N-th of them
// (from 1) fail; 0 makes none fail.
std::uint64_t CallTotal();
void FailCall(std::uint64_t number);

// The name of the operation that FailCall made fail, empty when it has not come to that.
std::string FailedCallName();

// What a run left behind in the machine: one line per registry key and value, service, running driver, file, open
// handle and held mutex of this process; empty when there is nothing. Sorted.
std::vector<std::string> Leftovers();

// Makes a machine from the value of QUARRINET_MACHINE (see the README's section on machines). On failure `error` is the
// one line to show (without a line end) and the result is none. `notice`, when not empty afterwards, is a line that the
// user should see although the machine can be used.
std::optional<Machine> MachineRead(const std::string& choice, std::string* error, std::string* notice);

// This computer, whose tables are in `folder`. When they may not be read, it is a machine without administrator rights.
// When there are none, it is the sample machine, or no machine. `error` and `notice` are those of MachineRead.
std::optional<Machine> HostMachine(const std::string& folder, bool orSample, std::string* error, std::string* notice);

// The built-in sample machine: SMBIOS 2.8, a structure of every known type, on the legacy road.
Machine SampleMachine();

// Puts an entry point and its structure table into a machine: into memory for "_SM_", and as the firmware table
// service's answer for both kinds. False with `error` set when the entry point is neither kind or is cut short.
bool TablesInstall(Machine& machine, const Bytes& entryPoint, Bytes table, std::string* error);

} // namespace StandIn
