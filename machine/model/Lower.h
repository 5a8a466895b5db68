// Names that Windows compares without regard to case.
#pragma once

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

namespace StandIn {

// Lower case, in which two spellings of a name are the same.
inline std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char one) { return static_cast<char>(std::tolower(one)); });
    return lower;
}

} // namespace StandIn
