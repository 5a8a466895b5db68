// Whole files of the platform.
#include "Lib/Platform/Files.h"

#include <windows.h>

#include <new>

RyxStatus FileWriteWhole(const char* path, const void* data, std::uint32_t size) {
    const HANDLE file =
        CreateFileA(path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return RyxErrorFileOpen;
    }
    DWORD written = 0;
    const bool complete = WriteFile(file, data, size, &written, nullptr) && written == size;
    CloseHandle(file);
    if (!complete) {
        DeleteFileA(path);
        return RyxErrorGeneral;
    }
    return RyxOk;
}

RyxStatus FileReadWhole(const char* path, std::unique_ptr<std::uint8_t[]>* data, std::uint32_t* size) {
    const HANDLE file =
        CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return RyxErrorFileOpen;
    }
    RyxStatus status = RyxErrorFileOpen;
    const DWORD length = GetFileSize(file, nullptr);
    if (length != INVALID_FILE_SIZE) {
        std::unique_ptr<std::uint8_t[]> block(new (std::nothrow) std::uint8_t[length]);
        DWORD got = 0;
        if (block == nullptr) {
            status = RyxErrorMemory;
        } else if (!ReadFile(file, block.get(), length, &got, nullptr) || got != length) {
            status = RyxErrorFileRead;
        } else {
            *data = std::move(block);
            *size = length;
            status = RyxOk;
        }
    }
    CloseHandle(file);
    return status;
}

void FileAttributesClear(const char* path) {
    SetFileAttributesA(path, FILE_ATTRIBUTE_NORMAL);
}

void FileRemove(const char* path) {
    DeleteFileA(path);
}
