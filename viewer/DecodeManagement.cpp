// Decoders of management devices, IPMI and management controller host interfaces (types 34 to 36, 38 and 42).
#include "viewer/Decoders.h"

#include <algorithm>
#include <cstdio>

namespace {

// Type 34, Management Device.

constexpr const char* ManagementDeviceTypeTexts[] = {
    "",
    "Other",
    "Unknown",
    "National Semiconductor LM75",
    "National Semiconductor LM78",
    "National Semiconductor LM79",
    "National Semiconductor LM80",
    "National Semiconductor LM81",
    "Analog Devices ADM9240",
    "Dallas SemiconductorDS1780",
    "Maxim 1617",
    "Geneyss GL518SM",
    "Winbond W83781D",
    "Holtek HT82H791",
};

constexpr const char* ManagementDeviceAddressTypeTexts[] = {"", "Other", "Unknown", "I/O Port", "Memory", "SM Bus"};

constexpr DecoderField Type34Fields[] = {
    StringField(3, "Description : %s\n"),
    TextField(4, "Type : 0x%02X - %s\n", ManagementDeviceTypeTexts),
    NumberField(5, "Address : 0x%08X\n"),
    TextField(6, "Address Type : 0x%02X - %s\n", ManagementDeviceAddressTypeTexts),
};

// Type 35, Management Device Component.

constexpr DecoderField Type35Fields[] = {
    StringField(3, "Description : %s\n"),
    NumberField(4, "Management Device Handle : 0x%04X (%d)\n"),
    NumberField(5, "Component Handle : 0x%04X (%d)\n"),
    NumberField(6, "Threshold Handle : 0x%04X (%d)\n"),
};

// Type 36, Management Device Threshold Data.

constexpr DecoderField Type36Fields[] = {
    NumberField(3, "Lower Threshold-on-critical : 0x%04X (%d)\n"),
    NumberField(4, "Upper Threshold-Non-critical : 0x%04X (%d)\n"),
    NumberField(5, "Lower Threshold-Critical : 0x%04X (%d)\n"),
    NumberField(6, "Upper Threshold-Critical : 0x%04X (%d)\n"),
    NumberField(7, "Lower Threshold-Non-recoverable : 0x%04X (%d)\n"),
    NumberField(8, "Upper Threshold-Non-recoverable : 0x%04X (%d)\n"),
};

// Type 38, IPMI Device Information.

constexpr const char* IpmiInterfaceTypeLow[] = {
    "Unknown",
    "KCS:Keyboard Controller Style",
    "SMIC:Server Management Interface Chip",
    "BT:Block Transfer",
};

constexpr TextRange IpmiInterfaceTypeNewer[] = {{0x04, "SSIF:SMBus System Interface"}};

constexpr TextTable IpmiInterfaceTypeTexts = TextTable(IpmiInterfaceTypeLow).With(IpmiInterfaceTypeNewer);

constexpr const char* IpmiRegisterSpacingTexts[] = {
    "On successive byte boundaries",
    "On 32-bit boundaries",
    "On 16-byte boundaries",
    "Reserved",
};

constexpr const char* IpmiLsBitTexts[] = {"Bit 0", "Bit 1"};

constexpr const char* IpmiInterruptInfoTexts[] = {"Not specified", "Specified"};

constexpr const char* IpmiInterruptPolarityTexts[] = {"Active low", "Active high"};

constexpr const char* IpmiInterruptTriggerTexts[] = {"edge", "level"};

constexpr BitGroup IpmiModifierGroups[] = {
    {" Register spacing : %s\n", 6, 0x3, IpmiRegisterSpacingTexts},
    {" LS-bit for addresses : %s\n", 4, 0x1, IpmiLsBitTexts},
    {" Interrupt Info : %s\n", 3, 0x1, IpmiInterruptInfoTexts},
    {" Interrupt Polarity : %s\n", 1, 0x1, IpmiInterruptPolarityTexts},
    {" Interrupt Trigger Mode : %s\n", 0, 0x1, IpmiInterruptTriggerTexts},
};

// The NV storage mark stands on a line of its own: the value's line is ended before it.
constexpr DecoderField Type38Fields[] = {
    TextField(3, "Interface Type : 0x%02X - %s\n", IpmiInterfaceTypeTexts),
    NumberField(4, "IPMI Specification Revision : 0x%02X\n"),
    NumberField(5, "I2C Slave Address : 0x%02X\n"),
    MarkField(6, "NV Storage Device Address : 0x%02X\n", 0xFF, "- No storage device exists\n"),
    NumberField(7, "Base Address : 0x%llX\n"),
    GroupsField(8, "Base Address Modifier / Interrupt Info : 0x%02X\n", IpmiModifierGroups),
    MarkField(9, "Interrupt Number : 0x%02X ", 0, "- Unspecified/Unsupported\n"),
};

// Type 42, Management Controller Host Interface.

constexpr std::uint8_t InterfaceTypeRow = 3;
constexpr std::uint8_t InterfaceTypeOem = 0xF0;
constexpr std::uint8_t NetworkInterface = 0x40;

constexpr const char* HostInterfaceTypeLow[] = {
    "Reserved",
    "Reserved",
    "KCS: Keyboard Controller Style",
    "8250 UART Register Compatible",
    "16450 UART Register Compatible",
    "16550/16550A UART Register Compatible",
    "16650/16650A UART Register Compatible",
    "16750/16750A UART Register Compatible",
    "16850/16850A UART Register Compatible",
};

constexpr TextRange HostInterfaceTypeRanges[] = {
    {0x09, InterfaceTypeOem - 1, "Reserved"},
    {InterfaceTypeOem, InterfaceTypeOem, "OEM"},
    {InterfaceTypeOem + 1, 0xFF, "Reserved"},
};

constexpr TextTable HostInterfaceTypeTexts{HostInterfaceTypeLow, HostInterfaceTypeRanges};

void VendorPrint(std::span<const std::uint8_t> bytes, ReportPart part = ReportPart::Entry) {
    if (part == ReportPart::Detail) {
        ReportDetail(" Vendor ID : 0x%02x%02x%02x%02x\n", bytes[0], bytes[1], bytes[2], bytes[3]);
        return;
    }
    ReportLine(ValueOf(bytes), " Vendor ID : 0x");
    for (const std::uint8_t byte : bytes) {
        ReportMore("%02x", byte);
    }
    ReportMore("\n");
}

// Only an OEM interface's data has a known beginning: the vendor's number.
FieldOutcome HostInterfaceDataShow(const DecoderField& field, const StructPlace& place) {
    FieldValue vendor;
    FieldValue type;
    if (!FieldRead(place, field.Row, &vendor) || !FieldRead(place, InterfaceTypeRow, &type)) {
        return FieldOutcome::Unreadable;
    }
    if (type.Number != InterfaceTypeOem) {
        return FieldOutcome::Skipped;
    }
    VendorPrint(vendor.Bytes);
    return FieldOutcome::Printed;
}

constexpr DecoderField Type42Fields[] = {
    TextLineField(InterfaceTypeRow, "Interface Type : 0x%02X ", HostInterfaceTypeTexts, "- %s\n"),
    OwnField(4, HostInterfaceDataShow),
};

constexpr TextRange HostInterfaceTypeNewer[] = {
    {0x09, "I2C/SMBUS"},
    {0x0A, "I3C"},
    {0x0B, "PCIe VDM"},
    {0x0C, "MMBI"},
    {0x0D, "PCC"},
    {0x0E, "UCIe"},
    {0x0F, "USB"},
    {0x10, NetworkInterface - 1, "Reserved"},
    {NetworkInterface, "Network Host Interface"},
    {NetworkInterface + 1, InterfaceTypeOem - 1, "Reserved"},
    {InterfaceTypeOem, "OEM"},
    {InterfaceTypeOem + 1, 0xFF, "Reserved"},
};

constexpr TextTable HostInterfaceTypeWholeTexts{HostInterfaceTypeLow, HostInterfaceTypeNewer};

constexpr std::uint8_t HostDataRow = 6;

// Where the structure says how long its data are, they begin one byte later.
FieldOutcome HostVendorShow(const DecoderField& field, const StructPlace& place) {
    FieldValue data;
    FieldValue type;
    if (!FieldRead(place, HostDataRow, &data)) {
        return HostInterfaceDataShow(field, place);
    }
    if (!FieldRead(place, InterfaceTypeRow, &type)) {
        return FieldOutcome::Unreadable;
    }
    if (type.Number != InterfaceTypeOem || data.Bytes.size() < 4) {
        return FieldOutcome::Skipped;
    }
    VendorPrint(data.Bytes.first(4));
    return FieldOutcome::Printed;
}

// The data of a network interface: offsets in these, which begin with the type of the device.

constexpr const char* NetworkDeviceLow[] = {
    UnrecognizedText,           UnrecognizedText,
    "USB Network Interface",    "PCI/PCIe Network Interface",
    "USB Network Interface v2", "PCI/PCIe Network Interface v2",
};
constexpr TextRange NetworkDeviceRanges[] = {{0x80, 0xFF, "OEM"}};
constexpr TextTable NetworkDeviceTexts{NetworkDeviceLow, NetworkDeviceRanges};

constexpr RecordLine NetworkDeviceLines[] = {{0, 1, " Device Type : 0x%02X - %s\n", "ns", NetworkDeviceTexts}};

constexpr const char* VendorFormat = " Vendor ID : 0x%04X\n";
constexpr const char* ProductFormat = " Product ID : 0x%04X\n";
constexpr const char* DeviceFormat = " Device ID : 0x%04X\n";
constexpr const char* SubsystemVendorFormat = " Subsystem Vendor ID : 0x%04X\n";
constexpr const char* SubsystemFormat = " Subsystem ID : 0x%04X\n";

constexpr RecordLine UsbLines[] = {{1, 2, VendorFormat}, {3, 2, ProductFormat}};
constexpr RecordLine PciLines[] = {
    {1, 2, VendorFormat}, {3, 2, DeviceFormat}, {5, 2, SubsystemVendorFormat}, {7, 2, SubsystemFormat}};
constexpr RecordLine Usb2Lines[] = {{2, 2, VendorFormat}, {4, 2, ProductFormat}};
constexpr RecordLine Pci2Lines[] = {
    {2, 2, VendorFormat}, {4, 2, DeviceFormat}, {6, 2, SubsystemVendorFormat}, {8, 2, SubsystemFormat}};
constexpr RecordLine Pci2PlaceLines[] = {
    {16, 2, " Segment Group Number : 0x%04X\n"},
    {18, 1, " Bus Number : 0x%02X\n"},
    {19, 1, " Device/Function Number : 0x%02X\n"},
};
constexpr RecordLine CharacteristicLines[] = {{0, 2, " Device Characteristics : 0x%04X\n"}};
constexpr RecordLine BootstrapLines[] = {{2, 2, " Credential Bootstrapping Handle : 0x%04X\n"}};

constexpr const char* NetworkCharacteristicNames[] = {"Credential bootstrapping via IPMI commands", nullptr};

// What is known of a device: its lines where its data have that many bytes, and where further parts are (0: it has none
// of them), the last of which it has with as many bytes as they reach to.
struct NetworkDevice {
    std::uint8_t Least;
    std::span<const RecordLine> Lines;
    std::uint8_t Serial;
    std::uint8_t MacAddress;
    std::span<const RecordLine> PlaceLines;
    std::uint8_t Characteristics;
};

// By device type, from 2 on.
constexpr NetworkDevice NetworkDevices[] = {
    {5, UsbLines, 0, 0, {}, 0},
    {9, PciLines, 0, 0, {}, 0},
    {13, Usb2Lines, 6, 7, {}, 13},
    {20, Pci2Lines, 0, 10, Pci2PlaceLines, 20},
};

void NetworkDevicePrint(const NetworkDevice& device, const StructPlace& place, std::span<const std::uint8_t> data) {
    if (data.size() < device.Least) {
        return;
    }
    RecordPrint(device.Lines, data, 0, ReportPart::Detail);
    FieldValue strings;
    if (device.Serial != 0 && StructStringsRead(place.Type, place.Instance, &strings) == RyxOk) {
        ReportText(" Serial Number : %s\n", StringOf(strings, data[device.Serial]), ReportPart::Detail);
    }
    if (device.MacAddress != 0) {
        const std::uint8_t* const mac = &data[device.MacAddress];
        ReportDetail(" MAC Address : %02X:%02X:%02X:%02X:%02X:%02X\n", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    }
    RecordPrint(device.PlaceLines, data, 0, ReportPart::Detail);
    if (device.Characteristics != 0 && data.size() >= device.Characteristics + 4U) {
        const std::span<const std::uint8_t> end = data.subspan(device.Characteristics, 4);
        RecordPrint(CharacteristicLines, end, 0, ReportPart::Detail);
        ReportBits(end[0], NetworkCharacteristicNames);
        RecordPrint(BootstrapLines, end, 0, ReportPart::Detail);
    }
}

FieldOutcome HostDataShow(const DecoderField& field, const StructPlace& place) {
    constexpr std::uint8_t oemDevice = 0x80;
    constexpr std::uint8_t firstDevice = 2;
    FieldValue data;
    FieldValue type;
    if (!FieldRead(place, field.Row, &data) || !FieldRead(place, InterfaceTypeRow, &type)) {
        return FieldOutcome::Unreadable;
    }
    if (data.Bytes.empty()) {
        return FieldOutcome::Printed;
    }
    ReportRows("Interface Type Specific Data :\n", data.Bytes);
    if (type.Number != NetworkInterface) {
        return FieldOutcome::Printed;
    }
    RecordPrint(NetworkDeviceLines, data.Bytes, 0, ReportPart::Detail);
    const std::uint8_t device = data.Bytes[0];
    if (device >= oemDevice && data.Bytes.size() >= 5) {
        VendorPrint(data.Bytes.subspan(1, 4), ReportPart::Detail);
    } else if (device >= firstDevice && device - firstDevice < static_cast<int>(std::size(NetworkDevices))) {
        NetworkDevicePrint(NetworkDevices[device - firstDevice], place, data.Bytes);
    }
    return FieldOutcome::Printed;
}

// Protocol records.

constexpr std::uint8_t RedfishOverIp = 0x04;

constexpr const char* ProtocolLow[] = {
    "Reserved",
    "Reserved",
    "IPMI: Intelligent Platform Management Interface",
    "MCTP: Management Component Transport Protocol",
    "Redfish over IP",
};
constexpr TextRange ProtocolRanges[] = {{0x05, 0xEF, "Reserved"}, {0xF0, "OEM"}, {0xF1, 0xFF, "Reserved"}};
constexpr TextTable ProtocolTexts{ProtocolLow, ProtocolRanges};

constexpr RecordLine ProtocolLines[] = {
    {0, 1, "%02d.  Protocol Type : 0x%02X - %s\n", "dns", ProtocolTexts},
    {1, 1, "     Protocol Type Specific Data Length : 0x%02X (%d)\n", "nn"},
};

constexpr const char* AddressFormatTexts[] = {"Unknown", "IPv4", "IPv6"};
constexpr const char* AssignmentTexts[] = {"Unknown", "Static", "DHCP", "AutoConfigure", "HostSelected"};

constexpr RecordLine HostAddressLines[] = {
    {0, 1, "     Host IP Assignment Type : 0x%02X - %s\n", "ns", AssignmentTexts},
    {1, 1, "     Host IP Address Format : 0x%02X - %s\n", "ns", AddressFormatTexts},
};
constexpr RecordLine ServiceAddressLines[] = {
    {0, 1, "     Redfish Service IP Discovery Type : 0x%02X - %s\n", "ns", AssignmentTexts},
    {1, 1, "     Redfish Service IP Address Format : 0x%02X - %s\n", "ns", AddressFormatTexts},
};
constexpr RecordLine ServiceLines[] = {
    {0, 2, "     Redfish Service IP Port : 0x%04X (%d)\n", "nn"},
    {2, 4, "     Redfish Service VLAN ID : 0x%08X (%u)\n", "nn"},
    {6, 1, "     Redfish Service Hostname Length : 0x%02X (%d)\n", "nn"},
};

// The 16 bytes of an address, of which the first four are one of IPv4.
void AddressPrint(const char* format, std::uint8_t kind, const std::uint8_t* bytes) {
    char text[48];
    if (kind == 1) {
        std::snprintf(text, sizeof text, "%d.%d.%d.%d", bytes[0], bytes[1], bytes[2], bytes[3]);
    } else {
        const char* const separated = kind == 2 ? "%02x%02x:" : "%02X %02X ";
        std::size_t end = 0;
        for (std::size_t at = 0; at < 16; at += 2) {
            end += static_cast<std::size_t>(
                std::snprintf(text + end, sizeof text - end, separated, bytes[at], bytes[at + 1]));
        }
        text[kind == 2 ? end - 1 : std::min(end, sizeof text) - 1] = '\0';
    }
    ReportLine({{bytes, 16}}, format, text);
}

void RedfishPrint(std::span<const std::uint8_t> data) {
    constexpr std::size_t hostNameAt = 91;
    ReportBytes("     Service UUID : ", {data.first(16)});
    ReportUuid();
    RecordPrint(HostAddressLines, data.subspan(16));
    AddressPrint("     Host IP Address : %s\n", data[17], &data[18]);
    AddressPrint("     Host IP Mask : %s\n", data[17], &data[34]);
    RecordPrint(ServiceAddressLines, data.subspan(50));
    AddressPrint("     Redfish Service IP Address : %s\n", data[51], &data[52]);
    AddressPrint("     Redfish Service IP Mask : %s\n", data[51], &data[68]);
    RecordPrint(ServiceLines, data.subspan(84));
    char name[256] = "";
    const std::size_t length = std::min<std::size_t>(data[hostNameAt - 1], data.size() - hostNameAt);
    const std::size_t size = TextOf(data.subspan(hostNameAt, length)).copy(name, sizeof name - 1);
    ReportText("     Redfish Service Hostname : %s\n", {name, size});
}

// The library gives the list only where all records are whole.
FieldOutcome HostRecordsShow(const DecoderField& field, const StructPlace& place) {
    constexpr std::size_t redfishLeast = 91;
    FieldValue value;
    if (!FieldRead(place, field.Row, &value)) {
        return FieldOutcome::Unreadable;
    }
    std::span<const std::uint8_t> list = value.Bytes;
    if (!list.empty()) {
        ReportItems("Protocol Records :\n");
    }
    for (unsigned number = 1; list.size() >= 2 && list.size() - 2 >= list[1]; ++number) {
        const std::span<const std::uint8_t> data = list.subspan(2, list[1]);
        ReportItem();
        RecordPrint(ProtocolLines, list, number);
        if (list[0] == RedfishOverIp && data.size() >= redfishLeast) {
            RedfishPrint(data);
        } else if (!data.empty()) {
            ReportRows("     Protocol Type Specific Data :\n", data, "       %s\n");
        }
        list = list.subspan(2 + data.size());
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type42Whole[] = {
    TextLineField(InterfaceTypeRow, "Interface Type : 0x%02X ", HostInterfaceTypeWholeTexts, "- %s\n"),
    OwnField(4, HostVendorShow),
    NumberField(5, "Interface Type Specific Data Length : 0x%02X (%d)\n"),
    OwnField(HostDataRow, HostDataShow),
    NumberField(7, "Number of Protocol Records : 0x%02X (%d)\n"),
    OwnField(8, HostRecordsShow),
};

} // namespace

constinit const StructDecoder StructDecodeType34(34, "Manage Device", DecoderForm::Loop, Type34Fields);
constinit const StructDecoder StructDecodeType35(35, "Manage Device Component", DecoderForm::Loop, Type35Fields);
constinit const StructDecoder StructDecodeType36(36, "Manage Device Threshold Data", DecoderForm::Loop, Type36Fields);
constinit const StructDecoder StructDecodeType38(38, "IPMI Device Info", DecoderForm::Single, Type38Fields);
constinit const StructDecoder StructDecodeType42(42, "Manage Controller Host Interface", DecoderForm::Loop,
                                                 Type42Fields, Type42Whole);
