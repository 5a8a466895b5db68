// Decoders of port, slot, on-board device and pointing device structures (types 8 to 10 and 21).
#include "viewer/Decoders.h"

namespace {

// Type 8, Port Connector Information.

// The code for a connector or port that the standard does not list.
constexpr std::uint32_t OtherPort = 0xFF;
constexpr TextRange OtherPortRanges[] = {{OtherPort, "Other"}};

constexpr const char* ConnectorTypeLow[] = {
    "None",
    "Centronics",
    "Mini Centronics",
    "Proprietary",
    "DB-25 pin male",
    "DB-25 pin female",
    "DB-15 pin male",
    "DB-15 pin female",
    "DB-9 pin male",
    "DB-9 pin female",
    "RJ-11",
    "RJ-45",
    "50 Pin MiniSCSI",
    "Mini-DIN",
    "Micro-DIN",
    "PS/2",
    "Infrared",
    "HP-HIL",
    "Access Bus",
    "SSA SCSI",
    "Circular DIN-8 male",
    "Circular DIN-8 female",
    "On Board IDE",
    "On Board Floppy",
    "9 Pin Dual Inline (pin 10 cut)",
    "25 Pin Dual Inline (pin 26 cut)",
    "50 Pin Dual Inline",
    "68 Pin Dual Inline",
    "On Board Sound Input from CD_ROM",
    "Mini-Centronics Type-14",
    "Mini-Centronics Type-26",
    "Mini-jack (headphones)",
    "BNC",
    "1394",
    "SAS/SATA Plug Receptacle",
};

constexpr const char* ConnectorTypeHigh[] = {"PC-98", "PC-98Hireso", "PC-H98", "PC-98Note", "PC-98Full"};

constexpr TextRange ConnectorTypeNewer[] = {{0x23, "USB Type-C Receptacle"}};

constexpr TextTable ConnectorTypeTexts =
    TextTable(ConnectorTypeLow, ConnectorTypeHigh, OtherPortRanges).With(ConnectorTypeNewer);

constexpr const char* PortTypeLow[] = {
    "None",
    "Parallel Port XT/AT Compatible",
    "Parallel Port PS/2",
    "Parallel Port ECP",
    "Parallel Port EPP",
    "Parallel Port ECP/EPP",
    "Serial Port XT/AT Compatible",
    "Serial Port 16450 Compatible",
    "Serial Port 16550 Compatible",
    "Serial Port 16550A Compatible",
    "SCSI Port",
    "MIDI Port",
    "Joy Stick Port",
    "Keyboard Port",
    "Mouse Port",
    "SSA SCSI",
    "USB",
    "FireWire (IEEE P1394)",
    "PCMCIA Type I2",
    "PCMCIA Type II",
    "PCMCIA Type III",
    "Cardbus",
    "Access Bus Port",
    "SCSI II",
    "SCSI Wide",
    "PC-98",
    "PC-98-Hireso",
    "PC-H98",
    "Video Port",
    "Audio port",
    "Modem Port",
    "Network Port",
    "SATA",
    "SAS",
};

constexpr const char* PortTypeHigh[] = {"8251 Compatible", "8251 FIFO Compatible"};

constexpr TextRange PortTypeNewer[] = {{0x22, "MFDP (Multi-Function Display Port)"}, {0x23, "Thunderbolt"}};

constexpr TextTable PortTypeTexts = TextTable(PortTypeLow, PortTypeHigh, OtherPortRanges).With(PortTypeNewer);

// A code and, in a print of its own, its text. The format of code FFh holds the text, which the pager counts.
void PortCodePrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    TextReport(value.Number == OtherPort ? "Other\n" : "%s\n", TextFind(field.Texts, value.Number));
}

constexpr DecoderField Type8Fields[] = {
    StringField(3, "Internal Reference Designator : %s\n"),
    OwnField(4, PortCodePrint, "Internal Type : 0x%02X - ", "n", ConnectorTypeTexts),
    StringField(5, "External Reference Designator : %s\n"),
    OwnField(6, PortCodePrint, "External Type : 0x%02X - ", "n", ConnectorTypeTexts),
    OwnField(7, PortCodePrint, "Port Type : 0x%02X - ", "n", PortTypeTexts),
};

// Type 9, System Slots.

constexpr const char* SlotTypeLow[] = {
    "",
    "Other",
    "Unknown",
    "ISA",
    "MCA",
    "EISA",
    "PCI",
    "PCMCIA",
    "VL-VESA",
    "Proprietary",
    "Processor Card Slot",
    "Proprietary Memory Card Slot",
    "I/O Riser Card Slot",
    "NuBus",
    "PCI-66MHz Capable",
    "AGP",
    "AGP 2X",
    "AGP 4X",
    "PCI-X",
    "AGP 8X",
};

constexpr const char* SlotTypeHigh[] = {
    "PC-98/C20",
    "PC-98/C24",
    "PC-98/E",
    "PC-98/Local Bus",
    "PC-98/Card",
    "PCI Express",
    "PCI Express x1",
    "PCI Express x2",
    "PCI Express x4",
    "PCI Express x8",
    "PCI Express x16",
    "PCI Express Gen 2",
    "PCI Express Gen 2 x1",
    "PCI Express Gen 2 x2",
    "PCI Express Gen 2 x4",
    "PCI Express Gen 2 x8",
    "PCI Express Gen 2 x16",
    "PCI Express Gen 3",
    "PCI Express Gen 3 x1",
    "PCI Express Gen 3 x2",
    "PCI Express Gen 3 x4",
    "PCI Express Gen 3 x8",
    "PCI Express Gen 3 x16",
};

constexpr TextRange SlotTypeNewer[] = {
    {0x14, "M.2 Socket 1-DP"},
    {0x15, "M.2 Socket 1-SD"},
    {0x16, "M.2 Socket 2"},
    {0x17, "M.2 Socket 3"},
    {0x18, "MXM Type I"},
    {0x19, "MXM Type II"},
    {0x1A, "MXM Type III (standard connector)"},
    {0x1B, "MXM Type III (HE connector)"},
    {0x1C, "MXM Type IV"},
    {0x1D, "MXM 3.0 Type A"},
    {0x1E, "MXM 3.0 Type B"},
    {0x1F, "PCI Express Gen 2 SFF-8639 (U.2)"},
    {0x20, "PCI Express Gen 3 SFF-8639 (U.2)"},
    {0x21, "PCI Express Mini 52-pin with bottom-side keep-outs"},
    {0x22, "PCI Express Mini 52-pin without bottom-side keep-outs"},
    {0x23, "PCI Express Mini 76-pin"},
    {0x24, "PCI Express Gen 4 SFF-8639 (U.2)"},
    {0x25, "PCI Express Gen 5 SFF-8639 (U.2)"},
    {0x26, "OCP NIC 3.0 Small Form Factor (SFF)"},
    {0x27, "OCP NIC 3.0 Large Form Factor (LFF)"},
    {0x28, "OCP NIC Prior to 3.0"},
    {0x30, "CXL Flexbus 1.0"},
    {0xB8, "PCI Express Gen 4"},
    {0xB9, "PCI Express Gen 4 x1"},
    {0xBA, "PCI Express Gen 4 x2"},
    {0xBB, "PCI Express Gen 4 x4"},
    {0xBC, "PCI Express Gen 4 x8"},
    {0xBD, "PCI Express Gen 4 x16"},
    {0xBE, "PCI Express Gen 5"},
    {0xBF, "PCI Express Gen 5 x1"},
    {0xC0, "PCI Express Gen 5 x2"},
    {0xC1, "PCI Express Gen 5 x4"},
    {0xC2, "PCI Express Gen 5 x8"},
    {0xC3, "PCI Express Gen 5 x16"},
    {0xC4, "PCI Express Gen 6 and Beyond"},
    {0xC5, "EDSFF E1"},
    {0xC6, "EDSFF E3"},
};

constexpr TextTable SlotTypeTexts = TextTable(SlotTypeLow, SlotTypeHigh).With(SlotTypeNewer);

constexpr const char* SlotBusWidthTexts[] = {"",         "Other",    "Unknown",    "8 bit",      "16 bit",
                                             "32 bit",   "64 bit",   "128 bit",    "1x or x1",   "2x or x2",
                                             "4x or x4", "8x or x8", "12x or x12", "16x or x16", "32x or x32"};

constexpr const char* SlotUsageLow[] = {"", "Other", "Unknown", "Available", "In use"};

constexpr TextRange SlotUsageNewer[] = {{0x05, "Unavailable"}};

constexpr TextTable SlotUsageTexts = TextTable(SlotUsageLow).With(SlotUsageNewer);

constexpr const char* SlotLengthLow[] = {"", "Other", "Unknown", "Short Length", "Long Length"};

constexpr TextRange SlotLengthNewer[] = {{0x05, "2.5\" drive form factor"}, {0x06, "3.5\" drive form factor"}};

constexpr TextTable SlotLengthTexts = TextTable(SlotLengthLow).With(SlotLengthNewer);

constexpr const char* SlotCharacteristic1Names[] = {
    "Characteristics Unknown",
    "Provides 5.0 Vlots",
    "Provides 3.3 Vlots",
    "Slot opening is shared another",
    "Supports PC Card-16",
    "Supports CardBus",
    "Supports Zoom Video",
    "Supports Modem Ring Resume",
    nullptr,
};

constexpr const char* SlotCharacteristic2Names[] = {"PCI Power Management Enable", "Slot Support hot-plug devices",
                                                    "PCI slot supports SMBus signal", nullptr};

constexpr const char* DeviceFunctionNames[] = {
    "Function number bit 0", "Function number bit 1", "Function number bit 2",
    "Device number bit 0",   "Device number bit 1",   "Device number bit 2",
    "Device number bit 3",   "Device number bit 4",   nullptr,
};

constexpr DecoderField Type9Fields[] = {
    StringField(3, "Slot Designation : %s\n"),
    TextLineField(4, "Slot Type : 0x%02X - ", SlotTypeTexts),
    TextField(5, "Slot Data Bus Width : 0x%02X - %s\n", SlotBusWidthTexts),
    TextField(6, "Current Usage : 0x%02X - %s\n", SlotUsageTexts),
    TextField(7, "Slot Length : 0x%02X - %s\n", SlotLengthTexts),
    NumberField(8, "Slot ID : 0x%04X (%d)\n"),
    BitsField(9, "Slot Characteristics1 : 0x%02X\n", SlotCharacteristic1Names),
    BitsField(10, "Slot Characteristics2 : 0x%02X\n", SlotCharacteristic2Names),
    NumberField(11, "Segment Group Number : 0x%04X\n"),
    NumberField(12, "Bus Number : 0x%02X\n"),
    BitsField(13, "Device/Function Number : 0x%02X\n", DeviceFunctionNames),
};

constexpr const char* SlotCharacteristic2NewerNames[] = {
    "PCIe slot supports bifurcation", "Slot supports async/surprise removal", "Flexbus slot, CXL 1.0 capable",
    "Flexbus slot, CXL 2.0 capable",  "Flexbus slot, CXL 3.0 capable",        nullptr,
};

constexpr auto SlotCharacteristic2WholeNames = NamesLonger(SlotCharacteristic2Names, SlotCharacteristic2NewerNames);

constexpr const char* SlotHeightTexts[] = {"Not applicable", "Other", "Unknown", "Full height", "Low-profile"};

constexpr RecordLine PeerGroupLines[] = {
    {0, 2, "%02d.  Segment Group Number : 0x%04X\n", "dn"},
    {2, 1, "     Bus Number : 0x%02X\n"},
    {3, 1, "     Device/Function Number : 0x%02X\n"},
    {4, 1, "     Data Bus Width : 0x%02X - %s\n", "ns", SlotBusWidthTexts},
};
constexpr RecordLayout PeerGroups = {.Size = 5, .Lines = PeerGroupLines};

void SlotPitchPrint(const DecoderField& field, const FieldValue& value) {
    const auto hundredths = static_cast<unsigned>(value.Number);
    ReportLine(value, field.Format, hundredths, hundredths / 100, hundredths % 100);
}

constexpr NumberCase SlotPitchCases[] = {{0, "Slot Pitch : 0x%04X - %s\n", "Unknown"}};

constexpr DecoderField Type9Whole[] = {
    BitsField(10, "Slot Characteristics2 : 0x%02X\n", SlotCharacteristic2WholeNames.data()),
    TextField(14, "Data Bus Width (Base) : 0x%02X - %s\n", SlotBusWidthTexts),
    NumberField(15, "Peer Grouping Count : 0x%02X (%d)\n"),
    RecordsField(16, &PeerGroups, "Peer Groups :\n"),
    NumberField(17, "Slot Information : 0x%02X (%d)\n"),
    TextField(18, "Slot Physical Width : 0x%02X - %s\n", SlotBusWidthTexts),
    OwnField(19, SlotPitchPrint, "Slot Pitch : 0x%04X (%d.%02d mm)\n", "ndd").With(SlotPitchCases),
    TextField(20, "Slot Height : 0x%02X - %s\n", SlotHeightTexts),
};

// Type 10, On Board Devices Information.

constexpr const char* OnboardDeviceTypeTexts[] = {
    "",          "Other", "Unknown",        "Video",          "SCSI",         "Ethernet",
    "TokenRing", "Sound", "PATAController", "SATAController", "SASController"};

constexpr const char* OnboardDeviceStatusTexts[] = {"Device Disabled", "Device Enabled"};

constexpr BitGroup OnboardDeviceGroups[] = {
    {" Status : %s\n", 7, 0x01, OnboardDeviceStatusTexts},
    {" Type : %s\n", 0, 0x7F, OnboardDeviceTypeTexts},
};

constexpr DecoderField Type10Fields[] = {
    GroupsField(3, "Device Type : 0x%02X\n", OnboardDeviceGroups),
    StringField(4, "Description String : %s\n"),
};

constexpr RecordLayout FurtherDevices = {.Size = 2, .Fields = Type10Fields, .FieldCount = 2};

constexpr DecoderField Type10Whole[] = {RecordsField(5, &FurtherDevices, "", "Further Devices")};

// Type 21, Built-in Pointing Device.

constexpr const char* PointingDeviceTypeTexts[] = {
    "",          "Other",        "Unknown",        "Mouse", "Track Ball", "Track Point", "Glide Point",
    "Touch Pad", "Touch Screen", "Optical Sensor",
};

constexpr const char* PointingInterfaceLow[] = {
    "", "Other", "Unknown", "Serial", "PS/2", "Infrared", "HP-HIL", "Bus mouse", "ADB(Apple Destkop Bus)",
};

constexpr const char* PointingInterfaceHigh[] = {"Bus mouse DB-9", "Bus mouse micro-DIN", "USB"};

constexpr TextRange PointingInterfaceNewer[] = {{0xA3, "I2C"}, {0xA4, "SPI"}};

constexpr TextTable PointingInterfaceTexts =
    TextTable(PointingInterfaceLow, PointingInterfaceHigh).With(PointingInterfaceNewer);

constexpr DecoderField Type21Fields[] = {
    TextField(3, "Type : 0x%02X - %s\n", PointingDeviceTypeTexts),
    TextLineField(4, "Interface : 0x%02X - ", PointingInterfaceTexts),
    NumberField(5, "Number of Buttons : 0x%02X (%d)\n"),
};

} // namespace

constinit const StructDecoder StructDecodeType8(8, "Port Connector", DecoderForm::Loop, Type8Fields);
constinit const StructDecoder StructDecodeType9(9, "System Slots", DecoderForm::Loop, Type9Fields, Type9Whole);
constinit const StructDecoder StructDecodeType10(10, "On Board Devices", DecoderForm::Loop, Type10Fields, Type10Whole);
constinit const StructDecoder StructDecodeType21(21, "Built-in Pointing", DecoderForm::Loop, Type21Fields);
