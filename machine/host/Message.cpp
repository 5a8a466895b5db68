// What this computer's user is told beside the program's own output.
#include "machine/host/Message.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace StandIn {

namespace {

// How many bytes from the front make a character that is no control character; 0 when the first byte makes none.
std::size_t CharacterLength(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text[0]);
    if (first < 0x80) {
        return first >= 0x20 && first != 0x7F ? 1 : 0;
    }
    const std::size_t length = first >= 0xF5 ? 0 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
    const std::string_view rest = text.substr(1, length == 0 ? 0 : length - 1);
    const bool whole = rest.size() + 1 == length && std::all_of(rest.begin(), rest.end(), [](char one) {
                           return (static_cast<std::uint8_t>(one) & 0xC0U) == 0x80;
                       });
    const bool control = first == 0xC2 && whole && static_cast<std::uint8_t>(rest[0]) < 0xA0;
    return whole && !control ? length : 0;
}

} // namespace

void MessageSay(std::string_view line) {
    std::string text = "quarrinet: ";
    while (!line.empty()) {
        const std::size_t length = CharacterLength(line);
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<std::uint8_t>(line[0]));
        text += length != 0 ? line.substr(0, length) : escape;
        line.remove_prefix(std::max<std::size_t>(length, 1));
    }
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace StandIn
