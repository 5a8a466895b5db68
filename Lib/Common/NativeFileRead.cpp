// Whole-file reads.
#include "Lib/Common/NativeFileRead.h"

#include "Lib/Platform/Files.h"

#include <cstdio>
#include <new>

namespace {

// The file's size. What is no regular file counts as one that can't be opened.
RyxStatus FileSizeGet(const char* name, std::uint32_t* size) {
    *size = 0;
    std::FILE* file = FileIsRegular(name) ? std::fopen(name, "r") : nullptr;
    if (file == nullptr) {
        return RyxErrorFileOpen;
    }
    const bool atEnd = std::fseek(file, 0, SEEK_END) == 0;
    const long end = atEnd ? std::ftell(file) : -1;
    if (std::fclose(file) != 0) {
        return RyxErrorFileClose;
    }
    if (end < 0 || static_cast<unsigned long long>(end) > 0x7FFFFFFFULL) {
        return RyxErrorFileOpen;
    }
    *size = static_cast<std::uint32_t>(end);
    return RyxOk;
}

} // namespace

RyxStatus NativeFileRead(const char* name, std::unique_ptr<char[]>* block, std::uint32_t* size) {
    if (name == nullptr || block == nullptr || size == nullptr) {
        return RyxErrorArgument;
    }
    block->reset();
    const RyxStatus status = FileSizeGet(name, size);
    if (status != RyxOk || *size == 0) {
        return status;
    }
    std::FILE* file = std::fopen(name, "rb");
    if (file == nullptr) {
        return RyxErrorFileOpen;
    }
    std::unique_ptr<char[]> bytes(new (std::nothrow) char[*size]);
    const bool whole = bytes != nullptr && std::fread(bytes.get(), 1, *size, file) == *size;
    std::fclose(file);
    if (!whole) {
        return bytes == nullptr ? RyxErrorMemory : RyxErrorFileRead;
    }
    *block = std::move(bytes);
    return RyxOk;
}

RyxStatus RyxFileRead(const char* name, std::unique_ptr<char[]>* block, std::uint32_t* size) {
    // Tools that load a package of files or a file collector read from those first. This one loads neither.
    return NativeFileRead(name, block, size);
}
