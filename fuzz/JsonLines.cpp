// A reader of the output for programs.
#include "fuzz/JsonLines.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace {

constexpr int MostLevels = 8;

class Reader {
public:
    explicit Reader(std::string_view text) : Rest(text) {}

    // What it finds first, from the front on: each reads one thing and says whether it was there.
    bool Object(int level) {
        std::set<std::string_view> names;
        if (!Take("{")) {
            return false;
        }
        for (bool more = !Take("}"); more; more = !Take("}")) {
            std::string_view name;
            if ((!names.empty() && !Take(",")) || !String(&name) || !names.insert(name).second || !Take(":") ||
                !Value(level)) {
                return false;
            }
        }
        return true;
    }
    bool Take(std::string_view expected) {
        const bool there = Rest.starts_with(expected);
        Rest.remove_prefix(there ? expected.size() : 0);
        return there;
    }
    [[nodiscard]] std::string_view Left() const { return Rest; }

private:
    bool Array(int level) {
        if (!Take("[")) {
            return false;
        }
        bool first = true;
        for (bool more = !Take("]"); more; more = !Take("]")) {
            if ((!first && !Take(",")) || !Value(level)) {
                return false;
            }
            first = false;
        }
        return true;
    }

    bool Value(int level) {
        std::string_view text;
        return level < MostLevels && (Take("null") || Take("true") || Take("false") || Number() || String(&text) ||
                                      Array(level + 1) || Object(level + 1));
    }

    bool Number() {
        const std::size_t length = std::min(Rest.find_first_not_of("0123456789"), Rest.size());
        const bool there = length != 0 && length <= 16 && (length == 1 || Rest[0] != '0');
        Rest.remove_prefix(there ? length : 0);
        return there;
    }

    bool String(std::string_view* text) {
        const std::string_view from = Rest;
        if (!Take("\"")) {
            return false;
        }
        while (!Rest.empty() && Rest[0] != '"') {
            if (!Character()) {
                return false;
            }
        }
        *text = from.substr(0, from.size() - Rest.size());
        return Take("\"");
    }

    bool Character() {
        if (Take("\\u")) {
            const bool digits = Rest.size() >= 4 && Rest.find_first_not_of("0123456789abcdef") >= 4;
            Rest.remove_prefix(digits ? 4 : 0);
            return digits;
        }
        if (Take("\\")) {
            return Take("\"") || Take("\\");
        }
        const auto first = static_cast<unsigned char>(Rest[0]);
        std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        if (first < 0x20 || first == 0x7F || first > 0xF4 || length == 0 || Rest.size() < length) {
            return false;
        }
        unsigned code = first & (0xFFU >> (length == 1 ? 0 : length + 1));
        for (Rest.remove_prefix(1); --length != 0; Rest.remove_prefix(1)) {
            const auto byte = static_cast<unsigned char>(Rest[0]);
            if ((byte & 0xC0) != 0x80) {
                return false;
            }
            code = code << 6 | (byte & 0x3F);
        }
        // Neither a control character, nor a surrogate, a form that is too long, or a separator of lines.
        return !(code >= 0x80 && code < 0xA0) && !(code >= 0xD800 && code < 0xE000) && code <= 0x10FFFF &&
               code != 0x2028 && code != 0x2029 && (first < 0xE0 || code >= (first < 0xF0 ? 0x800U : 0x10000U));
    }

    std::string_view Rest;
};

} // namespace

std::string JsonLinesFault(std::string_view text) {
    Reader reader(text);
    while (!reader.Left().empty()) {
        const std::string_view line = reader.Left().substr(0, reader.Left().find('\n'));
        if (!reader.Object(0) || !reader.Take("\n")) {
            return "no JSON at " + std::string(reader.Left().substr(0, 60)) + " in " + std::string(line);
        }
    }
    return "";
}
