// Decoders of the probes and cooling devices (types 26 to 29).
#include "viewer/Decoders.h"

#include <array>

namespace {

// Types 26, 28 and 29, Voltage Probe, Temperature Probe and Electrical Current Probe.

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
consteval std::array<DecoderField, 9> ProbeFields(std::span<const BitGroup> locationGroups,
                                                  const DecoderField& nominalValue) {
    return {
        StringField(3, "Description : %s\n"),
        GroupsField(4, "Location and Status : 0x%02X\n", locationGroups),
        MarkField(5, "Maximum Value : 0x%04X ", UnknownProbeValue),
        MarkField(6, "Minimum Value : 0x%04X ", UnknownProbeValue),
        MarkField(7, "Resolution : 0x%04X ", UnknownProbeValue),
        MarkField(8, "Tolerance : 0x%04X ", UnknownProbeValue),
        MarkField(9, "Accuracy : 0x%04X ", UnknownProbeValue),
        NumberField(10, "OEM-defined : 0x%08X\n"),
        nominalValue,
    };
}

constexpr auto Type26Fields =
    ProbeFields(ProbeLocationGroups, MarkField(11, "Nominal Value : 0x%04X ", UnknownProbeValue));
constexpr auto Type28Fields = ProbeFields(TemperatureProbeLocationGroups, NumberField(11, "Nominal Value : 0x%04X\n"));
constexpr auto Type29Fields = ProbeFields(ProbeLocationGroups, NumberField(11, "Nominal Value : 0x%04X\n"));

// Type 27, Cooling Device.

constexpr const char* CoolingDeviceTypeLow[] = {
    "",         "Other",       "Unknown",          "Fan",       "Centrifugal Blower",
    "Chip Fan", "Cabinet Fan", "Power Supply Fan", "Heat Pipe", "Integrated Refrigeration",
};

constexpr TextRange CoolingDeviceTypeRanges[] = {{0x10, 0x10, "Active Cooling"}, {0x11, 0x11, "Passive Cooling"}};

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

constinit const StructDecoder StructDecodeType26(26, "Voltage Probe", DecoderForm::Loop, Type26Fields);
constinit const StructDecoder StructDecodeType27(27, "Cooling Device", DecoderForm::Loop, Type27Fields);
constinit const StructDecoder StructDecodeType28(28, "Temperature Probe", DecoderForm::Loop, Type28Fields);
constinit const StructDecoder StructDecodeType29(29, "Electric Current Probe", DecoderForm::Loop, Type29Fields, {},
                                                 "(Type ");
