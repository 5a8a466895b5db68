// UTF-8, as far as texts of machines need it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// The length of the well-formed UTF-8 sequence at the front of a text; 0 when there is none.
inline std::size_t Utf8Length(std::string_view text) {
    const auto byte = [text](std::size_t at) { return at < text.size() ? static_cast<std::uint8_t>(text[at]) : 0U; };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return text.empty() ? 0 : 1;
    }
    const std::size_t length = first >= 0xF5 ? 0 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
    // The second byte has a narrower range where the first would otherwise make a longer form of a shorter sequence, a
    // surrogate, or more than there is.
    const unsigned from = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned to = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    for (std::size_t at = 1; at < length; ++at) {
        if (byte(at) < (at == 1 ? from : 0x80) || byte(at) > (at == 1 ? to : 0xBF)) {
            return 0;
        }
    }
    return length;
}

// Whether a text begins with a control character that UTF-8 has beyond ASCII, U+0080 to U+009F, or with a byte that
// terminals of older codes take for one: 80h to 9Fh, where it makes no sequence.
inline bool Utf8BeginsControl(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text[0]);
    return Utf8Length(text) == 2 ? first == 0xC2 && static_cast<std::uint8_t>(text[1]) < 0xA0
                                 : first >= 0x80 && first < 0xA0;
}
