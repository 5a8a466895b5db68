// The command line: registration, validation, parameters and the command list.
#include "Lib/API/RyxArg.h"

#include "Lib/API/RyxPrint.h"
#include "Lib/Common/Argument.h"
#include "Lib/Common/ArgumentCommand.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace {

// Tells whether a text is a whole number as strtoul reads it, with nothing behind it.
bool IsNumber(const char* text, int base) {
    char* end = nullptr;
    std::strtoul(text, &end, base);
    return end != text && *end == '\0';
}

// Checks a parameter against a conversion letter. RyxErrorParameter: it does not fit; RyxErrorUnsupported: no such
// letter.
RyxStatus ParameterCheck(char letter, const char* text) {
    const auto among = [letter](std::string_view letters) { return letters.find(letter) != std::string_view::npos; };
    if (among("sSfFgG")) {
        return RyxOk;
    }
    if (!among("dDxX")) {
        return RyxErrorUnsupported;
    }
    return IsNumber(text, among("dD") ? 10 : 16) ? RyxOk : RyxErrorParameter;
}

// The default that a token gives, empty for none.
std::string_view TokenDefault(std::string_view token) {
    const std::size_t equals = token.find('=');
    return token.size() > 3 && equals != std::string_view::npos ? token.substr(equals + 1) : std::string_view();
}

// Gives a command a further parameter that holds a copy of a default; null without memory.
ArgNode* DefaultAdd(ArgNode* command, std::string_view text) {
    auto* copy = new (std::nothrow) char[text.size() + 1];
    if (copy == nullptr) {
        return nullptr;
    }
    text.copy(copy, text.size());
    copy[text.size()] = '\0';
    ArgNode* param = ArgumentParamNodeAdd(command);
    if (param == nullptr) {
        delete[] copy;
        return nullptr;
    }
    param->Text = copy;
    param->TextOwned = true;
    return param;
}

// Checks a command's parameters against a format, adding the defaults of those that were not given.
RyxStatus ParametersCheck(ArgNode* command, std::string_view format) {
    ArgNode* param = command->Params;
    for (;;) {
        format.remove_prefix(std::min(format.find_first_not_of(' '), format.size()));
        if (format.empty()) {
            return param == nullptr ? RyxOk : RyxErrorParameter;
        }
        const std::string_view token = format.substr(0, format.find(' '));
        format.remove_prefix(token.size());
        if (token == "...") {
            return RyxOk;
        }
        if (token[0] != '%') {
            return RyxErrorUnsupported;
        }
        if (param == nullptr) {
            const std::string_view text = TokenDefault(token);
            if (text.empty()) {
                return RyxErrorParameter;
            }
            param = DefaultAdd(command, text);
            if (param == nullptr) {
                return RyxErrorMemory;
            }
        }
        const char letter = token.size() > 1 ? token[1] : '\0';
        if (const RyxStatus status = ParameterCheck(letter, param->Text); status != RyxOk) {
            return status;
        }
        param = param->Next;
    }
}

// Tells whether a command was given twice, whatever the case rule.
bool DuplicateGiven() {
    for (const ArgNode* node = ArgumentCommandsGet(); node != nullptr; node = node->Next) {
        for (const ArgNode* later = node->Next; later != nullptr; later = later->Next) {
            if (TextEqual(node->Text, later->Text, true)) {
                return true;
            }
        }
    }
    return false;
}

void FailurePrint(RyxStatus status, const ArgNode& node, const ArgCommand* command) {
    switch (status) {
    case RyxErrorNotFound:
        RyxPrintf("%s : is not a valid command!\n", node.Text);
        break;
    case RyxErrorParameter:
        RyxPrintf("Parameter error!\n");
        ArgumentSyntaxPrint(*command);
        break;
    case RyxErrorUnsupported:
        RyxPrintf("Internal error: Invalid syntax format!\n");
        break;
    default:
        break;
    }
}

} // namespace

RyxStatus RyxArgCommandRegister(const char* name, const char* description, const char* format, const char* syntax) {
    if (name == nullptr || description == nullptr || format == nullptr || syntax == nullptr) {
        return RyxErrorArgument;
    }
    const bool refused = ArgumentCommandQuery(name) == RyxErrorFirmwareRefusal;
    return refused ? RyxErrorFirmwareRefusal : ArgumentCommandAdd(name, description, format, syntax);
}

RyxStatus RyxArgCommandFind(const char* name, ArgNode** node) {
    if (name == nullptr) {
        return RyxErrorArgument;
    }
    ArgumentCollect();
    for (ArgNode* given = ArgumentCommandsGet(); given != nullptr; given = given->Next) {
        if (ArgumentNameEqual(given->Text, name)) {
            if (node != nullptr) {
                *node = given;
            }
            return RyxOk;
        }
    }
    if (node != nullptr) {
        *node = nullptr;
    }
    return RyxErrorNotFound;
}

RyxStatus RyxArgSyntaxProcess(std::uint8_t ignoreCase, std::uint8_t print, ArgNode** failed) {
    if (failed != nullptr) {
        *failed = nullptr;
    }
    ArgumentCaseRuleSet(ignoreCase);
    ArgumentCollect();
    if (DuplicateGiven()) {
        return RyxErrorDuplicate;
    }
    if (ArgumentCommandsGet() == nullptr) {
        return RyxErrorNotFound;
    }
    for (ArgNode* node = ArgumentCommandsGet(); node != nullptr; node = node->Next) {
        const ArgCommand* command = ArgumentCommandFind(node->Text);
        const RyxStatus status = command == nullptr ? RyxErrorNotFound : ParametersCheck(node, command->Format);
        if (status != RyxOk) {
            if (failed != nullptr) {
                *failed = node;
            }
            if (print == 1) {
                FailurePrint(status, *node, command);
            }
            return status;
        }
    }
    return RyxOk;
}

RyxStatus RyxArgParamGet(const ArgNode* node, std::uint32_t index, char* buffer, std::size_t length) {
    if (node == nullptr || buffer == nullptr || length == 0) {
        return RyxErrorArgument;
    }
    if (node->Kind != ArgNodeCommand) {
        return RyxErrorObject;
    }
    const ArgNode* param = node->Params;
    for (; param != nullptr && index > 0; --index) {
        param = param->Next;
    }
    if (param == nullptr) {
        return RyxErrorNotFound;
    }
    const std::size_t copied = std::min(std::strlen(param->Text), length - 1);
    std::memcpy(buffer, param->Text, copied);
    buffer[copied] = '\0';
    return RyxOk;
}

RyxStatus RyxArgNumberParse(const char* text, std::int64_t* number) {
    if (text == nullptr || number == nullptr) {
        return RyxErrorArgument;
    }
    const bool negative = *text == '-';
    const bool sign = negative || *text == '+';
    const char* digits = sign ? text + 1 : text;
    if (*text == '\0' || digits[std::strspn(digits, "0123456789")] != '\0') {
        return RyxErrorNotDecimal;
    }
    std::uint64_t value = 0; // unsigned, so that it wraps
    for (; *digits != '\0'; ++digits) {
        value = value * 10 + static_cast<std::uint64_t>(*digits - '0');
    }
    *number = static_cast<std::int64_t>(negative ? 0 - value : value);
    return RyxOk;
}

RyxStatus RyxArgHelpPrint(std::uint8_t mode) {
    constexpr std::uint8_t modeList = 1;
    if (mode != modeList) {
        return RyxErrorUnsupported;
    }
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const bool paged = RyxConsoleSizeGet(&width, &height) == RyxOk;
    const std::uint32_t pageLimit = height - 2;
    std::uint32_t lines = 6; // what stands above the list
    for (const ArgCommand* command = ArgumentCommandsRegistered(); command != nullptr; command = command->Next) {
        RyxPrintf("%-8s %-16s %s\n", CommandNameSkipDot(command->Name), command->Syntax, command->Description);
        ++lines;
        if (paged && lines == pageLimit) {
            RyxPrintf("Press any key to continue...\n");
            RyxKeyWait();
            lines = 0;
        }
    }
    return RyxOk;
}
