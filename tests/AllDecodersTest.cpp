// What holds for every decoder: its fields, its place in the listing, its texts, and where it looks for a field.
#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/QelCrypto.h"
#include "machine/model/SampleMachine.h"
#include "tests/Support.h"
#include "viewer/StructDispatch.h"
#include "viewer/StructRead.h"
#include "viewer/ViewerState.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>

using StandIn::Bytes;
using StandIn::Machine;

namespace {

// A decoder's number of fields, and the digest of what it shows over all codes (see LockEveryText).
struct DecoderFacts {
    std::uint8_t Type;
    int Fields;
    const char* Digest;
};

constexpr DecoderFacts Decoders[] = {
    {0, 14, "b78a99ccf7ab3d61"},  {1, 11, "628281511c35be58"},  {2, 14, "69004be3153f7ff6"},
    {3, 19, "89b16c97e4ad2c73"},  {4, 26, "d3ce01333340f118"},  {5, 14, "00f183f8eb234632"},
    {6, 10, "99770020c84c0f4f"},  {7, 13, "4aa761b4c4e9fa13"},  {8, 8, "5cd307adab6be18d"},
    {9, 14, "3825ccf04b0dffb8"},  {10, 5, "cc49b51a00195558"},  {11, 4, "723938202bfd5821"},
    {12, 4, "64e39d63769846d3"},  {13, 7, "c70a33fe46590723"},  {14, 6, "b4b00639e655027b"},
    {15, 14, "34b9bb298059840d"}, {16, 10, "f6756316b5ad3531"}, {17, 25, "681395c58607f176"},
    {18, 10, "87fe9a6276aef738"}, {19, 9, "9489d8af679338ce"},  {20, 12, "af51e30ae9d3500c"},
    {21, 6, "573a0412f453f18e"},  {22, 18, "79bb76e71970c032"}, {23, 8, "2065f9ef449732c1"},
    {24, 4, "efce51db9ad859c3"},  {25, 8, "91ad64e288af3a4f"},  {26, 12, "e6f0ebe2c45c933b"},
    {27, 9, "0ce4578b4dcf5ab9"},  {28, 12, "fb0007234c9753cb"}, {29, 12, "93a1636cd0f0b0f0"},
    {30, 5, "49eab24d0ebd381f"},  {31, 10, "d12a44fcaf805cd2"}, {32, 5, "bc2f74428c52a3c5"},
    {33, 10, "a5742926c7e23632"}, {34, 7, "64b9c2feb1d43c40"},  {35, 7, "f106f14ff5848fec"},
    {36, 9, "827ded28dff5aec0"},  {37, 10, "50ce1ec911c5974d"}, {38, 10, "92bf364c5a48ac69"},
    {39, 15, "f9434cb55dceee85"}, {40, 5, "4cd647e1bb972cec"},  {41, 9, "a51223342527a490"},
    {42, 5, "f192b1fd17ea92d5"},  {126, 3, "09b3856e0dbbef69"}, {127, 3, "bca6eb4a5bd17a65"}};

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
    for (const auto& [type, fields, digest] : Decoders) {
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
// width with leading zeros. A digest changes with any byte of this, and may only change together with an intended
// change of that decoder's output: a failure prints the new one, to be entered once the new output has been looked
// through.
TEST(AllDecoders, LockEveryText) {
    for (const auto& [type, fields, digest] : Decoders) {
        StartLoaded(MachineOf(Bytes(96 + 602)));
        const std::string shown = Captured([type = type] {
            for (int code = 0; code < 1024; ++code) {
                const auto value = static_cast<std::uint8_t>(code);
                Bytes& table = StandIn::MachineGet().Memory[1].Data;
                std::fill(table.begin(), table.end() - 2, value);
                for (std::size_t at = 1; code >= 256 && at < 96; at += 2) {
                    table[at] = static_cast<std::uint8_t>(code / 256);
                }
                std::copy_n(Bytes{type, 96, 0, 0}.begin(), 4, table.begin());
                (*StructDecoderTable[type])();
                ViewerBinsRelease();
            }
        });
        QelSha1Digest sum{};
        ASSERT_EQ(QelSha1(shown.data(), shown.size(), &sum), RyxOk);
        std::string text;
        for (std::size_t i = 0; i < 8; ++i) {
            char piece[3];
            std::snprintf(piece, sizeof piece, "%02x", sum[i]);
            text += piece;
        }
        EXPECT_EQ(text, digest) << "type " << int(type) << ", " << shown.size() << " bytes";
    }
}
