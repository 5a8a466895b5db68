// Paths of this computer in wide characters and back.
#include "machine/windows/WideText.h"

#include <cstddef>
#include <cstdint>

namespace StandIn {

namespace {

constexpr std::uint32_t HighSurrogates = 0xD800;
constexpr std::uint32_t LowSurrogates = 0xDC00;
constexpr std::uint32_t SurrogatesEnd = 0xE000;
constexpr std::uint32_t FirstPair = 0x10000;
constexpr std::uint32_t CodesEnd = 0x110000;

// Reads one character of UTF-8 in its shortest form; its length, or 0 when there is none.
std::size_t CharacterRead(const std::string& text, std::size_t at, std::uint32_t* code) {
    constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, FirstPair};
    const auto first = static_cast<unsigned char>(text[at]);
    const std::size_t length = first < 0x80 ? 1 : first < 0xC0 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (length == 0 || first >= 0xF8 || text.size() - at < length) {
        return 0;
    }
    *code = length == 1 ? first : first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[at + i]);
        if ((next & 0xC0U) != 0x80) {
            return 0;
        }
        *code = *code << 6U | (next & 0x3FU);
    }
    const bool surrogate = *code >= HighSurrogates && *code < SurrogatesEnd;
    return *code < smallest[length] || surrogate || *code >= CodesEnd ? 0 : length;
}

} // namespace

std::wstring WideText(const std::string& text) {
    std::wstring wide;
    for (std::size_t at = 0; at < text.size();) {
        std::uint32_t code = 0;
        const std::size_t length = CharacterRead(text, at, &code);
        if (length == 0) {
            wide += static_cast<wchar_t>(LowSurrogates | static_cast<unsigned char>(text[at]));
            ++at;
            continue;
        }
        if (code >= FirstPair) {
            wide += static_cast<wchar_t>(HighSurrogates | (code - FirstPair) >> 10U);
            code = LowSurrogates | ((code - FirstPair) & 0x3FFU);
        }
        wide += static_cast<wchar_t>(code);
        at += length;
    }
    return wide;
}

std::string NarrowText(const std::wstring& text) {
    std::string narrow;
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::uint32_t code = static_cast<std::uint32_t>(text[at]) & 0xFFFFU;
        if (code >= LowSurrogates + 0x80 && code < LowSurrogates + 0x100) {
            narrow += static_cast<char>(code);
            continue;
        }
        if (code >= HighSurrogates && code < LowSurrogates && at + 1 < text.size()) {
            ++at;
            code = FirstPair + ((code - HighSurrogates) << 10U | (static_cast<std::uint32_t>(text[at]) & 0x3FFU));
        }
        constexpr std::uint32_t leads[] = {0, 0xC0, 0xE0, 0xF0};
        unsigned more = code < 0x80 ? 0 : code < 0x800 ? 1 : code < FirstPair ? 2 : 3;
        narrow += static_cast<char>(leads[more] | code >> 6 * more);
        while (more-- != 0) {
            narrow += static_cast<char>(0x80U | (code >> 6 * more & 0x3FU));
        }
    }
    return narrow;
}

} // namespace StandIn
