// What this computer's user is told beside the program's own output.
#include "machine/host/Message.h"

#include "Lib/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace StandIn {

namespace {

// How many bytes from the front make a character that is no control character; 0 when the first byte makes none.
std::size_t ShownLength(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text[0]);
    return first < 0x20 || first == 0x7F || Utf8BeginsControl(text) ? 0 : Utf8Length(text);
}

} // namespace

void MessageSay(std::string_view line) {
    std::string text = "quarrinet: ";
    while (!line.empty()) {
        const std::size_t length = ShownLength(line);
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<std::uint8_t>(line[0]));
        text += length != 0 ? line.substr(0, length) : escape;
        line.remove_prefix(std::max<std::size_t>(length, 1));
    }
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace StandIn
