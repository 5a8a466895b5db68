// The state that processes share: in a folder with a lock, or in this process.
#include "Lib/Platform/StandIn/State.h"

#include <windows.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <sstream>
#include <sys/file.h>
#include <unistd.h>

namespace StandIn {

namespace {

constexpr std::uint32_t ErrorRegistryCorrupt = 1009;
constexpr std::uint32_t ErrorWriteFault = 29;
constexpr char StateHeading[] = "quarrinet-machine-state 1";
constexpr char HexDigits[] = "0123456789abcdef";

std::string FolderFile(const char* name) {
    return MachineGet().StateFolder + "/" + name;
}

// The lock goes with the descriptor, so it is free again when a process is killed.
int FolderLockTake() {
    if (MachineGet().StateFolder.empty()) {
        return -1;
    }
    const int file = open(FolderFile("lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) {
        return -1;
    }
    while (flock(file, LOCK_EX) != 0) {
        if (errno != EINTR) {
            close(file);
            return -1;
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
    const char* const end = text.data() + 2;
    return text.size() >= 2 && std::from_chars(text.data(), end, *byte, 16).ptr == end;
}

bool HexRead(const std::string& text, Bytes* data) {
    data->clear();
    if (text == "-") {
        return true;
    }
    for (std::size_t at = 0; at < text.size(); at += 2) {
        std::uint8_t byte = 0;
        if (!HexByte(std::string_view(text).substr(at), &byte)) {
            return false;
        }
        data->push_back(byte);
    }
    return !text.empty();
}

bool Unescaped(const std::string& word, std::string* text) {
    text->clear();
    for (std::size_t at = 0; at < word.size(); ++at) {
        if (word[at] != '%') {
            *text += word[at];
            continue;
        }
        std::uint8_t byte = 0;
        if (word.compare(at, std::string::npos, "%-") == 0) {
            return true;
        }
        if (!HexByte(std::string_view(word).substr(at + 1), &byte)) {
            return false;
        }
        *text += static_cast<char>(byte);
        at += 2;
    }
    return !word.empty();
}

std::string StateText(const SharedState& state) {
    std::ostringstream text;
    text << StateHeading << '\n';
    for (const auto& [keyPath, key] : state.Keys) {
        text << "key " << Escaped(key.Path) << '\n';
        for (const auto& [valueName, value] : key.Values) {
            text << "value " << Escaped(key.Path) << ' ' << Escaped(value.Name) << ' ' << value.Type << ' '
                 << Hex(value.Data) << '\n';
        }
    }
    for (const auto& [name, service] : state.Services) {
        text << "service " << Escaped(service.Name) << ' ' << Escaped(service.Path) << ' ' << service.Running << ' '
             << service.Marked << '\n';
    }
    for (const auto& [fileKey, file] : state.Files) {
        text << "file " << Escaped(fileKey) << ' ' << Escaped(file.Path) << ' ' << file.Attributes << ' '
             << Hex(file.Data) << '\n';
    }
    return text.str();
}

bool StateLineRead(const std::string& line, SharedState* state) {
    std::istringstream words(line);
    std::string kind;
    std::string first;
    std::string second;
    std::string data;
    words >> kind >> first;
    if (kind == "key") {
        std::string path;
        if (!Unescaped(first, &path)) {
            return false;
        }
        state->Keys[Lower(path)].Path = path;
    } else if (kind == "value") {
        StoredValue value;
        std::string path;
        words >> second >> value.Type >> data;
        if (!words || !Unescaped(first, &path) || !Unescaped(second, &value.Name) || !HexRead(data, &value.Data)) {
            return false;
        }
        StoredKey& key = state->Keys[Lower(path)];
        key.Path = path;
        key.Values[Lower(value.Name)] = value;
    } else if (kind == "service") {
        Service service;
        words >> second >> service.Running >> service.Marked;
        if (!words || !Unescaped(first, &service.Name) || !Unescaped(second, &service.Path)) {
            return false;
        }
        state->Services[Lower(service.Name)] = service;
    } else if (kind == "file") {
        StoredFile file;
        std::string key;
        words >> second >> file.Attributes >> data;
        if (!words || !Unescaped(first, &key) || !Unescaped(second, &file.Path) || !HexRead(data, &file.Data)) {
            return false;
        }
        state->Files[key] = file;
    } else {
        // Other releases also write how many use the driver's buffer, which each process knows for itself.
        return kind == "buffer";
    }
    return true;
}

// A state that can't be read is left alone: whoever writes over it would lose what is in it.
std::uint32_t StateRead(SharedState* state) {
    const int file = open(FolderFile("state").c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return errno == ENOENT ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
    }
    std::string content;
    char piece[65536];
    ssize_t got = 0;
    while ((got = read(file, piece, sizeof piece)) > 0) {
        content.append(piece, static_cast<std::size_t>(got));
    }
    close(file);
    std::istringstream lines(content);
    std::string line;
    if (got < 0 || !std::getline(lines, line) || line != StateHeading) {
        return ErrorRegistryCorrupt;
    }
    while (std::getline(lines, line)) {
        if (!StateLineRead(line, state)) {
            return ErrorRegistryCorrupt;
        }
    }
    return ERROR_SUCCESS;
}

// The new state replaces the old one as a whole, so that a killed writer leaves one of them.
std::uint32_t StateWrite(const SharedState& state) {
    const std::string text = StateText(state);
    const std::string fresh = FolderFile("state.new");
    const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) {
        return ERROR_ACCESS_DENIED;
    }
    std::size_t at = 0;
    while (at < text.size()) {
        const ssize_t wrote = write(file, text.data() + at, text.size() - at);
        if (wrote < 0) {
            break;
        }
        at += static_cast<std::size_t>(wrote);
    }
    const bool whole = close(file) == 0 && at == text.size();
    return whole && std::rename(fresh.c_str(), FolderFile("state").c_str()) == 0 ? ERROR_SUCCESS : ErrorWriteFault;
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
    ErrorNumber = Lock.Locked() ? StateRead(&Loaded) : ERROR_ACCESS_DENIED;
}

std::uint32_t SharedAccess::Commit() {
    if (ErrorNumber != ERROR_SUCCESS || State != &Loaded) {
        return ErrorNumber;
    }
    return StateWrite(Loaded);
}

FolderLock::FolderLock() : LockFile(FolderLockTake()) {}

FolderLock::~FolderLock() {
    if (LockFile >= 0) {
        close(LockFile);
    }
}

ProcessState& Process() {
    static ProcessState state;
    return state;
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char one) { return static_cast<char>(std::tolower(one)); });
    return lower;
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
