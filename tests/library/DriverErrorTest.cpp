// Why a driver does not start.
#include "Lib/Common/DriverError.h"

#include <gtest/gtest.h>

TEST(DriverError, SaysWhatANumberMeansAndWhereToReadOn) {
    const std::pair<std::uint32_t, const char*> cases[] = {
        {577, "no signature"},         {1275, "policy"}, {5, "rights"},      {1058, "disabled"},
        {1072, "about to be deleted"}, {0, "file"},      {123456, "123456"},
    };
    for (const auto& [error, part] : cases) {
        const std::string line = DriverErrorLine(error);
        EXPECT_NE(line.find(part), std::string::npos) << line;
        EXPECT_EQ(line.find("error " + std::to_string(error)) != std::string::npos, error != 0) << line;
        EXPECT_NE(line.find("docs/driver.md"), std::string::npos);
        EXPECT_EQ(line.find_first_of("\r\n"), std::string::npos);
    }
}
