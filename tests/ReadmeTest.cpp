// The documents: what the README shows, and the fields that the manual page lists, against the program.
#include "machine/model/EntryPoint.h"
#include "machine/model/SampleMachine.h"
#include "tests/Support.h"

#include <cctype>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <sstream>
#include <utility>

namespace {

std::vector<std::string> LinesOf(const std::string& document) {
    std::ifstream file(std::string(QUARRINET_SOURCES) + "/" + document);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

// A command of the README and what it shows.
struct Example {
    std::size_t Line;
    std::string Command;
    std::string Shown;
};

std::vector<Example> ExamplesOf(const std::vector<std::string>& lines) {
    std::vector<Example> examples;
    bool inside = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].rfind("```", 0) == 0) {
            inside = lines[i] == "```console";
        } else if (inside && lines[i].rfind("$ ", 0) == 0) {
            examples.push_back({i + 1, lines[i].substr(2), ""});
        } else if (inside) {
            examples.back().Shown += lines[i] + "\n";
        }
    }
    return examples;
}

std::string ShellRun(const std::string& folder, const std::string& command) {
    const std::string whole =
        "cd '" + folder + "' && export PATH=\"$PWD:$PATH\" QUARRINET_MACHINE=sample && exec 2>&1 && " + command;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(whole.c_str(), "r"), &pclose);
    std::string output;
    char piece[4096];
    for (std::size_t got; pipe && (got = std::fread(piece, 1, sizeof piece, pipe.get())) != 0;) {
        output.append(piece, got);
    }
    return output;
}

// Compares with a text in which a line "..." stands for any lines.
bool Matches(const std::string& output, const std::string& shown) {
    const std::string cut = "...\n";
    std::size_t from = 0;
    std::size_t reached = 0;
    for (std::size_t at; (at = shown.find(cut, from)) != std::string::npos; from = at + cut.size()) {
        const std::string part = shown.substr(from, at - from);
        const std::size_t found = output.find(part, reached);
        if (found == std::string::npos || (from == 0 && found != 0)) {
            return false;
        }
        reached = found + part.size();
    }
    const std::string last = shown.substr(from);
    return from == 0 ? output == last
                     : output.size() >= reached + last.size() &&
                           output.compare(output.size() - last.size(), last.size(), last) == 0;
}

TEST(Documents, TheReadmesExamplesGiveWhatTheyShow) {
    const TemporaryFolder folder;
    ASSERT_EQ(std::system(("ln -s '" QUARRINET_PROGRAM "' '" + folder.Path + "/quarrinet'").c_str()), 0);
    const std::vector<Example> examples = ExamplesOf(LinesOf("README.md"));
    ASSERT_GE(examples.size(), 8U);
    for (Example example : examples) {
        const std::string run = "./dev run";
        if (example.Command.rfind("cat ", 0) == 0) { // a file that the next command reads
            folder.Write(example.Command.substr(4), example.Shown);
            continue;
        }
        if (const std::size_t at = example.Command.find(run); at != std::string::npos) {
            example.Command.replace(at, run.size(), "quarrinet");
        }
        const std::string output = ShellRun(folder.Path, example.Command);
        EXPECT_TRUE(Matches(output, example.Shown)) << "README.md:" << example.Line << ": $ " << example.Command << "\n"
                                                    << output;
    }
}

// How another computer's tables are brought here: the README's commands, with a folder in the place of that computer's
// tables and a file in the place of what Windows would write.
TEST(Documents, TheReadmesWaysToBringTablesEndInAListing) {
    const TemporaryFolder folder;
    ASSERT_EQ(std::system(("ln -s '" QUARRINET_PROGRAM "' '" + folder.Path + "/quarrinet'").c_str()), 0);
    StandIn::SmbiosBuilder builder;
    builder.Begin(17).Raw(StandIn::Bytes(12)).String("SLOT 7").Raw(StandIn::Bytes(4));
    const StandIn::Bytes table = builder.Table();
    folder.Write("DMI", table);
    folder.Write("smbios_entry_point", StandIn::EntryPoint30(2, 7, 0, static_cast<std::uint32_t>(table.size())));
    folder.Write("server-4.bin", *StandIn::MachineWithTable(builder, 2, 7).SmbiosTable);
    int listings = 0;
    bool inside = false;
    for (std::string command : LinesOf("README.md")) {
        inside = command.rfind("## ", 0) == 0 ? command == "## Machines" : inside;
        if (!inside || command.rfind("    ", 0) != 0 || command.find("[IO.File]") != std::string::npos) {
            continue;
        }
        const std::string there = "/sys/firmware/dmi/tables/";
        if (const std::size_t at = command.find(there); at != std::string::npos) {
            command.replace(at, there.size(), "./");
        }
        const std::string output = ShellRun(folder.Path, "sudo() { \"$@\"; } && " + command);
        if (command.find("quarrinet") == std::string::npos) {
            EXPECT_EQ(output, "") << command;
        } else {
            EXPECT_NE(output.find("Device Locator : SLOT 7\n"), std::string::npos) << command << "\n" << output;
            ++listings;
        }
    }
    EXPECT_EQ(listings, 2);
}

// The recipes for scripts, of each document that has them: on the sample machine, and on a folder of dumps. The one for
// PowerShell runs where that is.
TEST(Documents, TheRecipesForScriptsWork) {
    const TemporaryFolder folder;
    ASSERT_EQ(
        std::system(("cd '" + folder.Path +
                     "' && mkdir machines && ln -s '" QUARRINET_PROGRAM "' quarrinet && ln -s quarrinet Quarrinet.exe")
                        .c_str()),
        0);
    StandIn::SmbiosBuilder builder;
    builder.Begin(1).Raw(StandIn::Bytes(3)).String("SN-7\t8");
    const StandIn::Bytes table = builder.Table();
    StandIn::Bytes dump = StandIn::EntryPoint30(2, 7, 32, static_cast<std::uint32_t>(table.size()));
    dump.resize(32);
    dump.insert(dump.end(), table.begin(), table.end());
    folder.Write("machines/a.dmp", dump);
    const bool powerShell = std::system("command -v pwsh >/dev/null") == 0;
    const std::pair<const char*, const char*> answers[] = {
        {"    QUARRINET_FORMAT=json", "DIMM A1\t0x2000 - 8388608KB, 8192MB, 8GB\tM0000A1\n"},
        {"    for f in", "machines/a.dmp\tSN-7\\t8\n"},
        {"    $env:", "handle"},
    };
    for (const char* const document : {"README.md", "docs/json.md"}) {
        std::size_t found = 0;
        for (const std::string& line : LinesOf(document)) {
            for (const auto& [begin, answer] : answers) {
                if (line.rfind(begin, 0) != 0) {
                    continue;
                }
                ++found;
                if (line.rfind("    $env:", 0) == 0) {
                    folder.Write("recipe.ps1", line);
                    ASSERT_TRUE(!powerShell ||
                                ShellRun(folder.Path, "pwsh -File recipe.ps1").find(answer) != std::string::npos);
                    continue;
                }
                EXPECT_EQ(ShellRun(folder.Path, line).rfind(answer, 0), 0U) << document << ": " << line << "\n"
                                                                            << ShellRun(folder.Path, line);
            }
        }
        EXPECT_EQ(found, std::size(answers)) << document;
    }
}

// The fields that the manual page lists: "4\~Vendor, 5\~BIOS Version, ..." in a paragraph under the type; in a section
// of their own those that only the whole table has.
TEST(Documents, TheManualListsTheFieldsOfEveryType) {
    bool inFields = false;
    bool whole = false;
    std::string type;
    std::string text;
    int types = 0;
    const auto sample = [&] { return whole ? StandIn::SampleServer() : StandIn::SampleMachine(); };
    const auto check = [&] {
        std::istringstream list(text);
        text.clear();
        int last = 0;
        for (std::string entry; std::getline(list, entry, ',');) {
            const std::size_t gap = entry.find("\\~");
            ASSERT_NE(gap, std::string::npos) << "type " << type << ": " << entry;
            last = std::stoi(entry.substr(0, gap));
            std::string label = entry.substr(gap + 2);
            for (std::size_t at; (at = label.find('\\')) != std::string::npos;) {
                label.erase(at, 1);
            }
            label.erase(label.find_last_not_of(" .") + 1);
            const Viewed viewed = View({"/nologo", "/type", type, "0", std::to_string(last)}, sample(), whole);
            EXPECT_EQ(viewed.Error, 0U) << "type " << type << ", field " << last;
            if (label[0] >= 'A' && label[0] <= 'Z') { // others say what they are in their own words
                EXPECT_EQ(viewed.Output.rfind("\n" + label + " :", 0), 0U)
                    << "type " << type << ", field " << last << ": " << viewed.Output;
            }
        }
        const std::string next = std::to_string(last + 1);
        EXPECT_EQ(View({"/nologo", "/type", type, "0", next}, sample(), whole).Error, 153U)
            << "type " << type << " has a field " << next;
        ++types;
    };
    for (const std::string& line : LinesOf("docs/Quarrinet.1")) {
        if (line.rfind(".SH ", 0) == 0 || line == ".TP") {
            if (!text.empty()) {
                check();
            }
            whole = line == ".SH THE WHOLE TABLE" || (whole && line == ".TP");
            inFields = whole || line == ".SH FIELDS" || (inFields && line == ".TP");
        } else if (inFields && line.rfind(".BR \"", 0) == 0) {
            type = line.substr(5, line.find('"', 5) - 5);
        } else if (inFields && std::isdigit(static_cast<unsigned char>(line[0])) != 0) {
            text += (text.empty() ? "" : " ") + line;
        }
    }
    EXPECT_EQ(types, 43 + 19);
}

} // namespace
