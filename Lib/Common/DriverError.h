// Why a driver does not start, in words.
#pragma once

#include <cstdint>
#include <string>

// One line for the system's error number that a driver's start or the opening of its device gave, without a line break:
// the number, the system's own text, what it usually means, and where to read on. 0 stands for a start that it did not
// come to, because the driver's file could not be made.
std::string DriverErrorLine(std::uint32_t error);
