// The field table: where every field of every known structure type lies. The library reads by it, and tools are checked
// against it when they are compiled.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

// Width codes. The variable kinds take their length, and some their position, from a rule of their row; without one a
// VariableOne field has one byte and the others none.
enum class DmiKind : std::uint8_t {
    Byte1 = 0,
    VariableOne = 1,
    Byte6 = 2,
    Byte15 = 3,
    Byte16 = 4,
    Byte2 = 5,
    Variable = 6,
    Byte4 = 7,
    Byte8 = 8,
    VariableLong = 9,
};

// What a value is. Only String changes how a field is read.
enum class DmiClass : std::uint8_t { Plain = 0, String = 1, Enumerated = 2, BitField = 3, ReservedArea = 4 };

// What computes where a value lies, for rows that other bytes of the structure or a length of their own decide on.
enum class DmiRule : std::uint8_t {
    None,
    TwoBytes,
    SixBytes,
    HandleList,          // words, as many as byte 14 says
    BehindHandleList,    // the byte behind such a list
    ContainedElements,   // byte 19 x byte 20
    ChassisSku,          // the string number behind those elements
    EventLogDescriptors, // byte 21 x byte 22
    BootStatus,          // to the end of the formatted area
    LastDeviceLoad,      // the byte of the last of the devices that byte 6 counts
    LastDeviceHandle,    // the word behind that byte
    HostInterfaceData,   // by the interface type in byte 4
    // Of newer rows:
    AreaRest,         // to the end of the formatted area
    BehindElements,   // behind the contained elements: byte 19 x byte 20 past the row's offset
    PeerGroups,       // groups of 5 bytes, as many as byte 18 says
    BehindPeerGroups, // behind these: their size past the row's offset
    PairsToEnd,       // to the end of the formatted area, in pairs of bytes
    TriplesToEnd,     // the same in threes
    MiddleDevices,    // the second to the last but one of the devices that byte 6 counts
    HostDataLength,   // of a host interface with protocol records: the length of its data,
    HostData,         // these,
    HostRecordCount,  // the number of its records
    HostRecords,      // and these
    ProcessorBlock,   // as many bytes as byte 6 says, at most to the end of the formatted area
    ComponentHandles, // words, as many as byte 23 says
};

struct DmiFieldDescriptor {
    std::uint8_t Type;       // structure type
    std::uint8_t Offset;     // offset in the structure; of a string, of its string number
    std::uint8_t MinVersion; // lowest SMBIOS version, major x 10 + minor
    const char* Name;
    DmiKind Kind;
    DmiClass ValueClass;
    DmiRule Rule = DmiRule::None;
};

constexpr std::size_t DmiFieldCount = 452;

namespace DmiColumns { // where the rows name the values of their columns

using enum DmiKind;
using enum DmiClass;
using enum DmiRule;

// Columns: type, offset, lowest SMBIOS version, name, kind, class of the value, rule.
inline constexpr std::array<DmiFieldDescriptor, DmiFieldCount> DmiFieldTable = {{
    {0, 0, 21, "Type", Byte1, Plain},
    {0, 1, 21, "Length", Byte1, Plain},
    {0, 2, 21, "Handle", Byte2, Plain},
    {0, 4, 21, "Vendor", Byte1, String},
    {0, 5, 21, "BIOS Version", Byte1, String},
    {0, 6, 21, "BIOS Starting Address Segment", Byte2, Plain},
    {0, 8, 21, "BIOS Release Date", Byte1, String},
    {0, 9, 21, "BIOS ROM Size", Byte1, Plain},
    {0, 10, 21, "BIOS Characteristics", Byte8, BitField},
    {0, 18, 21, "BIOS Characteristics Extension", Variable, BitField, TwoBytes},
    {0, 20, 21, "System BIOS Major Release", Byte1, Plain},
    {0, 21, 21, "System BIOS Minor Release", Byte1, Plain},
    {0, 22, 21, "Embedded Controller Firmware Major Release", Byte1, Plain},
    {0, 23, 21, "Embedded Controller Firmware Minor Release", Byte1, Plain},
    {1, 0, 20, "Type", Byte1, Plain},
    {1, 1, 20, "Length", Byte1, Plain},
    {1, 2, 20, "Handle", Byte2, Plain},
    {1, 4, 20, "Manufacturer", Byte1, String},
    {1, 5, 20, "Product Name", Byte1, String},
    {1, 6, 20, "Version", Byte1, String},
    {1, 7, 20, "Serial Number", Byte1, String},
    {1, 8, 21, "UUID", Byte16, Plain},
    {1, 24, 21, "Wake-up Type", Byte1, Enumerated},
    {1, 25, 24, "SKU Number", Byte1, String},
    {1, 26, 24, "Family", Byte1, String},
    {2, 0, 20, "Type", Byte1, Plain},
    {2, 1, 20, "Length", Byte1, Plain},
    {2, 2, 20, "Handle", Byte2, Plain},
    {2, 4, 20, "Manufacturer", Byte1, String},
    {2, 5, 20, "Product Name", Byte1, String},
    {2, 6, 20, "Version", Byte1, String},
    {2, 7, 20, "Serial Number", Byte1, String},
    {2, 8, 24, "Asset Tag", Byte1, String},
    {2, 9, 24, "Feature Flags", Byte1, BitField},
    {2, 10, 24, "Location in Chassis", Byte1, String},
    {2, 11, 24, "Chassis Handle", Byte2, Plain},
    {2, 13, 24, "Board Type", Byte1, Enumerated},
    {2, 14, 24, "Number of Contained Object Handles", Byte1, Plain},
    {2, 15, 24, "Contained Object Handles", Variable, Plain, HandleList},
    {3, 0, 20, "Type", Byte1, Plain},
    {3, 1, 20, "Length", Byte1, Plain},
    {3, 2, 20, "Handle", Byte2, Plain},
    {3, 4, 20, "Manufacturer", Byte1, String},
    {3, 5, 20, "Type", Byte1, Plain},
    {3, 6, 20, "Version", Byte1, String},
    {3, 7, 20, "Serial Number", Byte1, String},
    {3, 8, 20, "Asset Tag Number", Byte1, String},
    {3, 9, 21, "Boot-up State", Byte1, Enumerated},
    {3, 10, 21, "Power Supply State", Byte1, Enumerated},
    {3, 11, 21, "Thermal State", Byte1, Enumerated},
    {3, 12, 21, "Security State", Byte1, Enumerated},
    {3, 13, 23, "OEM-defined", Byte4, Plain},
    {3, 17, 23, "Height", Byte1, Plain},
    {3, 18, 23, "Number of Power Cords", Byte1, Plain},
    {3, 19, 23, "Contained Element Count", Byte1, Plain},
    {3, 20, 23, "Contained Element Record Length", Byte1, Plain},
    {3, 21, 23, "Contained Elements", VariableLong, Plain, ContainedElements},
    {3, 21, 27, "SKU Number", Byte1, String, ChassisSku},
    {4, 0, 20, "Type", Byte1, Plain},
    {4, 1, 20, "Length", Byte1, Plain},
    {4, 2, 20, "Handle", Byte2, Plain},
    {4, 4, 20, "Socket Designation", Byte1, String},
    {4, 5, 20, "Processor Type", Byte1, Enumerated},
    {4, 6, 20, "Processor Family", Byte1, Enumerated},
    {4, 7, 20, "Processor Manufacturer", Byte1, String},
    {4, 8, 20, "Processor ID", Byte8, Plain},
    {4, 16, 20, "Processor Version", Byte1, String},
    {4, 17, 20, "Voltage", Byte1, Plain},
    {4, 18, 20, "External Clock", Byte2, Plain},
    {4, 20, 20, "Max Speed", Byte2, Plain},
    {4, 22, 20, "Current Speed", Byte2, Plain},
    {4, 24, 20, "Status", Byte1, Plain},
    {4, 25, 20, "Processor Upgrade", Byte1, Enumerated},
    {4, 26, 21, "L1 Cache Handle", Byte2, Plain},
    {4, 28, 21, "L2 Cache Handle", Byte2, Plain},
    {4, 30, 21, "L3 Cache Handle", Byte2, Plain},
    {4, 32, 23, "Serial Number", Byte1, String},
    {4, 33, 23, "Asset Tag", Byte1, String},
    {4, 34, 23, "Part Number", Byte1, String},
    {4, 35, 25, "Core Count", Byte1, Plain},
    {4, 36, 25, "Core Enabled", Byte1, Plain},
    {4, 37, 25, "Thread Count", Byte1, Plain},
    {4, 38, 25, "Processor Characteristics", Byte2, BitField},
    {4, 40, 26, "Processor Family2", Byte2, Enumerated},
    {5, 0, 20, "Type", Byte1, Plain},
    {5, 1, 20, "Length", Byte1, Plain},
    {5, 2, 20, "Handle", Byte2, Plain},
    {5, 4, 20, "Error Detecting Method", Byte1, Enumerated},
    {5, 5, 20, "Error Correcting Capability", Byte1, BitField},
    {5, 6, 20, "Supported Interleave", Byte1, Enumerated},
    {5, 7, 20, "Current Interleave", Byte1, Enumerated},
    {5, 8, 20, "Maximum Memory Module Size", Byte1, Plain},
    {5, 9, 20, "Supported Speeds", Byte2, BitField},
    {5, 11, 20, "Supported Memory Types", Byte2, BitField},
    {5, 13, 20, "Memory Module Voltage", Byte1, BitField},
    {5, 14, 20, "Number of Associated Memory Slots", Byte1, Plain},
    {5, 15, 20, "Memory Module Configuration Handles", Variable, Plain, HandleList},
    {5, 15, 21, "Enabled Error Correcting Capabilities", VariableOne, BitField, BehindHandleList},
    {6, 0, 20, "Type", Byte1, Plain},
    {6, 1, 20, "Length", Byte1, Plain},
    {6, 2, 20, "Handle", Byte2, Plain},
    {6, 4, 20, "Socket Designation", Byte1, String},
    {6, 5, 20, "Bank Connections", Byte1, Plain},
    {6, 6, 20, "Current Speed", Byte1, Plain},
    {6, 7, 20, "Current Memory Type", Byte2, Enumerated},
    {6, 9, 20, "Installed Size", Byte1, Plain},
    {6, 10, 20, "Enabled Size", Byte1, Plain},
    {6, 11, 20, "Error Status", Byte1, Plain},
    {7, 0, 20, "Type", Byte1, Plain},
    {7, 1, 20, "Length", Byte1, Plain},
    {7, 2, 20, "Handle", Byte2, Plain},
    {7, 4, 20, "Socket Designation", Byte1, String},
    {7, 5, 20, "Cache Configuration", Byte2, Plain},
    {7, 7, 20, "Maximum Cache Size", Byte2, Plain},
    {7, 9, 20, "Installed Size", Byte2, Plain},
    {7, 11, 20, "Supported SRAM Type", Byte2, BitField},
    {7, 13, 20, "Current SRAM Type", Byte2, BitField},
    {7, 15, 21, "Cache Speed", Byte1, Plain},
    {7, 16, 21, "Error Correction Type", Byte1, Enumerated},
    {7, 17, 21, "System Cache Type", Byte1, Enumerated},
    {7, 18, 21, "Associativity", Byte1, Enumerated},
    {8, 0, 20, "Type", Byte1, Plain},
    {8, 1, 20, "Length", Byte1, Plain},
    {8, 2, 20, "Handle", Byte2, Plain},
    {8, 4, 20, "Internal Reference Designator", Byte1, String},
    {8, 5, 20, "Internal Connector Type", Byte1, Enumerated},
    {8, 6, 20, "External Reference Designator", Byte1, String},
    {8, 7, 20, "External Connector Type", Byte1, Enumerated},
    {8, 8, 20, "Port Type", Byte1, Enumerated},
    {9, 0, 20, "Type", Byte1, Plain},
    {9, 1, 20, "Length", Byte1, Plain},
    {9, 2, 20, "Handle", Byte2, Plain},
    {9, 4, 20, "Slot Designation", Byte1, String},
    {9, 5, 20, "Slot Type", Byte1, Enumerated},
    {9, 6, 20, "Slot Data Bus Width", Byte1, Enumerated},
    {9, 7, 20, "Current Usage", Byte1, Enumerated},
    {9, 8, 20, "Slot Length", Byte1, Enumerated},
    {9, 9, 20, "Slot ID", Byte2, Plain},
    {9, 11, 20, "Slot Characteristics 1", Byte1, BitField},
    {9, 12, 21, "Slot Characteristics 2", Byte1, BitField},
    {9, 13, 26, "Segment Group Number", Byte2, Plain},
    {9, 15, 26, "Bus Number", Byte1, Plain},
    {9, 16, 26, "Device/Function Number", Byte1, BitField},
    {10, 0, 20, "Type", Byte1, Plain},
    {10, 1, 20, "Length", Byte1, Plain},
    {10, 2, 20, "Handle", Byte2, Plain},
    {10, 4, 20, "Device Type", Byte1, Plain},
    {10, 5, 20, "Description String", Byte1, String},
    {11, 0, 20, "Type", Byte1, Plain},
    {11, 1, 20, "Length", Byte1, Plain},
    {11, 2, 20, "Handle", Byte2, Plain},
    {11, 4, 20, "Count", Byte1, Plain},
    {12, 0, 20, "Type", Byte1, Plain},
    {12, 1, 20, "Length", Byte1, Plain},
    {12, 2, 20, "Handle", Byte2, Plain},
    {12, 4, 20, "Count", Byte1, Plain},
    {13, 0, 20, "Type", Byte1, Plain},
    {13, 1, 20, "Length", Byte1, Plain},
    {13, 2, 20, "Handle", Byte2, Plain},
    {13, 4, 20, "Installable Languages", Byte1, Plain},
    {13, 5, 21, "Flags", Byte1, BitField},
    {13, 6, 20, "Reserved", Byte15, ReservedArea},
    {13, 21, 20, "Current Language", Byte1, String},
    {14, 0, 20, "Type", Byte1, Plain},
    {14, 1, 20, "Length", Byte1, Plain},
    {14, 2, 20, "Handle", Byte2, Plain},
    {14, 4, 20, "Group Name", Byte1, String},
    {14, 5, 20, "Item Type", Byte1, Plain},
    {14, 6, 20, "Item Handle", Byte2, Plain},
    {15, 0, 20, "Type", Byte1, Plain},
    {15, 1, 20, "Length", Byte1, Plain},
    {15, 2, 20, "Handle", Byte2, Plain},
    {15, 4, 20, "Log Area Length", Byte2, Plain},
    {15, 6, 20, "Log Header Start Offset", Byte2, Plain},
    {15, 8, 20, "Log Data Start Offset", Byte2, Plain},
    {15, 10, 20, "Access Method", Byte1, Plain},
    {15, 11, 20, "Log Status", Byte1, Plain},
    {15, 12, 20, "Log Change Token", Byte4, Plain},
    {15, 16, 20, "Access Method Address", Byte4, Plain},
    {15, 20, 21, "Log Header Format", Byte1, Enumerated},
    {15, 21, 21, "Number of Supported Log Type Descriptors", Byte1, Plain},
    {15, 22, 21, "Length of each Log Type Descriptor", Byte1, Plain},
    {15, 23, 21, "List of Supported Event Log Type Descriptors", Variable, Plain, EventLogDescriptors},
    {16, 0, 21, "Type", Byte1, Plain},
    {16, 1, 21, "Length", Byte1, Plain},
    {16, 2, 21, "Handle", Byte2, Plain},
    {16, 4, 21, "Location", Byte1, Enumerated},
    {16, 5, 21, "Use", Byte1, Enumerated},
    {16, 6, 21, "Memory Error Correction", Byte1, Enumerated},
    {16, 7, 21, "Maximum Capacity", Byte4, Plain},
    {16, 11, 21, "Memory Error Information Handle", Byte2, Plain},
    {16, 13, 21, "Number of Memory Devices", Byte2, Plain},
    {16, 15, 27, "Extended Maximum Capacity", Byte8, Plain},
    {17, 0, 21, "Type", Byte1, Plain},
    {17, 1, 21, "Length", Byte1, Plain},
    {17, 2, 21, "Handle", Byte2, Plain},
    {17, 4, 21, "Physical Memory Array Handle", Byte2, Plain},
    {17, 6, 21, "Memory Error Information Handle", Byte2, Plain},
    {17, 8, 21, "Total Width", Byte2, Plain},
    {17, 10, 21, "Data Width", Byte2, Plain},
    {17, 12, 21, "Size", Byte2, Plain},
    {17, 14, 21, "Form Factor", Byte1, Enumerated},
    {17, 15, 21, "Device Set", Byte1, Plain},
    {17, 16, 21, "Device Locator", Byte1, String},
    {17, 17, 21, "Bank Locator", Byte1, String},
    {17, 18, 21, "Memory Type", Byte1, Enumerated},
    {17, 19, 21, "Type Detail", Byte2, BitField},
    {17, 21, 23, "Speed", Byte2, Plain},
    {17, 23, 23, "Manufacturer", Byte1, String},
    {17, 24, 23, "Serial Number", Byte1, String},
    {17, 25, 23, "Asset Tag", Byte1, String},
    {17, 26, 23, "Part Number", Byte1, String},
    {17, 27, 26, "Attributes", Byte1, Plain},
    {17, 28, 27, "Extended Size", Byte4, Plain},
    {17, 32, 27, "Configured Memory Clock Speed", Byte2, Plain},
    {17, 34, 28, "Minimum Voltage", Byte2, Plain},
    {17, 36, 28, "Maximum Voltage", Byte2, Plain},
    {17, 38, 28, "Configured Voltage", Byte2, Plain},
    {18, 0, 21, "Type", Byte1, Plain},
    {18, 1, 21, "Length", Byte1, Plain},
    {18, 2, 21, "Handle", Byte2, Plain},
    {18, 4, 21, "Error Type", Byte1, Enumerated},
    {18, 5, 21, "Error Granularity", Byte1, Enumerated},
    {18, 6, 21, "Error Operation", Byte1, Enumerated},
    {18, 7, 21, "Vendor Syndrome", Byte4, Plain},
    {18, 11, 21, "Memory Array Error Address", Byte4, Plain},
    {18, 15, 21, "Device Error Address", Byte4, Plain},
    {18, 19, 21, "Error Resolution", Byte4, Plain},
    {19, 0, 21, "Type", Byte1, Plain},
    {19, 1, 21, "Length", Byte1, Plain},
    {19, 2, 21, "Handle", Byte2, Plain},
    {19, 4, 21, "Starting Address", Byte4, Plain},
    {19, 8, 21, "Ending Address", Byte4, Plain},
    {19, 12, 21, "Memory Array Handle", Byte2, Plain},
    {19, 14, 21, "Partition Width", Byte1, Plain},
    {19, 15, 27, "Extended Starting Address", Byte8, Plain},
    {19, 23, 27, "Extended Ending Address", Byte8, Plain},
    {20, 0, 21, "Type", Byte1, Plain},
    {20, 1, 21, "Length", Byte1, Plain},
    {20, 2, 21, "Handle", Byte2, Plain},
    {20, 4, 21, "Starting Address", Byte4, Plain},
    {20, 8, 21, "Ending Address", Byte4, Plain},
    {20, 12, 21, "Memory Device Handle", Byte2, Plain},
    {20, 14, 21, "Memory Array Mapped Address Handle", Byte2, Plain},
    {20, 16, 21, "Partition Row Position", Byte1, Plain},
    {20, 17, 21, "Interleave Position", Byte1, Plain},
    {20, 18, 21, "Interleaved Data Depth", Byte1, Plain},
    {20, 19, 27, "Extended Starting Address", Byte8, Plain},
    {20, 27, 27, "Extended Ending Address", Byte8, Plain},
    {21, 0, 21, "Type", Byte1, Plain},
    {21, 1, 21, "Length", Byte1, Plain},
    {21, 2, 21, "Handle", Byte2, Plain},
    {21, 4, 21, "Type", Byte1, Enumerated},
    {21, 5, 21, "Interface", Byte1, Enumerated},
    {21, 6, 21, "Number of Buttons", Byte1, Plain},
    {22, 0, 21, "Type", Byte1, Plain},
    {22, 1, 21, "Length", Byte1, Plain},
    {22, 2, 21, "Handle", Byte2, Plain},
    {22, 4, 21, "Location", Byte1, String},
    {22, 5, 21, "Manufacturer", Byte1, String},
    {22, 6, 21, "Manufacture Date", Byte1, String},
    {22, 7, 21, "Serial Number", Byte1, String},
    {22, 8, 21, "Device Name", Byte1, String},
    {22, 9, 21, "Device Chemistry", Byte1, Enumerated},
    {22, 10, 21, "Design Capacity", Byte2, Plain},
    {22, 12, 21, "Design Voltage", Byte2, Plain},
    {22, 14, 21, "SBDS Version Number", Byte1, String},
    {22, 15, 21, "Maximum Error in Battery Data", Byte1, Plain},
    {22, 16, 22, "SBDS Serial Number", Byte2, Plain},
    {22, 18, 22, "SBDS Manufacture Date", Byte2, Plain},
    {22, 20, 22, "SBDS Device Chemistry", Byte1, String},
    {22, 21, 22, "Design Capacity Multiplier", Byte1, Plain},
    {22, 22, 22, "OEM-specific", Byte4, Plain},
    {23, 0, 22, "Type", Byte1, Plain},
    {23, 1, 22, "Length", Byte1, Plain},
    {23, 2, 22, "Handle", Byte2, Plain},
    {23, 4, 22, "Capabilities", Byte1, BitField},
    {23, 5, 22, "Reset Count", Byte2, Plain},
    {23, 7, 22, "Reset Limit", Byte2, Plain},
    {23, 9, 22, "Timer Interval", Byte2, Plain},
    {23, 11, 22, "Timeout", Byte2, Plain},
    {24, 0, 22, "Type", Byte1, Plain},
    {24, 1, 22, "Length", Byte1, Plain},
    {24, 2, 22, "Handle", Byte2, Plain},
    {24, 4, 22, "Hardware Security Settings", Byte1, BitField},
    {25, 0, 22, "Type", Byte1, Plain},
    {25, 1, 22, "Length", Byte1, Plain},
    {25, 2, 22, "Handle", Byte2, Plain},
    {25, 4, 22, "Next Scheduled Power-on Month", Byte1, Plain},
    {25, 5, 22, "Next Scheduled Power-on Day-of-month", Byte1, Plain},
    {25, 6, 22, "Next Scheduled Power-on Hour", Byte1, Plain},
    {25, 7, 22, "Next Scheduled Power-on Minute", Byte1, Plain},
    {25, 8, 22, "Next Scheduled Power-on Second", Byte1, Plain},
    {26, 0, 22, "Type", Byte1, Plain},
    {26, 1, 22, "Length", Byte1, Plain},
    {26, 2, 22, "Handle", Byte2, Plain},
    {26, 4, 22, "Description", Byte1, String},
    {26, 5, 22, "Location and Status", Byte1, BitField},
    {26, 6, 22, "Maximum Value", Byte2, Plain},
    {26, 8, 22, "Minimum Value", Byte2, Plain},
    {26, 10, 22, "Resolution", Byte2, Plain},
    {26, 12, 22, "Tolerance", Byte2, Plain},
    {26, 14, 22, "Accuracy", Byte2, Plain},
    {26, 16, 22, "OEM-defined", Byte4, Plain},
    {26, 20, 22, "Nominal Value", Byte2, Plain},
    {27, 0, 22, "Type", Byte1, Plain},
    {27, 1, 22, "Length", Byte1, Plain},
    {27, 2, 22, "Handle", Byte2, Plain},
    {27, 4, 22, "Temperature Probe Handle", Byte2, Plain},
    {27, 6, 22, "Device Type and Status", Byte1, BitField},
    {27, 7, 22, "Cooling Unit Group", Byte1, Plain},
    {27, 8, 22, "OEM-defined", Byte4, Plain},
    {27, 12, 22, "Nominal Speed", Byte2, Plain},
    {27, 14, 27, "Description", Byte1, String},
    {28, 0, 22, "Type", Byte1, Plain},
    {28, 1, 22, "Length", Byte1, Plain},
    {28, 2, 22, "Handle", Byte2, Plain},
    {28, 4, 22, "Description", Byte1, String},
    {28, 5, 22, "Location and Status", Byte1, BitField},
    {28, 6, 22, "Maximum Value", Byte2, Plain},
    {28, 8, 22, "Minimum Value", Byte2, Plain},
    {28, 10, 22, "Resolution", Byte2, Plain},
    {28, 12, 22, "Tolerance", Byte2, Plain},
    {28, 14, 22, "Accuracy", Byte2, Plain},
    {28, 16, 22, "OEM-defined", Byte4, Plain},
    {28, 20, 22, "Nominal Value", Byte2, Plain},
    {29, 0, 22, "Type", Byte1, Plain},
    {29, 1, 22, "Length", Byte1, Plain},
    {29, 2, 22, "Handle", Byte2, Plain},
    {29, 4, 22, "Description", Byte1, String},
    {29, 5, 22, "Location and Status", Byte1, Enumerated},
    {29, 6, 22, "Maximum Value", Byte2, Plain},
    {29, 8, 22, "Minimum Value", Byte2, Plain},
    {29, 10, 22, "Resolution", Byte2, Plain},
    {29, 12, 22, "Tolerance", Byte2, Plain},
    {29, 14, 22, "Accuracy", Byte2, Plain},
    {29, 16, 22, "OEM-defined", Byte4, Plain},
    {29, 20, 22, "Nominal Value", Byte2, Plain},
    {30, 0, 22, "Type", Byte1, Plain},
    {30, 1, 22, "Length", Byte1, Plain},
    {30, 2, 22, "Handle", Byte2, Plain},
    {30, 4, 22, "Manufacturer Name", Byte1, String},
    {30, 5, 22, "Connections", Byte1, BitField},
    {31, 0, 23, "Type", Byte1, Plain},
    {31, 1, 23, "Length", Byte1, Plain},
    {31, 2, 23, "Handle", Byte2, Plain},
    {31, 4, 23, "Checksum", Byte1, Plain},
    {31, 5, 23, "Reserved1", Byte1, Plain},
    {31, 6, 23, "Reserved2", Byte2, Plain},
    {31, 8, 23, "BisEntry16", Byte4, Plain},
    {31, 12, 23, "BisEntry32", Byte4, Plain},
    {31, 16, 23, "Reserved3", Byte8, Plain},
    {31, 24, 23, "Reserved4", Byte4, Plain},
    {32, 0, 23, "Type", Byte1, Plain},
    {32, 1, 23, "Length", Byte1, Plain},
    {32, 2, 23, "Handle", Byte2, Plain},
    {32, 4, 23, "Reserved", Byte6, ReservedArea},
    {32, 10, 23, "Boot Status", VariableLong, Plain, BootStatus},
    {33, 0, 23, "Type", Byte1, Plain},
    {33, 1, 23, "Length", Byte1, Plain},
    {33, 2, 23, "Handle", Byte2, Plain},
    {33, 4, 23, "Error Type", Byte1, Enumerated},
    {33, 5, 23, "Error Granularity", Byte1, Enumerated},
    {33, 6, 23, "Error Operation", Byte1, Enumerated},
    {33, 7, 23, "Vendor Syndrome", Byte4, Plain},
    {33, 11, 23, "Memory Array Error Address", Byte8, Plain},
    {33, 19, 23, "Device Error Address", Byte8, Plain},
    {33, 27, 23, "Error Resolution", Byte4, Plain},
    {34, 0, 23, "Type", Byte1, Plain},
    {34, 1, 23, "Length", Byte1, Plain},
    {34, 2, 23, "Handle", Byte2, Plain},
    {34, 4, 23, "Description", Byte1, String},
    {34, 5, 23, "Type", Byte1, Plain},
    {34, 6, 23, "Address", Byte4, Plain},
    {34, 10, 23, "Address Type", Byte1, Plain},
    {35, 0, 23, "Type", Byte1, Plain},
    {35, 1, 23, "Length", Byte1, Plain},
    {35, 2, 23, "Handle", Byte2, Plain},
    {35, 4, 23, "Description", Byte1, String},
    {35, 5, 23, "Management Device Handle", Byte2, Plain},
    {35, 7, 23, "Component Handle", Byte2, Plain},
    {35, 9, 23, "Threshold Handle", Byte2, Plain},
    {36, 0, 23, "Type", Byte1, Plain},
    {36, 1, 23, "Length", Byte1, Plain},
    {36, 2, 23, "Handle", Byte2, Plain},
    {36, 4, 23, "Lower Threshold Non-critical", Byte2, Plain},
    {36, 6, 23, "Upper Threshold Non-critical", Byte2, Plain},
    {36, 8, 23, "Lower Threshold Critical", Byte2, Plain},
    {36, 10, 23, "Upper Threshold Critical", Byte2, Plain},
    {36, 12, 23, "Lower Threshold Non-recoverable", Byte2, Plain},
    {36, 14, 23, "Upper Threshold Non-recoverable", Byte2, Plain},
    {37, 0, 23, "Type", Byte1, Plain},
    {37, 1, 23, "Length", Byte1, Plain},
    {37, 2, 23, "Handle", Byte2, Plain},
    {37, 4, 23, "Channel Type", Byte1, Plain},
    {37, 5, 23, "Maximum Channel Load", Byte1, Plain},
    {37, 6, 23, "Memory Device Count", Byte1, Plain},
    {37, 7, 23, "Memory1 Device Load", Byte1, Plain},
    {37, 8, 23, "Memory Device1 Handle", Byte2, Plain},
    {37, 10, 23, "Memory Device Load", VariableOne, Plain, LastDeviceLoad},
    {37, 12, 23, "Memory Device Handle", Variable, Plain, LastDeviceHandle},
    {38, 0, 23, "Type", Byte1, Plain},
    {38, 1, 23, "Length", Byte1, Plain},
    {38, 2, 23, "Handle", Byte2, Plain},
    {38, 4, 23, "Interface Type", Byte1, Enumerated},
    {38, 5, 23, "IPMI Specification Revision", Byte1, Plain},
    {38, 6, 23, "I2C Slave Address", Byte1, Plain},
    {38, 7, 23, "NV Storage Device Address", Byte1, Plain},
    {38, 8, 23, "Base Address", Byte8, Plain},
    {38, 16, 23, "Base Address Modifier / Interrupt Info", Byte1, Plain},
    {38, 17, 23, "Interrupt Number", Byte1, Plain},
    {39, 0, 23, "Type", Byte1, Plain},
    {39, 1, 23, "Length", Byte1, Plain},
    {39, 2, 23, "Handle", Byte2, Plain},
    {39, 4, 23, "Power Unit Group", Byte1, Plain},
    {39, 5, 23, "Location", Byte1, String},
    {39, 6, 23, "Device Name", Byte1, String},
    {39, 7, 23, "Manufacturer", Byte1, String},
    {39, 8, 23, "Serial Number", Byte1, String},
    {39, 9, 23, "Asset Tag Number", Byte1, String},
    {39, 10, 23, "Model Part Number", Byte1, String},
    {39, 11, 23, "Revision Level", Byte1, String},
    {39, 12, 23, "Max Power Capacity", Byte2, Plain},
    {39, 14, 23, "Power Supply Characteristics", Byte2, Plain},
    {39, 16, 23, "Input Voltage Probe Handle", Byte2, Plain},
    {39, 18, 23, "Cooling Device Handle", Byte2, Plain},
    {39, 20, 23, "Input Current Probe Handle", Byte2, Plain},
    {40, 0, 26, "Type", Byte1, Plain},
    {40, 1, 26, "Length", Byte1, Plain},
    {40, 2, 26, "Handle", Byte2, Plain},
    {40, 4, 26, "Number of Additional Information entries", Byte1, Plain},
    {40, 5, 26, "Additional Information entries", Variable, Plain, SixBytes},
    {41, 0, 26, "Type", Byte1, Plain},
    {41, 1, 26, "Length", Byte1, Plain},
    {41, 2, 26, "Handle", Byte2, Plain},
    {41, 4, 26, "Reference Designation", Byte1, String},
    {41, 5, 26, "Device Type", Byte1, Enumerated},
    {41, 6, 26, "Device Type Instance", Byte1, Plain},
    {41, 7, 26, "Segment Group Number", Byte2, Plain},
    {41, 9, 26, "Bus Number", Byte1, Plain},
    {41, 10, 26, "Device/Function Number", Byte1, BitField},
    {42, 0, 27, "Type", Byte1, Plain},
    {42, 1, 27, "Length", Byte1, Plain},
    {42, 2, 27, "Handle", Byte2, Plain},
    {42, 4, 27, "Interface Type", Byte1, Enumerated},
    {42, 5, 27, "MC Host Interface Data", VariableOne, Plain, HostInterfaceData},
    {126, 0, 22, "Type", Byte1, Plain},
    {126, 1, 22, "Length", Byte1, Plain},
    {126, 2, 22, "Handle", Byte2, Plain},
    {127, 0, 22, "Type", Byte1, Plain},
    {127, 1, 22, "Length", Byte1, Plain},
    {127, 2, 22, "Handle", Byte2, Plain},
}};

// The rows that only the whole table has, behind those of their type above. A type without any there begins with the
// three of the header. Their versions are 0 where the structure's length alone tells whether a field is there. The
// last type's rows are those of every type that has no others.
inline constexpr DmiFieldDescriptor DmiNewerFieldTable[] = {
    {0, 24, 0, "Extended BIOS ROM Size", Byte2, Plain},
    {3, 22, 39, "Rack Type", Byte1, Enumerated, BehindElements},
    {3, 23, 39, "Rack Height", Byte1, Plain, BehindElements},
    {4, 42, 0, "Core Count2", Byte2, Plain},
    {4, 44, 0, "Core Enabled2", Byte2, Plain},
    {4, 46, 0, "Thread Count2", Byte2, Plain},
    {4, 48, 0, "Thread Enabled", Byte2, Plain},
    {4, 50, 0, "Socket Type", Byte1, String},
    {7, 19, 0, "Maximum Cache Size2", Byte4, Plain},
    {7, 23, 0, "Installed Cache Size2", Byte4, Plain},
    {9, 17, 0, "Data Bus Width (Base)", Byte1, Enumerated},
    {9, 18, 0, "Peer Grouping Count", Byte1, Plain},
    {9, 19, 0, "Peer Groups", Variable, Plain, PeerGroups},
    {9, 19, 0, "Slot Information", Byte1, Plain, BehindPeerGroups},
    {9, 20, 0, "Slot Physical Width", Byte1, Enumerated, BehindPeerGroups},
    {9, 21, 0, "Slot Pitch", Byte2, Plain, BehindPeerGroups},
    {9, 23, 0, "Slot Height", Byte1, Enumerated, BehindPeerGroups},
    {10, 6, 0, "Further Devices", Variable, Plain, PairsToEnd},
    {11, 4, 0, "Strings", Byte1, Plain},
    {12, 4, 0, "Strings", Byte1, Plain},
    {13, 4, 0, "Languages", Byte1, Plain},
    {14, 8, 0, "Further Items", Variable, Plain, TriplesToEnd},
    {17, 40, 0, "Memory Technology", Byte1, Enumerated},
    {17, 41, 0, "Memory Operating Mode Capability", Byte2, BitField},
    {17, 43, 0, "Firmware Version", Byte1, String},
    {17, 44, 0, "Module Manufacturer ID", Byte2, Plain},
    {17, 46, 0, "Module Product ID", Byte2, Plain},
    {17, 48, 0, "Memory Subsystem Controller Manufacturer ID", Byte2, Plain},
    {17, 50, 0, "Memory Subsystem Controller Product ID", Byte2, Plain},
    {17, 52, 0, "Non-volatile Size", Byte8, Plain},
    {17, 60, 0, "Volatile Size", Byte8, Plain},
    {17, 68, 0, "Cache Size", Byte8, Plain},
    {17, 76, 0, "Logical Size", Byte8, Plain},
    {17, 84, 0, "Extended Speed", Byte4, Plain},
    {17, 88, 0, "Extended Configured Memory Speed", Byte4, Plain},
    {17, 92, 0, "PMIC0 Manufacturer ID", Byte2, Plain},
    {17, 94, 0, "PMIC0 Revision Number", Byte2, Plain},
    {17, 96, 0, "RCD Manufacturer ID", Byte2, Plain},
    {17, 98, 0, "RCD Revision Number", Byte2, Plain},
    {37, 10, 0, "Devices Between", Variable, Plain, MiddleDevices},
    {39, 5, 0, "Location", Byte1, String},
    {42, 5, 0, "Interface Type Specific Data Length", Byte1, Plain, HostDataLength},
    {42, 6, 0, "Interface Type Specific Data", Variable, Plain, HostData},
    {42, 6, 0, "Number of Protocol Records", Byte1, Plain, HostRecordCount},
    {42, 7, 0, "Protocol Records", Variable, Plain, HostRecords},
    {43, 4, 0, "Vendor ID", Byte4, Plain},
    {43, 8, 0, "Major Spec Version", Byte1, Plain},
    {43, 9, 0, "Minor Spec Version", Byte1, Plain},
    {43, 10, 0, "Firmware Version 1", Byte4, Plain},
    {43, 14, 0, "Firmware Version 2", Byte4, Plain},
    {43, 18, 0, "Description", Byte1, String},
    {43, 19, 0, "Characteristics", Byte8, BitField},
    {43, 27, 0, "OEM-defined", Byte4, Plain},
    {44, 4, 0, "Referenced Handle", Byte2, Plain},
    {44, 6, 0, "Processor-specific Block Length", Byte1, Plain},
    {44, 7, 0, "Processor Type", Byte1, Enumerated},
    {44, 8, 0, "Processor-specific Data", Variable, Plain, ProcessorBlock},
    {45, 4, 0, "Firmware Component Name", Byte1, String},
    {45, 5, 0, "Firmware Version", Byte1, String},
    {45, 6, 0, "Firmware Version Format", Byte1, Enumerated},
    {45, 7, 0, "Firmware ID", Byte1, String},
    {45, 8, 0, "Firmware ID Format", Byte1, Enumerated},
    {45, 9, 0, "Release Date", Byte1, String},
    {45, 10, 0, "Manufacturer", Byte1, String},
    {45, 11, 0, "Lowest Supported Firmware Version", Byte1, String},
    {45, 12, 0, "Image Size", Byte8, Plain},
    {45, 20, 0, "Characteristics", Byte2, BitField},
    {45, 22, 0, "State", Byte1, Enumerated},
    {45, 23, 0, "Number of Associated Components", Byte1, Plain},
    {45, 24, 0, "Associated Component Handles", Variable, Plain, ComponentHandles},
    {46, 4, 0, "String Property ID", Byte2, Enumerated},
    {46, 6, 0, "String Property Value", Byte1, String},
    {46, 7, 0, "Parent Handle", Byte2, Plain},
    {47, 4, 0, "Data", Variable, Plain, AreaRest},
    {47, 4, 0, "Strings", Variable, Plain},
};

} // namespace DmiColumns

// Each type's rows are contiguous and in the order of its fields.
using DmiColumns::DmiFieldTable;
using DmiColumns::DmiNewerFieldTable;

constexpr std::size_t DmiAllFieldCount = DmiFieldCount + std::size(DmiNewerFieldTable);

// A row by its place: those of DmiFieldTable, and the newer ones behind them.
constexpr const DmiFieldDescriptor& DmiRowAt(std::size_t place) {
    return place < DmiFieldCount ? DmiFieldTable[place] : DmiNewerFieldTable[place - DmiFieldCount];
}

// The first row of every type; DmiFieldCount for a type without rows.
inline constexpr std::array<std::uint16_t, 256> DmiFirstRows = [] {
    std::array<std::uint16_t, 256> first{};
    first.fill(DmiFieldCount);
    for (std::size_t row = DmiFieldCount; row-- > 0;) {
        first[DmiFieldTable[row].Type] = static_cast<std::uint16_t>(row);
    }
    return first;
}();

// The rows of a type that are not newer.
struct DmiOlderRows {
    std::uint16_t First;
    std::uint16_t Count;
};

// A type that has no rows of its own begins with the last ones of the table, which are a header's.
constexpr DmiOlderRows DmiOlderRowsOf(std::uint8_t type) {
    constexpr std::uint16_t headerRows = 3;
    const std::uint16_t first = DmiFirstRows[type];
    if (first == DmiFieldCount) {
        return {DmiFieldCount - headerRows, headerRows};
    }
    std::uint16_t count = 0;
    while (first + count < DmiFieldCount && DmiFieldTable[first + count].Type == type) {
        ++count;
    }
    return {first, count};
}

// The place of a type's row in the whole table; DmiAllFieldCount when the type has none of that number.
constexpr std::size_t DmiWholeRowPlace(std::uint8_t type, std::uint32_t row) {
    const DmiOlderRows older = DmiOlderRowsOf(type);
    if (row < older.Count) {
        return older.First + row;
    }
    constexpr std::uint8_t anyOther = std::end(DmiNewerFieldTable)[-1].Type;
    const std::uint8_t listed = DmiFirstRows[type] == DmiFieldCount && type > anyOther ? anyOther : type;
    for (std::size_t place = DmiFieldCount; place < DmiAllFieldCount; ++place) {
        if (DmiRowAt(place).Type == listed) {
            place += row - older.Count;
            return place < DmiAllFieldCount && DmiRowAt(place).Type == listed ? place : DmiAllFieldCount;
        }
    }
    return DmiAllFieldCount;
}

// A row among those of its type, counted from 0; null when the type has none of that number, or only the whole table
// does and is not asked for.
constexpr const DmiFieldDescriptor* DmiRowFind(std::uint8_t type, std::uint32_t row, bool whole = false) {
    if (whole) {
        const std::size_t place = DmiWholeRowPlace(type, row);
        return place < DmiAllFieldCount ? &DmiRowAt(place) : nullptr;
    }
    const std::size_t index = DmiFirstRows[type] + std::size_t{row};
    return index < DmiFieldCount && DmiFieldTable[index].Type == type ? &DmiFieldTable[index] : nullptr;
}

// The bytes of a row's value; 0 where only the structure tells.
constexpr std::uint8_t DmiRowWidth(const DmiFieldDescriptor& row) {
    constexpr std::uint8_t kinds[] = {1, 1, 6, 15, 16, 2, 0, 4, 8, 0};
    switch (row.Rule) {
    case DmiRule::TwoBytes:
    case DmiRule::LastDeviceHandle:
        return 2;
    case DmiRule::SixBytes:
        return 6;
    case DmiRule::HostInterfaceData:
        return 0;
    default:
        return kinds[static_cast<std::size_t>(row.Kind)];
    }
}
