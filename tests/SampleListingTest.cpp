// The whole listing of the sample machine, and every field of every type selected on its own.
#include "Lib/Platform/Driver.h"
#include "tests/Support.h"
#include "viewer/StructDispatch.h"
#include "viewer/ViewerState.h"

#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace {

// How many fields each decoder has.
const std::map<int, int> FieldCounts = {{0, 14},  {1, 11},  {2, 14},  {3, 19},  {4, 26},  {5, 14},  {6, 10},  {7, 13},
                                        {8, 8},   {9, 14},  {10, 5},  {11, 4},  {12, 4},  {13, 7},  {14, 6},  {15, 14},
                                        {16, 10}, {17, 25}, {18, 10}, {19, 9},  {20, 12}, {21, 6},  {22, 18}, {23, 8},
                                        {24, 4},  {25, 8},  {26, 12}, {27, 9},  {28, 12}, {29, 12}, {30, 5},  {31, 10},
                                        {32, 5},  {33, 10}, {34, 7},  {35, 7},  {36, 9},  {37, 10}, {38, 10}, {39, 15},
                                        {40, 5},  {41, 9},  {42, 5},  {126, 3}, {127, 3}};

// The one field that is counted without a line of its own: the reserved bytes of language structures.
constexpr std::pair<int, int> SilentField = {13, 6};

} // namespace

// Every structure begins with a blank line and its type.
TEST(SampleListing, ShowsEveryTypeInOrder) {
    const Ran ran = RunProgram({"/nologo", "/type"});
    EXPECT_EQ(ran.ExitCode, 0) << ran.Errors;
    std::vector<int> types;
    std::istringstream lines(ran.Output);
    bool blank = false;
    for (std::string line; std::getline(lines, line); blank = line.empty()) {
        for (const auto& [type, count] : FieldCounts) {
            if (blank && line == std::string("Type : ") + StructTypeNameTable[type] &&
                (types.empty() || types.back() != type)) {
                types.push_back(type);
            }
        }
    }
    std::vector<int> expected;
    for (const auto& [type, count] : FieldCounts) {
        expected.push_back(type);
    }
    EXPECT_EQ(types, expected);
}

// With a field behind the last one selected, the counter that the viewer compares with it stops at the last.
TEST(SampleListing, ShowsEveryFieldAlone) {
    StartOver(StandIn::SampleMachine());
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
    for (const auto& [type, count] : FieldCounts) {
        for (int field = 1; field <= count + 1; ++field) {
            ViewerFieldSelected = field;
            ViewerFieldCounter = 0;
            const std::string output = Captured([type = type] { (*StructDecoderTable[type])(); });
            const bool silent = field > count || std::pair(type, field) == SilentField;
            EXPECT_EQ(output.find_first_not_of('\n') == std::string::npos, silent) << type << ", field " << field;
            EXPECT_EQ(ViewerFieldCounter >= field, field <= count) << type << ", field " << field;
        }
    }
    ViewerBinsRelease();
    DriverRequest(DriverUnload);
}

// One type of each form of the frame.
TEST(SampleListing, ReportsTheFieldBehindTheLast) {
    for (const int type : {32, 36}) {
        const std::string last = std::to_string(FieldCounts.at(type));
        const std::string behind = std::to_string(FieldCounts.at(type) + 1);
        const std::string number = std::to_string(type);
        EXPECT_EQ(RunProgram({"/nologo", "/type", number, "0", last}).ExitCode, 0);
        const Ran ran = RunProgram({"/nologo", "/type", number, "0", behind});
        EXPECT_EQ(ran.ExitCode, 153);
        EXPECT_TRUE(ran.Output.ends_with("\nError: Type " + number + ", field ID [" + behind +
                                         "] is not supported.\n\n\nERROR 153 - Not supported! Status = 3.\n"))
            << ran.Output;
    }
}
