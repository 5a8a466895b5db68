// Reading values.
#include "viewer/StructRead.h"

#include "Lib/API/RyxPrint.h"
#include "Lib/API/RyxSmbios.h"
#include "Lib/LittleEndian.h"
#include "Lib/Utf8.h"
#include "viewer/ViewerState.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr std::uint8_t ControlEnd = 0x20; // what is below controls terminals
constexpr std::uint8_t ControlDelete = 0x7F;

// Whether a text begins with a control character. Consoles of Windows know none beyond ASCII.
bool BeginsControl(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text[0]);
#ifdef _WIN32
    const bool wide = false;
#else
    const bool wide = Utf8BeginsControl(text);
#endif
    return first < ControlEnd || first == ControlDelete || wide;
}

// Keeps a text of the machine, in the latest value, from driving the terminal that shows it: the result has a dot for
// each control character. Where one was of several bytes, the result begins later, so that it ends where the text did,
// and other strings of the value are found as before.
std::string_view ControlsHide(std::string_view text) {
    std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    if (!ViewerToConsole() || RyxBinInfoGet(ViewerFieldBin, &data, &size) != RyxOk) {
        return text;
    }
    char* const begin = reinterpret_cast<char*>(data) + (text.data() - reinterpret_cast<const char*>(data));
    char* end = begin;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = std::max<std::size_t>(Utf8Length(rest), 1);
        if (BeginsControl(rest)) {
            *end++ = '.';
        } else {
            end = std::copy_n(rest.data(), length, end);
        }
        rest.remove_prefix(length);
    }
    const std::size_t saved = text.size() - static_cast<std::size_t>(end - begin);
    std::move_backward(begin, end, begin + text.size());
    std::fill_n(begin, saved, '.');
    return text.substr(saved);
}

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
    *value = {{data, static_cast<std::size_t>(size)}, LittleEndianRead(data, static_cast<std::size_t>(size))};
    return status;
}

} // namespace

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

RyxStatus StructStringsRead(std::uint8_t type, std::uint32_t instance, FieldValue* value) {
    ViewerBinClear();
    RyxBin* bin = nullptr;
    const RyxStatus status = RyxSmbiosStringsGet(type, instance, &bin);
    return ValueTake(status, bin, value);
}

RyxStatus StructStringRead(std::uint32_t field, std::uint32_t instance, std::string_view* text) {
    FieldValue value;
    if (const RyxStatus status = StructFieldRead(field, instance, &value); status != RyxOk) {
        return status;
    }
    *text = TextOf(value.Bytes);
    return RyxOk;
}

std::string_view TextOf(std::span<const std::uint8_t> bytes) {
    const std::string_view all(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::string_view text = all.substr(0, all.find('\0'));
    return text.empty() ? text : ControlsHide(text);
}

std::string_view TextShown(std::string_view text) {
    return text.empty() ? "NULL" : text;
}

std::string_view StringOf(const FieldValue& strings, std::uint32_t number) {
    std::span<const std::uint8_t> rest = strings.Bytes;
    for (; number > 1 && !rest.empty(); --number) {
        const auto end = std::ranges::find(rest, std::uint8_t{0});
        rest = rest.subspan(std::min(rest.size(), static_cast<std::size_t>(end - rest.begin()) + 1));
    }
    return TextOf(number == 0 ? rest.first(0) : rest);
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

void FixedPrint(const char* text) {
    RyxPrintf(text, 0); // takes no argument; a compiler has doubts about a format without one
}
