// Loading the helper driver when Windows refuses a step of it.
#include "Lib/Platform/Driver.h"
#include "Lib/Platform/StandIn/Machine.h"
#include "tests/Support.h"

#include <gtest/gtest.h>

namespace {

TEST(DriverLoading, LeavesNothingBehindWhenItFails) {
    for (const char* const step : {"FindResourceA", "GetTempPathA", "WriteFile", "CreateServiceA", "StartServiceA"}) {
        StandIn::Machine machine;
        machine.Faults.push_back({*StandIn::OperationFind(step)});
        StartOver(std::move(machine));
        EXPECT_EQ(DriverRequest(DriverLoad), RyxErrorDriverLoad) << step;
        EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>()) << step;
    }
}

TEST(DriverLoading, TriesThreeTimes) {
    StandIn::Machine machine;
    machine.Faults.push_back({*StandIn::OperationFind("StartServiceA"), 0, 1});
    machine.Faults.push_back({*StandIn::OperationFind("StartServiceA"), 0, 2});
    StartOver(std::move(machine));
    EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
    EXPECT_EQ(StandIn::CallCount("CreateServiceA"), 3U);
    EXPECT_EQ(StandIn::CallCount("SetFileAttributesA"), 1U);
    EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
    EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>());
}

} // namespace
