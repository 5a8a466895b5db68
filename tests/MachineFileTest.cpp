// Tests of the machines that a user can choose: machine files, dumps, folders, this computer and the sample.
#include "tests/Support.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <numeric>
#include <optional>

using namespace StandIn;

namespace {

// The byte that physical memory holds at an address.
std::uint8_t MemoryByte(const Machine& machine, std::uint64_t address) {
    for (auto region = machine.Memory.rbegin(); region != machine.Memory.rend(); ++region) {
        if (address >= region->Address && address - region->Address < region->Data.size()) {
            return region->Data[address - region->Address];
        }
    }
    return 0xFF;
}

std::string MemoryText(const Machine& machine, std::uint64_t address, std::size_t size) {
    std::string text;
    for (std::size_t place = 0; place < size; ++place) {
        text += static_cast<char>(MemoryByte(machine, address + place));
    }
    return text;
}

// Reads a machine that must be usable.
Machine Usable(const std::string& choice) {
    std::string error;
    std::string notice;
    std::optional<Machine> machine = MachineRead(choice, &error, &notice);
    EXPECT_TRUE(machine) << error;
    EXPECT_EQ(error, "");
    EXPECT_EQ(notice, "");
    return machine ? std::move(*machine) : Machine();
}

// Reads a machine that can't be used, and gives why.
std::string Refusal(const std::string& choice) {
    std::string error;
    std::string notice;
    EXPECT_FALSE(MachineRead(choice, &error, &notice)) << choice;
    EXPECT_EQ(notice, "");
    return error;
}

// A dump of either kind: the entry point, filler up to the table's offset, and the table.
Bytes Dump(bool legacy, std::uint64_t offset, std::uint32_t statedLength, const Bytes& table) {
    Bytes dump =
        legacy ? EntryPoint21(2, 7, static_cast<std::uint32_t>(offset), static_cast<std::uint16_t>(statedLength), 1, 9)
               : EntryPoint30(3, 2, offset, statedLength);
    dump.resize(0x20, 0xEE);
    dump.insert(dump.end(), table.begin(), table.end());
    return dump;
}

const Bytes SmallTable{127, 4, 0x34, 0x12, 0, 0};

TEST(MachineFile, EveryKeyIsUnderstood) {
    const TemporaryFolder folder;
    folder.Write("two.bin", "\x12\x34");
    folder.Write("rsmb.bin", "answer");
    const std::string lines = "# a machine\n"
                              "\n"
                              "  memory 0xF0000=two.bin\n"
                              "memory 0x00000000fffffffe = two.bin\n"
                              "firmware-table RSMB = rsmb.bin\n"
                              "firmware-table ACPI/UEFI = two.bin\n"
                              "firmware-table ACPI/RSDT = " +
                              folder.Path +
                              "/rsmb.bin\n"
                              "firmware-table missing = yes\n"
                              "administrator = yes\n"
                              "administrator = no\n"
                              "processors = 12\n"
                              "windows = 6.1\n"
                              "wow64 = unknown\n"
                              "console = 132x50\n"
                              "state = kept/here\n"
                              "firmware = smi\n"
                              "firmware-refuses nologo = yes\n"
                              "firmware-refuses type = yes\n"
                              "fail = GetSystemFirmwareTable\n"
                              "fail = DeviceIoControl@7\n"
                              "fail = DeviceIoControl 0x222182 @ 2\n"
                              "fail = DeviceIoControl 22218A";
    std::string withReturns;
    for (const char character : lines) {
        withReturns += character == '\n' ? "\r\n" : std::string(1, character);
    }
    for (const std::string& content : {lines, withReturns}) {
        const Machine machine = Usable(folder.Write("machine.txt", content));
        ASSERT_EQ(machine.Memory.size(), 2U);
        EXPECT_EQ(machine.Memory[1].Address, 0xFFFFFFFEU);
        EXPECT_EQ(MemoryText(machine, 0xF0000, 3), "\x12\x34\xFF");
        EXPECT_EQ(machine.SmbiosTable, (Bytes{'a', 'n', 's', 'w', 'e', 'r'}));
        EXPECT_EQ(machine.AcpiTables.at("UEFI"), (Bytes{0x12, 0x34}));
        EXPECT_EQ(machine.AcpiTables.at("RSDT").size(), 6U);
        EXPECT_FALSE(machine.FirmwareTableService);
        EXPECT_FALSE(machine.Administrator);
        EXPECT_EQ(machine.Processors, 12U);
        EXPECT_EQ(machine.WindowsMajor * 100 + machine.WindowsMinor, 601U);
        EXPECT_EQ(machine.UnderWow64, Wow64::Unknown);
        EXPECT_EQ(machine.Console, ConsoleKind::Fixed);
        EXPECT_EQ(machine.ConsoleColumns, 132);
        EXPECT_EQ(machine.ConsoleRows, 50);
        EXPECT_TRUE(std::filesystem::equivalent(machine.StateFolder, folder.Path + "/kept/here"));
        EXPECT_EQ(machine.Firmware, FirmwareKind::Smi);
        EXPECT_EQ(machine.FirmwareRefuses, (std::set<std::string>{"nologo", "type"}));
        ASSERT_EQ(machine.Faults.size(), 4U);
        EXPECT_EQ(machine.Faults[0].Which, OperationFind("GetSystemFirmwareTable"));
        EXPECT_EQ(machine.Faults[1].Which, OperationFind("DeviceIoControl"));
        EXPECT_EQ(machine.Faults[1].At, 7U);
        EXPECT_EQ(machine.Faults[2].ControlCode, 0x222182U);
        EXPECT_EQ(machine.Faults[2].At, 2U);
        EXPECT_EQ(machine.Faults[3].ControlCode, 0x22218AU);
        EXPECT_EQ(machine.Faults[3].At, 0U);
    }
}

TEST(MachineFile, ErrorsNameTheFileAndTheLine) {
    const TemporaryFolder folder;
    const std::string two = folder.Write("two.bin", "\x12\x34");
    const std::string missing = folder.Path + "/missing.bin";
    const std::string noFile = missing + ": No such file or directory";
    const std::map<std::string, std::string> cases{
        {"tables\n", "1: the line is not of the form key = value"},
        {"# a comment\r\n\r\n = yes", "3: the line is not of the form key = value"},
        {"administrator = \x1b[2J", "1: the line is not text"},
        {"administrators = yes", "1: unknown key \"administrators\""},
        {"administrator me = yes", "1: unknown key \"administrator me\""},
        {"memory = two.bin", "1: unknown key \"memory\""},
        {"state =  \n", "1: state: the value is missing"},
        {"\n\nadministrator = maybe\nwow64 = 1", "3: administrator: takes yes or no, not \"maybe\""},
        {"wow64 = on", "1: wow64: takes yes, no or unknown, not \"on\""},
        {"firmware = both", "1: firmware: takes none, variables or smi, not \"both\""},
        {"firmware-refuses type = perhaps", "1: firmware-refuses type: takes yes or no, not \"perhaps\""},
        {"processors = 0x100000000", "1: processors: takes a 32-bit mask, not \"0x100000000\""},
        {"processors = -1", "1: processors: takes a 32-bit mask, not \"-1\""},
        {"windows = 10", "1: windows: takes MAJOR.MINOR, not \"10\""},
        {"windows = 6.1.2", "1: windows: takes MAJOR.MINOR, not \"6.1.2\""},
        {"console = 80x0", "1: console: no console has the size \"80x0\""},
        {"console = 80x32768", "1: console: no console has the size \"80x32768\""},
        {"console = 80x25x2", "1: console: no console has the size \"80x25x2\""},
        {"console = large", "1: console: takes COLUMNSxROWS, none or terminal, not \"large\""},
        {"memory 1000 = two.bin", "1: memory 1000: the address is no hexadecimal number with 0x"},
        {"memory 0x10g0 = two.bin", "1: memory 0x10g0: the address is no hexadecimal number with 0x"},
        {"memory 0x100000000 = two.bin", "1: memory 0x100000000: the address does not fit 32 bits"},
        {"memory 0xFFFFFFFF = two.bin",
         "1: memory 0xFFFFFFFF: " + two + ": reaches past the end of 32-bit physical memory"},
        {"memory 0x1000 = missing.bin", "1: memory 0x1000: " + noFile},
        {"firmware-table RSMB = missing.bin", "1: firmware-table RSMB: " + noFile},
        {"firmware-table ACPI/FAC = two.bin",
         "1: firmware-table ACPI/FAC: the table is none of RSMB, ACPI/ with four characters, and missing"},
        {"fail = deviceiocontrol", "1: fail: no Windows operation is named \"deviceiocontrol\""},
        {"fail = GetLastError", "1: fail: no Windows operation is named \"GetLastError\""},
        {"fail = _getch@1", "1: fail: no Windows operation is named \"_getch\""},
        {"fail = @3", "1: fail: no Windows operation is named \"\""},
        {"fail = DeviceIoControl@0", "1: fail: the call after @ is no number from 1 on"},
        {"fail = DeviceIoControl@x", "1: fail: the call after @ is no number from 1 on"},
        {"fail = DeviceIoControl 0x1222182000", "1: fail: \"0x1222182000\" is no control code in hexadecimal"},
        {"fail = DeviceIoControl 0x0", "1: fail: \"0x0\" is no control code in hexadecimal"},
        {"fail = GetSystemFirmwareTable 0x222182", "1: fail: only DeviceIoControl has control codes"},
        // What the whole file makes is found out at its end, and still told with the line that asked for it.
        {"tables = missing.bin\nadministrator = no\n", "1: tables: " + noFile},
        {"administrator = no\ntables = two.bin\n\n", "2: tables: " + two + ": neither a folder of tables nor a dump"},
        {"state = two.bin\n# end", "1: state: " + two + ": Not a directory"},
    };
    for (const auto& [content, reason] : cases) {
        const std::string path = folder.Write("machine.txt", content);
        EXPECT_EQ(Refusal(path), path + ":" + reason) << content;
    }
    EXPECT_EQ(Refusal(missing), noFile);
}

TEST(MachineFile, ExplicitKeysWinOverTables) {
    const TemporaryFolder folder;
    folder.Write("small.dmp", Dump(true, 0x20, 6, SmallTable));
    folder.Write("other.dmp", Dump(false, 0x20, 6, SmallTable));
    folder.Write("one.bin", "!");
    folder.Write("rsmb.bin", "answer");
    const std::string explicitKeys = "memory 0x22 = one.bin\nmemory 0xF0001 = one.bin\n";
    const std::string tables = "tables = missing.dmp\ntables = small.dmp\n"; // the later one counts
    for (const std::string& content : {explicitKeys + tables, tables + explicitKeys}) {
        const Machine machine = Usable(folder.Write("machine.txt", content));
        EXPECT_EQ(MemoryText(machine, 0x20, 4), "\x7F\x04!\x12");
        EXPECT_EQ(MemoryText(machine, 0xF0000, 4), "_!M_");
        EXPECT_EQ(machine.SmbiosTable->size(), 14U);
    }
    const std::string answer = "firmware-table RSMB = rsmb.bin\n";
    const std::string none = "firmware-table RSMB = none\n";
    EXPECT_EQ(Usable(folder.Write("machine.txt", answer + tables)).SmbiosTable->size(), 6U);
    EXPECT_FALSE(Usable(folder.Write("machine.txt", answer + none + tables)).SmbiosTable);
    EXPECT_EQ(Usable(folder.Write("machine.txt", none + answer)).SmbiosTable->size(), 6U);
    const Machine other = Usable(folder.Write("machine.txt", "tables = other.dmp"));
    EXPECT_TRUE(other.Memory.empty());
    EXPECT_EQ(other.SmbiosTable->size(), 14U);
}

TEST(MachineDump, TablesAreCutToWhatTheFileHolds) {
    const TemporaryFolder folder;
    struct Case {
        std::uint64_t Offset;
        std::uint32_t StatedLength;
        std::size_t Size; // of the table that comes of it
    };
    for (const bool legacy : {true, false}) {
        for (const Case& item : {Case{0x20, 6, 6}, Case{0x20, 4, 4}, Case{0x20, 600, 6}, Case{0x23, 6, 3},
                                 Case{0x25, 6, 1}, Case{0x26, 6, 0}, Case{0x20, 0, 0}}) {
            const std::string path = folder.Write("some.dmp", Dump(legacy, item.Offset, item.StatedLength, SmallTable));
            const Machine machine = Usable(path);
            Bytes expected{0, 3, 2, 1, static_cast<std::uint8_t>(item.Size), 0, 0, 0};
            if (legacy) {
                expected = {0, 2, 7, 0, static_cast<std::uint8_t>(item.Size), 0, 0, 0};
            }
            const auto first = SmallTable.begin() + static_cast<std::ptrdiff_t>(item.Offset - 0x20);
            expected.insert(expected.end(), first, first + static_cast<std::ptrdiff_t>(item.Size));
            EXPECT_EQ(machine.SmbiosTable, expected) << item.Offset << ' ' << item.StatedLength;
            if (legacy) {
                EXPECT_EQ(MemoryText(machine, item.Offset, item.Size),
                          std::string(expected.begin() + 8, expected.end()));
                EXPECT_EQ(MemoryByte(machine, item.Offset + item.Size), 0xFF);
                EXPECT_EQ(MemoryText(machine, 0xF0000, 5), "_SM_" + std::string(1, MemoryByte(machine, 0xF0004)));
                EXPECT_EQ(MemoryByte(machine, 0xF0000 + 31), 0xFF);
            } else {
                EXPECT_TRUE(machine.Memory.empty());
            }
        }
        const std::string past = folder.Write("past.dmp", Dump(legacy, 0x27, 6, SmallTable));
        EXPECT_EQ(Refusal(past), past + ": the table offset 0x27 lies past the end of the file (0x26 bytes)");
        Bytes entry = Dump(legacy, 0x20, 6, {});
        for (std::size_t size = legacy ? 30 : 23; size >= (legacy ? 4 : 5); --size) {
            entry.resize(size);
            const std::string cut = folder.Write("cut.dmp", entry);
            EXPECT_EQ(Refusal(cut), cut + ": the entry point is cut short") << size;
        }
    }
    const std::string far = folder.Write("far.dmp", Dump(false, 0xFFFFFFFFFFFFFFFF, 0xFFFFFFFF, SmallTable));
    EXPECT_EQ(Refusal(far), far + ": the table offset 0xFFFFFFFFFFFFFFFF lies past the end of the file (0x26 bytes)");
}

TEST(MachineDump, TheEntryPointMakesRoomForTheTable) {
    struct Case {
        std::uint32_t Table;
        std::size_t Size;
        std::uint64_t Entry;
    };
    for (const Case& item :
         {Case{0xE0000, 0x10000 - 1, 0xF0000}, Case{0xEFFFF, 2, 0xF0010}, Case{0xF0000, 0x11, 0xF0020},
          Case{0xF001E, 1, 0xF0020}, Case{0xF001F, 6, 0xF0000}, Case{0xF0010, 0, 0xF0000}}) {
        Machine machine;
        std::string error;
        const Bytes entry = EntryPoint21(2, 8, item.Table, static_cast<std::uint16_t>(item.Size), 1, 9);
        ASSERT_TRUE(TablesInstall(machine, entry, Bytes(item.Size, 0x55), &error));
        EXPECT_EQ(MemoryText(machine, item.Entry, 31), std::string(entry.begin(), entry.end())) << item.Table;
        EXPECT_EQ(MemoryText(machine, item.Table, item.Size), std::string(item.Size, 0x55)) << item.Table;
    }
}

TEST(MachineChoice, FoldersAndThisComputer) {
    const TemporaryFolder folder;
    EXPECT_EQ(Refusal(folder.Path), folder.Path + "/smbios_entry_point: No such file or directory");
    folder.Write("smbios_entry_point", EntryPoint30(3, 1, 0x7654321076543210, 5)); // its address is of no use here
    EXPECT_EQ(Refusal(folder.Path), folder.Path + "/DMI: No such file or directory");
    folder.Write("DMI", SmallTable);
    EXPECT_EQ(Usable(folder.Path).SmbiosTable, (Bytes{0, 3, 1, 1, 5, 0, 0, 0, 127, 4, 0x34, 0x12, 0}));
    EXPECT_EQ(Usable(folder.Write("machine.txt", "tables = .")).SmbiosTable->size(), 13U);
    folder.Write("smbios_entry_point", "_SM4_");
    EXPECT_EQ(Refusal(folder.Path),
              folder.Path + "/smbios_entry_point: the entry point begins with neither _SM_ nor _SM3_");

    // Whether this computer's tables can be read differs from one to the next; both choices must agree on it.
    std::string error;
    std::string notice;
    const bool readable = MachineRead("host", &error, &notice).has_value();
    EXPECT_EQ(error.empty(), readable);
    ASSERT_TRUE(MachineRead("", &error, &notice));
    EXPECT_EQ(error, "");
    EXPECT_EQ(notice,
              readable ? "" : "no SMBIOS tables can be read on this computer; showing the built-in sample machine");
}

TEST(SampleMachine, HoldsEveryTypeInFullLength) {
    // The least length that reaches every field of SMBIOS 2.8; lists make structures longer.
    const std::uint8_t lengths[43] = {24, 27, 17, 22, 42, 18, 12, 19, 9,  17, 6,  5,  5,  22, 8,
                                      25, 23, 40, 23, 31, 35, 7,  26, 13, 5,  9,  22, 15, 22, 22,
                                      6,  28, 12, 31, 11, 11, 16, 10, 18, 22, 11, 11, 6};
    const Machine machine = Usable("sample");
    const Bytes& answer = *machine.SmbiosTable;
    const Bytes entry = machine.Memory.at(1).Data;
    ASSERT_EQ(entry.size(), 31U);
    EXPECT_EQ(std::accumulate(entry.begin(), entry.end(), 0) & 0xFF, 0);
    EXPECT_EQ(std::accumulate(entry.begin() + 16, entry.end(), 0) & 0xFF, 0);

    std::map<int, int> counts;
    std::size_t largest = 0;
    int structures = 0;
    int skipped = 0;
    std::uint8_t last = 0;
    std::size_t at = 8;
    while (at < answer.size()) {
        ASSERT_GE(answer.size() - at, 6U);
        last = answer[at];
        const std::uint8_t length = answer[at + 1];
        EXPECT_GE(length, last < 43 ? lengths[last] : 4) << "type " << int{last};
        const Bytes zeros{0, 0};
        const auto end = std::search(answer.begin() + static_cast<std::ptrdiff_t>(at + length), answer.end(),
                                     zeros.begin(), zeros.end());
        ASSERT_NE(end, answer.end());
        const auto next = static_cast<std::size_t>(end - answer.begin()) + 2;
        largest = std::max(largest, next - at);
        ++(answer[at + 3] == 0 ? counts[last] : skipped);
        ++structures;
        at = next;
    }
    EXPECT_EQ(last, 127);
    EXPECT_EQ(skipped, 1);
    EXPECT_LE(structures, 120);
    EXPECT_EQ(counts.size(), 45U) << "types 0 to 42, 126 and 127";
    EXPECT_EQ(entry[8] | entry[9] << 8, static_cast<int>(largest));
    EXPECT_EQ(entry[28] | entry[29] << 8, structures);
    EXPECT_EQ(static_cast<std::size_t>(entry[22] | entry[23] << 8), answer.size() - 8);
    EXPECT_EQ((Bytes{entry[6], entry[7]}), (Bytes{2, 8}));
}

} // namespace
