// What holds for every decoder: its fields, its place in the listing, its texts, and where it looks for a field.
#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/QelCrypto.h"
#include "Lib/Platform/Driver.h"
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
    {0, 14, "8c5b60f6a86533e0"},  {1, 11, "4c5cddfc96e2df2f"},  {2, 14, "57ae401f5b5a2423"},
    {3, 19, "6ab355c6e112d187"},  {4, 26, "13c243f23b8cfaad"},  {5, 14, "8bc3ade783ab7ad1"},
    {6, 10, "e91344c9b02bc7b9"},  {7, 13, "ae3bf9f223380972"},  {8, 8, "413a6215badd5b80"},
    {9, 14, "8af1d3f3d12d1f9d"},  {10, 5, "a25db05708a00d11"},  {11, 4, "35b8bc8339afbbb3"},
    {12, 4, "c7b48b4f3a771d94"},  {13, 7, "b261c1ead8b811e1"},  {14, 6, "95c8d65da77f6e97"},
    {15, 14, "9a53a285ddcfb1fe"}, {16, 10, "125c3991f4b19536"}, {17, 25, "da019cf83ba34f7c"},
    {18, 10, "c6bace50c9fc41a8"}, {19, 9, "3541d0665af4bc54"},  {20, 12, "8fbccbbb13acd449"},
    {21, 6, "a5a40dd323b6950d"},  {22, 18, "fe186492ae2a0239"}, {23, 8, "e94c610f1ad97957"},
    {24, 4, "7aa1e22ff4c90d59"},  {25, 8, "a1a76a97b2eb712d"},  {26, 12, "6c0533f352fa3a2c"},
    {27, 9, "0249f58bc04fe907"},  {28, 12, "771f98a1124333ab"}, {29, 12, "6abb9b5edebd0137"},
    {30, 5, "38cb1dc595c4add0"},  {31, 10, "59872783d65ef846"}, {32, 5, "baa66bf949e75041"},
    {33, 10, "44590f0a4c3b414a"}, {34, 7, "b3787f2540afdf6c"},  {35, 7, "f79f8c123cfd154f"},
    {36, 9, "b78e3379ef7b5c4b"},  {37, 10, "c3d729786f5bea5b"}, {38, 10, "41ee80f4d01dcf4e"},
    {39, 15, "5c5fe28bfacb1a7d"}, {40, 5, "2d413c240f78b634"},  {41, 9, "8914af6f0cfc8987"},
    {42, 5, "56953806aa9c19ee"},  {126, 3, "1cea88375212f189"}, {127, 3, "6146367506a29243"}};

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

// Each decoder shows structures whose bytes are all the same, and ones whose every other byte is 1, for every value of
// a byte: so every text of every table comes up, every group of bits with all its values, and numbers of every width
// with leading zeros. A digest changes with any byte of this, and may only change together with an intended change of
// that decoder's output: a failure prints the new one, to be entered once the new output has been looked through.
TEST(AllDecoders, LockEveryText) {
    for (const auto& [type, fields, digest] : Decoders) {
        StartLoaded(MachineOf(Bytes(96 + 602)));
        const std::string shown = Captured([type = type] {
            for (int code = 0; code < 512; ++code) {
                const auto value = static_cast<std::uint8_t>(code);
                Bytes& table = StandIn::MachineGet().Memory[1].Data;
                std::fill(table.begin(), table.end() - 2, value);
                for (std::size_t at = 1; code >= 256 && at < 96; at += 2) {
                    table[at] = 1;
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
