// The operating system's version and this process.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// Major and minor version of the operating system (0 and 0 when it does not tell).
void SystemVersionGet(std::uint32_t* major, std::uint32_t* minor);
