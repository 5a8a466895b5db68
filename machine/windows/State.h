// What the machine remembers: the part that processes share, and the part of this process.
#pragma once

#include "machine/host/HostFile.h"
#include "machine/host/Signals.h"
#include "machine/model/Lower.h"
#include "machine/model/Machine.h"

#include <cstdint>
#include <fcntl.h>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace StandIn {

// The values that stand for the calling process and thread.
inline void* const ProcessHandle = reinterpret_cast<void*>(static_cast<std::intptr_t>(-1));
inline void* const ThreadHandle = reinterpret_cast<void*>(static_cast<std::intptr_t>(-2));

struct StoredValue {
    std::string Name;
    std::uint32_t Type = 0;
    Bytes Data;
};

struct StoredKey {
    std::string Path; // as it was written when the key was created
    std::map<std::string, StoredValue> Values;
};

struct Service {
    std::string Name;
    std::string Path; // of its driver file
    bool Running = false;
    bool Marked = false; // for deletion
};

struct StoredFile {
    std::string Path;
    std::uint32_t Attributes = 0;
    Bytes Data;
    bool Guarded = false; // by its access list; a state folder does not keep this
};

// What all processes on the machine see. Every map goes by the lower-case form of the name.
struct SharedState {
    std::map<std::string, StoredKey> Keys; // by their path under HKEY_LOCAL_MACHINE
    std::map<std::string, Service> Services;
    std::map<std::string, StoredFile> Files; // by FileKey
};

// Whether a started driver's device stands behind that name (without its prefix).
bool DriverDeviceExists(const SharedState& state, std::string_view name);

// With a state folder, tells other processes that this one has the device open, as long as the result lives. And
// whether any process has. Both with exclusive access to the state.
Descriptor DriverDeviceHold();
bool DriverDeviceHeld();

// Exclusive access to the state folder; without a folder it does nothing. Not to be nested.
class FolderLock {
public:
    FolderLock();

    bool Locked() const { return LockFile >= 0; }

private:
    std::optional<SignalsHeld> Held;
    Descriptor LockFile;
};

// Opens a file of a state folder. A link is not followed, and what has several names is not written to: that could be
// any file. Without one the descriptor is negative, and errno tells why.
Descriptor StateFileOpen(const std::string& path, int flags = O_RDWR | O_CREAT);

// What the names of the files of a shared mutex begin with in the state folder.
constexpr std::string_view MutexFile = "mutex-";

// Tries whether the files of a state folder can be locked, read, understood and written. The result is empty, or one
// line that names the file and says what is wrong with it.
std::string StateFolderFault(const std::string& folder);

// Exclusive access to the shared state for as long as the object lives. Not to be nested.
class SharedAccess {
public:
    SharedAccess();
    ~SharedAccess();
    SharedAccess(const SharedAccess&) = delete;
    SharedAccess& operator=(const SharedAccess&) = delete;

    // Why the state can't be used, as an error number; 0 when it can.
    std::uint32_t Error() const { return ErrorNumber; }

    const SharedState* operator->() const { return State; }
    const SharedState& operator*() const { return *State; }

    // The state, to be changed. What is not kept afterwards is undone, with a state folder.
    SharedState& Change() {
        Touched = true;
        return *State;
    }

    // Keeps what was changed. Without it, or when it fails, a state folder stays as it was. The result is an error
    // number.
    std::uint32_t Commit();

private:
    FolderLock Lock;
    SharedState* State;
    bool Touched = false; // and not kept
    std::uint32_t ErrorNumber = 0;
};

// What belongs to this process alone and goes with the machine.
struct ProcessState {
    std::uint64_t Affinity = 0;
    std::uint64_t ThreadAffinity = 0;
    std::uint32_t PriorityClass = 0x20;
    std::uint32_t ExecutionState = 0x80000000;
    bool VariablesAllowed = false; // the privilege for firmware variables is enabled
    std::uint32_t SecurityIds = 0; // and descriptors, allocated and not freed
};

ProcessState& Process();

// Empties the state that is kept in this process.
void OwnStateForget();

// A text with every byte but letters, digits and a few marks as %XX: one word, fit for a file name.
std::string Escaped(std::string_view text);

} // namespace StandIn
