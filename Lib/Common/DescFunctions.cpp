// The nodes of the parsed command line and their lists.
#include "Lib/Common/DescFunctions.h"

#include <cstring>
#include <new>

ArgNode* ArgNodeAppend(ArgNodeList* list, std::uint32_t kind) {
    auto* node = new (std::nothrow) ArgNode{};
    if (node == nullptr) {
        return nullptr;
    }
    node->Kind = kind;
    if (list->Tail == nullptr) {
        list->Head = node;
    } else {
        list->Tail->Next = node;
    }
    list->Tail = node;
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
    while (ArgNode* node = list->Head) {
        list->Head = node->Next;
        ArgNodeList params{node->Params, nullptr};
        ArgNodesRelease(&params);
        if (node->TextOwned) {
            delete[] node->Text;
        }
        delete node;
    }
    list->Tail = nullptr;
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
