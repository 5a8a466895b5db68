// The state that processes share: in a folder with a lock, or in this process.
#include "machine/windows/State.h"

#include <windows.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <initializer_list>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace StandIn {

namespace {

constexpr std::uint32_t ErrorRegistryCorrupt = 1009;
constexpr std::uint32_t ErrorWriteFault = 29;
constexpr std::string_view StateHeading = "quarrinet-machine-state 1\n";
constexpr std::size_t StateSizeLimit = std::size_t{16} << 20;
constexpr char HexDigits[] = "0123456789abcdef";

// The lock goes with the descriptor, so it is free again when a process is killed.
Descriptor FolderLockTake(const std::string& folder) {
    Descriptor file(folder.empty() ? -1 : open((folder + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    while (file >= 0 && flock(file, LOCK_EX) != 0) {
        if (errno != EINTR) {
            return Descriptor(-1);
        }
    }
    return file;
}

std::string Hex(const Bytes& data) {
    std::string text;
    text.reserve(data.size() * 2 + 1);
    for (const std::uint8_t byte : data) {
        text += HexDigits[byte >> 4U];
        text += HexDigits[byte & 0xFU];
    }
    return text.empty() ? "-" : text;
}

bool HexByte(std::string_view text, std::uint8_t* byte) {
    const std::string_view digits = text.substr(0, 2);
    const char* const end = digits.data() + digits.size();
    return digits.size() == 2 && std::from_chars(digits.data(), end, *byte, 16).ptr == end;
}

bool HexRead(std::string_view text, Bytes* data) {
    data->clear();
    if (text == "-") {
        return true;
    }
    for (std::size_t at = 0; at < text.size(); at += 2) {
        std::uint8_t byte = 0;
        if (!HexByte(text.substr(at), &byte)) {
            return false;
        }
        data->push_back(byte);
    }
    return !text.empty();
}

bool Unescaped(std::string_view word, std::string* text) {
    text->clear();
    for (std::size_t at = 0; at < word.size(); ++at) {
        if (word[at] != '%') {
            *text += word[at];
            continue;
        }
        std::uint8_t byte = 0;
        if (word.substr(at) == "%-") {
            return true;
        }
        if (!HexByte(word.substr(at + 1), &byte)) {
            return false;
        }
        *text += static_cast<char>(byte);
        at += 2;
    }
    return !word.empty();
}

void LineAdd(std::string* text, std::initializer_list<std::string_view> words) {
    for (const std::string_view word : words) {
        *text += word;
        *text += ' ';
    }
    text->back() = '\n';
}

std::string StateText(const SharedState& state) {
    std::string text(StateHeading);
    const auto number = [](std::uint32_t value) { return std::to_string(value); };
    for (const auto& [keyPath, key] : state.Keys) {
        LineAdd(&text, {"key", Escaped(key.Path)});
        for (const auto& [valueName, value] : key.Values) {
            LineAdd(&text, {"value", Escaped(key.Path), Escaped(value.Name), number(value.Type), Hex(value.Data)});
        }
    }
    for (const auto& [name, service] : state.Services) {
        LineAdd(&text, {"service", Escaped(service.Name), Escaped(service.Path), number(service.Running),
                        number(service.Marked)});
    }
    for (const auto& [fileKey, file] : state.Files) {
        LineAdd(&text, {"file", Escaped(fileKey), Escaped(file.Path), number(file.Attributes), Hex(file.Data)});
    }
    return text;
}

// Takes the text up to a mark, and the mark, off the front of another.
std::string_view Cut(std::string_view* text, char mark) {
    const std::string_view piece = text->substr(0, text->find(mark));
    text->remove_prefix(std::min(piece.size() + 1, text->size()));
    return piece;
}

// The words of a line, read one after another as what they stand for. False when the next word does not.
struct Words {
    std::string_view Rest;

    bool Read(std::string* text) { return Unescaped(Cut(&Rest, ' '), text); }
    bool Read(Bytes* data) { return HexRead(Cut(&Rest, ' '), data); }
    bool Read(std::uint32_t* number) {
        const std::string_view word = Cut(&Rest, ' ');
        const char* const end = word.data() + word.size();
        const std::from_chars_result result = std::from_chars(word.data(), end, *number);
        return result.ec == std::errc() && result.ptr == end;
    }
    bool Read(bool* flag) {
        std::uint32_t number = 0;
        const bool good = Read(&number) && number <= 1;
        *flag = number == 1;
        return good;
    }
};

bool StateLineRead(std::string_view line, SharedState* state) {
    Words words{line};
    const std::string_view kind = Cut(&words.Rest, ' ');
    std::string name;
    bool good = false;
    if (kind == "key") {
        good = words.Read(&name);
        state->Keys[Lower(name)].Path = name;
    } else if (kind == "value") {
        StoredValue value;
        good = words.Read(&name) && words.Read(&value.Name) && words.Read(&value.Type) && words.Read(&value.Data);
        StoredKey& key = state->Keys[Lower(name)];
        key.Path = name;
        key.Values[Lower(value.Name)] = value;
    } else if (kind == "service") {
        Service service;
        good = words.Read(&service.Name) && words.Read(&service.Path) && words.Read(&service.Running) &&
               words.Read(&service.Marked);
        state->Services[Lower(service.Name)] = service;
    } else if (kind == "file") {
        StoredFile file;
        good = words.Read(&name) && words.Read(&file.Path) && words.Read(&file.Attributes) && words.Read(&file.Data);
        state->Files[name] = file;
    }
    return good && words.Rest.empty();
}

// Reads the state of a folder; none is an empty one. The result is empty, or names the file and says what is wrong with
// it. Such a state is left alone: whoever writes over it would lose what is in it.
std::string StateRead(const std::string& folder, SharedState* state) {
    const std::string path = folder + "/state";
    Bytes content;
    const int error = HostFileRead(path, &content, StateSizeLimit);
    if (error != 0) {
        return error == ENOENT ? std::string() : HostFault(path, error);
    }
    std::string_view rest(reinterpret_cast<const char*>(content.data()), content.size());
    if (rest.substr(0, StateHeading.size()) != StateHeading) {
        return path + ": not the state of a machine";
    }
    rest.remove_prefix(StateHeading.size());
    for (std::size_t line = 2; !rest.empty(); ++line) {
        if (!StateLineRead(Cut(&rest, '\n'), state)) {
            return path + ":" + std::to_string(line) + ": not a line of a machine's state";
        }
    }
    return {};
}

// The new state replaces the old one as a whole, so that a killed writer leaves one of them. The result is as StateRead
// gives it.
std::string StateWrite(const std::string& folder, const SharedState& state) {
    const std::string text = StateText(state);
    const std::string path = folder + "/state";
    const std::string fresh = path + ".new";
    if (text.size() > StateSizeLimit) {
        return HostFault(path, EFBIG);
    }
    const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, 0666);
    std::size_t at = 0;
    bool good = file >= 0;
    while (good && at < text.size()) {
        const ssize_t wrote = write(file, text.data() + at, text.size() - at);
        good = wrote >= 0;
        at += good ? static_cast<std::size_t>(wrote) : 0;
    }
    good = (file < 0 || close(file) == 0) && good;
    return good && std::rename(fresh.c_str(), path.c_str()) == 0 ? std::string() : HostFault(fresh, errno);
}

SharedState& OwnState() {
    static SharedState state;
    return state;
}

} // namespace

bool DriverDeviceExists(const SharedState& state, std::string_view name) {
    return Lower(name) == "ryxlib" && std::any_of(state.Services.begin(), state.Services.end(),
                                                  [](const auto& one) { return one.second.Running; });
}

void OwnStateForget() {
    OwnState() = SharedState{};
}

SharedAccess::SharedAccess() : State(&OwnState()) {
    if (MachineGet().StateFolder.empty()) {
        return;
    }
    State = &Loaded;
    if (!Lock.Locked()) {
        ErrorNumber = ERROR_ACCESS_DENIED;
    } else if (!StateRead(MachineGet().StateFolder, &Loaded).empty()) {
        ErrorNumber = ErrorRegistryCorrupt;
    }
}

std::uint32_t SharedAccess::Commit() {
    if (ErrorNumber != ERROR_SUCCESS || State != &Loaded) {
        return ErrorNumber;
    }
    return StateWrite(MachineGet().StateFolder, Loaded).empty() ? ERROR_SUCCESS : ErrorWriteFault;
}

FolderLock::FolderLock() : LockFile(FolderLockTake(MachineGet().StateFolder)) {}

std::string StateFolderFault(const std::string& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), &closedir);
    if (!entries) {
        return HostFault(folder, errno);
    }
    const Descriptor lock = FolderLockTake(folder);
    if (lock < 0) {
        return HostFault(folder + "/lock", errno);
    }
    while (const dirent* const entry = readdir(entries.get())) {
        const std::string_view name = entry->d_name;
        const bool mutex = name.substr(0, MutexFile.size()) == MutexFile;
        const std::string path = folder + "/" + entry->d_name;
        struct stat about {};
        if (!mutex && name != "lock" && name != "state" && name != "state.new") {
            continue;
        }
        if (stat(path.c_str(), &about) == 0 && !S_ISREG(about.st_mode)) {
            return path + ": not a regular file";
        }
        if (mutex && Descriptor(open(path.c_str(), O_RDWR | O_CLOEXEC)) < 0) {
            return HostFault(path, errno);
        }
    }
    SharedState state;
    std::string fault = StateRead(folder, &state);
    return fault.empty() ? StateWrite(folder, state) : fault;
}

ProcessState& Process() {
    static ProcessState state;
    return state;
}

std::string Escaped(std::string_view text) {
    std::string word;
    for (const char one : text) {
        const auto byte = static_cast<unsigned char>(one);
        if (std::isalnum(byte) != 0 || one == '.' || one == '_' || one == '\\' || one == ':' || one == '{' ||
            one == '}') {
            word += one;
        } else {
            word += '%';
            word += HexDigits[byte >> 4U];
            word += HexDigits[byte & 0xFU];
        }
    }
    return word.empty() ? "%-" : word;
}

} // namespace StandIn
