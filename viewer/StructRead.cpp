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
RyxStatus ValueTake(RyxStatus status, RyxBin* bin, FieldValue* value) {
    if (bin != nullptr) {
        if (const RyxStatus kept = ViewerBinKeep(RyxBinOwner(bin)); kept != RyxOk) {
            return kept;
        }
    }
    if (status != RyxOk) {
        return RyxErrorUnsupported;
    }
    std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    status = RyxBinInfoGet(ViewerFieldBin, &data, &size);
    *value = {{data, static_cast<std::size_t>(size)}};
    for (std::size_t i = std::min<std::size_t>(value->Bytes.size(), sizeof value->Number); i-- > 0;) {
        value->Number = value->Number << 8 | value->Bytes[i];
    }
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

RyxStatus EpsFieldRead(std::uint32_t field, FieldValue* value) {
    ViewerBinClear();
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosEpsDataGet(field, &bin);
    return ValueTake(status, bin, value);
}

RyxStatus StructFieldRead(std::uint32_t field, std::uint32_t instance, FieldValue* value) {
    ViewerBinClear();
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosDataGet(field, instance, &bin);
    return ValueTake(status, bin, value);
}

RyxStatus StructAreaRead(std::uint8_t type, std::uint32_t instance, std::uint8_t offset, FieldValue* value) {
    ViewerBinClear();
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosAreaGet(type, instance, offset, &bin);
    return ValueTake(status, bin, value);
}

RyxStatus StructStringRead(std::uint32_t field, std::uint32_t instance, std::string_view* text) {
    FieldValue value;
    if (const RyxStatus status = StructFieldRead(field, instance, &value); status != RyxOk) {
        return status;
    }
    *text = std::string_view(reinterpret_cast<const char*>(value.Bytes.data()), value.Bytes.size());
    *text = text->substr(0, text->find('\0'));
    if (text->empty()) {
        *text = "NULL";
    }
    return RyxOk;
}

RyxStatus SmbiosVersionGet(std::uint8_t* major, std::uint8_t* minor) {
    constexpr std::uint32_t MajorField = 3;
    std::uint8_t* const versions[] = {major, minor};
    for (std::uint32_t i = 0; i < std::size(versions); ++i) {
        FieldValue value;
        if (const RyxStatus status = EpsFieldRead(MajorField + i, &value); status != RyxOk) {
            return status;
        }
        *versions[i] = static_cast<std::uint8_t>(value.Number);
    }
    return RyxOk;
}

void BitListPrint(std::uint64_t value, const char* const* names) {
    for (int i = 0; names[i] != nullptr; ++i) {
        const int bit = static_cast<int>(value >> (i % 64) & 1);
        RyxPrintf("  Bit%d %s - %d ", i, names[i], bit);
        RyxPrintf(bit == 1 ? "(Yes)\n" : "(No)\n");
    }
}
