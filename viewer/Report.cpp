// What decoders say about a table: lines for people, objects for programs.
#include "viewer/Report.h"

#include "Lib/API/RyxPrint.h"
#include "Lib/LittleEndian.h"
#include "viewer/Json.h"
#include "viewer/ViewerState.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace {

// What one print holds.
constexpr std::size_t PrintLimit = 1023;

constexpr std::size_t LabelLimit = 64;

// What an entry's line is: there is none, it goes on, or it has ended.
enum class LineState : std::uint8_t { None, Begun, Ended };

// An entry that is being said.
struct Entry {
    bool Open = false;
    LineState Line = LineState::None;
    bool Exact = false; // the text is a string of the table: blanks at its end belong to it
    bool Missing = false;
    bool Counts = false; // the bytes are a number
    bool List = false;
    bool Uuid = false;
    std::span<const std::uint8_t> Bytes;   // they outlive the entry, as the next ones do
    std::span<const std::uint8_t> Strings; // what the texts of a list are taken from
    JsonText Label;
    JsonText Text;
    JsonText Meaning;
    JsonText Bits;
    JsonText Details;
    JsonText Items;

    [[nodiscard]] bool Failed() const {
        return Label.Failed() || Text.Failed() || Meaning.Failed() || Bits.Failed() || Details.Failed() ||
               Items.Failed();
    }
};

// The object that is being made, the entry of a field, and the entry within a record of that one's list.
struct Object {
    JsonText Text;
    Entry Field;
    Entry Inner;
    bool InRecord = false;
    bool InEntryPoint = false; // its fields have no numbers
};

Object Current;

Entry& EntryNow() {
    return Current.InRecord ? Current.Inner : Current.Field;
}

std::string_view EndTrimmed(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \n");
    return text.substr(0, last == text.npos ? 0 : last + 1);
}

std::span<const std::uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

void NumberAdd(JsonText& to, const char* name, std::uint64_t number) {
    to.AddName(name);
    to.Add(number);
}

void StringAdd(JsonText& to, std::string_view name, std::string_view text, bool missing = false) {
    to.AddName(name);
    if (missing) {
        to.Add("null");
    } else {
        to.AddString(text);
    }
}

void ListAdd(JsonText& to, const char* name, const JsonText& members, std::string_view brackets) {
    to.AddName(name);
    to.Add(brackets.substr(0, 1));
    to.Add(members.Text());
    to.Add(brackets.substr(1));
}

void ValueAdd(JsonText& to, const Entry& entry) {
    constexpr std::uint64_t exactEnd = std::uint64_t{1} << 53; // of the numbers that every reader takes as they are
    const std::size_t size = entry.Bytes.size();
    const std::uint64_t number = LittleEndianRead(entry.Bytes.data(), size);
    if (entry.Counts && size != 0 && size <= sizeof number && number < exactEnd) {
        NumberAdd(to, "number", number);
    }
    if (!entry.Meaning.Text().empty()) {
        StringAdd(to, "meaning", entry.Meaning.Text());
    }
    if (size != 0) {
        to.AddName("bytes");
        to.AddBytes(entry.Bytes);
    }
}

void UuidAdd(JsonText& to, std::span<const std::uint8_t> bytes) {
    constexpr std::size_t size = 16;
    const auto all = [bytes](std::uint8_t value) { return std::ranges::count(bytes, value) == size; };
    if (bytes.size() == size && !all(0) && !all(0xFF)) {
        to.AddName("uuid");
        to.AddUuid(bytes, ViewerSmbiosMajor > 2 || (ViewerSmbiosMajor == 2 && ViewerSmbiosMinor >= 6));
    }
}

// Adds an entry to the members of an object, and empties it.
void EntryEnd(Entry& entry, JsonText& to, bool numbered) {
    if (!entry.Open) {
        return;
    }
    to.AddName(entry.Label.Text());
    to.Add("{");
    if (numbered) {
        NumberAdd(to, "field", ViewerFieldCounter);
    }
    if (entry.Line != LineState::None) {
        StringAdd(to, "text", entry.Exact ? entry.Text.Text() : EndTrimmed(entry.Text.Text()), entry.Missing);
    }
    if (entry.Exact && !IsUtf8(entry.Text.Text())) {
        entry.Bytes = BytesOf(entry.Text.Text());
    }
    ValueAdd(to, entry);
    if (!entry.Bits.Text().empty()) {
        ListAdd(to, "bits", entry.Bits, "[]");
    }
    if (!entry.Details.Text().empty()) {
        ListAdd(to, "details", entry.Details, "{}");
    }
    if (entry.List) {
        ListAdd(to, "items", entry.Items, "[]");
    }
    if (entry.Uuid) {
        UuidAdd(to, entry.Bytes);
    }
    to.Add("}");
    entry.Open = false;
}

void FieldEntryEnd() {
    EntryEnd(Current.Field, Current.Text, !Current.InEntryPoint);
}

void RecordEnd() {
    if (Current.InRecord) {
        EntryEnd(Current.Inner, Current.Field.Items, false);
        Current.Field.Items.Add("}");
        Current.InRecord = false;
    }
}

// Begins an entry under a label; the one before it on its level ends.
Entry& EntryBegin(std::string_view label) {
    Entry& entry = EntryNow();
    if (Current.InRecord) {
        EntryEnd(entry, Current.Field.Items, false);
    } else {
        FieldEntryEnd();
    }
    for (JsonText* const text :
         {&entry.Label, &entry.Text, &entry.Meaning, &entry.Bits, &entry.Details, &entry.Items}) {
        text->Clear();
    }
    entry.Open = true;
    entry.Line = LineState::None;
    entry.Exact = entry.Missing = entry.Counts = entry.List = entry.Uuid = false;
    entry.Bytes = entry.Strings = {};
    entry.Label.Add(label);
    return entry;
}

// A format's label, and what follows it.
struct FormatParts {
    bool InRecord; // the number of a record comes first
    std::string_view Label;
    const char* Rest;
};

FormatParts FormatSplit(const char* format) {
    constexpr std::string_view record = "%02d.";
    const std::string_view whole = format;
    const bool inRecord = whole.starts_with(record);
    const auto place = [whole](std::size_t found) { return std::min(found, whole.size()); };
    const std::size_t begin = place(whole.find_first_not_of(' ', inRecord ? record.size() : 0));
    const std::size_t end = place(whole.find(" :", begin));
    const std::size_t rest = place(whole.find_first_not_of(' ', place(end + 2)));
    return {inRecord, whole.substr(begin, end - begin), format + rest};
}

// Adds what a format prints to the line of an entry, as far as that goes on.
void LineAdd(Entry& entry, const char* format, std::va_list arguments) {
    if (entry.Line != LineState::Begun) {
        return;
    }
    char text[PrintLimit + 1];
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    const std::string_view shown(text, std::min<std::size_t>(std::max(length, 0), PrintLimit));
    const std::size_t end = shown.find('\n');
    entry.Text.Add(shown.substr(0, end));
    entry.Line = end == shown.npos ? LineState::Begun : LineState::Ended;
}

void LineAddOf(Entry& entry, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    LineAdd(entry, format, arguments);
    va_end(arguments);
}

// Prints a text whole with a format that takes it, behind `number` if it takes that.
void TextPrint(const char* format, std::string_view text, unsigned number) {
    const std::string_view whole = format;
    const std::size_t at = whole.find("%s");
    const bool numbered = whole.find('%') != at;
    char digits[12] = "";
    const int digitCount = numbered ? std::snprintf(digits, sizeof digits, "%u", number) : 0;
    if (whole.size() - (numbered ? 4 : 2) + static_cast<std::size_t>(digitCount) + text.size() <= PrintLimit) {
        if (numbered) {
            RyxPrintf(format, number, text.data());
        } else {
            RyxPrintf(format, text.data());
        }
        return;
    }
    // Too long for one print: the label, the text in pieces, and what follows it.
    const std::size_t labelEnd = numbered ? whole.find('%') : at;
    RyxPrintf("%.*s", static_cast<int>(labelEnd), format);
    if (numbered) {
        RyxPrintf("%u%.*s", number, static_cast<int>(at - labelEnd - 2), format + labelEnd + 2);
    }
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), PrintLimit))) {
        RyxPrintf("%.*s", static_cast<int>(std::min(text.size(), PrintLimit)), text.data());
    }
    FixedPrint(format + at + 2);
}

} // namespace

void ReportStructBegin(const ReportHeader& header) {
    if (!ViewerJson) {
        return;
    }
    JsonText& text = Current.Text;
    text.Add("{");
    NumberAdd(text, "type", header.Type);
    StringAdd(text, "name", header.Name);
    NumberAdd(text, "instance", header.Instance);
    NumberAdd(text, "handle", header.Handle);
    NumberAdd(text, "length", header.Length);
    text.AddName("fields");
    text.Add("{");
}

void ReportEntryPointBegin() {
    if (ViewerJson) {
        Current.Text.Add("{\"entryPoint\":{");
        Current.InEntryPoint = true;
    }
}

void ReportEnd() {
    if (!ViewerJson) {
        return;
    }
    ReportFieldEnd();
    Current.Text.Add("}}\n");
    if (Current.Text.Failed() || Current.Field.Failed() || Current.Inner.Failed()) {
        ReportRelease();
        RyxOutputErrorSet(ENOMEM);
        return;
    }
    RyxOutputWrite(Current.Text.Text().data(), Current.Text.Text().size());
    Current.Text.Clear();
    Current.InEntryPoint = false;
}

void ReportFieldEnd() {
    if (ViewerJson) {
        RecordEnd();
        FieldEntryEnd();
    }
}

void ReportLine(const FieldValue& value, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    if (!ViewerJson) {
        RyxPrintfList(format, arguments);
    } else {
        const FormatParts parts = FormatSplit(format);
        if (parts.InRecord) {
            va_arg(arguments, int);
        }
        char label[LabelLimit] = "";
        parts.Label.copy(label, sizeof label - 1);
        char counted[LabelLimit] = "";
        if (parts.Label.find('%') != parts.Label.npos) {
            std::snprintf(counted, sizeof counted, label, va_arg(arguments, int));
        }
        Entry& entry = EntryBegin(*counted != '\0' ? counted : label);
        entry.Bytes = value.Bytes;
        entry.Counts = true;
        entry.Line = LineState::Begun;
        LineAdd(entry, parts.Rest, arguments);
    }
    va_end(arguments);
}

void ReportDetail(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    if (!ViewerJson) {
        RyxPrintfList(format, arguments);
    } else {
        const FormatParts parts = FormatSplit(format);
        char text[PrintLimit + 1];
        std::vsnprintf(text, sizeof text, parts.Rest, arguments);
        StringAdd(EntryNow().Details, parts.Label, EndTrimmed(text));
    }
    va_end(arguments);
}

void ReportMore(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    if (ViewerJson) {
        LineAdd(EntryNow(), format, arguments);
    } else {
        RyxPrintfList(format, arguments);
    }
    va_end(arguments);
}

void ReportValue(const FieldValue& value) {
    if (ViewerJson) {
        EntryNow().Bytes = value.Bytes;
    }
}

void ReportMissing(const char* shown) {
    if (ViewerJson) {
        EntryNow().Missing = true;
    } else {
        FixedPrint(shown);
    }
}

void ReportMeaning(std::string_view text) {
    if (ViewerJson) {
        JsonText& meaning = EntryNow().Meaning;
        meaning.Clear();
        meaning.Add(text);
    }
}

void ReportMeaningOf(std::string_view format) {
    constexpr std::string_view dash = "- ";
    const std::size_t at = format.rfind(dash);
    if (at != format.npos) {
        ReportMeaning(EndTrimmed(format.substr(at + dash.size())));
    }
}

void ReportText(const char* format, std::string_view text, ReportPart part) {
    if (!ViewerJson) {
        TextPrint(format, TextShown(text), 0);
        return;
    }
    const std::string_view label = FormatSplit(format).Label;
    if (part == ReportPart::Detail) {
        StringAdd(EntryNow().Details, label, text, text.empty());
        return;
    }
    Entry& entry = EntryBegin(label);
    entry.Line = LineState::Ended;
    entry.Exact = true;
    entry.Missing = text.empty();
    entry.Text.Add(text);
}

void ReportBits(std::uint64_t value, const char* const* names) {
    if (!ViewerJson) {
        for (int i = 0; names[i] != nullptr; ++i) {
            const int bit = static_cast<int>(value >> (i % 64) & 1);
            RyxPrintf("  Bit%d %s - %d ", i, names[i], bit);
            RyxPrintf(bit == 1 ? "(Yes)\n" : "(No)\n");
        }
        return;
    }
    JsonText& bits = EntryNow().Bits;
    for (unsigned i = 0; names[i] != nullptr; ++i) {
        bits.AddComma();
        bits.Add("{");
        NumberAdd(bits, "bit", i);
        StringAdd(bits, "name", names[i]);
        bits.AddName("set");
        bits.Add((value >> (i % 64) & 1) != 0 ? "true}" : "false}");
    }
}

void ReportBytes(const char* label, const FieldValue& value) {
    ReportLine(value, label, 0);
    for (const std::uint8_t byte : value.Bytes) {
        ReportMore("0x%02X ", byte);
    }
    ReportMore("\n");
}

void ReportRows(const char* label, std::span<const std::uint8_t> bytes, const char* row) {
    if (ViewerJson) {
        EntryBegin(FormatSplit(label).Label).Bytes = bytes;
        return;
    }
    FixedPrint(label);
    constexpr std::size_t rowSize = 16;
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), rowSize))) {
        char text[3 * rowSize];
        std::size_t at = 0;
        for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), rowSize))) {
            std::snprintf(text + at, 3, "%02X", byte);
            text[at + 2] = ' ';
            at += 3;
        }
        text[at - 1] = '\0';
        RyxPrintf(row, text);
    }
}

void ReportUuid() {
    EntryNow().Uuid = ViewerJson;
}

void ReportItems(const char* heading, const char* label, std::span<const std::uint8_t> strings) {
    if (!ViewerJson) {
        if (*heading != '\0') {
            FixedPrint(heading);
        }
        return;
    }
    const FormatParts parts = FormatSplit(heading);
    Entry& entry = EntryBegin(label != nullptr ? std::string_view(label) : parts.Label);
    entry.List = true;
    entry.Strings = strings;
    entry.Line = std::string_view(heading).ends_with(": ") ? LineState::Begun : LineState::None;
}

void ReportItem() {
    if (ViewerJson) {
        RecordEnd();
        Current.Field.Items.AddComma();
        Current.Field.Items.Add("{");
        Current.InRecord = true;
    }
}

void ReportItemNumber(const char* format, unsigned number) {
    if (!ViewerJson) {
        RyxPrintf(format, number, number);
        return;
    }
    Current.Field.Items.AddComma();
    Current.Field.Items.Add(std::uint64_t{number});
    LineAddOf(Current.Field, format, number, number);
}

void ReportItemCode(const char* format, unsigned code, const char* meaning) {
    if (!ViewerJson) {
        RyxPrintf(format, code);
        RyxPrintf("%s\n", meaning);
        return;
    }
    JsonText& items = Current.Field.Items;
    items.AddComma();
    items.Add("{");
    NumberAdd(items, "number", code);
    StringAdd(items, "meaning", meaning);
    items.Add("}");
    LineAddOf(Current.Field, format, code);
    LineAddOf(Current.Field, "%s\n", meaning);
}

void ReportItemText(const char* format, unsigned number, std::string_view text) {
    if (!ViewerJson) {
        TextPrint(format, TextShown(text), number);
        return;
    }
    Entry& entry = Current.Field;
    entry.Items.AddComma();
    entry.Items.AddString(text);
    if (!IsUtf8(text)) {
        entry.Bytes = entry.Strings;
    }
}

void ReportItemBytes(const char* format, std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        if (ViewerJson) {
            LineAddOf(Current.Field, format, byte);
        } else {
            RyxPrintf(format, byte);
        }
    }
    if (ViewerJson) {
        JsonText& items = Current.Field.Items;
        items.AddComma();
        items.Add("{");
        items.AddName("bytes");
        items.AddBytes(bytes);
        items.Add("}");
    }
}

void ReportRelease() {
    Current = {};
}
