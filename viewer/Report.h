// What decoders say about a table, said once for two readers: the listing prints it line by line, and for programs
// every structure becomes a JSON object on a line of its own, which is written whole or not at all.
#pragma once

#include "viewer/StructRead.h"

#include <cstdint>
#include <span>
#include <string_view>

// The header of a structure. The name goes without the type's number; instances count from 1.
struct ReportHeader {
    std::uint8_t Type;
    std::string_view Name;
    std::uint32_t Instance;
    std::uint16_t Handle;
    std::uint8_t Length;
};

// What a labelled line is for programs: an entry of its own, or a detail of the entry before it.
enum class ReportPart : std::uint8_t { Entry, Detail };

// Begins an object, and writes it. The listing does nothing at either.
void ReportStructBegin(const ReportHeader& header);
void ReportEntryPointBegin();
void ReportEnd();

// Ends all that a field has said.
void ReportFieldEnd();

// Prints a line, or its beginning. `format` takes the arguments; for programs, what stands before " : " in it is the
// label, less the number of a record before it ("%02d.  "), what follows is the text, and an entry has the bytes of
// `value` and their number beside it.
void ReportLine(const FieldValue& value, const char* format, ...);
void ReportDetail(const char* format, ...);

// Prints more of an entry's line; for programs, what follows the line's end is no text of the entry.
void ReportMore(const char* format, ...);

// Tells programs the bytes that an entry's line is about, where they were not known when it began.
void ReportValue(const FieldValue& value);

// Prints `shown`, which takes nothing, as the rest of the line of an entry without a text.
void ReportMissing(const char* shown);

// Tells programs what the entry's number means, as its line says: a text, or the fixed one that a format ends with
// behind its dash. Without one, nothing.
void ReportMeaning(std::string_view text);
void ReportMeaningOf(std::string_view format);

// Prints a text whole, whatever its length, with `format`, which takes it; "NULL" for an empty one.
void ReportText(const char* format, std::string_view text, ReportPart part = ReportPart::Entry);

// Prints one line per named bit of a value, from bit 0 on; a null entry ends the names.
void ReportBits(std::uint64_t value, const char* const* names);

// Prints bytes on one line behind `label`, which takes nothing.
void ReportBytes(const char* label, const FieldValue& value);

// Prints bytes in rows of up to 16 below `label`, if it has any; `row` takes the text of one.
void ReportRows(const char* label, std::span<const std::uint8_t> bytes, const char* row = "  %s\n");

// Tells programs that the entry's bytes are a UUID, in the byte order of the table's version.
void ReportUuid();

// Begins a list. Prints `heading`, which takes nothing; programs have the list under `label`, or without one under the
// heading's. The texts of a list are taken from `strings`, which programs get too when one of them is no UTF-8.
void ReportItems(const char* heading, const char* label = nullptr, std::span<const std::uint8_t> strings = {});

// Begins a record of the list, which consists of the lines from here to the next record or the end of the field.
void ReportItem();

// A record that is a number, which `format` takes once or twice, or a code with its meaning behind it on the line.
void ReportItemNumber(const char* format, unsigned number);
void ReportItemCode(const char* format, unsigned code, const char* meaning);

// A record that is a text, printed whole; `format` takes the record's number and the text.
void ReportItemText(const char* format, unsigned number, std::string_view text);

// A record that is bytes, each of which `format` takes.
void ReportItemBytes(const char* format, std::span<const std::uint8_t> bytes);

// Releases what reports have taken.
void ReportRelease();
