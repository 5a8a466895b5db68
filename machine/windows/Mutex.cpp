// Mutexes: in this process, or as locked files in the state folder that processes share.
#include "machine/windows/Handles.h"
#include "machine/windows/LastError.h"
#include "machine/windows/Mutexes.h"
#include "machine/windows/State.h"

#include <windows.h>

#include <cerrno>
#include <map>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace StandIn {

namespace {

// A shared mutex has two files. Every process that has it open holds a shared lock on the first; the owner holds an
// exclusive lock on the second and keeps a mark in it, which tells the next owner that the last one died.
struct Mutex {
    Descriptor OpenFile{-1};
    Descriptor OwnerFile{-1};
    unsigned Handles = 0;
    unsigned Depth = 0; // how often this process took it
    std::string Path;
};

constexpr std::uint32_t PollingPause = 2; // milliseconds

std::map<std::string, Mutex>& Mutexes() {
    static std::map<std::string, Mutex> mutexes;
    return mutexes;
}

bool LockTry(int file, int kind) {
    while (flock(file, kind | LOCK_NB) != 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

// Opens the files of a shared mutex, with the folder locked. `existed` tells whether another process has it open.
bool FilesOpen(Mutex* mutex, const std::string& name, bool* existed) {
    mutex->Path = MachineGet().StateFolder + "/" + std::string(MutexFile) + Escaped(name);
    mutex->OpenFile = StateFileOpen(mutex->Path + ".open");
    mutex->OwnerFile = StateFileOpen(mutex->Path + ".owner");
    if (mutex->OpenFile < 0 || mutex->OwnerFile < 0) {
        return false;
    }
    *existed = !LockTry(mutex->OpenFile, LOCK_EX);
    if (!*existed && ftruncate(mutex->OwnerFile, 0) != 0) {
        return false;
    }
    return LockTry(mutex->OpenFile, LOCK_SH);
}

// Takes a mutex if it is free. `abandoned` tells whether its last owner ended without giving it back.
bool TryTake(Mutex* mutex, bool* abandoned) {
    *abandoned = false;
    if (mutex->Depth == 0 && mutex->OwnerFile >= 0) {
        if (!LockTry(mutex->OwnerFile, LOCK_EX)) {
            return false;
        }
        char mark = 0;
        *abandoned = pread(mutex->OwnerFile, &mark, 1, 0) == 1;
        mark = '1';
        if (pwrite(mutex->OwnerFile, &mark, 1, 0) != 1) {
            // Should this owner die, the next one isn't told. Nothing worse comes of it.
            *abandoned = false;
        }
    }
    ++mutex->Depth;
    return true;
}

void GiveBack(Mutex* mutex) {
    if (--mutex->Depth == 0 && mutex->OwnerFile >= 0) {
        // A mark that can't be wiped makes the next owner believe this one dead, which is harmless.
        [[maybe_unused]] const int wiped = ftruncate(mutex->OwnerFile, 0);
        flock(mutex->OwnerFile, LOCK_UN);
    }
}

} // namespace

void MutexHandleClosed(const std::string& name) {
    const auto found = Mutexes().find(name);
    if (found == Mutexes().end() || --found->second.Handles != 0) {
        return;
    }
    // The last process to close it takes the files away.
    const Mutex& mutex = found->second;
    const FolderLock lock;
    if (mutex.OpenFile >= 0 && lock.Locked() && LockTry(mutex.OpenFile, LOCK_EX)) {
        unlink((mutex.Path + ".open").c_str());
        unlink((mutex.Path + ".owner").c_str());
    }
    Mutexes().erase(found);
}

std::vector<std::string> MutexesHeld() {
    std::vector<std::string> held;
    for (const auto& [name, mutex] : Mutexes()) {
        if (mutex.Depth != 0) {
            held.push_back(name);
        }
    }
    return held;
}

void MutexesForget() {
    Mutexes().clear();
}

} // namespace StandIn

using namespace StandIn;

// Every mutex has a name, and is free when it is new.
HANDLE WINAPI CreateMutexA(LPSECURITY_ATTRIBUTES, BOOL, LPCSTR lpName) {
    if (FailsWith(Named("CreateMutexA"), ERROR_ACCESS_DENIED)) {
        return nullptr;
    }
    const std::string name = lpName;
    if (MachineGet().OtherUsersMutexes.count(name) != 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    const auto found = Mutexes().find(name);
    bool existed = found != Mutexes().end();
    if (!existed) {
        const FolderLock lock;
        Mutex fresh;
        if (!MachineGet().StateFolder.empty() && (!lock.Locked() || !FilesOpen(&fresh, name, &existed))) {
            SetLastError(ERROR_ACCESS_DENIED);
            return nullptr;
        }
        Mutexes().emplace(name, std::move(fresh));
    }
    ++Mutexes()[name].Handles;
    SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return HandleOpen({HandleKind::Mutex, name});
}

DWORD WINAPI WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) {
    if (FailsWith(Named("WaitForSingleObject"), ERROR_INVALID_HANDLE)) {
        return WAIT_FAILED;
    }
    const Handle* const handle = HandleFind(hHandle, HandleKind::Mutex);
    if (handle == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    Mutex& mutex = Mutexes()[handle->Name];
    const auto clock = MachineGet().Clock;
    const std::uint64_t start = clock(0);
    for (std::uint64_t now = start;; now = clock(PollingPause)) {
        bool abandoned = false;
        if (TryTake(&mutex, &abandoned)) {
            return abandoned ? WAIT_ABANDONED : WAIT_OBJECT_0;
        }
        if (dwMilliseconds != INFINITE && now - start >= dwMilliseconds) {
            return WAIT_TIMEOUT;
        }
    }
}

BOOL WINAPI ReleaseMutex(HANDLE hMutex) {
    if (FailsWith(Named("ReleaseMutex"), ERROR_NOT_OWNER)) {
        return FALSE;
    }
    const Handle* const handle = HandleFind(hMutex, HandleKind::Mutex);
    if (handle == nullptr) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    Mutex& mutex = Mutexes()[handle->Name];
    if (mutex.Depth == 0) {
        return FailFalse(ERROR_NOT_OWNER);
    }
    GiveBack(&mutex);
    return TRUE;
}
