// The bindings to the platform at the edges of what the rest of the library asks of them.
#include "Lib/Common/DriverLoad.h"
#include "Lib/Platform/FirmwareTable.h"
#include "machine/model/Faults.h"
#include "machine/windows/MachineSet.h"
#include "tests/Support.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using StandIn::Machine;

TEST(Bindings, ADriverThatIsLoadedIsNotLoadedAgain) {
    StartOver(Machine());
    ASSERT_EQ(DriverRequest(DriverLoad), RyxOk);
    const std::uint64_t calls = StandIn::CallCount("CreateFileA") + StandIn::CallCount("RegOpenKeyExA");
    EXPECT_EQ(DriverRequest(DriverLoad), RyxOk);
    EXPECT_EQ(StandIn::CallCount("CreateFileA") + StandIn::CallCount("RegOpenKeyExA"), calls);
    EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
    EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>()) << "one unload is enough";
}

// The driver file's path has to fit, with its folder's, into what the system takes.
TEST(Bindings, TheProgramsFolderHasRoomForTheDriversName) {
    for (const std::size_t length : {246U, 247U}) {
        Machine machine;
        machine.Program = "/" + std::string(length - 1, 'f') + "/Q.exe";
        StartOver(machine);
        EXPECT_EQ(DriverRequest(DriverLoad), length == 246 ? RyxOk : RyxErrorDriverLoad) << length;
        EXPECT_EQ(DriverRequest(DriverUnload), RyxOk);
    }
}

TEST(Bindings, TheFirmwareTableNeedsAllItsPlaces) {
    StartOver(StandIn::MachineWithTable(StandIn::SmbiosBuilder().Begin(1).String("x"), 2, 8));
    std::unique_ptr<std::uint8_t[]> table;
    std::uint32_t size = 0;
    std::uint8_t version = 0;
    std::uint8_t revision = 0;
    EXPECT_FALSE(SmbiosFirmwareTableGet(nullptr, &size, &version, &revision));
    EXPECT_FALSE(SmbiosFirmwareTableGet(&table, nullptr, &version, &revision));
    EXPECT_FALSE(SmbiosFirmwareTableGet(&table, &size, nullptr, &revision));
    EXPECT_FALSE(SmbiosFirmwareTableGet(&table, &size, &version, nullptr));
    EXPECT_TRUE(SmbiosFirmwareTableGet(&table, &size, &version, &revision));
}

} // namespace
