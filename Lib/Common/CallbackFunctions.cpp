// Functions that a tool registers to be called at certain points of the library's work.
#include "Lib/Common/CallbackFunctions.h"

#include "Lib/Common/List.h"

namespace {

struct CallbackPair {
    std::uint32_t Type;
    CallbackFunction Function;
    CallbackPair* Next;
};

List<CallbackPair> Pairs;

} // namespace

RyxStatus CallbackFunctionRegister(std::uint32_t type, CallbackFunction function) {
    if (function == nullptr) {
        return RyxErrorArgument;
    }
    CallbackPair* pair = ListAppend(&Pairs);
    if (pair == nullptr) {
        return RyxErrorMemory;
    }
    pair->Type = type;
    pair->Function = function;
    return RyxOk;
}

void CallbackFunctionsCall(std::uint32_t type, std::uint32_t phase) {
    for (const CallbackPair* pair = Pairs.Head; pair != nullptr; pair = pair->Next) {
        if (pair->Type == type) {
            pair->Function(phase);
        }
    }
}

void CallbackFunctionsRelease() {
    ListRelease(&Pairs);
}
