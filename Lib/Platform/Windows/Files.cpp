// Whole files of the platform.
#include "Lib/Platform/Files.h"

#include <windows.h>

#include <cstring>
#include <new>
#include <sddl.h>
#include <sys/stat.h>

namespace {

// Administrators own the file; they and the system may do everything, and nothing comes from the folder's own list.
constexpr char GuardedAccess[] = "O:BAD:P(A;;FA;;;SY)(A;;FA;;;BA)";

HandleOwner Owned(HANDLE file) {
    return HandleOwner(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

// Creates a file that was not there; null when something is.
HandleOwner GuardedCreate(const char* path) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorA(GuardedAccess, SDDL_REVISION_1, &descriptor, nullptr)) {
        return nullptr;
    }
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor, FALSE};
    HandleOwner file = Owned(CreateFileA(path, GENERIC_WRITE, FILE_SHARE_READ, &attributes, CREATE_NEW,
                                         FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    LocalFree(descriptor);
    return file;
}

// Whether the file holds these bytes and no more.
bool Holds(HANDLE file, const std::uint8_t* data, std::uint32_t size) {
    std::uint8_t piece[4096];
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(file, piece, sizeof piece, &got, nullptr) || got > size) {
            return false;
        }
        if (got == 0) {
            return size == 0;
        }
        if (std::memcmp(piece, data, got) != 0) {
            return false;
        }
        data += got;
        size -= got;
    }
}

} // namespace

RyxStatus FileMake(const char* path, const void* data, std::uint32_t size) {
    // What can't be deleted is in the way of the creation.
    DeleteFileA(path);
    HandleOwner file = GuardedCreate(path);
    if (file == nullptr) {
        return RyxErrorFileOpen;
    }
    DWORD written = 0;
    const bool complete = WriteFile(file.get(), data, size, &written, nullptr) && written == size;
    file.reset();
    if (!complete) {
        DeleteFileA(path);
        return RyxErrorGeneral;
    }
    return RyxOk;
}

HandleOwner FileHold(const char* path, const void* data, std::uint32_t size) {
    HandleOwner file = Owned(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                         FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    return file != nullptr && Holds(file.get(), static_cast<const std::uint8_t*>(data), size) ? std::move(file)
                                                                                              : nullptr;
}

bool HeldPathGet(const HandleOwner& file, char* path, std::size_t capacity) {
    using PathQuery = DWORD(WINAPI*)(HANDLE file, LPSTR path, DWORD capacity, DWORD flags);
    constexpr DWORD normalizedOnDrive = 0;
    constexpr char prefix[] = "\\\\?\\"; // which drivers' paths don't have
    constexpr DWORD prefixLength = sizeof prefix - 1;
    const HMODULE module = GetModuleHandleA("kernel32");
    const PathQuery query =
        module == nullptr
            ? nullptr
            : reinterpret_cast<PathQuery>(reinterpret_cast<void*>(GetProcAddress(module, "GetFinalPathNameByHandleA")));
    char own[0x1000];
    const DWORD length = query != nullptr ? query(file.get(), own, sizeof own, normalizedOnDrive) : 0;
    if (length >= sizeof own) {
        return false;
    }
    if (length < prefixLength + 2 || std::memcmp(own, prefix, prefixLength) != 0 || own[prefixLength + 1] != ':') {
        return true;
    }
    if (length - prefixLength >= capacity) {
        return false;
    }
    std::memcpy(path, own + prefixLength, length - prefixLength);
    path[length - prefixLength] = '\0';
    return true;
}

RyxStatus ExecutableRead(std::unique_ptr<std::uint8_t[]>* data, std::uint32_t* size) {
    constexpr DWORD capacity = 0x8000; // longer than any path
    const std::unique_ptr<WCHAR[]> path(new (std::nothrow) WCHAR[capacity]);
    if (path == nullptr) {
        return RyxErrorMemory;
    }
    const DWORD pathLength = GetModuleFileNameW(nullptr, path.get(), capacity);
    if (pathLength == 0 || pathLength >= capacity) {
        return RyxErrorFileOpen;
    }
    const HandleOwner file =
        Owned(CreateFileW(path.get(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    const DWORD length = file != nullptr ? GetFileSize(file.get(), nullptr) : INVALID_FILE_SIZE;
    if (length == INVALID_FILE_SIZE) {
        return RyxErrorFileOpen;
    }
    std::unique_ptr<std::uint8_t[]> block(new (std::nothrow) std::uint8_t[length]);
    if (block == nullptr) {
        return RyxErrorMemory;
    }
    DWORD got = 0;
    if (!ReadFile(file.get(), block.get(), length, &got, nullptr) || got != length) {
        return RyxErrorFileRead;
    }
    *data = std::move(block);
    *size = length;
    return RyxOk;
}

bool FileIsRegular(const char* path) {
    struct stat about {};
    return stat(path, &about) == 0 && S_ISREG(about.st_mode);
}

void FileAttributesClear(const char* path) {
    SetFileAttributesA(path, FILE_ATTRIBUTE_NORMAL);
}

void FileRemove(const char* path) {
    DeleteFileA(path);
}
