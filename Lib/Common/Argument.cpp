// Argument collection.
#include "Lib/Common/Argument.h"

#include "Lib/Common/LibraryContext.h"
#include "Lib/Common/NativeFileRead.h"
#include "Lib/Common/PlatformName.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

namespace {

constexpr std::size_t LineLimit = 1023;
constexpr std::uint32_t ArgumentStringLimit = 256;
constexpr char DefaultResponseFile[] = "default.rsp";

struct ArgumentState {
    bool Done;        // the collection ran
    RyxStatus Status; // and this is what came of it
    std::uint32_t StringCount;
    char* Strings[ArgumentStringLimit]; // private copies
    ArgNodeList Commands;
};

ArgumentState State;

// Cuts the next line off `rest` and gives it without its line end. A line also ends after LineLimit characters, and at
// a NUL byte, which stays in `rest`.
std::string_view LineTake(std::string_view* rest) {
    const std::size_t limit = std::min(rest->size(), LineLimit);
    std::size_t length = 0;
    std::size_t lineEnd = 0;
    for (; length < limit; ++length) {
        const char character = (*rest)[length];
        if (character == '\0') {
            break;
        }
        if (character == '\n') {
            lineEnd = 1;
            break;
        }
        if (character == '\r' && length + 1 < rest->size() && (*rest)[length + 1] == '\n') {
            lineEnd = 2;
            break;
        }
    }
    const std::string_view line = rest->substr(0, length);
    rest->remove_prefix(length + lineEnd);
    return line;
}

// Appends the arguments of one line: quoted stretches verbatim, the rest as tokens.
RyxStatus LineArgumentsAdd(std::string_view line) {
    for (;;) {
        const std::size_t open = line.find('"');
        const std::string_view unquoted = line.substr(0, open);
        if (const RyxStatus status = ArgumentTokensAdd(unquoted.data(), unquoted.size()); status != RyxOk) {
            return status;
        }
        if (open == std::string_view::npos) {
            return RyxOk;
        }
        line.remove_prefix(open + 1);
        const std::size_t close = line.find('"');
        if (close == std::string_view::npos) {
            return RyxErrorArgument;
        }
        if (const RyxStatus status = ArgumentStringAdd(line.data(), close); status != RyxOk) {
            return status;
        }
        line.remove_prefix(close + 1);
    }
}

// Tells a failed append that ends the collection from one that only drops what could not be copied.
bool StringsFull(RyxStatus status) {
    return status != RyxOk && State.StringCount == ArgumentStringLimit;
}

// Appends the process arguments, with each '@' argument replaced by its file's arguments, and those of the default
// response file when no '@' argument was given.
RyxStatus StringsCollect(const LibraryContext& context) {
    bool fileNamed = false;
    for (std::uint32_t i = 1; i < context.ArgumentCount; ++i) {
        const char* argument = context.Arguments[i];
        if (argument == nullptr) {
            return RyxErrorArgument;
        }
        if (argument[0] == '@') {
            fileNamed = true;
            if (const RyxStatus status = ArgumentResponseFileRead(argument + 1); status != RyxOk) {
                return status;
            }
        } else if (const RyxStatus status = ArgumentStringAdd(argument, std::strlen(argument)); StringsFull(status)) {
            return status;
        }
    }
    if (fileNamed) {
        return RyxOk;
    }
    const RyxStatus status = ArgumentResponseFileRead(DefaultResponseFile);
    return status == RyxErrorNotFound ? RyxOk : status;
}

// A '-' followed by digits only: a negative number where a command can take it as its parameter.
bool IsNegativeNumber(const char* text) {
    return text[0] == '-' && text[1] != '\0' && text[std::strspn(text + 1, "0123456789") + 1] == '\0';
}

// Appends a zeroed command node; null without memory.
ArgNode* ArgumentCommandNodeAdd() {
    return ArgNodeAppend(&State.Commands, ArgNodeCommand);
}

// Makes the command nodes of the collected strings. `secondPrefix` begins a command beside '-'.
RyxStatus NodesBuild(char secondPrefix) {
    ArgNode* command = nullptr;
    for (std::uint32_t i = 0; i < State.StringCount; ++i) {
        char* text = State.Strings[i];
        const bool prefixed = text[0] == '-' || text[0] == secondPrefix;
        const bool begins = prefixed && !(command != nullptr && IsNegativeNumber(text));
        if (!begins && command == nullptr) {
            return RyxErrorNotFound;
        }
        ArgNode* node = begins ? ArgumentCommandNodeAdd() : ArgumentParamNodeAdd(command);
        if (node == nullptr) {
            return RyxErrorMemory;
        }
        node->Text = begins ? text + 1 : text;
        command = begins ? node : command;
    }
    return RyxOk;
}

RyxStatus Collect() {
    const LibraryContext& context = LibraryContextGet();
    if (context.ArgumentCount == 0 || context.Arguments == nullptr) {
        return RyxOk;
    }
    char secondPrefix = '/';
    const char* platform = nullptr;
    if (RyxPlatformNameGet(&platform) == RyxOk && std::strstr(platform, "Linux") != nullptr) {
        secondPrefix = '-';
    }
    RyxStatus status = StringsCollect(context);
    if (status == RyxOk) {
        status = NodesBuild(secondPrefix);
    }
    if (status != RyxOk) {
        ArgNodesRelease(&State.Commands);
    }
    return status;
}

} // namespace

RyxStatus ArgumentCollect() {
    if (!State.Done) {
        ArgumentRelease();
        State.Done = true;
        State.Status = Collect();
    }
    return State.Status;
}

ArgNode* ArgumentCommandsGet() {
    return State.Commands.Head;
}

ArgNode* ArgumentParamNodeAdd(ArgNode* command) {
    return command == nullptr ? nullptr : ArgNodeParamAppend(command);
}

RyxStatus ArgumentResponseFileRead(const char* name) {
    if (name == nullptr) {
        return RyxErrorArgument;
    }
    std::unique_ptr<char[]> block;
    std::uint32_t size = 0;
    if (RyxFileRead(name, &block, &size) != RyxOk) {
        return RyxErrorNotFound;
    }
    std::string_view rest(block.get(), size);
    while (!rest.empty() && rest.front() != '\0') {
        if (const RyxStatus status = LineArgumentsAdd(LineTake(&rest)); status != RyxOk) {
            return status;
        }
    }
    return RyxOk;
}

RyxStatus ArgumentTokensAdd(const char* text, std::size_t length) {
    constexpr std::string_view separators = " \r\n";
    if (text == nullptr) {
        return RyxErrorArgument;
    }
    std::string_view rest(text, length);
    for (;;) {
        rest.remove_prefix(std::min(rest.find_first_not_of(separators), rest.size()));
        if (rest.empty() || rest.front() == '#') {
            return RyxOk;
        }
        const std::string_view token = rest.substr(0, rest.find_first_of(separators));
        if (const RyxStatus status = ArgumentStringAdd(token.data(), token.size()); status != RyxOk) {
            return StringsFull(status) ? status : RyxOk;
        }
        rest.remove_prefix(token.size());
    }
}

RyxStatus ArgumentStringAdd(const char* text, std::size_t length) {
    if (text == nullptr) {
        return RyxErrorArgument;
    }
    if (length == 0) {
        return RyxOk;
    }
    if (State.StringCount == ArgumentStringLimit) {
        return RyxErrorMemory;
    }
    auto* copy = new (std::nothrow) char[length + 1];
    if (copy == nullptr) {
        return RyxErrorMemory;
    }
    std::memcpy(copy, text, length);
    copy[length] = '\0';
    State.Strings[State.StringCount++] = copy;
    return RyxOk;
}

void ArgumentRelease() {
    ArgNodesRelease(&State.Commands);
    for (std::uint32_t i = 0; i < State.StringCount; ++i) {
        delete[] State.Strings[i];
    }
    State = {};
}
