// Why a driver does not start, in words.
#include "Lib/Common/DriverError.h"

#include "Lib/Platform/System.h"

#include <algorithm>
#include <iterator>

namespace {

struct Meaning {
    std::uint32_t Error;
    const char* Text;
};

constexpr Meaning Meanings[] = {
    {2, "the driver's file or device is gone again; a virus scanner may have taken it away"},
    {5, "the rights for it are missing, or a security program forbids it"},
    {31, "the driver ran and gave up; the system's event log may say more"},
    {32, "another program holds the driver's file"},
    {193, "the driver is not made for this system, or its file is damaged"},
    {216, "the driver is not made for this system's processor"},
    {225, "a virus scanner takes the driver for harmful"},
    {577, "the driver has no signature that this system takes"},
    {1053, "the system was too slow to answer; try again"},
    {1055, "the system's service database is locked; try again"},
    {1056, "another driver of this name runs"},
    {1058, "the driver's service is disabled"},
    {1060, "the driver's service could not be made"},
    {1072, "the driver's service is about to be deleted, but another program still holds it; close that, or restart"},
    {1114, "the driver could not be loaded"},
    {1275, "a policy of this system blocks the driver"},
    {1450, "the system has no room left for it"},
    {4551, "a code integrity policy of this system blocks the driver"},
};

} // namespace

std::string DriverErrorLine(std::uint32_t error) {
    std::string line = "the helper driver does not start: ";
    if (error == 0) {
        line += "its file could not be made in the temporary folder, nor beside the program";
    } else {
        line += "error " + std::to_string(error);
        if (const std::string text = SystemErrorText(error); !text.empty()) {
            line += ", \"" + text + "\"";
        }
        const auto* const found = std::find_if(std::begin(Meanings), std::end(Meanings),
                                               [=](const Meaning& one) { return one.Error == error; });
        if (found != std::end(Meanings)) {
            line += std::string(": ") + found->Text;
        }
    }
    return line + ". See docs/driver.md, \"When it does not start\".";
}
