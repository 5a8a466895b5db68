// The nodes of the parsed command line and their lists.
#include "Lib/Common/DescFunctions.h"

#include <cstring>

ArgNode* ArgNodeAppend(ArgNodeList* list, std::uint32_t kind) {
    ArgNode* node = ListAppend(list);
    if (node != nullptr) {
        node->Kind = kind;
    }
    return node;
}

ArgNode* ArgNodeParamAppend(ArgNode* command) {
    ArgNodeList params{command->Params, command->Params};
    while (params.Tail != nullptr && params.Tail->Next != nullptr) {
        params.Tail = params.Tail->Next;
    }
    ArgNode* node = ArgNodeAppend(&params, 0);
    command->Params = params.Head;
    return node;
}

void ArgNodesRelease(ArgNodeList* list) {
    for (ArgNode* node = list->Head; node != nullptr; node = node->Next) {
        ArgNodeList params{node->Params, nullptr};
        ArgNodesRelease(&params);
        if (node->TextOwned) {
            delete[] node->Text;
        }
    }
    ListRelease(list);
}

const char* CommandNameSkipDot(const char* name) {
    return *name == '.' ? name + 1 : name;
}

namespace {

char LowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

} // namespace

bool TextEqual(const char* left, const char* right, bool ignoreCase) {
    if (!ignoreCase) {
        return std::strcmp(left, right) == 0;
    }
    while (*left != '\0' && LowerCase(*left) == LowerCase(*right)) {
        ++left;
        ++right;
    }
    return LowerCase(*left) == LowerCase(*right);
}
