// The helper driver's device: the control requests that it serves.
#include "Lib/Platform/StandIn/Faults.h"
#include "Lib/Platform/StandIn/FirmwareModel.h"
#include "Lib/Platform/StandIn/Handles.h"
#include "Lib/Platform/StandIn/Memory.h"
#include "Lib/Platform/StandIn/State.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>

using namespace StandIn;

namespace {

constexpr std::uint32_t ReadMemory = 0x222182;
constexpr std::uint32_t WriteMemory = 0x222186;
constexpr std::uint32_t GetBuffer = 0x22218A;
constexpr std::uint32_t ReleaseBuffer = 0x22218E;
constexpr std::uint32_t WritePortByte = 0x22219E;
constexpr std::uint32_t LocateRsdt = 0x2221AA;
constexpr std::uint32_t GetVersionWord = 0x2221B0;
constexpr std::uint32_t LocateRsdtNear = 0x2221C2;

constexpr std::uint16_t VersionWord = 0x0102;
constexpr std::uint64_t MemoryEnd = 1ULL << 32U;
constexpr std::uint32_t LargestBuffer = 16U << 20U;
constexpr std::uint32_t MiB = 1U << 20U;

struct Request {
    const std::uint8_t* Input;
    std::uint32_t InputLength;
    std::uint8_t* Data;
    std::uint32_t DataLength;
};

std::uint32_t Dword(const std::uint8_t* bytes) {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// Gives a number as the request's data.
template <typename Number> std::uint32_t Answer(const Request& request, Number number, std::uint32_t* returned) {
    if (request.DataLength < sizeof number) {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    std::memcpy(request.Data, &number, sizeof number);
    *returned = sizeof number;
    return ERROR_SUCCESS;
}

// The range of a memory request. Mapping fails for what wraps around the end of the address space.
std::uint32_t RangeOf(const Request& request, std::uint32_t* address) {
    if (request.InputLength < sizeof *address || request.DataLength == 0) {
        return ERROR_INVALID_PARAMETER;
    }
    *address = Dword(request.Input);
    return *address + std::uint64_t{request.DataLength} > MemoryEnd ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

// A place that nothing uses, far below the end of the address space.
std::uint32_t BufferPlace(std::uint32_t size) {
    constexpr std::uint32_t top = 0x3F000000;
    constexpr std::uint32_t step = 0x10000;
    std::uint32_t address = top;
    while (address > step && MemoryCovered(address, size)) {
        address -= step;
    }
    return address;
}

std::uint32_t BufferTake(const Request& request, std::uint32_t* returned) {
    if (request.InputLength < sizeof(std::uint32_t) || request.DataLength < sizeof(std::uint32_t)) {
        return ERROR_INVALID_PARAMETER;
    }
    const std::uint32_t size = Dword(request.Input);
    ProcessState& process = Process();
    if (process.CommunicationBuffer.empty()) {
        if (size == 0 || size > LargestBuffer) {
            Answer(request, std::uint32_t{0}, returned);
            return ERROR_NO_SYSTEM_RESOURCES;
        }
        process.CommunicationAddress = BufferPlace(size);
        process.CommunicationBuffer.assign(size, 0);
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return state.Error();
    }
    ++state->BufferUsers;
    const std::uint32_t error = state.Commit();
    return error != 0 ? error : Answer(request, process.CommunicationAddress, returned);
}

std::uint32_t BufferGiveBack(const Request& request) {
    if (request.InputLength < sizeof(std::uint32_t)) {
        return ERROR_INVALID_PARAMETER;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return state.Error();
    }
    if (state->BufferUsers == 0) {
        return ERROR_INVALID_PARAMETER;
    }
    if (--state->BufferUsers == 0) {
        Process().CommunicationBuffer.clear();
    }
    return state.Commit();
}

std::uint32_t PortWriteByte(const Request& request) {
    if (request.InputLength < 6) {
        return ERROR_INVALID_PARAMETER;
    }
    PortWrite(static_cast<std::uint16_t>(request.Input[0] | request.Input[1] << 8U), request.Input[2]);
    return ERROR_SUCCESS;
}

// Searches memory for tables signed "RSDT": the second one when there are two, else the first.
std::optional<std::uint32_t> RsdtSearch(std::uint64_t start, std::uint64_t end) {
    constexpr std::string_view signature = "RSDT";
    constexpr std::uint64_t piece = 0x10000;
    constexpr std::uint32_t headerSize = 36;
    std::optional<std::uint32_t> first;
    std::uint8_t buffer[piece + 4];
    end = std::min(end, MemoryEnd);
    for (std::uint64_t at = start; at + headerSize <= end;) {
        const std::uint64_t length = std::min<std::uint64_t>(sizeof buffer, end - at);
        std::size_t found = std::string_view::npos;
        if (MemoryCovered(at, length)) {
            MemoryRead(at, length, buffer);
            found = std::string_view(reinterpret_cast<const char*>(buffer), length).find(signature);
        }
        if (found == std::string_view::npos) {
            at += piece;
            continue;
        }
        if (first) {
            return static_cast<std::uint32_t>(at + found);
        }
        first = static_cast<std::uint32_t>(at + found);
        std::uint8_t size[4];
        MemoryRead(*first + 4ULL, sizeof size, size);
        at = *first + std::uint64_t{std::max<std::uint32_t>(Dword(size), signature.size())};
    }
    return first;
}

std::uint32_t RsdtKeep(const Request& request, std::optional<std::uint32_t> found, std::uint32_t* returned) {
    if (!found) {
        return ERROR_NOT_FOUND;
    }
    Process().RootTable = *found;
    return Answer(request, *found, returned);
}

// The firmware's record in the legacy segment names the place where its tables begin.
std::uint32_t RsdtByRecord(const Request& request, std::uint32_t* returned) {
    constexpr std::uint64_t segment = 0xE0000;
    constexpr std::uint64_t segmentEnd = 0x100000;
    constexpr std::size_t addressOffset = 20;
    std::uint8_t record[addressOffset + 4];
    for (std::uint64_t at = segment; at + 16 <= segmentEnd; at += 16) {
        MemoryRead(at, sizeof record, record);
        if (std::memcmp(record, "IFE$", 4) == 0) {
            const std::uint64_t start = Dword(record + addressOffset);
            return RsdtKeep(request, RsdtSearch(start, start + 32ULL * MiB), returned);
        }
    }
    return ERROR_NOT_FOUND;
}

std::uint32_t RsdtNear(const Request& request, std::uint32_t* returned) {
    if (request.InputLength < sizeof(std::uint32_t)) {
        return ERROR_INVALID_PARAMETER;
    }
    const std::uint64_t start = Dword(request.Input);
    std::optional<std::uint32_t> found = RsdtSearch(start, start + 8ULL * MiB);
    if (!found) {
        found = RsdtSearch(start - std::min<std::uint64_t>(start, 8ULL * MiB), start);
    }
    return RsdtKeep(request, found, returned);
}

// Serves a request; the result is an error number.
std::uint32_t Serve(std::uint32_t code, const Request& request, std::uint32_t* returned) {
    std::uint32_t address = 0;
    switch (code) {
    case ReadMemory:
        if (const std::uint32_t error = RangeOf(request, &address); error != 0) {
            return error;
        }
        MemoryRead(address, request.DataLength, request.Data);
        *returned = request.DataLength;
        return ERROR_SUCCESS;
    case WriteMemory:
        if (const std::uint32_t error = RangeOf(request, &address); error != 0) {
            return error;
        }
        MemoryWrite(address, request.DataLength, request.Data);
        *returned = request.DataLength;
        return ERROR_SUCCESS;
    case GetBuffer:
        return BufferTake(request, returned);
    case ReleaseBuffer:
        return BufferGiveBack(request);
    case WritePortByte:
        return PortWriteByte(request);
    case LocateRsdt:
        return Process().RootTable != 0 ? Answer(request, Process().RootTable, returned)
                                        : RsdtByRecord(request, returned);
    case LocateRsdtNear:
        return Process().RootTable != 0 ? Answer(request, Process().RootTable, returned) : RsdtNear(request, returned);
    case GetVersionWord:
        return Answer(request, VersionWord, returned);
    default:
        return ERROR_INVALID_FUNCTION;
    }
}

} // namespace

BOOL WINAPI DeviceIoControl(HANDLE hDevice, DWORD dwIoControlCode, LPVOID lpInBuffer, DWORD nInBufferSize,
                            LPVOID lpOutBuffer, DWORD nOutBufferSize, LPDWORD lpBytesReturned, LPOVERLAPPED) {
    ControlSeen(dwIoControlCode);
    std::uint32_t error = ERROR_SUCCESS;
    const Handle* handle = nullptr;
    if (Fails(Named("DeviceIoControl"), dwIoControlCode)) {
        error = ERROR_ACCESS_DENIED;
    } else if ((handle = HandleFindAny(hDevice)) == nullptr) {
        error = ERROR_INVALID_HANDLE;
    } else if (handle->Kind != HandleKind::Device) {
        error = ERROR_INVALID_FUNCTION;
    } else if (lpBytesReturned == nullptr || (lpInBuffer == nullptr && nInBufferSize != 0) ||
               (lpOutBuffer == nullptr && nOutBufferSize != 0)) {
        error = ERROR_NOACCESS;
    } else {
        const Request request{static_cast<const std::uint8_t*>(lpInBuffer), nInBufferSize,
                              static_cast<std::uint8_t*>(lpOutBuffer), nOutBufferSize};
        std::uint32_t returned = 0;
        error = Serve(dwIoControlCode, request, &returned);
        if (error == ERROR_SUCCESS) {
            *lpBytesReturned = returned;
            return TRUE;
        }
    }
    SetLastError(error);
    return FALSE;
}
