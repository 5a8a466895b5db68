// A reader of the output for programs, made without a look at its writer.
#pragma once

#include <string>
#include <string_view>

// What is wrong with a text that is to be lines of one JSON object each; empty when nothing is. A member that an object
// has twice is wrong, and so is a control character or a byte that makes no UTF-8.
std::string JsonLinesFault(std::string_view text);
