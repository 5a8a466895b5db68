// Argument collection: the process arguments, and the response files they name, as a list of given commands.
#pragma once

#include "Lib/Common/DescFunctions.h"
#include "Lib/RyxStatus.h"

#include <cstdint>

// Collects the command line, once; every later call gives the first one's status. RyxErrorNotFound: a response file
// can't be read, or an argument stands before any command; RyxErrorArgument: a response file has an open quote, or the
// argument array holds a null; RyxErrorMemory: no memory, or more than 256 strings. After a failure no
// command counts as given.
RyxStatus ArgumentCollect();

// The given commands in command-line order; the nodes are the library's.
ArgNode* ArgumentCommandsGet();

// Appends a zeroed parameter node to a command; null without a command or memory.
ArgNode* ArgumentParamNodeAdd(ArgNode* command);

// Appends the arguments that a response file holds. RyxErrorNotFound: the file can't be read; RyxErrorArgument: an open
// quote, or no name; RyxErrorMemory.
RyxStatus ArgumentResponseFileRead(const char* name);

// Appends the tokens of an unquoted stretch of a response-file line; a token that begins with '#' ends the stretch.
// RyxErrorArgument: no text; RyxErrorMemory: more strings than the limit.
RyxStatus ArgumentTokensAdd(const char* text, std::size_t length);

// Appends a private copy of a text; an empty one is accepted and not stored. RyxErrorArgument: no text; RyxErrorMemory:
// the copy can't be made, or the limit is reached.
RyxStatus ArgumentStringAdd(const char* text, std::size_t length);

// Releases the argument strings and every node; a later request collects anew.
void ArgumentRelease();
