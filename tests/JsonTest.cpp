// The output for programs.
#include "machine/model/EntryPoint.h"
#include "tests/Support.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using StandIn::Bytes;
using StandIn::SmbiosBuilder;

// Sets the format of the programs that are run, as long as it is there.
class FormatSet {
public:
    explicit FormatSet(const char* format, const char* whole = "") {
        setenv("QUARRINET_FORMAT", format, 1);
        setenv("QUARRINET_WHOLE", whole, 1);
    }
    ~FormatSet() {
        unsetenv("QUARRINET_FORMAT");
        unsetenv("QUARRINET_WHOLE");
    }
    FormatSet(const FormatSet&) = delete;
    FormatSet& operator=(const FormatSet&) = delete;
};

// The script compares with the listing, the schema and the tables.
int Checked(const std::string& machines) {
    return std::system(("python3 '" QUARRINET_SOURCES "/tests/json/check' '" QUARRINET_PROGRAM "' '" QUARRINET_SOURCES
                        "/docs/quarrinet.schema.json' " +
                        machines)
                           .c_str());
}

TEST(Json, SaysOfTheSamplesWhatTheListingSays) {
    EXPECT_EQ(Checked("sample sample-server"), 0);
}

TEST(Json, SaysOfMadeUpTablesWhatTheListingSays) {
    EXPECT_EQ(Checked("'seeds=" QUARRINET_JSON_SEEDS "'"), 0);
}

// A dump of a table of that version.
std::string Dump(const TemporaryFolder& folder, const SmbiosBuilder& builder, std::uint8_t minor = 9) {
    const Bytes table = builder.Table();
    Bytes dump = StandIn::EntryPoint30(minor < 7 ? 2 : 3, minor, 32, static_cast<std::uint32_t>(table.size()));
    dump.resize(32);
    dump.insert(dump.end(), table.begin(), table.end());
    return folder.Write("table.dmp", dump);
}

const Bytes UuidBytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

TEST(Json, LinesToTheLetter) {
    const FormatSet format("json");
    const TemporaryFolder folder;
    SmbiosBuilder table;
    table.Begin(1, 0x1234).String("Mak\xC3\xA9r \" ").String("").String("\xFF\\").Byte(3).Raw(UuidBytes).Byte(6);
    table.SetString("\x7F\xC2\x85\xC2\xA0\xE2\x80\xA7\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAA");
    const std::string header = R"({"type":1,"name":"System","instance":1,"handle":4660,"length":25,"fields":{)";
    const std::string machine = Dump(folder, table);
    EXPECT_EQ(
        RunProgram({"/type", "1"}, machine).Output,
        header +
            "\"Manufacturer\":{\"field\":4,\"text\":\"Mak\xC3\xA9r \\\" \"},"
            "\"Product Name\":{\"field\":5,\"text\":null},"
            "\"Version\":{\"field\":6,\"text\":\"\xC3\xBF\\\\\",\"bytes\":\"ff5c\"},"
            "\"Serial Number\":{\"field\":7,\"text\":\"\\u007f\\u0085\xC2\xA0\xE2\x80\xA7\\u2028\\u2029\xE2\x80\xAA\"},"
            R"("UUID":{"field":8,"text":"0x00 0x01 0x02 0x03 0x04 0x05 0x06 0x07 0x08 0x09 0x0A 0x0B 0x0C 0x0D 0x0E 0x0F","bytes":"000102030405060708090a0b0c0d0e0f","uuid":"03020100-0504-0706-0809-0a0b0c0d0e0f"},)"
            R"("Wake-up Type":{"field":9,"text":"0x06 - Power Switch","number":6,"meaning":"Power Switch","bytes":"06"}}})"
            "\n");
    EXPECT_EQ(
        RunProgram({"/nologo", "/type", "1", "1", "9"}, machine).Output,
        header +
            R"("Wake-up Type":{"field":9,"text":"0x06 - Power Switch","number":6,"meaning":"Power Switch","bytes":"06"}}})"
            "\n");
    EXPECT_EQ(RunProgram({"/type", "1", "1", "3"}, machine).Output, header + "}}\n");
    EXPECT_NE(RunProgram({"/eps", "/type", "1", "1", "4"}, machine).Output.find("{\"Manufacturer\":{\"field\":4,"),
              std::string::npos);
}

// The first parts of a UUID are numbers with their least significant byte first from version 2.6 on; all bits alike say
// that there is none.
TEST(Json, UuidsByVersion) {
    const FormatSet format("json");
    const TemporaryFolder folder;
    const auto uuid = [&folder](const Bytes& bytes, std::uint8_t minor) {
        const std::string machine = Dump(folder, SmbiosBuilder().Begin(1).Raw(Bytes(4)).Raw(bytes), minor);
        const std::string line = RunProgram({"/type", "1", "1", "8"}, machine).Output;
        const std::size_t at = line.find("\"uuid\":");
        return at == line.npos ? "" : line.substr(at + 8, 36);
    };
    EXPECT_EQ(uuid(UuidBytes, 5), "00010203-0405-0607-0809-0a0b0c0d0e0f");
    EXPECT_EQ(uuid(UuidBytes, 6), "03020100-0504-0706-0809-0a0b0c0d0e0f");
    EXPECT_EQ(uuid(UuidBytes, 9), "03020100-0504-0706-0809-0a0b0c0d0e0f");
    for (const std::uint8_t byte : {0x00, 0xFF}) {
        EXPECT_EQ(uuid(Bytes(16, byte), 9), "");
    }
    EXPECT_NE(uuid(Bytes(16, 1), 9), "");
}

TEST(Json, NumbersUpToThoseThatAreExact) {
    const FormatSet format("json");
    const TemporaryFolder folder;
    const auto number = [&folder](std::uint64_t value) {
        const std::string machine = Dump(folder, SmbiosBuilder().Begin(45).Raw(Bytes(8)).Qword(value));
        const std::string line = RunProgram({"/type", "45", "1", "12"}, machine).Output;
        const std::size_t at = line.find("\"number\":");
        return at == line.npos ? "" : line.substr(at + 9, line.find(',', at) - at - 9);
    };
    EXPECT_EQ(number(0x1FFFFFFFFFFFFF), "9007199254740991");
    EXPECT_EQ(number(0x20000000000000), "");
    EXPECT_EQ(number(0), "0");
}

TEST(Json, LessThanARecordIsNoList) {
    const FormatSet format("json");
    const TemporaryFolder folder;
    SmbiosBuilder table;
    table.Begin(10).Raw({0x83, 0, 1}).Begin(14).Raw({0, 1, 2, 3, 4, 5});
    for (const char* const type : {"10", "14"}) {
        const std::string line = RunProgram({"/type", type}, Dump(folder, table)).Output;
        EXPECT_EQ(line.find("Further"), line.npos) << line;
    }
}

TEST(Json, MessagesAndHelpAreNoneOfIt) {
    const FormatSet format("json");
    const Ran unknown = RunProgram({"/type", "250"});
    EXPECT_EQ(unknown.ExitCode, 153);
    EXPECT_EQ(unknown.Output, "");
    EXPECT_EQ(unknown.Errors, "\nError: Type 250 is not supported.\n\n\nERROR 153 - Not supported! Status = 3.\n");
    const Ran wrong = RunProgram({"/wrong"});
    EXPECT_EQ(wrong.ExitCode, 105);
    EXPECT_EQ(wrong.Output, "");
    EXPECT_NE(wrong.Errors.find("ERROR 105"), std::string::npos);
    const Ran help = RunProgram({"/help", "/nologo"});
    EXPECT_EQ(help.Output.find("Usage: Quarrinet [Command]\n\n"), 0U);
    EXPECT_EQ(help.Errors, "");
    EXPECT_EQ(RunProgram({"/help"}).Output.find("Korvath Quarrinet for Windows. "), 0U);
    const TemporaryFolder folder;
    const Ran refused = RunProgram({"/type"}, folder.Write("user.machine", "administrator = no\n"));
    EXPECT_EQ(refused.ExitCode, 255);
    EXPECT_EQ(refused.Output, "");
    EXPECT_NE(refused.Errors.find("\nERROR 255 - RYX library initialization failed!\n"), std::string::npos);
}

TEST(Json, EntryPointThatIsNotThere) {
    const FormatSet format("json");
    const TemporaryFolder folder;
    const std::string machine = Dump(folder, SmbiosBuilder().Begin(127));
    const std::string line = RunProgram({"/eps"}, machine).Output;
    EXPECT_EQ(
        line.find(R"({"entryPoint":{"Anchor String":{"text":null},"Entry Point Structure Checksum":{"text":null},)"),
        0U)
        << line;
    EXPECT_NE(line.find(R"("Version":{"text":"3.9"},)"), std::string::npos) << line;
    const Ran none = RunProgram({"/eps"}, folder.Write("none.machine", "firmware-table RSMB = none\n"));
    EXPECT_EQ(none.ExitCode, 171);
    EXPECT_EQ(none.Output, "{\"entryPoint\":{\"Anchor String\":{\"text\":null}}}\n");
}

TEST(Json, WhatTheEnvironmentAsksFor) {
    const auto lines = [](const Ran& ran) { return std::count(ran.Output.begin(), ran.Output.end(), '\n'); };
    {
        const FormatSet format("json");
        EXPECT_EQ(lines(RunProgram({"/type", "45"}, "sample-server")), 3);
    }
    {
        const FormatSet format("json", "0");
        EXPECT_EQ(RunProgram({"/type", "45"}, "sample-server").ExitCode, 153);
        EXPECT_EQ(lines(RunProgram({"/type", "17"}, "sample")), 4);
    }
    for (const char* const text : {"", "text"}) {
        const FormatSet format(text);
        EXPECT_EQ(RunProgram({"/nologo", "/type", "1", "1", "4"}).Output, "\nManufacturer : Example Works\n");
    }
    for (const char* const wrong : {"JSON", "xml\n", "json "}) {
        const FormatSet format(wrong);
        const Ran ran = RunProgram({"/type"});
        EXPECT_EQ(ran.ExitCode, 255);
        EXPECT_EQ(ran.Output, "");
        EXPECT_EQ(ran.Errors, "quarrinet: QUARRINET_FORMAT can be text or json\n");
    }
}

// A file that may not grow beyond some size has whole lines only, those before it included.
TEST(Json, AFullDeviceKeepsWholeLines) {
    const FormatSet format("json");
    const TemporaryFolder folder;
    const std::string file = folder.Write("out", "first\n");
    const std::string command = "cd '" + folder.Path + "' && ulimit -f 60 && QUARRINET_MACHINE=sample-server '" +
                                QUARRINET_PROGRAM "' /type >>out 2>errors";
    EXPECT_EQ(std::system(("bash -c \"" + command + "\"").c_str()), 0);
    EXPECT_EQ(
        std::system(
            ("cd '" + folder.Path +
             "' && head -n 1 out | grep -qx first && test $(wc -l <out) -gt 10 && tail -n +2 out | jq . >/dev/null && "
             "test \"$(tail -c 3 out)\" = '}}' && grep -q 'could not be written' errors")
                .c_str()),
        0);
}

} // namespace
