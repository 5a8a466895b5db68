// The command registry.
#include "Lib/Common/ArgumentCommand.h"

#include "Lib/API/RyxBin.h"
#include "Lib/API/RyxFirmware.h"
#include "Lib/API/RyxPrint.h"
#include "Lib/Common/DescFunctions.h"
#include "Lib/Common/FirmwareChannel.h"
#include "Lib/Common/LibraryContext.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr std::uint64_t CommandNameQuery = 0x12200;
constexpr std::uint32_t CommandNameSpace = 32;
constexpr std::uint64_t AnswerPreset = 255;

ArgumentCommandState& State() {
    return LibraryContextGet().Commands;
}

template <std::size_t N> void TextCopy(char (&space)[N], const char* text) {
    const std::size_t length = std::min(std::strlen(text), N - 1);
    std::memcpy(space, text, length);
}

} // namespace

RyxStatus ArgumentCommandAdd(const char* name, const char* description, const char* format, const char* syntax) {
    auto* command = new (std::nothrow) ArgCommand{};
    if (command == nullptr) {
        return RyxErrorMemory;
    }
    TextCopy(command->Name, name);
    TextCopy(command->Description, description);
    TextCopy(command->Format, format);
    TextCopy(command->Syntax, syntax);
    ArgumentCommandState& state = State();
    if (state.Tail == nullptr) {
        state.Head = command;
    } else {
        state.Tail->Next = command;
    }
    state.Tail = command;
    return RyxOk;
}

const ArgCommand* ArgumentCommandFind(const char* name) {
    const ArgumentCommandState& state = State();
    for (const ArgCommand* command = state.Head; command != nullptr; command = command->Next) {
        if (TextEqual(CommandNameSkipDot(command->Name), CommandNameSkipDot(name), state.IgnoreCase == 1)) {
            return command;
        }
    }
    return nullptr;
}

const ArgCommand* ArgumentCommandsRegistered() {
    return State().Head;
}

RyxStatus ArgumentCommandQuery(const char* name) {
    if (!PlatformInfoHeld()) {
        return RyxErrorNoPlatformInfo;
    }
    RyxBin* bin = nullptr;
    if (const RyxStatus status = RyxBinCreate(CommandNameSpace, &bin); status != RyxOk) {
        return status;
    }
    const RyxBinOwner owner(bin);
    std::memcpy(bin->Data, name, std::min<std::size_t>(std::strlen(name), CommandNameSpace - 1));
    std::uint64_t answer = AnswerPreset;
    if (RyxFirmwareRequest(CommandNameQuery, &answer, bin) != RyxOk) {
        return RyxErrorFirmwareRequest;
    }
    if (answer == 0) {
        return RyxOk;
    }
    const bool unknown = (static_cast<std::uint32_t>(answer) | 0x80000000U) == RyxErrorUnsupported;
    return unknown || answer == AnswerPreset ? RyxErrorNoAnswer : RyxErrorFirmwareRefusal;
}

void ArgumentSyntaxPrint(const ArgCommand& command) {
    RyxPrintf("Syntax: ");
    RyxPrintf("-%s %s\n", CommandNameSkipDot(command.Name), command.Syntax);
}

void ArgumentCommandRelease() {
    ArgumentCommandState& state = State();
    while (ArgCommand* command = state.Head) {
        state.Head = command->Next;
        delete command;
    }
    state = {};
}
