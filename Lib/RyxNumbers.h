// Numbers that tools and the library share.
#pragma once

#include <cstdint>

// The library's options, 0 to 38; those without a name here are stored only.
constexpr std::uint32_t RyxOptionQuiet = 0;
constexpr std::uint32_t RyxOptionBufferOnly = 13; // cleared by the switch to a method without communication buffer
constexpr std::uint32_t RyxOptionCommunicationBuffer = 21;
constexpr std::uint32_t RyxOptionPaging = 22;
constexpr std::uint32_t RyxOptionSwitchGiven = 23;
constexpr std::uint32_t RyxOptionMethodVariables = 27;
constexpr std::uint32_t RyxOptionMethodOther = 28;
constexpr std::uint32_t RyxOptionMethodBuffer = 29;
constexpr std::uint32_t RyxOptionInfoFlag1 = 32;
constexpr std::uint32_t RyxOptionDetailFirst = 36;
constexpr std::uint32_t RyxOptionDetailSecond = 37;
constexpr std::uint32_t RyxOptionInfoFlag0 = 38;
constexpr std::uint32_t RyxOptionCount = 39;

// Library field number: structure type x 50 + the field's row among the rows of its type.
constexpr std::uint32_t RyxFieldsPerType = 50;
