// RyxBin: the library's value container.
#include "Lib/API/RyxBin.h"

#include <new>

RyxStatus RyxBinCreate(std::uint64_t size, RyxBin** bin) {
    const auto bytes = static_cast<std::uint32_t>(size);
    if (bin == nullptr || bytes == 0) {
        return RyxErrorArgument;
    }
    auto* data = new (std::nothrow) std::uint8_t[bytes]();
    auto* made = new (std::nothrow) RyxBin{bytes, data, 0};
    if (data == nullptr || made == nullptr) {
        delete[] data;
        delete made;
        return RyxErrorMemory;
    }
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
