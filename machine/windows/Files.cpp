// Files: those that programs write stay in the machine; all others are read from this computer.
#include "machine/windows/Files.h"

#include "machine/host/HostFile.h"
#include "machine/kernel/Kernel.h"
#include "machine/windows/Handles.h"
#include "machine/windows/LastError.h"
#include "machine/windows/Security.h"
#include "machine/windows/State.h"
#include "machine/windows/WideText.h"

#include <shlwapi.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace StandIn;

namespace {

constexpr char TemporaryFolder[] = "C:\\Windows\\Temp\\";
constexpr std::string_view DevicePrefix = "\\\\.\\";
constexpr std::string_view GlobalPrefix = "global\\";

HANDLE NoFile(std::uint32_t error) {
    SetLastError(error);
    return INVALID_HANDLE_VALUE;
}

BOOL Done(std::uint32_t error) {
    return error == 0 || FailFalse(error);
}

// The path by which this computer knows a file.
std::string HostPath(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

bool HostFileExists(const std::string& path) {
    return access(HostPath(path).c_str(), F_OK) == 0;
}

bool HasDrive(const std::string& key) {
    return key.size() >= 2 && key[1] == ':';
}

bool IsLink(const StoredFile& file) {
    return (file.Attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

std::string LinkTarget(const StoredFile& link) {
    return {link.Data.begin(), link.Data.end()};
}

// Whether a file can be made there: in the temporary folder, where a link leads, or in a folder of this computer.
bool FolderExists(const SharedState& state, const std::string& key, const std::string& path) {
    if (HasDrive(key)) {
        const std::string folder = key.substr(0, key.rfind('\\') + 1);
        return folder == Lower(TemporaryFolder) ||
               std::any_of(state.Files.begin(), state.Files.end(), [&folder](const auto& one) {
                   const StoredFile& link = one.second;
                   return IsLink(link) && FileKey(LinkTarget(link)) + "\\" == folder;
               });
    }
    const std::string host = HostPath(path);
    return HostFolderExists(host.substr(0, host.rfind('/') + 1) + ".");
}

bool DriverRunsFrom(const SharedState& state, const std::string& key) {
    return std::any_of(state.Services.begin(), state.Services.end(), [&](const auto& one) {
        return one.second.Running && FileKey(PathFollowed(state, one.second.Path)) == key;
    });
}

HANDLE DeviceOpen(std::string_view asked, DWORD access) {
    std::string_view name = asked;
    if (Lower(name.substr(0, GlobalPrefix.size())) == GlobalPrefix) {
        name.remove_prefix(GlobalPrefix.size());
    }
    Handle handle{HandleKind::Device, std::string(asked), access};
    {
        const SharedAccess state;
        if (state.Error() != 0) {
            return NoFile(state.Error());
        }
        if (!DriverDeviceExists(*state, name)) {
            return NoFile(ERROR_FILE_NOT_FOUND);
        }
        handle.HostFile = DriverDeviceHold();
    }
    const std::uint32_t error = KernelFileOpen(std::string(name), access, MachineGet().Administrator, &handle.Opened);
    return error == 0 ? HandleOpen(std::move(handle)) : NoFile(error);
}

// Opens a file of this computer; it is only ever read.
HANDLE HostFileOpen(const std::string& path, DWORD access) {
    Descriptor file(open(HostPath(path).c_str(), O_RDONLY | O_CLOEXEC));
    if (file < 0) {
        return NoFile(errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
    }
    struct stat about {};
    if (fstat(file, &about) != 0 || S_ISDIR(about.st_mode)) {
        return NoFile(ERROR_ACCESS_DENIED);
    }
    return HandleOpen({.Kind = HandleKind::HostFile, .Name = path, .Access = access, .HostFile = std::move(file)});
}

// The way of sharing that an access needs of those who have the file open.
DWORD ShareNeeded(DWORD access) {
    return ((access & GENERIC_READ) != 0 ? FILE_SHARE_READ : 0U) |
           ((access & GENERIC_WRITE) != 0 ? FILE_SHARE_WRITE : 0U) | ((access & DELETE) != 0 ? FILE_SHARE_DELETE : 0U);
}

// Whether a stored file can be opened beside the handles that it is open by.
bool SharingAllows(const std::string& key, DWORD access, DWORD share) {
    return std::none_of(HandlesOpen().begin(), HandlesOpen().end(), [&](const auto& entry) {
        const Handle& held = entry.second;
        return held.Kind == HandleKind::File && held.Name == key &&
               ((ShareNeeded(access) & ~held.Share) != 0 || (ShareNeeded(held.Access) & ~share) != 0);
    });
}

// Why a stored file can't be opened, if so. A missing one counts as openable here.
std::uint32_t OpenError(const SharedState& state, const std::string& key, DWORD access, DWORD share) {
    const auto found = state.Files.find(key);
    if (found == state.Files.end()) {
        return 0;
    }
    const bool writes = (access & GENERIC_WRITE) != 0;
    if (found->second.Guarded && !MachineGet().Administrator) {
        return ERROR_ACCESS_DENIED;
    }
    if (!SharingAllows(key, access, share) || (writes && DriverRunsFrom(state, key))) {
        return ERROR_SHARING_VIOLATION;
    }
    return writes && (found->second.Attributes & FILE_ATTRIBUTE_READONLY) != 0 ? ERROR_ACCESS_DENIED : 0;
}

HANDLE FileOpen(std::string path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                DWORD flags) {
    if (path.empty()) {
        return NoFile(ERROR_PATH_NOT_FOUND);
    }
    if (path.rfind(DevicePrefix, 0) == 0) {
        return DeviceOpen(std::string_view(path).substr(DevicePrefix.size()), access);
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return NoFile(state.Error());
    }
    path = PathFollowed(*state, path, (flags & FILE_FLAG_OPEN_REPARSE_POINT) == 0);
    const std::string key = FileKey(path);
    const bool stored = state->Files.count(key) != 0;
    const bool exists = stored || (!HasDrive(key) && HostFileExists(path));
    const bool creates = disposition != OPEN_EXISTING;
    if (!exists && !creates) {
        return NoFile(ERROR_FILE_NOT_FOUND);
    }
    if (exists && creates) {
        return NoFile(ERROR_FILE_EXISTS);
    }
    if (!stored && !creates) {
        // Files of this computer stay as they are.
        return (access & GENERIC_WRITE) != 0 ? NoFile(ERROR_ACCESS_DENIED) : HostFileOpen(path, access);
    }
    if (const std::uint32_t error = OpenError(*state, key, access, share); error != 0) {
        return NoFile(error);
    }
    if (creates) {
        if (!FolderExists(*state, key, path)) {
            return NoFile(ERROR_PATH_NOT_FOUND);
        }
        state.Change().Files[key] = StoredFile{path, flags & 0xFFFFU, {}, GuardsFile(security)};
        if (const std::uint32_t error = state.Commit(); error != 0) {
            return NoFile(error);
        }
    }
    return HandleOpen({.Kind = HandleKind::File, .Name = key, .Access = access, .Share = share});
}

} // namespace

std::string StandIn::FileKey(const std::string& path) {
    std::string whole = path;
    std::replace(whole.begin(), whole.end(), '/', '\\');
    if (!whole.empty() && whole.front() != '\\' && !HasDrive(whole)) {
        char folder[PATH_MAX] = "";
        whole = std::string(getcwd(folder, sizeof folder) != nullptr ? folder : "") + "\\" + whole;
    }
    std::string key;
    for (const char one : whole) {
        const char kept = one == '/' ? '\\' : one;
        if (kept != '\\' || key.empty() || key.back() != '\\') {
            key += kept;
        }
    }
    return Lower(key);
}

bool StandIn::FileHeldExclusively(const std::string& key) {
    return std::any_of(HandlesOpen().begin(), HandlesOpen().end(), [&key](const auto& entry) {
        const Handle& held = entry.second;
        return held.Kind == HandleKind::File && held.Name == key &&
               ((held.Access & GENERIC_WRITE) != 0 || (held.Share & FILE_SHARE_READ) == 0);
    });
}

std::string StandIn::PathFollowed(const SharedState& state, std::string path, bool last) {
    constexpr int linkLimit = 8;
    int links = 0;
    for (std::size_t end = 0; end != std::string::npos && links < linkLimit;) {
        end = path.find_first_of("\\/", end + 1);
        const auto found = state.Files.find(FileKey(path.substr(0, end)));
        if ((end != std::string::npos || last) && found != state.Files.end() && IsLink(found->second)) {
            path = LinkTarget(found->second) + (end != std::string::npos ? path.substr(end) : "");
            end = 0;
            ++links;
        }
    }
    return path;
}

DWORD WINAPI StandIn::FinalPathQuery(HANDLE file, LPSTR buffer, DWORD room, DWORD) {
    if (FailsWith(Named("GetFinalPathNameByHandleA"), ERROR_PATH_NOT_FOUND)) {
        return 0;
    }
    const SharedAccess state;
    const Handle* const handle = HandleFind(file, HandleKind::File);
    const auto found = handle != nullptr ? state->Files.find(handle->Name) : state->Files.end();
    if (found == state->Files.end()) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    const std::string path = "\\\\?\\" + found->second.Path;
    const auto length = static_cast<DWORD>(path.size());
    if (length >= room) {
        return length + 1;
    }
    std::memcpy(buffer, path.c_str(), length + 1);
    return length;
}

HANDLE WINAPI CreateFileA(LPCSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode,
                          LPSECURITY_ATTRIBUTES lpSecurityAttributes, DWORD dwCreationDisposition,
                          DWORD dwFlagsAndAttributes, HANDLE) {
    const bool writes = (dwDesiredAccess & GENERIC_WRITE) != 0;
    if (FailsWith(Named("CreateFileA"), writes ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND)) {
        return INVALID_HANDLE_VALUE;
    }
    return FileOpen(lpFileName != nullptr ? lpFileName : "", dwDesiredAccess, dwShareMode, lpSecurityAttributes,
                    dwCreationDisposition, dwFlagsAndAttributes);
}

HANDLE WINAPI CreateFileW(LPCWSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode,
                          LPSECURITY_ATTRIBUTES lpSecurityAttributes, DWORD dwCreationDisposition,
                          DWORD dwFlagsAndAttributes, HANDLE) {
    if (FailsWith(Named("CreateFileW"), ERROR_FILE_NOT_FOUND)) {
        return INVALID_HANDLE_VALUE;
    }
    return FileOpen(lpFileName != nullptr ? NarrowText(lpFileName) : "", dwDesiredAccess, dwShareMode,
                    lpSecurityAttributes, dwCreationDisposition, dwFlagsAndAttributes);
}

BOOL WINAPI ReadFile(HANDLE hFile, LPVOID lpBuffer, DWORD nNumberOfBytesToRead, LPDWORD lpNumberOfBytesRead,
                     LPOVERLAPPED) {
    if (lpNumberOfBytesRead != nullptr) {
        *lpNumberOfBytesRead = 0;
    }
    if (FailsWith(Named("ReadFile"), ERROR_GEN_FAILURE)) {
        return FALSE;
    }
    Handle* const handle = HandleFindAny(hFile);
    if (handle == nullptr || (handle->Kind != HandleKind::File && handle->Kind != HandleKind::HostFile)) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    if ((handle->Access & GENERIC_READ) == 0) {
        return FailFalse(ERROR_ACCESS_DENIED);
    }
    std::size_t got = 0;
    if (handle->Kind == HandleKind::HostFile) {
        while (got < nNumberOfBytesToRead) {
            const ssize_t piece =
                read(handle->HostFile, static_cast<char*>(lpBuffer) + got, nNumberOfBytesToRead - got);
            if (piece < 0 && errno == EINTR) {
                continue;
            }
            if (piece < 0) {
                return FailFalse(ERROR_GEN_FAILURE);
            }
            if (piece == 0) {
                break;
            }
            got += static_cast<std::size_t>(piece);
        }
    } else {
        const SharedAccess state;
        if (state.Error() != 0) {
            return FailFalse(state.Error());
        }
        const auto found = state->Files.find(handle->Name);
        if (found == state->Files.end()) {
            return FailFalse(ERROR_INVALID_HANDLE);
        }
        const Bytes& data = found->second.Data;
        const std::size_t start = std::min<std::size_t>(handle->Position, data.size());
        got = std::min<std::size_t>(nNumberOfBytesToRead, data.size() - start);
        std::copy_n(data.data() + start, got, static_cast<std::uint8_t*>(lpBuffer));
        handle->Position += got;
    }
    if (lpNumberOfBytesRead != nullptr) {
        *lpNumberOfBytesRead = static_cast<DWORD>(got);
    }
    return TRUE;
}

BOOL WINAPI WriteFile(HANDLE hFile, LPCVOID lpBuffer, DWORD nNumberOfBytesToWrite, LPDWORD lpNumberOfBytesWritten,
                      LPOVERLAPPED) {
    if (lpNumberOfBytesWritten != nullptr) {
        *lpNumberOfBytesWritten = 0;
    }
    if (FailsWith(Named("WriteFile"), ERROR_DISK_FULL)) {
        return FALSE;
    }
    Handle* const handle = HandleFind(hFile, HandleKind::File);
    if (handle == nullptr) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    if ((handle->Access & GENERIC_WRITE) == 0) {
        return FailFalse(ERROR_ACCESS_DENIED);
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return FailFalse(state.Error());
    }
    const auto found = state->Files.find(handle->Name);
    if (found == state->Files.end()) {
        return FailFalse(ERROR_INVALID_HANDLE);
    }
    Bytes& data = state.Change().Files.at(handle->Name).Data;
    data.resize(std::max<std::size_t>(data.size(), handle->Position + nNumberOfBytesToWrite));
    std::copy_n(static_cast<const std::uint8_t*>(lpBuffer), nNumberOfBytesToWrite, data.data() + handle->Position);
    if (const std::uint32_t error = state.Commit(); error != 0) {
        return FailFalse(error);
    }
    handle->Position += nNumberOfBytesToWrite;
    if (lpNumberOfBytesWritten != nullptr) {
        *lpNumberOfBytesWritten = nNumberOfBytesToWrite;
    }
    return TRUE;
}

// No file here is larger than 32 bits tell.
DWORD WINAPI GetFileSize(HANDLE hFile, LPDWORD) {
    if (FailsWith(Named("GetFileSize"), ERROR_GEN_FAILURE)) {
        return INVALID_FILE_SIZE;
    }
    const Handle* const handle = HandleFindAny(hFile);
    if (handle != nullptr && handle->Kind == HandleKind::HostFile) {
        struct stat about {};
        return fstat(handle->HostFile, &about) == 0 ? static_cast<DWORD>(about.st_size) : 0;
    }
    if (handle != nullptr && handle->Kind == HandleKind::File) {
        const SharedAccess state;
        const auto found = state->Files.find(handle->Name);
        return found != state->Files.end() ? static_cast<DWORD>(found->second.Data.size()) : 0;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return INVALID_FILE_SIZE;
}

BOOL WINAPI DeleteFileA(LPCSTR lpFileName) {
    if (FailsWith(Named("DeleteFileA"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return FailFalse(state.Error());
    }
    const std::string path = PathFollowed(*state, lpFileName != nullptr ? lpFileName : "", false);
    const std::string key = FileKey(path);
    const auto found = state->Files.find(key);
    if (found == state->Files.end()) {
        return FailFalse(HostFileExists(path) ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
    }
    if (!SharingAllows(key, DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE)) {
        return FailFalse(ERROR_SHARING_VIOLATION);
    }
    if ((found->second.Attributes & FILE_ATTRIBUTE_READONLY) != 0 || DriverRunsFrom(*state, key)) {
        return FailFalse(ERROR_ACCESS_DENIED);
    }
    state.Change().Files.erase(key);
    return Done(state.Commit());
}

BOOL WINAPI SetFileAttributesA(LPCSTR lpFileName, DWORD dwFileAttributes) {
    if (FailsWith(Named("SetFileAttributesA"), ERROR_ACCESS_DENIED)) {
        return FALSE;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return FailFalse(state.Error());
    }
    const std::string key = FileKey(PathFollowed(*state, lpFileName != nullptr ? lpFileName : ""));
    if (state->Files.count(key) == 0) {
        return FailFalse(ERROR_FILE_NOT_FOUND);
    }
    state.Change().Files.at(key).Attributes = dwFileAttributes;
    return Done(state.Commit());
}

DWORD WINAPI GetTempPathA(DWORD nBufferLength, LPSTR lpBuffer) {
    if (FailsWith(Named("GetTempPathA"), ERROR_PATH_NOT_FOUND)) {
        return 0;
    }
    if (nBufferLength < sizeof TemporaryFolder || lpBuffer == nullptr) {
        return sizeof TemporaryFolder;
    }
    std::memcpy(lpBuffer, TemporaryFolder, sizeof TemporaryFolder);
    return sizeof TemporaryFolder - 1;
}

// Takes either slash, for the executable's path is one of this computer. A root keeps its slash.
BOOL WINAPI PathRemoveFileSpecA(LPSTR pszPath) {
    if (Fails(Named("PathRemoveFileSpecA")) || pszPath == nullptr || *pszPath == 0) {
        return FALSE;
    }
    const std::string_view path = pszPath;
    std::size_t end = path.find_last_of("\\/");
    if (end == std::string_view::npos) {
        end = 0;
    } else if (end == 0 || path[end - 1] == ':') {
        ++end;
    }
    const bool removed = end < path.size();
    pszPath[end] = 0;
    return removed;
}
