// Texts of codes.
#include "viewer/TextTable.h"

#include <algorithm>

const char* TextFind(const TextTable& table, std::uint64_t code) {
    constexpr std::uint64_t HighFirst = 0xA0;
    if (!table.High.empty() && code >= HighFirst) {
        if (code - HighFirst < table.High.size()) {
            return table.High[code - HighFirst];
        }
    } else if (code < table.Low.size()) {
        return table.Low[code];
    }
    for (const TextRange& range : table.Ranges) {
        if (code >= range.First && code <= range.Last) {
            return range.Text;
        }
    }
    return UnrecognizedText;
}

const char* TextFind(std::span<const TextCode> texts, std::uint64_t code) {
    const auto found = std::lower_bound(texts.begin(), texts.end(), code,
                                        [](const TextCode& text, std::uint64_t sought) { return text.Code < sought; });
    return found != texts.end() && found->Code == code ? found->Text : nullptr;
}
