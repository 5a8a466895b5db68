// Decoders of 32-bit memory errors (type 18), of the addresses that memory arrays and devices are mapped to (types 19
// and 20), of built-in pointing devices (type 21) and of portable batteries (type 22).
#include "Lib/API/RyxPrint.h"
#include "viewer/DecoderFrame.h"
#include "viewer/Decoders.h"
#include "viewer/MemoryErrorTexts.h"

#include <cstdint>

namespace {

// Type 18, 32-Bit Memory Error Information.

constexpr const char* UnknownMark = "- Unknown\n";
constexpr std::uint64_t UnknownSyndrome = 0;
constexpr std::uint64_t UnknownAddress = 0x80000000;

constexpr DecoderField Type18Fields[] = {
    TextField(3, "Error Type : 0x%02X - %s\n", MemoryErrorTypeTexts),
    TextField(4, "Error Granularity : 0x%02X - %s \n", MemoryErrorGranularityTexts),
    TextField(5, "Error Operation : 0x%02X - %s \n", MemoryErrorOperationTexts),
    MarkField(6, "Vendor Syndrome : 0x%08X ", UnknownSyndrome, UnknownMark),
    MarkField(7, "Memory Array Error Address : 0x%08X ", UnknownAddress, UnknownMark),
    MarkField(8, "Device Error Address : 0x%08X ", UnknownAddress, UnknownMark),
    MarkField(9, "Error Resolution : 0x%08X ", UnknownAddress, UnknownMark),
};

// Types 19 and 20, Memory Array Mapped Address and Memory Device Mapped Address.

// An address in KB, followed on its line by that size in KB, MB and GB unless it is 0.
FieldOutcome MappedAddressShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t number = 0;
    if (!FieldNumber(place, field.Row, &number)) {
        return FieldOutcome::Unreadable;
    }
    const auto kilobytes = static_cast<std::uint32_t>(number);
    RyxPrintf(field.Format, kilobytes);
    if (kilobytes != 0) {
        RyxPrintf("- %dKB, %dMB, %dGB\n", static_cast<std::int32_t>(kilobytes),
                  static_cast<std::int32_t>(kilobytes >> 10), static_cast<std::int32_t>(kilobytes >> 20));
    } else {
        RyxPrintf("\n");
    }
    return FieldOutcome::Printed;
}

constexpr DecoderField Type19Fields[] = {
    OwnField(3, MappedAddressShow, "Starting Address : 0x%08X "),
    OwnField(4, MappedAddressShow, "Ending Address : 0x%08X "),
    NumberField(5, "Memory Array Handle : 0x%04X (%d)\n"),
    NumberField(6, "Partition Width : 0x%02X (%d)\n"),
    NumberField(7, "Extended Starting Address : 0x%llX\n"),
    NumberField(8, "Extended Ending Address : 0x%llX\n"),
};

constexpr DecoderField Type20Fields[] = {
    OwnField(3, MappedAddressShow, "Starting Address : 0x%08X "),
    OwnField(4, MappedAddressShow, "Ending Address : 0x%08X "),
    NumberField(5, "Memory Device Handle : 0x%04X (%d)\n"),
    NumberField(6, "Memory Array Mapped Address Handle : 0x%04X (%d)\n"),
    NumberField(7, "Partition Row Position : 0x%02X (%d)\n"),
    NumberField(8, "Interleave Position : 0x%02X (%d)\n"),
    NumberField(9, "Interleaved Data Depth : 0x%02X (%d)\n"),
    NumberField(10, "Extended Starting Address : 0x%llX\n"),
    NumberField(11, "Extended Ending Address : 0x%llX\n"),
};

// Type 21, Built-in Pointing Device.

constexpr const char* PointingDeviceTypeTexts[] = {
    "",          "Other",        "Unknown",        "Mouse", "Track Ball", "Track Point", "Glide Point",
    "Touch Pad", "Touch Screen", "Optical Sensor",
};

constexpr const char* PointingInterfaceLow[] = {
    "", "Other", "Unknown", "Serial", "PS/2", "Infrared", "HP-HIL", "Bus mouse", "ADB(Apple Destkop Bus)",
};

constexpr const char* PointingInterfaceHigh[] = {"Bus mouse DB-9", "Bus mouse micro-DIN", "USB"};

constexpr TextTable PointingInterfaceTexts{PointingInterfaceLow, PointingInterfaceHigh};

constexpr DecoderField Type21Fields[] = {
    TextField(3, "Type : 0x%02X - %s\n", PointingDeviceTypeTexts),
    TextLineField(4, "Interface : 0x%02X - ", PointingInterfaceTexts),
    NumberField(5, "Number of Buttons : 0x%02X (%d)\n"),
};

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

} // namespace

RyxStatus StructDecodeType18() {
    return InstanceLoopDecode(18, Type18Fields);
}

RyxStatus StructDecodeType19() {
    return InstanceLoopDecode(19, Type19Fields);
}

RyxStatus StructDecodeType20() {
    return InstanceLoopDecode(20, Type20Fields);
}

RyxStatus StructDecodeType21() {
    return InstanceLoopDecode(21, Type21Fields);
}

RyxStatus StructDecodeType22() {
    return InstanceLoopDecode(22, Type22Fields);
}
