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

struct ArgumentCommandState {
    ArgCommand* Head;
    ArgCommand* Tail;
    std::uint8_t IgnoreCase; // the case rule: 0 compares names exactly
};

// Appends a command to the registry and copies the texts into it, each cut to its space. RyxErrorMemory.
RyxStatus ArgumentCommandAdd(const char* name, const char* description, const char* format, const char* syntax);

// The first registered command of that name under the case rule, a leading '.' ignored on both sides; null for none.
const ArgCommand* ArgumentCommandFind(const char* name);

// The registered commands in registration order.
const ArgCommand* ArgumentCommandsRegistered();

// Asks the firmware about a command name. RyxOk: allowed; RyxErrorFirmwareRefusal: refused; RyxErrorNoPlatformInfo,
// RyxErrorNoAnswer, RyxErrorFirmwareRequest, RyxErrorMemory: the firmware could not be asked or gave no usable answer.
RyxStatus ArgumentCommandQuery(const char* name);

// Prints a command's syntax line.
void ArgumentSyntaxPrint(const ArgCommand& command);

// Releases every registered command and puts the case rule back to exact.
void ArgumentCommandRelease();
