// JSON being written.
#include "viewer/Json.h"

#include "Lib/Utf8.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <new>
#include <utility>

namespace {

// Whether a character stands for itself, whatever the text is.
bool IsPlain(char character) {
    return character >= ' ' && character <= '~' && character != '"' && character != '\\';
}

} // namespace

void JsonText::Add(std::string_view text) {
    if (text.size() > Room - Size && !OutOfMemory) {
        constexpr std::size_t least = 256;
        const std::size_t room = std::max({least, 2 * Room, Size + text.size()});
        std::unique_ptr<char[]> more(new (std::nothrow) char[room]); // NOLINT(*-avoid-c-arrays)
        OutOfMemory = more == nullptr;
        if (!OutOfMemory) {
            std::copy_n(Characters.get(), Size, more.get());
            Characters = std::move(more);
            Room = room;
        }
    }
    if (!OutOfMemory) {
        std::copy_n(text.data(), text.size(), Characters.get() + Size);
        Size += text.size();
    }
}

void JsonText::Add(std::uint64_t number) {
    char digits[24];
    const int count = std::snprintf(digits, sizeof digits, "%llu", static_cast<unsigned long long>(number));
    Add({digits, static_cast<std::size_t>(count)});
}

void JsonText::AddString(std::string_view text) {
    constexpr unsigned lineSeparator = 0x2028;
    constexpr unsigned paragraphSeparator = 0x2029;
    const bool utf8 = IsUtf8(text);
    Add("\"");
    for (;;) {
        const auto* const plainEnd = std::ranges::find_if_not(text, IsPlain);
        const auto plain = static_cast<std::size_t>(plainEnd - text.begin());
        Add(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        const auto byte = [text](std::size_t at) { return static_cast<unsigned>(static_cast<std::uint8_t>(text[at])); };
        const std::size_t length = utf8 ? Utf8Length(text) : 1;
        // Of longer characters only some of three bytes are escaped.
        const unsigned code = length == 1   ? byte(0)
                              : length == 2 ? (byte(0) & 0x1F) << 6 | (byte(1) & 0x3F)
                              : length == 3 ? (byte(0) & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F)
                                            : lineSeparator - 1;
        if (code == '"' || code == '\\') {
            Add("\\");
            Add(text.substr(0, 1));
        } else if (code < 0x20 || (code >= 0x7F && code < 0xA0) || code == lineSeparator ||
                   code == paragraphSeparator) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", code);
            Add(escape);
        } else if (length == 1 && code >= 0x80) {
            const char latin[] = {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
            Add({latin, sizeof latin});
        } else {
            Add(text.substr(0, length));
        }
        text.remove_prefix(length);
    }
    Add("\"");
}

void JsonText::AddComma() {
    if (Size != 0 && Characters[Size - 1] != '{' && Characters[Size - 1] != '[') {
        Add(",");
    }
}

void JsonText::AddName(std::string_view name) {
    AddComma();
    AddString(name);
    Add(":");
}

void JsonText::AddBytes(std::span<const std::uint8_t> bytes) {
    Add("\"");
    for (const std::uint8_t byte : bytes) {
        constexpr char digits[] = "0123456789abcdef";
        const char text[] = {digits[byte >> 4], digits[byte & 0x0F]};
        Add({text, sizeof text});
    }
    Add("\"");
}

void JsonText::AddUuid(std::span<const std::uint8_t> bytes, bool little) {
    constexpr std::uint8_t littleOrder[] = {3, 2, 1, 0, 5, 4, 7, 6};
    char text[2 * 16 + 4 + 1];
    std::size_t end = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        const bool part = i == 4 || i == 6 || i == 8 || i == 10;
        const std::uint8_t byte = bytes[little && i < std::size(littleOrder) ? littleOrder[i] : i];
        end += static_cast<std::size_t>(std::snprintf(text + end, sizeof text - end, part ? "-%02x" : "%02x", byte));
    }
    AddString({text, end});
}

void JsonText::Clear() {
    Size = 0;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = IsPlain(text[0]) ? 1 : Utf8Length(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}
