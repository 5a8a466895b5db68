// RyxBin: the library's value container.
#include "Lib/Common/Bin.h"

#include <cstring>
#include <limits>
#include <new>

namespace {

// A value's bytes stand behind its container, in one block of memory.
std::uint8_t* OwnBytes(RyxBin* bin) {
    return reinterpret_cast<std::uint8_t*>(bin + 1);
}

} // namespace

RyxStatus RyxBinMake(const void* bytes, std::uint32_t size, RyxBin** bin) {
    if (bin == nullptr) {
        return RyxErrorArgument;
    }
    const std::size_t length = size;
    void* const block = length > std::numeric_limits<std::size_t>::max() - sizeof(RyxBin)
                            ? nullptr
                            : ::operator new(sizeof(RyxBin) + length, std::nothrow);
    if (block == nullptr) {
        return RyxErrorMemory;
    }
    *bin = new (block) RyxBin{size, nullptr, 0};
    if (size != 0) {
        (*bin)->Data = OwnBytes(*bin);
        if (bytes != nullptr) {
            std::memcpy((*bin)->Data, bytes, size);
        } else {
            std::memset((*bin)->Data, 0, size);
        }
    }
    return RyxOk;
}

RyxStatus RyxBinFree(RyxBin* bin) {
    if (bin == nullptr) {
        return RyxErrorObject;
    }
    if (bin->Borrowed == 0 && bin->Data != OwnBytes(bin)) {
        delete[] bin->Data;
    }
    ::operator delete(bin);
    return RyxOk;
}
