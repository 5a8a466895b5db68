// Values.
#include "Lib/API/RyxBin.h"

RyxStatus RyxBinCreate(std::uint64_t size, RyxBin** bin) {
    const auto bytes = static_cast<std::uint32_t>(size);
    return bytes == 0 ? RyxErrorArgument : RyxBinMake(nullptr, bytes, bin);
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
