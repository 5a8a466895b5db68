// The firmware table service, over the machine's tables.
#include "machine/windows/FirmwareTable.h"

#include "machine/windows/LastError.h"

#include <cstring>
#include <string>

namespace StandIn {

namespace {

constexpr DWORD ProviderSmbios = 0x52534D42; // 'RSMB'
constexpr DWORD ProviderAcpi = 0x41435049;   // 'ACPI'

UINT NoTable(DWORD error) {
    SetLastError(error);
    return 0;
}

UINT TableGive(const Bytes& table, PVOID buffer, DWORD size) {
    if (size < table.size() || buffer == nullptr) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
    } else if (!table.empty()) {
        std::memcpy(buffer, table.data(), table.size());
    }
    return static_cast<UINT>(table.size());
}

} // namespace

UINT WINAPI FirmwareTableQuery(DWORD provider, DWORD table, PVOID buffer, DWORD size) {
    if (FailsWith(Named("GetSystemFirmwareTable"), ERROR_GEN_FAILURE)) {
        return 0;
    }
    const Machine& machine = MachineGet();
    if (provider == ProviderSmbios) {
        return machine.SmbiosTable && table == 0 ? TableGive(*machine.SmbiosTable, buffer, size)
                                                 : NoTable(ERROR_NOT_FOUND);
    }
    if (provider != ProviderAcpi) {
        return NoTable(ERROR_INVALID_FUNCTION);
    }
    char signature[sizeof table];
    std::memcpy(signature, &table, sizeof table);
    const auto found = machine.AcpiTables.find(std::string(signature, sizeof signature));
    return found != machine.AcpiTables.end() ? TableGive(found->second, buffer, size) : NoTable(ERROR_NOT_FOUND);
}

} // namespace StandIn
