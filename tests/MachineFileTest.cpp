// Tests of the machines that a user can choose: machine files, dumps, folders, this computer and the sample.
#include "machine/kernel/Memory.h"
#include "machine/model/EntryPoint.h"
#include "machine/model/Faults.h"
#include "machine/model/SampleMachine.h"
#include "machine/source/MachineChoice.h"
#include "machine/source/MachineTables.h"
#include "machine/windows/MachineSet.h"
#include "tests/Support.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <numeric>
#include <optional>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

using namespace StandIn;

namespace {

// What physical memory holds at an address.
std::string MemoryText(const Machine& machine, std::uint64_t address, std::size_t size) {
    Machine other;
    other.Memory = machine.Memory;
    MachineSet(other);
    std::string text(size, 0);
    MemoryRead(address, size, reinterpret_cast<std::uint8_t*>(text.data()));
    return text;
}

// Reads a machine: there is one unless there is an error, and the user is told so much.
template <typename Reader> Machine Made(const Reader& read, const std::string& failure, const std::string& told) {
    std::string error;
    std::string notice;
    std::optional<Machine> machine = read(&error, &notice);
    EXPECT_EQ(machine.has_value(), failure.empty());
    EXPECT_EQ(error, failure);
    EXPECT_EQ(notice, told);
    return machine ? std::move(*machine) : Machine();
}

Machine Usable(const std::string& choice, const std::string& told = "") {
    return Made([&](auto... texts) { return MachineRead(choice, texts...); }, "", told);
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
    const std::string absolute = "firmware-table ACPI/RSDT = " + folder.Path + "/rsmb.bin\n";
    const std::string lines = absolute + "# a machine\n"
                                         "\n"
                                         "  memory 0xF0000=two.bin\n"
                                         "memory 0x00000000fffffffe = two.bin\n"
                                         "firmware-table RSMB = rsmb.bin\n"
                                         "firmware-table ACPI/UEFI = two.bin\n"
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
    for (const std::string& content : {lines, std::regex_replace(lines, std::regex("\n"), "\r\n")}) {
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
    const std::string rsmb = folder.Write("rsmb.bin", *SampleMachine().SmbiosTable);
    const std::string missing = folder.Path + "/missing.bin";
    const std::string noFile = missing + ": No such file or directory";
    const std::map<std::string, std::string> cases{
        {"administrator = yes\ntables\n", "2: the line is not of the form key = value"},
        {"# a comment\r\n\r\n = yes", "3: the line is not of the form key = value"},
        {"administrator = \x1b[2J", "1: the line is not text"},
        {"administrators = yes", "1: unknown key \"administrators\""},
        {"memory = two.bin", "1: unknown key \"memory\""},
        {"state =  \n", "1: state: the value is missing"},
        {"\n\nadministrator = maybe\nwow64 = 1", "3: administrator: takes yes or no, not \"maybe\""},
        {"wow64 = on", "1: wow64: takes yes, no or unknown, not \"on\""},
        {"firmware = both", "1: firmware: takes none, variables or smi, not \"both\""},
        {"firmware-refuses type = perhaps", "1: firmware-refuses type: takes yes or no, not \"perhaps\""},
        {"processors = 0x100000000", "1: processors: takes a 32-bit mask, not \"0x100000000\""},
        {"windows = 10", "1: windows: takes MAJOR.MINOR, not \"10\""},
        {"console = 80x0", "1: console: no console has the size \"80x0\""},
        {"console = 80x32768", "1: console: no console has the size \"80x32768\""},
        {"console = large", "1: console: takes COLUMNSxROWS, none or terminal, not \"large\""},
        {"memory 1000 = two.bin", "1: memory 1000: the address is no hexadecimal number with 0x"},
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
        {"fail = DeviceIoControl@0", "1: fail: the call after @ is no number from 1 on"},
        {"fail = DeviceIoControl@x", "1: fail: the call after @ is no number from 1 on"},
        {"fail = DeviceIoControl 0x1222182000", "1: fail: \"0x1222182000\" is no control code in hexadecimal"},
        {"fail = DeviceIoControl 0x0", "1: fail: \"0x0\" is no control code in hexadecimal"},
        {"fail = GetSystemFirmwareTable 0x222182", "1: fail: only DeviceIoControl has control codes"},
        // What the whole file makes is found out at its end, and still told with the line that asked for it.
        {"tables = missing.bin\nadministrator = no\n", "1: tables: " + noFile},
        {"administrator = no\ntables = two.bin\n\n", "2: tables: " + two + ": neither a folder of tables nor a dump"},
        {"tables = rsmb.bin",
         "1: tables: " + rsmb +
             ": neither a folder of tables nor a dump, but an answer of the firmware table service, "
             "which the line \"firmware-table RSMB = rsmb.bin\" of a machine file reads"},
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
            // A 64-bit entry point states the most that the table may hold: one with its end in it is whole.
            const bool isShort = (legacy || item.Offset != 0x20) && item.Size < item.StatedLength;
            const Machine machine =
                Usable(path, isShort ? path + ": the structure table is cut short: " + std::to_string(item.Size) +
                                           " of " + std::to_string(item.StatedLength) + " bytes"
                                     : "");
            Bytes expected{0, 3, 2, 1, static_cast<std::uint8_t>(item.Size), 0, 0, 0};
            if (legacy) {
                expected = {0, 2, 7, 0, static_cast<std::uint8_t>(item.Size), 0, 0, 0};
            }
            const auto first = SmallTable.begin() + static_cast<std::ptrdiff_t>(item.Offset - 0x20);
            expected.insert(expected.end(), first, first + static_cast<std::ptrdiff_t>(item.Size));
            EXPECT_EQ(machine.SmbiosTable, expected) << item.Offset << ' ' << item.StatedLength;
            if (legacy) {
                EXPECT_EQ(MemoryText(machine, item.Offset, item.Size + 1),
                          std::string(expected.begin() + 8, expected.end()) + '\xFF');
                EXPECT_EQ(MemoryText(machine, 0xF0000, 4), "_SM_");
                EXPECT_EQ(MemoryText(machine, 0xF0000 + 31, 1), "\xFF");
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

// Rights of nobody in particular for as long as the object lives, also where the tests run as root.
struct WithoutRights {
    WithoutRights() { EXPECT_TRUE(geteuid() != 0 || seteuid(65534) == 0); }
    ~WithoutRights() { EXPECT_EQ(seteuid(getuid()), 0); }
};

std::string RefusalWithoutRights(const std::string& choice) {
    const WithoutRights here;
    return Refusal(choice);
}

TEST(MachineChoice, FoldersAndThisComputer) {
    const TemporaryFolder folder;
    const std::string entry = folder.Path + "/smbios_entry_point";
    EXPECT_EQ(Refusal(folder.Path), entry + ": No such file or directory");
    folder.Write("smbios_entry_point", EntryPoint30(3, 1, 0x7654321076543210, 6)); // its address is of no use here
    EXPECT_EQ(Refusal(folder.Path), folder.Path + "/DMI: No such file or directory");
    Bytes longer = SmallTable;
    longer.push_back(0x55);
    folder.Write("DMI", longer);
    const Bytes answer{0, 3, 1, 1, 6, 0, 0, 0, 127, 4, 0x34, 0x12, 0, 0};
    EXPECT_EQ(Usable(folder.Path).SmbiosTable, answer);
    EXPECT_EQ(Usable(folder.Write("machine.txt", "tables = .")).SmbiosTable, answer);
    folder.Write("DMI", Bytes{127, 4, 0x34});
    EXPECT_EQ(Usable(folder.Path, folder.Path + "/DMI: the structure table is cut short: 3 of 6 bytes").SmbiosTable,
              (Bytes{0, 3, 1, 1, 3, 0, 0, 0, 127, 4, 0x34}));

    // The same files as this computer's.
    const auto computer = [](const std::string& tables, bool orSample, const std::string& failure,
                             const std::string& told) {
        return Made([&](auto... texts) { return HostMachine(tables, orSample, texts...); }, failure, told);
    };
    folder.Write("DMI", longer);
    EXPECT_EQ(computer(folder.Path, true, "", "").SmbiosTable, answer);
    const std::string none = "this computer has no SMBIOS tables";
    computer(folder.Path + "/missing", false,
             none + ": " + folder.Path + "/missing/smbios_entry_point: No such file or directory", "");
    EXPECT_EQ(computer(folder.Path + "/missing", true, "", none + "; showing the built-in sample machine").SmbiosTable,
              SampleMachine().SmbiosTable);
    chmod(entry.c_str(), 0);
    for (const bool orSample : {false, true}) {
        const WithoutRights here;
        const Machine machine =
            computer(folder.Path, orSample, "", entry + ": Permission denied; running without administrator rights");
        EXPECT_FALSE(machine.Administrator || machine.SmbiosTable);
    }
    EXPECT_EQ(RefusalWithoutRights(folder.Path), entry + ": Permission denied") << "of a copy that is no computer";
    chmod(entry.c_str(), 0600);
    folder.Write("smbios_entry_point", "_SM4_");
    const std::string neither = entry + ": the entry point begins with neither _SM_ nor _SM3_";
    EXPECT_EQ(Refusal(folder.Path), neither);
    computer(folder.Path, true, neither, "");
}

TEST(MachineChoice, WhatIsNoMachineIsCalledWhatItIs) {
    const TemporaryFolder folder;
    const std::string path = folder.Path + "/given";
    const Bytes answer = *SampleMachine().SmbiosTable;
    const std::string header(answer.begin(), answer.begin() + 8);
    const std::string table(answer.begin() + 8, answer.end());
    const std::string service =
        ", but an answer of the firmware table service, which the line \"firmware-table RSMB = " + path +
        "\" of a machine file reads";
    const std::pair<std::string, std::string> cases[] = {
        {header + table, service},
        {header + table + '\0', service}, // a byte that the header does not count
        {header + table.substr(1), ", but binary bytes"},
        {table, ", but a structure table without its entry point"},
        {table.substr(0, table.size() - 1), ", but binary bytes"},
        {"\x7F" + std::string("ELF\2\1\1\0\0\0", 9), ", but binary bytes"},
        {std::string("\xFF\xFE#\0", 4), ", but UTF-16 text"},
        {std::string("\xFE\xFF\0#", 4), ", but UTF-16 text"},
        {std::string("a\0=\0b\0", 6), ", but UTF-16 text"},
        {"# a tool 1.0\nGetting data.\n\nHandle 0x0000\n", " (line 2: the line is not of the form key = value)"},
        {"\n<?xml version=\"1.0\"?>\n", " (line 2: unknown key \"<?xml version\")"},
        {"\xEF\xBB\xBF{\n", " (line 1: the line is not of the form key = value)"},
        {"\x01\x02", " (line 1: the line is not text)"},
    };
    for (const auto& [content, name] : cases) {
        folder.Write("given", content);
        EXPECT_EQ(Refusal(path), path + ": neither a dump nor a machine file" + name + AcceptedForms) << name;
    }
    folder.Write("given", EntryPoint21(2, 7, 0xE0000, 100, 1, 9));
    EXPECT_EQ(Refusal(path), path +
                                 ": the table offset 0xE0000 lies past the end of the file (0x1F bytes): an entry "
                                 "point without its structure table" +
                                 AcceptedForms);
    // A mark at the start of the text is none of its keys.
    EXPECT_FALSE(Usable(folder.Write("given", "\xEF\xBB\xBF"
                                              "administrator = no\r\n"))
                     .Administrator);
}

TEST(MachineChoice, NothingIsWaitedForThatNeverComes) {
    const TemporaryFolder folder;
    const std::string fifo = folder.Path + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string machine = folder.Write("machine.txt", "firmware-table RSMB = fifo\n");
    EXPECT_EQ(Refusal(fifo), fifo + ": No data available");
    EXPECT_EQ(Refusal(machine), machine + ":1: firmware-table RSMB: " + fifo + ": No data available");
    EXPECT_EQ(Refusal(folder.Write("machine.txt", "memory 0x0 = .")),
              machine + ":1: memory 0x0: " + folder.Path + "/.: Is a directory");
    // Somebody who writes, be it late, is waited for.
    std::FILE* const writer = popen(("exec >" + fifo + "; sleep 0.1; echo administrator = no").c_str(), "w");
    std::string error;
    std::string notice;
    std::optional<Machine> read;
    for (int tries = 0; !read && tries < 1000; ++tries) {
        usleep(1000);
        read = MachineRead(fifo, &error, &notice);
    }
    EXPECT_TRUE(read && !read->Administrator) << error;
    pclose(writer);
}

TEST(MachineState, AFolderThatCantBeUsedIsNamed) {
    const TemporaryFolder folder;
    const std::string machine = folder.Write("machine.txt", "state = kept");
    const std::string kept = folder.Path + "/kept/";
    const std::string fault = machine + ":1: state: " + kept;
    using Making = std::function<void(const std::string& path)>;
    const Making fifo = [](const std::string& path) { EXPECT_EQ(mkfifo(path.c_str(), 0600), 0); };
    const Making subfolder = [](const std::string& path) { std::filesystem::create_directory(path); };
    const Making loop = [](const std::string& path) { std::filesystem::create_symlink(path, path); };
    const auto state = [](const std::string& lines) {
        return [=](const std::string& path) { std::ofstream(path) << "quarrinet-machine-state 1\n" << lines; };
    };
    const Making huge = [&](const std::string& path) {
        state("")(path);
        std::filesystem::resize_file(path, (16U << 20) + 1);
    };
    const struct {
        const char* File;
        Making Make;
        const char* Fault;
    } cases[] = {
        {"lock", subfolder, ": not a regular file"},
        {"lock", fifo, ": not a regular file"},
        {"state", fifo, ": not a regular file"},
        {"state.new", fifo, ": not a regular file"},
        {"mutex-Tool.owner", fifo, ": not a regular file"},
        {"state", subfolder, ": not a regular file"},
        {"state", [](const std::string& path) { std::ofstream(path) << "notes\n"; }, ": not the state of a machine"},
        {"state", state("key a\nkey %2\n"), ":3: not a line of a machine's state"},
        {"state", state("service a b 2 0\n"), ":2: not a line of a machine's state"},
        {"state", state("service a b 1 0 3\n"), ":2: not a line of a machine's state"},
        {"state", huge, ": File too large"},
        {"state", loop, ": a link, which is not followed here"},
    };
    for (const auto& test : cases) {
        std::filesystem::create_directory(kept);
        test.Make(kept + test.File);
        EXPECT_EQ(Refusal(machine), fault + test.File + test.Fault);
        std::filesystem::remove_all(kept);
    }

    Usable(machine);
    chmod((kept + "lock").c_str(), 0666);
    folder.Write("kept/mutex-Tool.open", "");
    chmod((kept + "mutex-Tool.open").c_str(), 0);
    std::filesystem::permissions(kept, std::filesystem::perms::all);
    EXPECT_EQ(RefusalWithoutRights(machine), fault + "mutex-Tool.open: Permission denied");
    std::filesystem::remove(kept + "mutex-Tool.open");
    std::filesystem::permissions(kept, std::filesystem::perms(0555));
    EXPECT_EQ(RefusalWithoutRights(machine), fault + "state.new: Permission denied");
    std::filesystem::permissions(kept, std::filesystem::perms::all);
}

// The program under a limit to its memory.
TEST(MachineChoice, TooLittleMemoryIsOneLine) {
    if (UnderSanitizer) {
        GTEST_SKIP();
    }
    const TemporaryFolder folder;
    const std::string large = folder.Write("large", "");
    std::filesystem::resize_file(large, 200U << 20);
    const std::string machine = folder.Write("machine.txt", "memory 0x0 = machine.txt\nmemory 0x0 = large\n");
    const std::pair<std::string, std::string> cases[] = {
        {"/dev/zero", "/dev/zero: not enough memory to read it"},
        {large, large + ": not enough memory to read it"},
        {machine, machine + ":2: not enough memory to read it"},
    };
    for (const auto& [choice, line] : cases) {
        const std::string command =
            "ulimit -v 100000; QUARRINET_MACHINE=" + choice + " exec " QUARRINET_PROGRAM " 2>&1";
        std::FILE* const program = popen(command.c_str(), "r");
        ASSERT_NE(program, nullptr);
        std::array<char, 4096> output{};
        output[std::fread(output.data(), 1, output.size() - 1, program)] = 0;
        EXPECT_EQ(output.data(), "quarrinet: " + line + "\n");
        EXPECT_EQ(WEXITSTATUS(pclose(program)), 255);
    }
}

TEST(MachineChoice, NoticesReachTheUser) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("some.dmp", Dump(true, 0x20, 600, SmallTable));
    const Ran ran = RunProgram({"/nologo", "/type", "127"}, path);
    EXPECT_EQ(ran.Errors, "quarrinet: " + path + ": the structure table is cut short: 6 of 600 bytes\n");
    EXPECT_EQ(ran.ExitCode, 0);
}

} // namespace
