// Decoders of system reset (type 23), hardware security (type 24), power control (type 25) and of the probes and
// cooling devices (types 26 to 29).
#include "viewer/DecoderFrame.h"
#include "viewer/Decoders.h"

#include <array>
#include <cstdint>
#include <span>

namespace {

constexpr const char* UnknownMark = "- Unknown\n";

// Type 23, System Reset.

constexpr const char* ResetWatchdogTexts[] = {"False", "True"};

constexpr const char* ResetBootOptionTexts[] = {"", "Operating system", "System utilities", "Do not reboot"};

constexpr const char* ResetStatusTexts[] = {"Disabled", "Enabled"};

constexpr BitGroup ResetCapabilityGroups[] = {
    {" Watchdog Timer : %s\n", 5, 0x1, ResetWatchdogTexts},
    {" Boot Option on Limit : %s\n", 3, 0x3, ResetBootOptionTexts},
    {" Boot Option : %s\n", 1, 0x3, ResetBootOptionTexts},
    {" Status : %s\n", 0, 0x1, ResetStatusTexts},
};

constexpr std::uint64_t UnknownResetValue = 0xFFFF;

constexpr DecoderField Type23Fields[] = {
    GroupsField(3, "Capabilities : 0x%02X\n", ResetCapabilityGroups),
    MarkField(4, "Reset Count : 0x%04X ", UnknownResetValue, UnknownMark),
    MarkField(5, "Reset Limit : 0x%04X ", UnknownResetValue, UnknownMark),
    MarkField(6, "Timer Interval : 0x%04X ", UnknownResetValue, UnknownMark),
    MarkField(7, "Timeout : 0x%04X ", UnknownResetValue, UnknownMark),
};

// Type 24, Hardware Security.

constexpr const char* HardwareSecurityStatusTexts[] = {"Disabled", "Enabled", "Not Implemented", "Unknown"};

constexpr BitGroup HardwareSecurityGroups[] = {
    {" Power-on Password Status : %s\n", 6, 0x3, HardwareSecurityStatusTexts},
    {" Keyboard Password Status : %s\n", 4, 0x3, HardwareSecurityStatusTexts},
    {" Administrator Password Status : %s\n", 2, 0x3, HardwareSecurityStatusTexts},
    {" Front Panel Reset Status : %s\n", 0, 0x3, HardwareSecurityStatusTexts},
};

constexpr DecoderField Type24Fields[] = {
    GroupsField(3, "Hardware Security Settings : 0x%02X\n", HardwareSecurityGroups),
};

// Type 25, System Power Controls. The values are BCD as stored, and the decimals are not converted from it.

constexpr DecoderField Type25Fields[] = {
    NumberField(3, "Next Scheduled Power-on Month : 0x%02X (%02d)\n"),
    NumberField(4, "Next Scheduled Power-on Day-of month : 0x%02X (%02d)\n"),
    NumberField(5, "Next Scheduled Power-on Hour : 0x%02X (%02d)\n"),
    NumberField(6, "Next Scheduled Power-on Minute : 0x%02X (%02d)\n"),
    NumberField(7, "Next Scheduled Power-on Second : 0x%02X (%02d)\n"),
};

// Types 26, 28 and 29: voltage, temperature and electrical current probes.

constexpr const char* ProbeStatusTexts[] = {
    "", "Other", "Unknown", "OK", "Non-critical", "Critical", "Non-recoverable",
};

constexpr const char* ProbeLocationTexts[] = {
    "",
    "Other",
    "Unknown",
    "Processor",
    "Disk",
    "Peripheral Bay",
    "System Management Module",
    "Motherboard",
    "Memory Module",
    "Processor Module",
    "Power Unit",
    "Add-in Card",
};

// A temperature probe can sit wherever other probes do, and in four places more.
constexpr TextRange TemperatureProbeLocationRanges[] = {
    {0x0C, 0x0C, "Front Panel Board"},
    {0x0D, 0x0D, "Back Panel Board"},
    {0x0E, 0x0E, "Power System Board"},
    {0x0F, 0x0F, "Drive Back Plane"},
};

constexpr TextTable TemperatureProbeLocationTexts{ProbeLocationTexts, TemperatureProbeLocationRanges};

constexpr BitGroup ProbeLocationGroups[] = {
    {" Status : %s\n", 5, 0x7, ProbeStatusTexts},
    {" Location : %s\n", 0, 0x1F, ProbeLocationTexts},
};

constexpr BitGroup TemperatureProbeLocationGroups[] = {
    {" Status : %s\n", 5, 0x7, ProbeStatusTexts},
    {" Location : %s\n", 0, 0x1F, TemperatureProbeLocationTexts},
};

constexpr std::uint64_t UnknownProbeValue = 0x8000;

// The fields of a probe. The three kinds differ in what a location code means and in how the nominal value is shown.
constexpr std::array<DecoderField, 9> ProbeFields(std::span<const BitGroup> locationGroups,
                                                  const DecoderField& nominalValue) {
    return {
        StringField(3, "Description : %s\n"),
        GroupsField(4, "Location and Status : 0x%02X\n", locationGroups),
        MarkField(5, "Maximum Value : 0x%04X ", UnknownProbeValue, UnknownMark),
        MarkField(6, "Minimum Value : 0x%04X ", UnknownProbeValue, UnknownMark),
        MarkField(7, "Resolution : 0x%04X ", UnknownProbeValue, UnknownMark),
        MarkField(8, "Tolerance : 0x%04X ", UnknownProbeValue, UnknownMark),
        MarkField(9, "Accuracy : 0x%04X ", UnknownProbeValue, UnknownMark),
        NumberField(10, "OEM-defined : 0x%08X\n"),
        nominalValue,
    };
}

constexpr auto Type26Fields =
    ProbeFields(ProbeLocationGroups, MarkField(11, "Nominal Value : 0x%04X ", UnknownProbeValue, UnknownMark));

constexpr auto Type28Fields = ProbeFields(TemperatureProbeLocationGroups, NumberField(11, "Nominal Value : 0x%04X\n"));

constexpr auto Type29Fields = ProbeFields(ProbeLocationGroups, NumberField(11, "Nominal Value : 0x%04X\n"));

// Type 27, Cooling Device.

constexpr const char* CoolingDeviceTypeLow[] = {
    "",         "Other",       "Unknown",          "Fan",       "Centrifugal Blower",
    "Chip Fan", "Cabinet Fan", "Power Supply Fan", "Heat Pipe", "Integrated Refrigeration",
};

constexpr TextRange CoolingDeviceTypeRanges[] = {
    {0x10, 0x10, "Active Cooling"},
    {0x11, 0x11, "Passive Cooling"},
};

constexpr TextTable CoolingDeviceTypeTexts{CoolingDeviceTypeLow, CoolingDeviceTypeRanges};

constexpr BitGroup CoolingDeviceGroups[] = {
    {" Status : %s\n", 5, 0x7, ProbeStatusTexts},
    {" Device Type : %s\n", 0, 0x1F, CoolingDeviceTypeTexts},
};

constexpr DecoderField Type27Fields[] = {
    NumberField(3, "Temperature Probe Handle : 0x%04X\n"),
    GroupsField(4, "Device Type and Status : 0x%02X\n", CoolingDeviceGroups),
    NumberField(5, "Cooling Unit Group : 0x%02X\n"),
    NumberField(6, "OEM-defined : 0x%08X\n"),
    NumberField(7, "Nominal Speed : 0x%04X\n"),
    StringField(8, "Description : %s\n"),
};

} // namespace

RyxStatus StructDecodeType23() {
    return InstanceLoopDecode(23, Type23Fields);
}

RyxStatus StructDecodeType24() {
    return SingleInstanceDecode(24, Type24Fields);
}

RyxStatus StructDecodeType25() {
    return InstanceLoopDecode(25, Type25Fields);
}

RyxStatus StructDecodeType26() {
    return InstanceLoopDecode(26, Type26Fields);
}

RyxStatus StructDecodeType27() {
    return InstanceLoopDecode(27, Type27Fields);
}

RyxStatus StructDecodeType28() {
    return InstanceLoopDecode(28, Type28Fields);
}

RyxStatus StructDecodeType29() {
    return InstanceLoopDecode(29, Type29Fields);
}
