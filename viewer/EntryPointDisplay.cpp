// The display of the entry point structure.
#include "viewer/EntryPointDisplay.h"

#include "Lib/API/RyxPrint.h"
#include "viewer/Report.h"
#include "viewer/StructRead.h"
#include "viewer/ViewerState.h"

#include <cstdint>
#include <span>

namespace {

// How a line shows its field. Characters and Number show 0 as a field that the firmware did not supply.
enum class LineShape { Characters, Number, NumberAlways, Bytes, Version };

struct EntryPointLine {
    const char* Label;
    LineShape Shape;
    std::uint32_t Field = 0;
    const char* Format = nullptr; // takes the number up to twice, or one byte
};

constexpr char NotSupplied[] = "N/S\n";

constexpr EntryPointLine Lines[] = {
    {"Anchor String : ", LineShape::Characters, 0, "%c"},
    {"Entry Point Structure Checksum : ", LineShape::Number, 1, "0x%02X\n"},
    {"Entry Point Length : ", LineShape::Number, 2, "0x%02X\n"},
    {"Version : ", LineShape::Version},
    {"Max Structure Size : ", LineShape::Number, 5, "0x%04X\n"},
    {"Entry Point Revision : ", LineShape::NumberAlways, 6, "0x%02X (%d)\n"},
    {"Formatted Area : ", LineShape::Bytes, 7, "0x%02x "},
    {"Intermediate Anchor String : ", LineShape::Characters, 8, "%c"},
    {"Intermediate Checksum : ", LineShape::Number, 9, "0x%02X\n"},
    {"Structure Table Length : ", LineShape::Number, 10, "0x%04X \n"},
    {"Structure Table Address : ", LineShape::Number, 11, "0x%08X\n"},
    {"Number Of SMBIOS Structures : ", LineShape::Number, 12, "0x%04X (%d)\n"},
    {"SMBIOS BCD Revision : ", LineShape::Number, 13, "0x%02X\n"},
};

void VersionPrint() {
    if (ViewerSmbiosMajor == 0 && ViewerSmbiosMinor == 0) {
        ReportMissing(NotSupplied);
    } else {
        ReportMore("%d.%d\n", ViewerSmbiosMajor, ViewerSmbiosMinor);
    }
}

void EachBytePrint(const char* format, std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        ReportMore(format, byte);
    }
    ReportMore("\n");
}

void FieldPrint(const EntryPointLine& line, const FieldValue& value) {
    const auto number = static_cast<unsigned int>(value.Number);
    switch (line.Shape) {
    case LineShape::Characters:
        if (value.Bytes.empty() || value.Bytes[0] == 0) {
            ReportMissing(NotSupplied);
        } else {
            EachBytePrint(line.Format, value.Bytes);
        }
        break;
    case LineShape::Bytes:
        ReportValue(value);
        EachBytePrint(line.Format, value.Bytes);
        break;
    default:
        if (number == 0 && line.Shape == LineShape::Number) {
            ReportMissing(NotSupplied);
        } else {
            ReportValue(value);
            ReportMore(line.Format, number, number);
        }
        break;
    }
}

} // namespace

RyxStatus EntryPointDisplay() {
    if (ViewerJson) {
        ReportEntryPointBegin();
    } else {
        RyxPrintf("\nEntry Point Structure(EPS)\n");
    }
    RyxStatus status = RyxOk;
    for (const EntryPointLine& line : Lines) {
        ReportLine({}, line.Label);
        if (line.Shape == LineShape::Version) {
            VersionPrint();
            continue;
        }
        FieldValue value;
        if (status = EpsFieldRead(line.Field, &value); status != RyxOk) {
            ReportMissing(NotSupplied);
            break;
        }
        FieldPrint(line, value);
    }
    ReportEnd();
    return status;
}
