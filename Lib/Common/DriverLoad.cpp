// The helper driver: loading, sharing and unloading it.
#include "Lib/Common/DriverLoad.h"

#include "Lib/Common/Print.h"
#include "Lib/Platform/Console.h"
#include "Lib/Platform/Files.h"
#include "Lib/Platform/System.h"

#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t PathCapacity = 260;
constexpr char SoftwareKey[] = "Software";
constexpr char CountKeyName[] = "RyxDrv";
constexpr char CountKey[] = "Software\\RyxDrv";
constexpr char CountValue[] = "RefCount";

// In milliseconds. A wait goes in slices, so that an interrupt cuts it short.
constexpr std::uint32_t LockWait = 5000;
constexpr std::uint32_t LockWaitInterrupted = 2000;
constexpr std::uint32_t LockWaitSlice = 250;
constexpr std::uint32_t LingerWait = 1000;
constexpr std::uint32_t LingerPause = 50;
constexpr int LateJoins = 4;
constexpr std::uint32_t LateJoinPause = 250;

struct DriverState {
    bool Bits64;
    bool FileWritten;
    bool Counted;        // among the driver's users
    std::uint32_t Error; // of the last attempt to start it
    char Path[PathCapacity];
};

// What a load has made so far, and takes away again when it fails.
struct LoadMade {
    bool Count = false; // or written anew
    bool File = false;
    bool Service = false; // or an attempt at it, which also removes an older one
};

DriverState Driver{};

// Counts this process as the first user. Nothing stands between the key and its value that could end the process.
void CountBegin(LoadMade* made) {
    RegistryKey key = RegistryKeyCreate(CountKey, SharedRegistryView());
    if (key == nullptr) {
        std::fputs("Warning: Failed to create registry for driver.\n", PrintStream());
        std::fflush(PrintStream());
        return;
    }
    made->Count = RegistryNumberWrite(key, CountValue, 1);
    key.reset();
    if (!made->Count) {
        // A key without a count would keep every later tool from joining.
        RegistryKeyDelete(SoftwareKey, CountKeyName, SharedRegistryView());
    }
}

// Opens the device of a driver that another tool runs, and counts this process among its users. A count without a
// device is left over from before a restart of the machine, and starts again. A count that can't be reached is left
// alone.
bool DriverJoin(LoadMade* made) {
    bool missing = false;
    const RegistryKey key = RegistryKeyOpen(CountKey, SharedRegistryView(), &missing);
    if (key == nullptr) {
        if (missing) {
            CountBegin(made);
        }
        return false;
    }
    std::uint32_t users = 0;
    if (!RegistryNumberRead(key, CountValue, &users)) {
        return false;
    }
    const bool joined = DriverDeviceOpen();
    made->Count = RegistryNumberWrite(key, CountValue, joined ? users + 1 : 1);
    return joined;
}

// A tool that takes no lock may have started the driver meanwhile, and keep this one from it: joins it, if it comes up
// within a second.
bool DriverJoinLate() {
    for (int joins = 0; joins < LateJoins && !ConsoleInterrupted(); ++joins) {
        if (joins != 0) {
            ThreadPause(LateJoinPause);
        }
        const RegistryKey key = RegistryKeyOpen(CountKey, SharedRegistryView());
        std::uint32_t users = 0;
        if (key != nullptr && RegistryNumberRead(key, CountValue, &users) && DriverDeviceOpen()) {
            Driver.Counted = RegistryNumberWrite(key, CountValue, users + 1);
            return true;
        }
    }
    return false;
}

// Takes this process out of the count. True when no other tool uses the driver. Where this process could not be
// counted, the count is that of others and stays.
bool DriverLeave() {
    RegistryKey key = RegistryKeyOpen(CountKey, SharedRegistryView());
    if (key == nullptr) {
        return true;
    }
    std::uint32_t users = 0;
    const bool told = RegistryNumberRead(key, CountValue, &users);
    const bool others = users > (Driver.Counted ? 1U : 0U);
    if (others && Driver.Counted) {
        RegistryNumberWrite(key, CountValue, users - 1);
    }
    key.reset();
    if (told && !others) {
        RegistryKeyDelete(SoftwareKey, CountKeyName, SharedRegistryView());
    }
    return !others;
}

// Appends the file name to a folder's path, which may end with a backslash; false when it doesn't fit.
bool FileNameAppend(char (&path)[PathCapacity], const char* name) {
    std::size_t length = std::strlen(path);
    if (length != 0 && path[length - 1] == '\\') {
        --length;
    }
    const std::size_t nameSize = std::strlen(name) + 1;
    if (length + 1 + nameSize > PathCapacity) {
        return false;
    }
    path[length] = '\\';
    std::memcpy(path + length + 1, name, nameSize);
    return true;
}

// Writes the driver that the program carries to the temporary folder, or else beside the executable, and holds it:
// between here and the start of the service nobody can put another driver in its place, nor, by a link above it, lead
// the start to another. Null on failure.
HandleOwner DriverFileWrite(LoadMade* made) {
    const char* name = Driver.Bits64 ? "RyxLib64.sys" : "RyxLib.sys";
    const void* image = nullptr;
    std::uint32_t size = 0;
    if (!ExecutableFolderGet(Driver.Path, PathCapacity) || !FileNameAppend(Driver.Path, name) ||
        !DriverImageFind(Driver.Bits64, &image, &size)) {
        return nullptr;
    }
    char temporary[PathCapacity];
    if (!TemporaryFolderGet(temporary, PathCapacity) || !FileNameAppend(temporary, name)) {
        return nullptr;
    }
    RyxStatus status = FileMake(temporary, image, size);
    if (status == RyxErrorFileOpen) {
        status = FileMake(Driver.Path, image, size);
    } else {
        std::memcpy(Driver.Path, temporary, PathCapacity);
    }
    Driver.FileWritten = made->File = status == RyxOk;
    HandleOwner file = made->File ? FileHold(Driver.Path, image, size) : nullptr;
    return file != nullptr && HeldPathGet(file, Driver.Path, PathCapacity) ? std::move(file) : nullptr;
}

bool InstallAttempt() {
    DriverServiceRemove();
    const std::uint32_t started = DriverServiceStart(Driver.Path);
    const bool opened = DriverDeviceOpen(&Driver.Error);
    Driver.Error = opened || started != 0 ? started : Driver.Error;
    return opened;
}

bool DriverInstall() {
    if (InstallAttempt()) {
        return true;
    }
    FileAttributesClear(Driver.Path);
    if (InstallAttempt()) {
        return true;
    }
    DriverServiceRemove();
    return InstallAttempt();
}

void DriverFileRemove() {
    FileRemove(Driver.Path);
    Driver.FileWritten = false;
}

// A load that failed is not followed by an unload, so what it has made goes here. What it found stays: service, file
// and count may be those of other tools.
void LoadUndo(const LoadMade& made) {
    if (made.Count) {
        DriverLeave();
    }
    if (made.Service) {
        DriverServiceRemove();
    }
    if (made.File) {
        DriverFileRemove();
    }
}

bool DriverOpen() {
    Driver.Bits64 = ProcessUnderWow64();
    if (DriverDeviceIsOpen()) {
        return true;
    }
    const ToolsLock lock;
    if (ConsoleInterrupted()) {
        return false;
    }
    std::memset(Driver.Path, 0, sizeof Driver.Path);
    Driver.Error = 0;
    LoadMade made;
    const bool joined = DriverJoin(&made);
    Driver.Counted = made.Count;
    if (joined) {
        return true;
    }
    if (const HandleOwner file = DriverFileWrite(&made)) {
        made.Service = true;
        if (DriverInstall()) {
            return true;
        }
    }
    if (DriverJoinLate()) {
        if (made.File) {
            FileRemove(Driver.Path); // unless it is the one that runs
        }
        return true;
    }
    LoadUndo(made);
    return false;
}

bool DriverUnused() {
    bool missing = false;
    RegistryKeyOpen(CountKey, SharedRegistryView(), &missing);
    return missing;
}

// The file of a driver that others use can't be deleted. Tools that were started together end together: this one gives
// them a moment, and if that was enough, takes its file away.
void DriverFileLinger() {
    for (std::uint32_t waited = 0; waited < LingerWait && !ConsoleInterrupted(); waited += LingerPause) {
        ThreadPause(LingerPause);
        if (DriverUnused()) {
            break;
        }
    }
    const ToolsLock lock;
    if (DriverUnused()) {
        DriverFileRemove();
    }
}

// Takes this process out of the count and, when it was the last user, takes the service and the driver file away.
void DriverRemove() {
    if (!DriverDeviceIsOpen()) {
        return;
    }
    {
        const ToolsLock lock;
        DriverDeviceClose();
        if (DriverLeave()) {
            DriverServiceRemove();
            if (Driver.FileWritten) {
                DriverFileRemove();
            }
        }
    }
    if (Driver.FileWritten) {
        DriverFileLinger();
    }
}

} // namespace

ToolsLock::ToolsLock() : Mutex(MutexCreate("Global\\RyxDriverMutex", nullptr)) {
    for (std::uint32_t waited = 0; Mutex != nullptr && !Held && waited < LockWait; waited += LockWaitSlice) {
        if (ConsoleInterrupted() && waited >= LockWaitInterrupted) {
            break;
        }
        Held = MutexAcquire(Mutex, LockWaitSlice);
    }
}

ToolsLock::~ToolsLock() {
    if (Held) {
        MutexRelease(Mutex);
    }
    MutexClose(Mutex);
}

RyxStatus DriverRequest(std::uint32_t operation, std::uint32_t code, const void* input, std::uint32_t inputLength,
                        void* output, std::uint32_t outputLength) {
    switch (operation) {
    case DriverControl:
        return DriverDeviceControl(code, input, inputLength, output, outputLength) ? RyxOk : RyxErrorDriverRequest;
    case DriverLoad:
        return DriverOpen() ? RyxOk : RyxErrorDriverLoad;
    case DriverUnload:
        DriverRemove();
        return RyxOk;
    default:
        return RyxErrorUnsupported;
    }
}

std::uint32_t DriverLoadError() {
    return Driver.Error;
}

RegistryView SharedRegistryView() {
    return Driver.Bits64 ? RegistryView::Bits64 : RegistryView::Own;
}

void DriverStateReset() {
    Driver = DriverState{};
    DriverDeviceForget();
}
