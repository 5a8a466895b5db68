// The state that processes share: in a folder with a lock, or in this process.
#include "machine/windows/State.h"

#include "machine/host/Message.h"

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
#include <new>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace StandIn {

namespace {

constexpr std::uint32_t ErrorRegistryCorrupt = 1009;
constexpr std::uint32_t ErrorWriteFault = 29;
constexpr std::string_view StateHeading = "quarrinet-machine-state 1\n";
constexpr std::size_t StateSizeLimit = std::size_t{16} << 20;
constexpr char HexDigits[] = "0123456789abcdef";

constexpr std::uint32_t LockPause = 1;       // milliseconds, as is
constexpr std::uint64_t LockPatience = 1000; // how long a wait says nothing

// What a run writes beside the state that it found: its keys and the driver file, twice, for the new state is written
// beside the old one; and the marks of its mutexes.
constexpr off_t RunRoom = 40 << 10;

bool LockTry(int file) {
    while (flock(file, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

// Waits for the lock of a state folder, which is free again when its holder is killed. Whoever has it is not stopped
// nor interrupted by signals: they are held back meanwhile.
Descriptor FolderLockTake(const std::string& folder, std::optional<SignalsHeld>* held) {
    const std::string path = folder + "/lock";
    Descriptor file = StateFileOpen(path);
    bool told = false;
    const std::uint64_t start = SystemClock(0);
    for (std::uint64_t now = start; file >= 0; now = SystemClock(LockPause)) {
        held->emplace();
        if (LockTry(file)) {
            break;
        }
        const int error = errno;
        held->reset();
        const bool longer = now - start >= LockPatience;
        if (error != EWOULDBLOCK || (longer && InterruptTaken() != 0)) {
            file = Descriptor(-1);
            errno = error;
        } else if (longer && !told) {
            MessageSay("waiting for " + path + ", which another program holds");
            told = true;
        }
    }
    return file;
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
    data->reserve(text.size() / 2);
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

// Writes the lines of a state, piece by piece.
class StateWriter {
public:
    explicit StateWriter(int file) : File(file) { Text.reserve(PieceSize); }

    void Put(std::string_view text) {
        if (Text.size() + text.size() > PieceSize) {
            Flush();
        }
        Text += text;
    }
    // A line's words, of which the last may be bytes.
    void Line(std::initializer_list<std::string_view> words, const Bytes* data = nullptr) {
        const char* mark = "";
        for (const std::string_view word : words) {
            Put(mark);
            Put(word);
            mark = " ";
        }
        if (data != nullptr) {
            Put(data->empty() ? " -" : " ");
            for (const std::uint8_t byte : *data) {
                const char digits[] = {HexDigits[byte >> 4U], HexDigits[byte & 0xFU]};
                Put({digits, sizeof digits});
            }
        }
        Put("\n");
    }
    void Flush() {
        std::size_t at = 0;
        while (Error == 0 && at < Text.size()) {
            const ssize_t wrote = write(File, Text.data() + at, Text.size() - at);
            at += static_cast<std::size_t>(std::max<ssize_t>(wrote, 0));
            Error = wrote < 0 && errno != EINTR ? errno : 0;
        }
        Written += Text.size();
        if (Error == 0 && Written > StateSizeLimit) {
            Error = EFBIG;
        }
        Text.clear();
    }

    int Error = 0;

private:
    static constexpr std::size_t PieceSize = 16384;
    int File;
    std::size_t Written = 0;
    std::string Text;
};

int StateLinesWrite(int file, const SharedState& state) {
    StateWriter writer(file);
    const auto number = [](std::uint32_t value) { return std::to_string(value); };
    writer.Put(StateHeading);
    for (const auto& [keyPath, key] : state.Keys) {
        writer.Line({"key", Escaped(key.Path)});
        for (const auto& [valueName, value] : key.Values) {
            writer.Line({"value", Escaped(key.Path), Escaped(value.Name), number(value.Type)}, &value.Data);
        }
    }
    for (const auto& [name, service] : state.Services) {
        writer.Line(
            {"service", Escaped(service.Name), Escaped(service.Path), number(service.Running), number(service.Marked)});
    }
    for (const auto& [fileKey, stored] : state.Files) {
        writer.Line({"file", Escaped(fileKey), Escaped(stored.Path), number(stored.Attributes)}, &stored.Data);
    }
    writer.Flush();
    return writer.Error;
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

// The state of a folder as this process has read or written it last, with the file that it stands in. That is kept
// open, so that no other file can look the same.
struct KnownState {
    bool Known = false;
    SharedState State;
    Descriptor File{-1}; // none: there was no file
    struct stat About {};
};

// Whether the file is still as it was.
bool Unchanged(const KnownState& known, const std::string& path) {
    struct stat now {};
    if (!known.Known || lstat(path.c_str(), &now) != 0) {
        return known.Known && known.File < 0 && errno == ENOENT;
    }
    const struct stat& then = known.About;
    return known.File >= 0 && now.st_dev == then.st_dev && now.st_ino == then.st_ino && now.st_size == then.st_size &&
           now.st_mtim.tv_sec == then.st_mtim.tv_sec && now.st_mtim.tv_nsec == then.st_mtim.tv_nsec &&
           now.st_ctim.tv_sec == then.st_ctim.tv_sec && now.st_ctim.tv_nsec == then.st_ctim.tv_nsec;
}

// Reads the state of a folder, unless it is known; none is an empty one. The result is empty, or names the file and
// says what is wrong with it. Such a state is left alone: whoever writes over it would lose what is in it.
std::string StateRead(const std::string& folder, KnownState* known) {
    const std::string path = folder + "/state";
    if (Unchanged(*known, path)) {
        return {};
    }
    *known = KnownState{};
    known->File = StateFileOpen(path, O_RDONLY);
    Bytes content;
    const int error = known->File < 0                          ? errno
                      : fstat(known->File, &known->About) != 0 ? errno
                                                               : HostFileRead(known->File, &content, StateSizeLimit);
    if (error != 0 && error != ENOENT) {
        return HostFault(path, error);
    }
    std::string_view rest(reinterpret_cast<const char*>(content.data()), content.size());
    if (error == 0 && rest.substr(0, StateHeading.size()) != StateHeading) {
        return path + ": not the state of a machine";
    }
    rest.remove_prefix(std::min(StateHeading.size(), rest.size()));
    for (std::size_t line = 2; !rest.empty(); ++line) {
        if (!StateLineRead(Cut(&rest, '\n'), &known->State)) {
            return path + ":" + std::to_string(line) + ": not a line of a machine's state";
        }
    }
    known->Known = true;
    return {};
}

// Makes the file that is to replace the state. What lies in its place goes, so that nothing is written through a link.
Descriptor FreshOpen(const std::string& path) {
    unlink(path.c_str());
    return StateFileOpen(path, O_WRONLY | O_CREAT | O_EXCL);
}

// The new state replaces the old one as a whole, so that a killed writer leaves one of them. The result is as StateRead
// gives it.
std::string StateWrite(const std::string& folder, KnownState* known) {
    const std::string path = folder + "/state";
    const std::string fresh = path + ".new";
    known->Known = false;
    Descriptor file = FreshOpen(fresh);
    int error = file < 0 ? errno : StateLinesWrite(file, known->State);
    if (error == 0 && std::rename(fresh.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        if (file >= 0) {
            unlink(fresh.c_str());
        }
        return HostFault(fresh, error);
    }
    known->Known = fstat(file, &known->About) == 0;
    known->File = std::move(file);
    return {};
}

// Whether a folder has room for what a run writes beside this state.
std::string RoomFault(const std::string& folder, const KnownState& known) {
    const std::string fresh = folder + "/state.new";
    const Descriptor file = FreshOpen(fresh);
    if (file < 0) {
        return HostFault(fresh, errno);
    }
    const int error = posix_fallocate(file, 0, known.About.st_size + RunRoom);
    unlink(fresh.c_str());
    // Not every kind of folder can tell.
    return error == 0 || error == EINVAL ? std::string() : HostFault(folder + ": no room for what a run keeps", error);
}

// Says, once, why the state can't be kept.
void Complain(const std::string& fault) {
    static bool told = false;
    if (!told) {
        MessageSay(fault);
        told = true;
    }
}

KnownState& Known() {
    static KnownState state;
    return state;
}

// Does something with the known state, and says what is wrong with it. The result is whether nothing is.
template <typename Action> bool Works(Action action) {
    std::string fault;
    try {
        fault = action(MachineGet().StateFolder, &Known());
    } catch (const std::bad_alloc&) {
        fault = HostFault(MachineGet().StateFolder, ENOMEM);
    }
    if (!fault.empty()) {
        Known() = KnownState{};
        Complain(fault);
    }
    return fault.empty();
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

Descriptor DriverDeviceHold() {
    const std::string& folder = MachineGet().StateFolder;
    Descriptor file(folder.empty() ? Descriptor(-1) : StateFileOpen(folder + "/device"));
    if (file >= 0) {
        flock(file, LOCK_SH);
    }
    return file;
}

bool DriverDeviceHeld() {
    const std::string& folder = MachineGet().StateFolder;
    const Descriptor file(folder.empty() ? Descriptor(-1) : StateFileOpen(folder + "/device"));
    return file >= 0 && flock(file, LOCK_EX | LOCK_NB) != 0;
}

Descriptor StateFileOpen(const std::string& path, int flags) {
    Descriptor file(open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
    struct stat about {};
    if (file < 0 || fstat(file, &about) != 0) {
        return file;
    }
    const bool written = (flags & O_ACCMODE) != O_RDONLY;
    if (const int error = !S_ISREG(about.st_mode) ? EINVAL : written && about.st_nlink > 1 ? EMLINK : 0; error != 0) {
        file = Descriptor(-1);
        errno = error;
    }
    return file;
}

void OwnStateForget() {
    OwnState() = SharedState{};
    Known() = KnownState{};
}

SharedAccess::SharedAccess() : State(&OwnState()) {
    if (MachineGet().StateFolder.empty()) {
        return;
    }
    State = &Known().State;
    if (!Lock.Locked()) {
        ErrorNumber = ERROR_ACCESS_DENIED;
        Known() = KnownState{};
        Complain(HostFault(MachineGet().StateFolder + "/lock", errno));
    } else if (!Works(StateRead)) {
        ErrorNumber = ErrorRegistryCorrupt;
    }
}

SharedAccess::~SharedAccess() {
    if (Touched && State == &Known().State) {
        Known() = KnownState{};
    }
}

std::uint32_t SharedAccess::Commit() {
    Touched = ErrorNumber != ERROR_SUCCESS;
    if (ErrorNumber != ERROR_SUCCESS || State != &Known().State) {
        return ErrorNumber;
    }
    return Works(StateWrite) ? ERROR_SUCCESS : ErrorWriteFault;
}

FolderLock::FolderLock()
    : LockFile(MachineGet().StateFolder.empty() ? Descriptor(-1) : FolderLockTake(MachineGet().StateFolder, &Held)) {}

std::string StateFolderFault(const std::string& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), &closedir);
    if (!entries) {
        return HostFault(folder, errno);
    }
    while (const dirent* const entry = readdir(entries.get())) {
        const std::string_view name = entry->d_name;
        const bool mutex = name.substr(0, MutexFile.size()) == MutexFile;
        const std::string path = folder + "/" + entry->d_name;
        struct stat about {};
        if (!mutex && name != "lock" && name != "device" && name != "state" && name != "state.new") {
            continue;
        }
        if (lstat(path.c_str(), &about) == 0 && !S_ISREG(about.st_mode)) {
            return path + (S_ISLNK(about.st_mode) ? ": a link, which is not followed here" : ": not a regular file");
        }
        if ((mutex || name == "device") && StateFileOpen(path, O_RDWR) < 0 && errno != ENOENT) {
            return HostFault(path, errno);
        }
    }
    std::optional<SignalsHeld> held;
    const Descriptor lock = FolderLockTake(folder, &held);
    if (lock < 0) {
        return HostFault(folder + "/lock", errno);
    }
    KnownState known;
    std::string fault = StateRead(folder, &known);
    if (fault.empty()) {
        fault = RoomFault(folder, known);
    }
    return fault.empty() ? StateWrite(folder, &known) : fault;
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
