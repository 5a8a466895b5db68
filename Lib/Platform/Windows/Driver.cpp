// The helper driver: loading, sharing and unloading it, and the requests that go to it.
#include "Lib/Platform/Driver.h"

#include "Lib/Platform/DriverService.h"
#include "Lib/Platform/Files.h"
#include "Lib/Platform/Registry.h"
#include "Lib/Platform/System.h"

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr std::size_t PathCapacity = 260;
constexpr char SoftwareKey[] = "Software";
constexpr char CountKeyName[] = "RyxDrv";
constexpr char CountKey[] = "Software\\RyxDrv";
constexpr char CountValue[] = "RefCount";

struct DriverState {
    DriverDevice Device; // null while the driver isn't open
    bool Bits64;
    bool FileWritten;
    bool Counted; // among the driver's users
    char Path[PathCapacity];
};

// What a load has made so far, and takes away again when it fails.
struct LoadMade {
    bool Count = false; // or written anew
    bool File = false;
    bool Service = false; // or an attempt at it, which also removes an older one
};

struct FileRelease {
    void operator()(FileHeld file) const { FileLetGo(file); }
};
using FileHolder = std::unique_ptr<void, FileRelease>;

DriverState Driver{};

RegistryView View() {
    return Driver.Bits64 ? RegistryView::Bits64 : RegistryView::Own;
}

// Opens the device of a driver that another tool runs, and counts this process among its users. A count without a
// device is left over from before a restart of the machine, and starts again. A count that can't be reached is left
// alone.
bool DriverJoin(LoadMade* made) {
    bool missing = false;
    RegistryKey key = RegistryKeyOpen(CountKey, View(), &missing);
    if (key == nullptr) {
        if (!missing) {
            return false;
        }
        key = RegistryKeyCreate(CountKey, View());
        if (key == nullptr) {
            std::puts("Warning: Failed to create registry for driver.");
            std::fflush(stdout);
            return false;
        }
        made->Count = RegistryNumberWrite(key, CountValue, 1);
        RegistryKeyClose(key);
        if (!made->Count) {
            // A key without a count would keep every later tool from joining.
            RegistryKeyDelete(SoftwareKey, CountKeyName, View());
        }
        return false;
    }
    std::uint32_t users = 0;
    if (RegistryNumberRead(key, CountValue, &users)) {
        Driver.Device = DriverDeviceOpen();
        made->Count = RegistryNumberWrite(key, CountValue, Driver.Device != nullptr ? users + 1 : 1);
    }
    RegistryKeyClose(key);
    return Driver.Device != nullptr;
}

// Takes this process out of the count. True when no other tool uses the driver. Where this process could not be
// counted, the count is that of others and stays.
bool DriverLeave() {
    const RegistryKey key = RegistryKeyOpen(CountKey, View());
    if (key == nullptr) {
        return true;
    }
    std::uint32_t users = 0;
    const bool told = RegistryNumberRead(key, CountValue, &users);
    const bool others = users > (Driver.Counted ? 1U : 0U);
    if (others && Driver.Counted) {
        RegistryNumberWrite(key, CountValue, users - 1);
    }
    RegistryKeyClose(key);
    if (told && !others) {
        RegistryKeyDelete(SoftwareKey, CountKeyName, View());
    }
    return !others;
}

// Appends a backslash and the file name to a folder's path; false when they don't fit.
bool FileNameAppend(char (&path)[PathCapacity], const char* name) {
    const std::size_t length = std::strlen(path);
    const std::size_t nameSize = std::strlen(name) + 1;
    if (length + 1 + nameSize > PathCapacity) {
        return false;
    }
    path[length] = '\\';
    std::memcpy(path + length + 1, name, nameSize);
    return true;
}

// Writes the driver that the program carries to the temporary folder, or else beside the executable, and holds it:
// between here and the start of the service nobody can put another driver in its place. Null on failure.
FileHolder DriverFileWrite(LoadMade* made) {
    const char* name = Driver.Bits64 ? "RyxLib64.sys" : "RyxLib.sys";
    const void* image = nullptr;
    std::uint32_t size = 0;
    if (!ExecutableFolderGet(Driver.Path, PathCapacity) || !FileNameAppend(Driver.Path, name) ||
        !DriverImageFind(Driver.Bits64, &image, &size)) {
        return nullptr;
    }
    char temporary[PathCapacity];
    const DWORD length = GetTempPathA(PathCapacity, temporary);
    if (length == 0 || length >= PathCapacity || !FileNameAppend(temporary, name)) {
        return nullptr;
    }
    RyxStatus status = FileMake(temporary, image, size);
    if (status == RyxErrorFileOpen) {
        status = FileMake(Driver.Path, image, size);
    } else {
        std::memcpy(Driver.Path, temporary, PathCapacity);
    }
    Driver.FileWritten = made->File = status == RyxOk;
    return FileHolder(made->File ? FileHold(Driver.Path, image, size) : nullptr);
}

bool InstallAttempt() {
    DriverServiceRemove();
    DriverServiceStart(Driver.Path);
    Driver.Device = DriverDeviceOpen();
    return Driver.Device != nullptr;
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

// Nobody unloads a driver that was never there, so what a failed load has made goes here, and nothing else: service,
// file and count may be those of other tools.
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
    if (Driver.Device != nullptr) {
        return true;
    }
    std::memset(Driver.Path, 0, sizeof Driver.Path);
    LoadMade made;
    const bool joined = DriverJoin(&made);
    Driver.Counted = made.Count;
    if (joined) {
        return true;
    }
    if (const FileHolder file = DriverFileWrite(&made)) {
        made.Service = true;
        if (DriverInstall()) {
            return true;
        }
    }
    LoadUndo(made);
    return false;
}

// Takes this process out of the count and, when it was the last user, takes the service and the driver file away.
void DriverRemove() {
    if (Driver.Device == nullptr) {
        return;
    }
    DriverDeviceClose(Driver.Device);
    Driver.Device = nullptr;
    if (!DriverLeave()) {
        return;
    }
    DriverServiceRemove();
    if (Driver.FileWritten) {
        DriverFileRemove();
    }
}

} // namespace

RyxStatus DriverRequest(std::uint32_t operation, std::uint32_t code, const void* input, std::uint32_t inputLength,
                        void* output, std::uint32_t outputLength) {
    switch (operation) {
    case DriverControl:
        return DriverDeviceControl(Driver.Device, code, input, inputLength, output, outputLength)
                   ? RyxOk
                   : RyxErrorDriverRequest;
    case DriverLoad:
        return DriverOpen() ? RyxOk : RyxErrorDriverLoad;
    case DriverUnload:
        DriverRemove();
        return RyxOk;
    default:
        return RyxErrorUnsupported;
    }
}

RyxStatus PhysicalMemoryRead(std::uint32_t address, std::uint32_t length, void* buffer) {
    if (buffer == nullptr || length == 0) {
        return RyxErrorArgument;
    }
    return DriverDeviceControl(Driver.Device, DriverMemoryRead, &address, sizeof address, buffer, length)
               ? RyxOk
               : RyxErrorPhysicalMemory;
}

RyxStatus PhysicalMemoryWrite(std::uint32_t address, std::uint32_t length, const void* buffer) {
    if (buffer == nullptr || length == 0) {
        return RyxErrorArgument;
    }
    // The bytes go down in the request's output buffer, which the driver reads.
    return DriverDeviceControl(Driver.Device, DriverMemoryWrite, &address, sizeof address, const_cast<void*>(buffer),
                               length)
               ? RyxOk
               : RyxErrorPhysicalMemory;
}

RyxStatus DriverVersionGet(std::uint16_t* version) {
    if (version == nullptr) {
        return RyxErrorArgument;
    }
    return DriverDeviceControl(Driver.Device, DriverVersionRead, nullptr, 0, version, sizeof *version)
               ? RyxOk
               : RyxErrorDriverRequest;
}

bool DriverSystemIs64Bit() {
    return Driver.Bits64;
}

void DriverStateReset() {
    Driver = DriverState{};
}
