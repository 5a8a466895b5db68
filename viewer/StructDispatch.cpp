// The two tables indexed by structure type.
#include "viewer/StructDispatch.h"

#include "viewer/Decoders.h"

const std::array<StructDecoder, 128> StructDecoderTable = [] {
    std::array<StructDecoder, 128> table{};
    table[0] = StructDecodeType0;
    table[1] = StructDecodeType1;
    table[2] = StructDecodeType2;
    table[3] = StructDecodeType3;
    table[30] = StructDecodeType30;
    table[31] = StructDecodeType31;
    table[32] = StructDecodeType32;
    table[33] = StructDecodeType33;
    table[34] = StructDecodeType34;
    table[35] = StructDecodeType35;
    table[36] = StructDecodeType36;
    table[37] = StructDecodeType37;
    table[38] = StructDecodeType38;
    table[39] = StructDecodeType39;
    table[40] = StructDecodeType40;
    table[41] = StructDecodeType41;
    table[42] = StructDecodeType42;
    table[126] = StructDecodeType126;
    table[127] = StructDecodeType127;
    return table;
}();

const std::array<const char*, 128> StructTypeNameTable = [] {
    std::array<const char*, 128> table{};
    table.fill("");
    table[0] = "BIOS (Type 00)";
    table[1] = "System (Type 01)";
    table[2] = "Base Board (Type 02)";
    table[3] = "Enclosure/Chassis (Type 03)";
    table[4] = "Processor (Type 04)";
    table[5] = "Memory Controller (Type 05)";
    table[6] = "Memory Module (Type 06)";
    table[7] = "Cache (Type 07)";
    table[8] = "Port Connector (Type 08)";
    table[9] = "System Slots (Type 09)";
    table[10] = "On Board Devices (Type 10)";
    table[11] = "OEM Strings (Type 11)";
    table[12] = "System Config (Type 12)";
    table[13] = "BIOS Language (Type 13)";
    table[14] = "Group Association (Type 14)";
    table[15] = "System Event Log (Type 15)";
    table[16] = "Physical Memory (Type 16)";
    table[17] = "Memory Device (Type 17)";
    table[18] = "32-bit Memory Error (Type 18)";
    table[19] = "Memory Array Adr (Type 19)";
    table[20] = "Memory Device Adr (Type 20)";
    table[21] = "Built-in Pointing (Type 21)";
    table[22] = "Portable Battery (Type 22)";
    table[23] = "System Reset (Type 23)";
    table[24] = "Hardware Security (Type 24)";
    table[25] = "SYS Power Control (Type 25)";
    table[26] = "Voltage Probe (Type 26)";
    table[27] = "Cooling Device (Type 27)";
    table[28] = "Temperature Probe (Type 28)";
    table[29] = "Electric Current Probe(Type 29)";
    table[30] = "OOB Remote Access (Type 30)";
    table[31] = "BIS Entry Point (Type 31)";
    table[32] = "System Boot Info (Type 32)";
    table[33] = "64-bit Memory Error Info (Type 33)";
    table[34] = "Manage Device (Type 34)";
    table[35] = "Manage Device Component (Type 35)";
    table[36] = "Manage Device Threshold Data (Type 36)";
    table[37] = "Memory Channel (Type 37)";
    table[38] = "IPMI Device Info (Type 38)";
    table[39] = "SYS Power Supply (Type 39)";
    table[40] = "Additional Info (Type 40)";
    table[41] = "Onboard Devices Extended Info (Type 41)";
    table[42] = "Manage Controller Host Interface (Type 42)";
    table[126] = "Inactive (Type 126)";
    table[127] = "End-Of-Table (Type 127)";
    return table;
}();
