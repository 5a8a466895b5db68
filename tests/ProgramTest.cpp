// The program as a process: exit codes, messages, paging at a terminal.
#include "machine/model/Machine.h"
#include "machine/model/SampleMachine.h"
#include "machine/model/SmbiosBuilder.h"
#include "tests/Support.h"
#include "tests/Terminal.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

TEST(Program, TheProbeStartsNothing) {
    const Ran ran = RunProgram({"/_exec_", "/type", "1"});
    EXPECT_EQ(ran.ExitCode, 0);
    EXPECT_EQ(ran.Output + ran.Errors, "");
    const Ran without = RunProgram({"/_exec_"}, "/there/is/no/such/machine");
    EXPECT_EQ(without.ExitCode, 0);
    EXPECT_EQ(without.Output + without.Errors, "");
    EXPECT_EQ(RunProgram({"/_EXEC_"}).ExitCode, 105);
    EXPECT_EQ(RunProgram({"/type", "/_exec_"}).ExitCode, 105);
}

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// A server of today: more than 128 structures, none of them with a handle below 0100h.
TEST(Program, ShowsTheWholeTableWhenAsked) {
    StandIn::SmbiosBuilder table;
    std::uint16_t handle = 0x100;
    for (const auto& [type, count] : {std::pair{4, 2}, {38, 2}, {17, 260}, {8, 100}, {20, 65}, {127, 1}}) {
        for (int i = 0; i < count; ++i) {
            table.Begin(static_cast<std::uint8_t>(type), handle++).Byte(0);
        }
    }
    ASSERT_EQ(table.Count(), 430);
    const TemporaryFolder folder;
    folder.Write("rsmb", *StandIn::MachineWithTable(table, 2, 8, false).SmbiosTable);
    const std::string machine = folder.Write("machine", "firmware-table RSMB = rsmb\n");
    const auto run = [&machine](const std::vector<std::string>& arguments) {
        return RunProgram(Behind("/nologo", arguments), machine);
    };
    for (const char* no : {"", "0"}) {
        setenv("QUARRINET_WHOLE", no, 1);
        EXPECT_EQ(run({"/type"}).Output, "") << "the last structure, of type 127, is not among the first 128";
        EXPECT_EQ(run({"/type", "4"}).ExitCode, 153);
    }
    setenv("QUARRINET_WHOLE", "1", 1);
    const Ran all = run({"/type"});
    EXPECT_EQ(all.ExitCode, 0);
    EXPECT_EQ(CountOf(all.Output, "\nType : "), 2U + 2 + 254 + 100 + 65 + 1) << "of each type 254 at most";
    EXPECT_NE(all.Output.find("Handle : 0x02AC (684)"), std::string::npos);
    EXPECT_EQ(run({"/type", "4", "0", "3"}).Output, "\nHandle : 0x0100 (256)\n");
    EXPECT_EQ(CountOf(run({"/type", "4"}).Output, "Processor (Type 04)"), 2U);
    for (const char* type : {"4", "38"}) {
        const std::string second = type == std::string("4") ? "0x0101 (257)" : "0x0103 (259)";
        EXPECT_EQ(run({"/type", type, "2", "3"}).Output, "\nHandle : " + second + "\n");
        EXPECT_EQ(run({"/type", type, "3"}).ExitCode, 153);
    }
    EXPECT_EQ(run({"/type", "17", "254", "3"}).Output, "\nHandle : 0x0201 (513)\n");
    EXPECT_EQ(run({"/type", "17", "255"}).ExitCode, 153);
    unsetenv("QUARRINET_WHOLE");
    EXPECT_TRUE(run({"/type", "4", "2"}).Output.starts_with("\nError: Type 4, handle ID [2] is not supported.\n"));
}

TEST(Program, ExitsWithTheViewersErrorNumber) {
    EXPECT_EQ(RunProgram({"/type", "1"}).ExitCode, 0);
    EXPECT_EQ(RunProgram({}).ExitCode, 105);
    EXPECT_EQ(RunProgram({"/type", " 1"}).ExitCode, 152);
    EXPECT_EQ(RunProgram({"/type", "43"}).ExitCode, 153);
    const TemporaryFolder folder;
    EXPECT_EQ(RunProgram({"/eps"}, folder.Write("empty", std::string("# nothing\n"))).ExitCode, 171);
}

TEST(Program, BothRoadsShowTheSameStructures) {
    const TemporaryFolder folder;
    folder.Write("rsmb", *StandIn::SampleMachine().SmbiosTable);
    const std::string machine = folder.Write("machine", std::string("firmware-table RSMB = rsmb\n"));
    const Ran legacy = RunProgram({"/type"});
    EXPECT_EQ(legacy.ExitCode, 0);
    EXPECT_EQ(legacy.Output, RunProgram({"/type"}, machine).Output);
    EXPECT_GT(legacy.Output.size(), 1000U);
}

TEST(Program, TellsWhyTheDriverDoesNotStart) {
    const TemporaryFolder folder;
    const std::pair<std::string, std::string> cases[] = {
        {"administrator = no", ""},
        {"fail = SetProcessAffinityMask\nfail = SetThreadAffinityMask", ""},
        {"fail = StartServiceA", "error 31: the driver ran and gave up"},
        {"fail = OpenServiceA", "error 5, \"Access is denied\": the rights"},
        {"fail = FindResourceA", "its file could not be made"},
        {"fail = GetTempPathA", "its file could not be made"},
        {"fail = RegCreateKeyExA\nfail = StartServiceA", "error 31"},
    };
    for (const auto& [lines, reason] : cases) {
        const Ran ran = RunProgram({"/type", "1"}, folder.Write("machine", lines));
        EXPECT_EQ(ran.ExitCode, 255) << lines;
        EXPECT_TRUE(ran.Output.ends_with("\nERROR 255 - RYX library initialization failed!\n")) << ran.Output;
        EXPECT_EQ(std::count(ran.Errors.begin(), ran.Errors.end(), '\n'), reason.empty() ? 0 : 1);
        EXPECT_TRUE(reason.empty() || ran.Errors.starts_with("quarrinet: the helper driver does not start: " + reason))
            << ran.Errors;
    }
}

TEST(Program, WaitsForNoResponseFileThatIsNone) {
    const TemporaryFolder folder;
    const Ran plain = RunProgram({"/type", "1"});
    const Ran missing = RunProgram({"@missing.rsp"}, "sample", folder.Path);
    ASSERT_EQ(mkfifo((folder.Path + "/default.rsp").c_str(), 0600), 0);
    EXPECT_EQ(RunProgram({"/type", "1"}, "sample", folder.Path).Output, plain.Output);
    EXPECT_EQ(RunProgram({"@default.rsp"}, "sample", folder.Path).Output, missing.Output);
}

TEST(Program, UnusableMachinesEndItBeforeItStarts) {
    const Ran ran = RunProgram({"/type", "1"}, "/there/is/none");
    EXPECT_EQ(ran.ExitCode, 255);
    EXPECT_EQ(ran.Output, "");
    EXPECT_EQ(ran.Errors, "quarrinet: /there/is/none: No such file or directory\n");
    EXPECT_EQ(RunProgram({}, "no\nsuch\x1B[31m\xC2\x9B").Errors,
              "quarrinet: no\\x0Asuch\\x1B[31m\\xC2\\x9B: No such file or directory\n");
}

// The sample's five: the second ones of types 2, 3, 4 and 126, and one with a handle above 00FFh.
const std::string SampleHidden = "quarrinet: 5 of 94 structures are not shown; QUARRINET_WHOLE=1 shows them\n";

// Who reads standard error at a terminal learns of structures that are not shown, and nobody else does.
TEST(Program, TellsATerminalOfHiddenStructures) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"/nologo", "/type", "0", "1", "4"},
                                                      {"/nologo", "/type", "200"},
                                                      {"/nologo", "/eps"}}) {
        const Ran ran = RunProgram(arguments);
        EXPECT_EQ(ran.Errors, "");
        const std::string last = arguments[1] == "/type" ? SampleHidden : "";
        EXPECT_EQ(Terminal(arguments, "sample", 25).ShownUntil(""), ran.Output + last);
        setenv("QUARRINET_WHOLE", "1", 1);
        EXPECT_EQ(Terminal(arguments, "sample", 25).ShownUntil(""), RunProgram(arguments).Output);
        unsetenv("QUARRINET_WHOLE");
    }
    const TemporaryFolder folder;
    folder.Write("rsmb", *StandIn::MachineWithTable(StandIn::SmbiosBuilder().Begin(127), 2, 8, false).SmbiosTable);
    const std::string machine = folder.Write("machine", "firmware-table RSMB = rsmb\n");
    EXPECT_EQ(Terminal({"/nologo", "/type"}, machine, 25).ShownUntil(""),
              RunProgram({"/nologo", "/type"}, machine).Output)
        << "nothing is hidden";
}

TEST(Paging, PausesAtATerminalAndNowhereElse) {
    const std::string pause = "Press any key to continue...\n";
    const std::string redirected = RunProgram({"/b", "/type", "0"}).Output;
    EXPECT_EQ(redirected.find(pause), std::string::npos);

    Terminal terminal({"/b", "/type", "0"}, "sample", 25);
    std::string shown = terminal.ShownUntil(pause);
    std::string whole;
    int pauses = 0;
    for (std::size_t at; (at = shown.find(pause)) != std::string::npos; ++pauses) {
        const std::string page = shown.substr(0, at);
        EXPECT_EQ(std::count(page.begin(), page.end(), '\n'), 23);
        whole += page;
        terminal.Press("q");
        shown = terminal.ShownUntil(pause);
        const std::string cleared = "\033[2J\033[H";
        ASSERT_EQ(shown.rfind(cleared, 0), 0U) << "the key is not echoed and the screen is cleared";
        shown.erase(0, cleared.size());
    }
    EXPECT_GE(pauses, 2);
    EXPECT_EQ(whole + shown, redirected + SampleHidden);
    EXPECT_EQ(terminal.ExitCode(), 0);
}

TEST(Paging, OnePressIsOneKeyWhateverItSends) {
    const std::string pause = "Press any key to continue...\n";
    // Page Down, an arrow, function keys, Alt with a letter, letters of two and three bytes, Escape.
    const std::vector<std::string> keys{"\x1B[6~", "\x1BOA", "\x1B[15;5~", "\x1B[[A",
                                        "\x1Bx",   "\u00E9", "\u20AC",     "\x1B"};
    Terminal terminal({"/b", "/type"}, "sample", 25);
    std::string shown = terminal.ShownUntil(pause);
    std::size_t presses = 0;
    std::size_t pauses = 0;
    for (std::size_t at; (at = shown.find(pause)) != std::string::npos; ++presses) {
        pauses += shown.find(pause, at + 1) == std::string::npos ? 1 : 2;
        terminal.Press(keys[presses % keys.size()]);
        shown = terminal.ShownUntil(pause);
    }
    EXPECT_GE(presses, keys.size());
    EXPECT_EQ(presses, pauses);
    EXPECT_EQ(terminal.ExitCode(), 0);
}

TEST(Paging, WithoutAKeyboardThereIsNone) {
    Terminal terminal({"/b", "/type", "0"}, "sample", 25, false);
    EXPECT_EQ(terminal.ShownUntil(""), RunProgram({"/b", "/type", "0"}).Output + SampleHidden);
    EXPECT_EQ(terminal.ExitCode(), 0);
}

} // namespace
