// The nodes of the parsed command line and their lists.
#pragma once

#include "Lib/Common/List.h"

#include <cstdint>

// Marks a command node.
constexpr std::uint32_t ArgNodeCommand = 36;

// A given command, or one of its parameters. The text of a parameter that validation added is the node's own.
struct ArgNode {
    char* Text;
    ArgNode* Params; // a command's first parameter; parameters stay in the order given
    ArgNode* Next;
    std::uint32_t Kind; // ArgNodeCommand, or 0 in a parameter node
    bool TextOwned;
};

using ArgNodeList = List<ArgNode>;

// Makes a zeroed node of a kind and appends it; null without memory, the list unchanged.
ArgNode* ArgNodeAppend(ArgNodeList* list, std::uint32_t kind);

// Appends a zeroed parameter node to a command; null without memory, the command unchanged.
ArgNode* ArgNodeParamAppend(ArgNode* command);

// Releases every node of the list, parameters included, and empties it.
void ArgNodesRelease(ArgNodeList* list);

// A command name without one leading '.'.
const char* CommandNameSkipDot(const char* name);

// Tells whether two texts are equal, exactly or without regard to case (ASCII).
bool TextEqual(const char* left, const char* right, bool ignoreCase);
