// RyxBin: the library's value container.
#include "Lib/API/RyxBin.h"

#include <cstring>
#include <new>

RyxStatus RyxBinCreate(std::uint64_t size, RyxBin** bin) {
    const auto bytes = static_cast<std::uint32_t>(size);
    return bytes == 0 ? RyxErrorArgument : RyxBinMake(nullptr, bytes, bin);
}

RyxStatus RyxBinMake(const void* bytes, std::uint32_t size, RyxBin** bin) {
    if (bin == nullptr) {
        return RyxErrorArgument;
    }
    std::unique_ptr<std::uint8_t[]> data(size == 0 ? nullptr : new (std::nothrow) std::uint8_t[size]());
    auto* made = size != 0 && data == nullptr ? nullptr : new (std::nothrow) RyxBin{size, data.get(), 0};
    if (made == nullptr) {
        return RyxErrorMemory;
    }
    if (bytes != nullptr && size != 0) {
        std::memcpy(data.get(), bytes, size);
    }
    data.release(); // the container's now
    *bin = made;
    return RyxOk;
}

RyxStatus RyxBinInfoGet(const RyxBin* bin, std::uint8_t** data, std::uint64_t* size) {
    if (bin == nullptr) {
        return RyxErrorObject;
    }
    if (data == nullptr || size == nullptr) {
        return RyxErrorArgument;
    }
    *data = bin->Data;
    *size = bin->Size;
    return RyxOk;
}

RyxStatus RyxBinFree(RyxBin* bin) {
    if (bin == nullptr) {
        return RyxErrorObject;
    }
    if (bin->Borrowed == 0) {
        delete[] bin->Data;
    }
    delete bin;
    return RyxOk;
}
