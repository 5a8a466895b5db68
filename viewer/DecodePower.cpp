// Decoders of portable batteries, power controls and power supplies (types 22, 25 and 39).
#include "viewer/Decoders.h"

namespace {

// Type 22, Portable Battery.

constexpr const char* BatteryChemistryTexts[] = {
    "",         "Other",           "Unknown", "Lead Acid", "Nickel Cadmium", "Nickel metal hydride", "Lithium-ion",
    "Zinc air", "Lithium Polymer",
};

constexpr DecoderField Type22Fields[] = {
    StringField(3, "Location : %s\n"),
    StringField(4, "Manufacturer : %s\n"),
    StringField(5, "Manufacture Date : %s\n"),
    StringField(6, "Serial Number : %s\n"),
    StringField(7, "Device Name : %s\n"),
    TextField(8, "Device Chemistry : 0x%02X - %s\n", BatteryChemistryTexts),
    NumberField(9, "Design Capacity : 0x%04X (%d)\n"),
    NumberField(10, "Design Voltage : 0x%04X (%d)\n"),
    StringField(11, "SBDS Version Number : %s\n"),
    NumberField(12, "Maximum Error in Battery Data : 0x%02X (%d)\n"),
    NumberField(13, "SBDS Serial Number : 0x%04X (%d)\n"),
    NumberField(14, "SBDS Manufacture Date : 0x%04X (%d)\n"),
    StringField(15, "SBDS Device Chemistry : %s\n"),
    NumberField(16, "Design Capacity Multiplier : 0x%02X (%d)\n"),
    NumberField(17, "OEM-specific : 0x%08X (%d)\n"),
};

// Type 25, System Power Controls. The values are BCD as stored, and the decimals are not converted from it.

constexpr DecoderField Type25Fields[] = {
    NumberField(3, "Next Scheduled Power-on Month : 0x%02X (%02d)\n"),
    NumberField(4, "Next Scheduled Power-on Day-of month : 0x%02X (%02d)\n"),
    NumberField(5, "Next Scheduled Power-on Hour : 0x%02X (%02d)\n"),
    NumberField(6, "Next Scheduled Power-on Minute : 0x%02X (%02d)\n"),
    NumberField(7, "Next Scheduled Power-on Second : 0x%02X (%02d)\n"),
};

// Type 39, System Power Supply. The location string (row 4) has no line but of the whole table.

constexpr const char* PowerSupplyTypeTexts[] = {
    "", "Other", "Unknown", "Linear", "Switching", "Battery", "UPS", "Converter", "Regulator",
};

constexpr const char* PowerSupplyStatusTexts[] = {
    "", "Other", "Unknown", "OK", "Non-critical", "Critical,power supply failed,taken off-line",
};

constexpr const char* PowerSupplyRangeSwitchingTexts[] = {
    "", "Other", "Unknown", "Manual", "Auto-switch", "Wide range", "Not applicable",
};

constexpr const char* PowerSupplyFlagTexts[] = {"hot Replaceable", "present", "unplugged from the wall"};

// By the three flags together: the text of the highest one that is set.
constexpr const char* PowerSupplyFlagChoices[] = {
    "",
    PowerSupplyFlagTexts[0],
    PowerSupplyFlagTexts[1],
    PowerSupplyFlagTexts[1],
    PowerSupplyFlagTexts[2],
    PowerSupplyFlagTexts[2],
    PowerSupplyFlagTexts[2],
    PowerSupplyFlagTexts[2],
};

constexpr BitGroup PowerSupplyGroups[] = {
    {" Type : %s\n", 10, 0xF, PowerSupplyTypeTexts},
    {" Status : %s\n", 7, 0x7, PowerSupplyStatusTexts},
    {" Range Switching : %s\n", 3, 0xF, PowerSupplyRangeSwitchingTexts},
    {" Power supply : %s\n", 0, 0x7, PowerSupplyFlagChoices},
};

constexpr DecoderField Type39Fields[] = {
    NumberField(3, "Power Unit Group : 0x%02X (%02d)\n"),
    StringField(5, "Device Name : %s\n"),
    StringField(6, "Manufacturer : %s\n"),
    StringField(7, "Serial Number : %s\n"),
    StringField(8, "Asset Tag Number : %s\n"),
    StringField(9, "Model Part Number : %s\n"),
    StringField(10, "Revision Level : %s\n"),
    MarkField(11, "Max Power Capacity : 0x%04X ", 0x8000),
    GroupsField(12, "Power Supply Characteristics : 0x%04X\n", PowerSupplyGroups),
    MarkField(13, "Input Voltage Probe Handle : 0x%04X ", 0xFFFF, "- No provided\n"),
    MarkField(14, "Cooling Device Handle : 0x%04X ", 0xFFFF, "- No provided\n"),
    MarkField(15, "Input Current Probe Handle : 0x%04X ", 0xFFFF, "- No provided\n"),
};

constexpr DecoderField Type39Whole[] = {StringField(16, "Location : %s\n")};

} // namespace

constinit const StructDecoder StructDecodeType22(22, "Portable Battery", DecoderForm::Loop, Type22Fields);
constinit const StructDecoder StructDecodeType25(25, "SYS Power Control", DecoderForm::Loop, Type25Fields);
constinit const StructDecoder StructDecodeType39(39, "SYS Power Supply", DecoderForm::Loop, Type39Fields, Type39Whole);
