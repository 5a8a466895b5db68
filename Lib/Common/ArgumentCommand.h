// The command registry.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// One registered command; the texts are terminated within their space.
struct ArgCommand {
    char Name[32];
    char Description[64];
    char Format[64];
    char Syntax[64];
    ArgCommand* Next;
};

// Sets the case rule: 1 compares names without regard to case, any other value (0 at first) exactly.
void ArgumentCaseRuleSet(std::uint8_t ignoreCase);

// Tells whether two command names are equal under the case rule, a leading '.' ignored on both sides.
bool ArgumentNameEqual(const char* left, const char* right);

// Appends a command to the registry and copies the texts into it, each cut to its space. RyxErrorMemory.
RyxStatus ArgumentCommandAdd(const char* name, const char* description, const char* format, const char* syntax);

// The first registered command of that name; null for none.
const ArgCommand* ArgumentCommandFind(const char* name);

// The registered commands in registration order.
const ArgCommand* ArgumentCommandsRegistered();

// Asks the firmware about a command name. RyxOk: allowed; RyxErrorFirmwareRefusal: refused; RyxErrorNoPlatformInfo,
// RyxErrorNoAnswer, RyxErrorFirmwareRequest: the firmware could not be asked or gave no usable answer;
// RyxErrorArgument: no name.
RyxStatus ArgumentCommandQuery(const char* name);

// Prints a command's syntax line.
void ArgumentSyntaxPrint(const ArgCommand& command);

// Releases every registered command and puts the case rule back to exact.
void ArgumentCommandRelease();
