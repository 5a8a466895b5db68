// The viewer's command flow.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// The viewer's error numbers, which are the process's exit codes.
constexpr std::uint32_t ViewerErrorCommandLine = 105;
constexpr std::uint32_t ViewerErrorParameter = 152;
constexpr std::uint32_t ViewerErrorUnsupported = 153;
constexpr std::uint32_t ViewerErrorParser = 171;

// Does what the command line asks for and prints an error line when it can't. Returns the error number, 0 for success.
std::uint32_t ViewerMain();

// Prints the error line of one of the four error numbers with a status. Always RyxOk.
RyxStatus ViewerErrorReport(std::uint32_t error, RyxStatus status);
