// The command line: registered commands, validation of what was given, parameters, and the command list.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstddef>
#include <cstdint>

struct ArgNode;

// Adds a command. Name: at most 31 characters, without a prefix character; description, format and syntax: at most 63
// characters each, empty for none; longer texts are cut. A format is a list of tokens apart by spaces: "%d", "%x" or
// "%s", each with an optional "=default", or "..." for any further parameters. RyxErrorArgument: a text is missing;
// RyxErrorFirmwareRefusal: the firmware refuses the command; RyxErrorMemory. A failure adds nothing.
RyxStatus RyxArgCommandRegister(const char* name, const char* description, const char* format, const char* syntax);

// Tells whether a command was given, and gives its first node (the library's) when `node` is passed. Names compare
// exactly until RyxArgSyntaxProcess has set the case rule. RyxErrorArgument: no name; RyxErrorNotFound: not given.
RyxStatus RyxArgCommandFind(const char* name, ArgNode** node);

// Validates every given command against its registered format. A case byte of 1 makes names compare without regard to
// case from here on; a print byte of 1 prints what is wrong. `failed`, when passed, receives the node that failed.
// RyxErrorDuplicate, RyxErrorNotFound (no command, or an unknown one), RyxErrorParameter, RyxErrorUnsupported (a bad
// format), RyxErrorMemory.
RyxStatus RyxArgSyntaxProcess(std::uint8_t ignoreCase, std::uint8_t print, ArgNode** failed);

// Copies the text of a command's parameter (index from 0) into a buffer of `length` bytes, cut to fit and always
// terminated. RyxErrorArgument: no buffer or a length of 0; RyxErrorObject: not a command node; RyxErrorNotFound: no
// such parameter (the buffer is untouched).
RyxStatus RyxArgParamGet(const ArgNode* node, std::uint32_t index, char* buffer, std::size_t length);

// Reads a whole text as a decimal number with an optional sign; it wraps at 64 bits. RyxErrorArgument: a missing
// argument; RyxErrorNotDecimal: not a decimal number.
RyxStatus RyxArgNumberParse(const char* text, std::int64_t* number);

// Prints the command list (mode 1), pausing after each screenful of a console. RyxErrorUnsupported: any other mode,
// which prints nothing.
RyxStatus RyxArgHelpPrint(std::uint8_t mode);
