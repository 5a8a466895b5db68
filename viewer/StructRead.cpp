// Reading values.
#include "viewer/StructRead.h"

#include "Lib/API/RyxPrint.h"
#include "Lib/API/RyxSmbios.h"
#include "viewer/ViewerState.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::uint64_t SelectionLimit = 128;
constexpr std::array<std::uint64_t, 11> SingleInstanceTypes = {0, 1, 2, 3, 4, 11, 12, 24, 32, 126, 127};

// Keeps the value that the library gave, if any, and takes its bytes.
RyxStatus ValueTake(RyxStatus status, RyxBin* bin, const std::uint8_t** data, std::uint64_t* size) {
    if (bin != nullptr) {
        ViewerBinKeep(bin);
    }
    if (status != RyxOk) {
        return RyxErrorUnsupported;
    }
    *size = 0;
    std::uint8_t* bytes = nullptr;
    status = RyxBinInfoGet(ViewerFieldBin, &bytes, size);
    *data = bytes;
    return status;
}

} // namespace

RyxStatus SelectionCheck(std::uint64_t type, std::uint64_t instance, std::uint64_t field) {
    if (instance > SelectionLimit || type > SelectionLimit || field > SelectionLimit) {
        return RyxErrorUnsupported;
    }
    const bool single =
        std::find(SingleInstanceTypes.begin(), SingleInstanceTypes.end(), type) != SingleInstanceTypes.end();
    return single && instance > 1 ? RyxErrorUnsupported : RyxOk;
}

RyxStatus EpsFieldRead(std::uint32_t field, const std::uint8_t** data, std::uint64_t* size) {
    ViewerBinClear();
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosEpsDataGet(field, &bin);
    return ValueTake(status, bin, data, size);
}

RyxStatus StructFieldRead(std::uint32_t field, std::uint32_t instance, const std::uint8_t** data, std::uint64_t* size) {
    ViewerBinClear();
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosDataGet(field, instance, &bin);
    return ValueTake(status, bin, data, size);
}

RyxStatus StructAreaRead(std::uint8_t type, std::uint32_t instance, std::uint8_t offset, const std::uint8_t** data,
                         std::uint64_t* size) {
    ViewerBinClear();
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosAreaGet(type, instance, offset, &bin);
    return ValueTake(status, bin, data, size);
}

RyxStatus StructStringRead(std::uint32_t field, std::uint32_t instance, std::string_view* text) {
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    const RyxStatus status = StructFieldRead(field, instance, &data, &size);
    if (status != RyxOk) {
        return status;
    }
    const std::string_view value(reinterpret_cast<const char*>(data), static_cast<std::size_t>(size));
    *text = value.substr(0, value.find('\0'));
    if (text->empty()) {
        *text = "NULL";
    }
    return RyxOk;
}

RyxStatus SmbiosVersionGet(std::uint8_t* major, std::uint8_t* minor) {
    constexpr std::uint32_t MajorField = 3;
    constexpr std::uint32_t MinorField = 4;
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    RyxStatus status = EpsFieldRead(MajorField, &data, &size);
    if (status != RyxOk) {
        return status;
    }
    *major = data[0];
    status = EpsFieldRead(MinorField, &data, &size);
    if (status != RyxOk) {
        return status;
    }
    *minor = data[0];
    return RyxOk;
}

void BitListPrint(std::uint64_t value, const char* const* names) {
    for (int i = 0; names[i] != nullptr; ++i) {
        const int bit = static_cast<int>(value >> (i % 64) & 1);
        RyxPrintf("  Bit%d %s - %d ", i, names[i], bit);
        RyxPrintf(bit == 1 ? "(Yes)\n" : "(No)\n");
    }
}

std::uint64_t ValueOf(const std::uint8_t* data, std::uint64_t size) {
    std::uint64_t value = 0;
    for (std::uint64_t i = std::min<std::uint64_t>(size, 8); i-- > 0;) {
        value = value << 8 | data[i];
    }
    return value;
}
