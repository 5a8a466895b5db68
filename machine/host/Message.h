// What this computer's user is told beside the program's own output.
#pragma once

#include <string_view>

namespace StandIn {

// Prints one line on standard error, behind the program's name. A byte that could drive the terminal or end the line is
// written as \xNN.
void MessageSay(std::string_view line);

} // namespace StandIn
