// Argument collection, response files, the command registry and its validation.
#include "Lib/API/RyxArg.h"
#include "Lib/API/RyxOption.h"
#include "Lib/Common/Argument.h"
#include "Lib/Common/ArgumentCommand.h"
#include "Lib/Common/LibraryReset.h"
#include "tests/library/Support.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>

namespace {

// Collects a command line in a folder of its own and gives it back as text: "name(param)(param) name".
class CommandLine : public testing::Test {
protected:
    void SetUp() override {
        LibraryReset();
        Before = std::filesystem::current_path();
        std::filesystem::current_path(Folder.Path);
    }
    void TearDown() override {
        LibraryReset();
        std::filesystem::current_path(Before);
    }

    void Given(const std::vector<std::string>& words) {
        LibraryReset();
        Argv.emplace(Behind("Quarrinet", words));
        ASSERT_EQ(RyxArgsSet(Argv->Count(), Argv->Data()), RyxOk);
    }

    std::string Collected(const std::vector<std::string>& words) {
        Given(words);
        Status = ArgumentCollect();
        std::string text;
        for (const ArgNode* node = ArgumentCommandsGet(); node != nullptr; node = node->Next) {
            EXPECT_EQ(node->Kind, ArgNodeCommand);
            text += (text.empty() ? "" : " ") + std::string(node->Text);
            for (const ArgNode* param = node->Params; param != nullptr; param = param->Next) {
                EXPECT_EQ(param->Kind, 0U);
                text.append("(").append(param->Text).append(")");
            }
        }
        return text;
    }

    // Validates a command line against one command "c" of a format.
    RyxStatus Validated(const char* format, const std::vector<std::string>& words) {
        Given(words);
        RyxArgCommandRegister(".c", "Does it.", format, "Things");
        RyxStatus status = RyxOk;
        Printed = Captured([&status] { status = RyxArgSyntaxProcess(1, 1, nullptr); });
        return status;
    }

    TemporaryFolder Folder;
    std::filesystem::path Before;
    std::optional<ArgumentVector> Argv;
    RyxStatus Status = RyxOk; // and what the last ones came to
    std::string Printed;
};

TEST_F(CommandLine, ArgumentsBecomeCommandsAndParameters) {
    struct {
        std::vector<std::string> Words;
        const char* Expected;
        RyxStatus Status;
    } const cases[] = {
        {{}, "", RyxOk},
        {{"/type", "4"}, "type(4)", RyxOk},
        {{"-type", "4", "", "/eps", "#x"}, "type(4) eps(#x)", RyxOk},
        {{"4", "/type"}, "", RyxErrorNotFound},
        {{"/type", "-1"}, "type(-1)", RyxOk},
        {{"/type", "4", "-5", "/eps", "-0"}, "type(4)(-5) eps(-0)", RyxOk},
        {{"/type", "-1a", "-", "/1"}, "type 1a  1", RyxOk},
        {{"-1", "-2"}, "1(-2)", RyxOk},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(Collected(test.Words), test.Expected);
        EXPECT_EQ(Status, test.Status) << test.Expected;
    }
}

TEST_F(CommandLine, ResponseFilesStandWhereTheyAreNamed) {
    const std::string longWord(1030, 'w');
    struct {
        std::string Content;
        std::string Expected;
        RyxStatus Status;
    } const cases[] = {
        {"/type \"4\" # comment\n", "/a type(4) /z", RyxOk},
        {"/type # 4 \"5\"", "/a type(5) /z", RyxOk},
        {"/type \"4 5\"\r\n6", "/a type(4 5)(6) /z", RyxOk},
        {"/type \"\" 4\t5 @x", "/a type(4\t5)(@x) /z", RyxOk},
        {"/type 1\r2", "/a type(1)(2) /z", RyxOk},
        {std::string("/type 1\0/eps", 12), "/a type(1) /z", RyxOk},
        {longWord, "/a(" + longWord.substr(0, 1023) + ")(" + longWord.substr(1023) + ") /z", RyxOk},
        {"", "/a /z", RyxOk},
        {"/type \"4\n", "", RyxErrorArgument},
    };
    for (const auto& test : cases) {
        Folder.Write("args.rsp", test.Content);
        std::string expected = test.Expected;
        for (std::size_t at; (at = expected.find('/')) != std::string::npos;) {
            expected.erase(at, 1);
        }
        EXPECT_EQ(Collected({"/a", "@args.rsp", "/z"}), expected) << test.Content;
        EXPECT_EQ(Status, test.Status) << test.Content;
    }
    EXPECT_EQ(Collected({"/a", "@missing.rsp"}), "");
    EXPECT_EQ(Status, RyxErrorNotFound);
    EXPECT_EQ(Collected({"/a", "@."}), "") << "a folder is no file";
}

TEST_F(CommandLine, TheDefaultFileIsReadOnlyWithoutANamedOne) {
    Folder.Write("default.rsp", std::string("4 /eps"));
    Folder.Write("other.rsp", std::string("/help"));
    EXPECT_EQ(Collected({"/type"}), "type(4) eps");
    EXPECT_EQ(Collected({"/type", "@other.rsp"}), "type help");
    Folder.Write("default.rsp", std::string("\"open"));
    EXPECT_EQ(Collected({"/type"}), "");
    EXPECT_EQ(Status, RyxErrorArgument);
}

TEST_F(CommandLine, MoreThan256StringsAreRefusedWhole) {
    std::vector<std::string> words(256, "1");
    words[0] = "/type";
    EXPECT_NE(Collected(words), "");
    words.emplace_back("1");
    EXPECT_EQ(Collected(words), "");
    EXPECT_EQ(Status, RyxErrorMemory);
    Folder.Write("one.rsp", std::string("1"));
    words.back() = "@one.rsp";
    EXPECT_EQ(Collected(words), "");
    EXPECT_EQ(Status, RyxErrorMemory);
}

TEST_F(CommandLine, FormatsAreCheckedTokenByToken) {
    struct {
        const char* Format;
        std::vector<std::string> Params;
        RyxStatus Status;
    } const cases[] = {
        {"", {}, RyxOk},
        {"", {"1"}, RyxErrorParameter},
        {"%d", {}, RyxErrorParameter},
        {"%d", {"+3"}, RyxOk},
        {"%d", {" 3"}, RyxOk},
        {"%d", {"3 "}, RyxErrorParameter},
        {"%d", {"0x10"}, RyxErrorParameter},
        {"%D", {"x"}, RyxErrorParameter},
        {"%x", {"0X1f"}, RyxOk},
        {"%X", {"g"}, RyxErrorParameter},
        {"%s  %f %S %F %g %G", {"any", "thing", "at", "all", "is", "taken"}, RyxOk},
        {"%d=99 %d=0", {"4", "1", "5"}, RyxErrorParameter},
        {"%d=x", {}, RyxErrorParameter}, // a default is validated too
        {"%d=", {}, RyxErrorParameter},  // no default at all
        {"%q", {"1"}, RyxErrorUnsupported},
        {"%", {"1"}, RyxErrorUnsupported},
        {"d", {}, RyxErrorUnsupported},
        {".. ", {"1"}, RyxErrorUnsupported},
        {"%s ...", {"1", "b", "c"}, RyxOk},
        {"%s ...", {}, RyxErrorParameter},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(Validated(test.Format, Behind("/C", test.Params)), test.Status) << "format '" << test.Format << "'";
        const char* const parameter = test.Status == RyxErrorParameter ? "Parameter error!\nSyntax: -c Things\n" : "";
        EXPECT_EQ(Printed, test.Status == RyxErrorUnsupported ? "Internal error: Invalid syntax format!\n" : parameter);
    }
}

TEST_F(CommandLine, LookupsFollowTheCaseRuleAndParametersAreFetched) {
    Given({"/.C", "4"});
    RyxArgCommandRegister("c", "", "%d=99 %d=17", "");
    ArgNode* node = nullptr;
    EXPECT_EQ(RyxArgCommandFind("c", &node), RyxErrorNotFound);
    ASSERT_EQ(RyxArgSyntaxProcess(1, 0, nullptr), RyxOk);
    ASSERT_EQ(RyxArgCommandFind(".c", &node), RyxOk);
    char text[2] = "?";
    EXPECT_EQ(RyxArgParamGet(node, 1, text, sizeof text), RyxOk);
    EXPECT_STREQ(text, "1") << "the default, cut to the buffer";
    EXPECT_EQ(RyxArgParamGet(node, 2, text, sizeof text), RyxErrorNotFound);
    EXPECT_STREQ(text, "1");
    EXPECT_EQ(RyxArgParamGet(node->Params, 0, text, sizeof text), RyxErrorObject);
}

// A name is kept up to its 31st character; the case rule holds for the letters and for nothing beside them.
TEST_F(CommandLine, NamesAreCutAndComparedByLetters) {
    const std::string kept = "abcdefghijklmnopqrstuvwxyz01234";
    struct {
        std::string Registered;
        std::string Given;
        RyxStatus Status;
    } const cases[] = {
        {kept + "5", kept, RyxOk},
        {kept, kept, RyxOk},
        {kept, kept.substr(0, 30), RyxErrorNotFound},
        {"AZ@[", "az@[", RyxOk},
        {"AZ@[", "az`[", RyxErrorNotFound},
        {"AZ@[", "az@{", RyxErrorNotFound},
    };
    for (const auto& test : cases) {
        Given({"/" + test.Given});
        RyxArgCommandRegister(test.Registered.c_str(), "", "", "");
        EXPECT_EQ(RyxArgSyntaxProcess(1, 0, nullptr), test.Status) << test.Registered << " " << test.Given;
    }
}

TEST_F(CommandLine, NumbersAreDecimalAndWrap) {
    std::int64_t number = 7;
    for (const char* text : {"", "0x10", "1 ", "1a", "a", " 1", "--1"}) {
        EXPECT_EQ(RyxArgNumberParse(text, &number), RyxErrorNotDecimal) << text;
    }
    EXPECT_EQ(number, 7);
    struct {
        const char* Text;
        std::int64_t Number;
    } const cases[] = {{"-12", -12}, {"+3", 3}, {"-", 0}, {"007", 7}, {"18446744073709551617", 1}};
    for (const auto& test : cases) {
        EXPECT_EQ(RyxArgNumberParse(test.Text, &number), RyxOk);
        EXPECT_EQ(number, test.Number) << test.Text;
    }
}

TEST(CommandList, HasOneModeAndTextsOf63Characters) {
    LibraryReset();
    const std::string text(64, 't');
    RyxArgCommandRegister("one", text.c_str(), text.c_str(), text.c_str());
    RyxStatus status = RyxOk;
    EXPECT_EQ(Captured([&status] { status = RyxArgHelpPrint(2); }), "");
    EXPECT_EQ(status, RyxErrorUnsupported);
    const std::string kept(63, 't');
    EXPECT_EQ(ArgumentCommandsRegistered()->Format, kept);
    EXPECT_EQ(Captured([&status] { status = RyxArgHelpPrint(1); }), "one      " + kept + ' ' + kept + '\n');
    EXPECT_EQ(status, RyxOk);
    LibraryReset();
}

} // namespace
