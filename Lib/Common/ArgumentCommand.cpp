// The command registry.
#include "Lib/Common/ArgumentCommand.h"

#include "Lib/Common/DescFunctions.h"
#include "Lib/Common/FirmwareChannel.h"
#include "Lib/Common/List.h"
#include "Lib/Common/Print.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::uint64_t CommandNameQuery = 0x12200;
constexpr std::uint32_t CommandNameSpace = 32;

List<ArgCommand> Commands;
std::uint8_t CaseRule = 0;

// Copies a text into zeroed space, cut to fit with its terminator.
template <std::size_t N, typename Character> void TextCopy(Character (&space)[N], const char* text) {
    std::memcpy(space, text, std::min(std::strlen(text), N - 1));
}

} // namespace

void ArgumentCaseRuleSet(std::uint8_t ignoreCase) {
    CaseRule = ignoreCase;
}

bool ArgumentNameEqual(const char* left, const char* right) {
    return TextEqual(CommandNameSkipDot(left), CommandNameSkipDot(right), CaseRule == 1);
}

RyxStatus ArgumentCommandAdd(const char* name, const char* description, const char* format, const char* syntax) {
    ArgCommand* command = ListAppend(&Commands);
    if (command == nullptr) {
        return RyxErrorMemory;
    }
    TextCopy(command->Name, name);
    TextCopy(command->Description, description);
    TextCopy(command->Format, format);
    TextCopy(command->Syntax, syntax);
    return RyxOk;
}

const ArgCommand* ArgumentCommandFind(const char* name) {
    const ArgCommand* command = Commands.Head;
    while (command != nullptr && !ArgumentNameEqual(command->Name, name)) {
        command = command->Next;
    }
    return command;
}

const ArgCommand* ArgumentCommandsRegistered() {
    return Commands.Head;
}

RyxStatus ArgumentCommandQuery(const char* name) {
    if (name == nullptr) {
        return RyxErrorArgument;
    }
    if (!PlatformInfoHeld()) {
        return RyxErrorNoPlatformInfo;
    }
    std::uint8_t payload[CommandNameSpace]{};
    TextCopy(payload, name);
    std::uint64_t answer = FirmwareStatusPending;
    if (FirmwareRequest(CommandNameQuery, &answer, payload, sizeof payload) != RyxOk) {
        return RyxErrorFirmwareRequest;
    }
    if (answer == 0) {
        return RyxOk;
    }
    const bool unknown = (static_cast<std::uint32_t>(answer) | 0x80000000U) == RyxErrorUnsupported;
    return unknown || answer == FirmwareStatusPending ? RyxErrorNoAnswer : RyxErrorFirmwareRefusal;
}

void ArgumentSyntaxPrint(const ArgCommand& command) {
    RyxPrintf("Syntax: ");
    RyxPrintf("-%s %s\n", CommandNameSkipDot(command.Name), command.Syntax);
}

void ArgumentCommandRelease() {
    ListRelease(&Commands);
    CaseRule = 0;
}
