// The firmware table service: the SMBIOS structure table and single ACPI tables.
#include "Lib/Platform/FirmwareTable.h"

#include "Lib/LittleEndian.h"

#include <windows.h>

#include <cstring>
#include <new>

namespace {

constexpr DWORD ProviderSmbios = 0x52534D42; // 'RSMB'
constexpr DWORD ProviderAcpi = 0x41435049;   // 'ACPI'
constexpr std::uint32_t BufferSize = 0x10000;
constexpr std::uint32_t LargestAnswer = 16U << 20U;
constexpr std::uint32_t HeaderSize = 8;

using FirmwareTableService = UINT(WINAPI*)(DWORD provider, DWORD table, PVOID buffer, DWORD size);

// Null on systems older than the service.
FirmwareTableService ServiceFind() {
    const HMODULE module = GetModuleHandleA("kernel32");
    if (module == nullptr) {
        return nullptr;
    }
    return reinterpret_cast<FirmwareTableService>(
        reinterpret_cast<void*>(GetProcAddress(module, "GetSystemFirmwareTable")));
}

} // namespace

bool SmbiosFirmwareTableGet(std::unique_ptr<std::uint8_t[]>* table, std::uint32_t* size, std::uint8_t* version,
                            std::uint8_t* revision) {
    const FirmwareTableService service = ServiceFind();
    if (service == nullptr || table == nullptr || size == nullptr || version == nullptr || revision == nullptr) {
        return false;
    }
    std::uint32_t capacity = BufferSize;
    std::unique_ptr<std::uint8_t[]> buffer(new (std::nothrow) std::uint8_t[capacity]);
    if (buffer == nullptr) {
        return false;
    }
    std::uint32_t answered = service(ProviderSmbios, 0, buffer.get(), capacity);
    if (answered > capacity && answered <= LargestAnswer) {
        // The service named the size that it needs.
        capacity = answered;
        buffer.reset(new (std::nothrow) std::uint8_t[capacity]);
        if (buffer == nullptr) {
            return false;
        }
        answered = service(ProviderSmbios, 0, buffer.get(), capacity);
    }
    if (answered < HeaderSize || answered > capacity) {
        return false;
    }
    const auto length = LittleEndianRead<std::uint32_t>(&buffer[4]);
    if (length > answered - HeaderSize) {
        return false;
    }
    *version = static_cast<std::uint8_t>(buffer[1] * 10 + buffer[2]);
    *revision = buffer[3];
    *size = length;
    std::memmove(buffer.get(), &buffer[HeaderSize], length);
    std::memset(&buffer[length], 0, capacity - length);
    *table = std::move(buffer);
    return true;
}

std::uint32_t AcpiFirmwareTableGet(std::uint32_t signature, std::uint8_t* buffer, std::uint32_t capacity) {
    const FirmwareTableService service = ServiceFind();
    return service == nullptr ? 0 : service(ProviderAcpi, signature, buffer, capacity);
}
