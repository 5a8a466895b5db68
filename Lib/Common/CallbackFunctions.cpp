// Functions that a tool registers to be called at certain points of the library's work.
#include "Lib/Common/CallbackFunctions.h"

#include <memory>
#include <new>

namespace {

struct CallbackPair {
    std::uint32_t Type;
    CallbackFunction Function;
    std::unique_ptr<CallbackPair> Next;
};

std::unique_ptr<CallbackPair> Head;
CallbackPair* Tail = nullptr;

} // namespace

RyxStatus CallbackFunctionRegister(std::uint32_t type, CallbackFunction function) {
    if (function == nullptr) {
        return RyxErrorArgument;
    }
    std::unique_ptr<CallbackPair> pair(new (std::nothrow) CallbackPair{type, function, nullptr});
    if (pair == nullptr) {
        return RyxErrorMemory;
    }
    std::unique_ptr<CallbackPair>& link = Tail == nullptr ? Head : Tail->Next;
    Tail = pair.get();
    link = std::move(pair);
    return RyxOk;
}

void CallbackFunctionsCall(std::uint32_t type, std::uint32_t phase) {
    for (const CallbackPair* pair = Head.get(); pair != nullptr; pair = pair->Next.get()) {
        if (pair->Type == type) {
            pair->Function(phase);
        }
    }
}

void CallbackFunctionsRelease() {
    while (Head != nullptr) {
        Head = std::move(Head->Next);
    }
    Tail = nullptr;
}

void CallbackFunctionsReset() {
    CallbackFunctionsRelease();
}
