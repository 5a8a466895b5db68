// What holds for every decoder: its fields, its place in the listing, its texts, and where it looks for a field.
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/QelCrypto.h"
#include "machine/model/SampleMachine.h"
#include "tests/Support.h"
#include "viewer/StructDispatch.h"
#include "viewer/StructRead.h"
#include "viewer/ViewerState.h"

#include <cctype>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

using StandIn::Bytes;
using StandIn::Machine;

namespace {

struct DecoderFacts {
    std::uint8_t Type;
    int Fields;
};

constexpr DecoderFacts Decoders[] = {{0, 14},  {1, 11},  {2, 14},  {3, 19},  {4, 26},  {5, 14},  {6, 10},  {7, 13},
                                     {8, 8},   {9, 14},  {10, 5},  {11, 4},  {12, 4},  {13, 7},  {14, 6},  {15, 14},
                                     {16, 10}, {17, 25}, {18, 10}, {19, 9},  {20, 12}, {21, 6},  {22, 18}, {23, 8},
                                     {24, 4},  {25, 8},  {26, 12}, {27, 9},  {28, 12}, {29, 12}, {30, 5},  {31, 10},
                                     {32, 5},  {33, 10}, {34, 7},  {35, 7},  {36, 9},  {37, 10}, {38, 10}, {39, 15},
                                     {40, 5},  {41, 9},  {42, 5},  {126, 3}, {127, 3}};

// The decoders that show the first structure of their type only.
const std::set<int> FirstOnly = {0, 1, 2, 3, 4, 11, 12, 24, 32, 38, 126, 127};

// The one field that is counted without a line of its own: the reserved bytes of language structures.
constexpr std::pair<int, int> SilentField = {13, 6};

void StartLoaded(const Machine& machine) {
    StartOver(machine);
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
}

// A machine whose table of SMBIOS 2.8 is exactly these bytes.
Machine MachineOf(const Bytes& table) {
    Machine machine;
    const auto length = static_cast<std::uint16_t>(table.size());
    machine.Memory = {{0xF0000, StandIn::EntryPoint21(2, 8, 0xE0000, length, 1, length)}, {0xE0000, table}};
    return machine;
}

std::string FieldAlone(std::uint8_t type, int field) {
    ViewerFieldSelected = field;
    ViewerFieldCounter = 0;
    std::string shown = Captured([type] { (*StructDecoderTable[type])(); });
    ViewerBinsRelease();
    return shown;
}

// What a line has in common with others that differ from it in numbers or in a table's string: the line without these.
std::string KindOf(const std::string& line) {
    const std::size_t dash = line.find("KB, ") != line.npos ? line.npos : line.rfind(" - ");
    const std::size_t label = std::min(line.size() > 128 ? line.find(" : ") : line.npos, line.size());
    std::string kind;
    bool hex = false;
    for (std::size_t i = 0; i < label; ++i) {
        const auto letter = static_cast<unsigned char>(line[i]);
        if (i > dash || !(std::isdigit(letter) || (hex && std::isxdigit(letter)))) {
            hex = letter == 'x';
            kind += line[i];
        }
    }
    return kind;
}

// The first eight bytes of a text's SHA-1, as digits.
std::string Digest(const std::string& text) {
    QelSha1Digest sum{};
    EXPECT_EQ(QelSha1(text.data(), text.size(), &sum), RyxOk);
    char digits[17];
    for (std::size_t i = 0; i < 8; ++i) {
        std::snprintf(digits + 2 * i, 3, "%02x", sum[i]);
    }
    return digits;
}

} // namespace

// Every structure begins with a blank line and its type.
TEST(AllDecoders, ListTheSampleInOrder) {
    const Ran ran = RunProgram({"/nologo", "/type"});
    EXPECT_EQ(ran.ExitCode, 0) << ran.Errors;
    std::vector<int> types;
    std::vector<int> expected;
    std::istringstream lines(ran.Output);
    bool blank = false;
    for (std::string line; std::getline(lines, line); blank = line.empty()) {
        for (const DecoderFacts& decoder : Decoders) {
            if (blank && line == std::string("Type : ") + StructTypeNameTable[decoder.Type] &&
                (types.empty() || types.back() != decoder.Type)) {
                types.push_back(decoder.Type);
            }
        }
    }
    for (const DecoderFacts& decoder : Decoders) {
        expected.push_back(decoder.Type);
    }
    EXPECT_EQ(types, expected);
}

// With a field behind the last one selected, the counter that the viewer compares with it stops at the last. In front
// of the sample's structures stands one that is only a header: a decoder of every structure goes on to the next one for
// the field, and one of the first structure ends.
TEST(AllDecoders, ShowEveryFieldAlone) {
    const Bytes served = *StandIn::SampleMachine().SmbiosTable;
    const Bytes sample(served.begin() + 8, served.end()); // behind the service's header
    for (const auto& [type, fields] : Decoders) {
        Bytes headerFirst(6 + sample.size());
        std::copy(sample.begin(), sample.end(), headerFirst.begin() + 6);
        headerFirst[0] = type;
        headerFirst[1] = 4;
        for (int field = 1; field <= fields + 1; ++field) {
            SCOPED_TRACE("type " + std::to_string(type) + ", field " + std::to_string(field));
            StartLoaded(MachineOf(sample));
            const std::string shown = FieldAlone(type, field);
            const bool silent = field > fields || std::pair(int{type}, field) == SilentField;
            EXPECT_EQ(shown.find_first_not_of('\n') == std::string::npos, silent);
            EXPECT_EQ(ViewerFieldCounter >= field, field <= fields);
            StartLoaded(MachineOf(headerFirst));
            if (field > 3 && !silent) {
                EXPECT_EQ(FieldAlone(type, field), FirstOnly.contains(type) ? "\n" : "\n" + shown);
            }
        }
    }
}

// A second structure can be asked for where it would be shown; type 38 takes the number and shows the first. Of the
// whole table every decoder shows and takes the second one.
TEST(AllDecoders, TakeTheInstancesThatTheyShow) {
    for (const DecoderFacts& decoder : Decoders) {
        SCOPED_TRACE("type " + std::to_string(decoder.Type));
        StandIn::SmbiosBuilder table;
        StartLoaded(StandIn::MachineWithTable(table.Begin(decoder.Type, 1).Begin(decoder.Type, 2), 2, 8));
        for (const bool whole : {false, true}) {
            LibraryContextGet().WholeTable = whole;
            const bool second = whole || !FirstOnly.contains(decoder.Type);
            EXPECT_EQ(SelectionCheck(decoder.Type, 1, 0), RyxOk);
            EXPECT_EQ(SelectionCheck(decoder.Type, 2, 0), second || decoder.Type == 38 ? RyxOk : RyxErrorUnsupported);
            ViewerInstanceFirst = 2;
            ViewerInstanceEnd = 3;
            EXPECT_EQ(FieldAlone(decoder.Type, 3), second ? "\nHandle : 0x0002 (02)\n" : "\nHandle : 0x0001 (01)\n");
        }
    }
}

// Each decoder shows structures whose bytes are all the same, and ones whose every other byte is 1, 2 or 3, for every
// value of a byte: so every text of every table comes up, every group of bits with all its values, and numbers of every
// width with leading zeros. DecoderDigests.txt has a line for each decoder: its type, the digest of all that it shows,
// which changes with any byte, and the beginnings of the digests of each kind of its lines, which tell what line it
// was. A line of that file may only change together with an intended change of that decoder's output.
TEST(AllDecoders, LockEveryText) {
    std::map<int, std::string> locked;
    std::ifstream file(QUARRINET_SOURCES "/tests/DecoderDigests.txt");
    for (std::string line; std::getline(file, line);) {
        locked[std::stoi(line)] = line;
    }
    for (const DecoderFacts& decoder : Decoders) {
        StartLoaded(MachineOf(Bytes(96 + 602)));
        const std::string shown = Captured([&decoder] {
            for (int code = 0; code < 1024; ++code) {
                const auto value = static_cast<std::uint8_t>(code);
                Bytes& table = StandIn::MachineGet().Memory[1].Data;
                std::fill(table.begin(), table.end() - 2, value);
                for (std::size_t at = 1; code >= 256 && at < 96; at += 2) {
                    table[at] = static_cast<std::uint8_t>(code / 256);
                }
                std::copy_n(Bytes{decoder.Type, 96, 0, 0}.begin(), 4, table.begin());
                (*StructDecoderTable[decoder.Type])();
                ViewerBinsRelease();
            }
        });
        std::vector<std::string> kinds; // the lines of each
        std::map<std::string, std::size_t> known;
        std::istringstream lines(shown);
        for (std::string line; std::getline(lines, line);) {
            const auto [kind, added] = known.try_emplace(KindOf(line), kinds.size());
            kinds.resize(known.size());
            kinds[kind->second] += line + '\n';
        }
        std::string digests;
        for (const std::string& kind : kinds) {
            digests += Digest(kind).substr(0, 2);
        }
        const std::string found = std::to_string(decoder.Type) + ' ' + Digest(shown) + ' ' + digests;
        const std::string& was = locked[decoder.Type];
        const auto rest = std::string_view(was).substr(std::min(was.size(), found.size() - digests.size()));
        const auto differs = std::mismatch(digests.begin(), digests.end(), rest.begin(), rest.end()).first;
        const auto at = static_cast<std::size_t>(differs - digests.begin()) / 2;
        EXPECT_TRUE(found == was) << "The first line that is new or different, or follows one that is gone:\n"
                                  << (at < kinds.size() ? kinds[at].substr(0, kinds[at].find('\n')) : "(none)")
                                  << "\nIf this is intended, the decoder's line in tests/DecoderDigests.txt is:\n"
                                  << found;
    }
}
