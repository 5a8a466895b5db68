// Firmware environment variables: the machine's own, and those that the maker's firmware answers through.
#include "machine/kernel/FirmwareModel.h"
#include "machine/windows/LastError.h"
#include "machine/windows/State.h"

#include <windows.h>

#include <cstring>

using namespace StandIn;

namespace {

constexpr char VendorGuid[] = "{8a4acd56-02fc-41ce-b686-9f429a3fc1b3}";
constexpr char NoGuid[] = "{00000000-0000-0000-0000-000000000000}";

std::u16string Units(LPCWSTR text) {
    std::u16string units;
    for (; text != nullptr && *text != 0; ++text) {
        units += static_cast<char16_t>(*text);
    }
    return units;
}

// A text of the kind that machines name their variables with; other characters become '?'.
std::string Narrow(const std::u16string& text) {
    std::string narrow;
    for (const char16_t unit : text) {
        narrow += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return narrow;
}

// The machine's own variable of that name and GUID, or null. GUIDs are the same in either case.
FirmwareVariable* OwnVariable(const std::string& name, const std::string& guid) {
    for (auto& [key, variable] : MachineGet().Variables) {
        if (key.size() == name.size() + 1 + guid.size() && key.compare(0, name.size(), name) == 0 &&
            key[name.size()] == ' ' && Lower(key.substr(name.size() + 1)) == guid) {
            return &variable;
        }
    }
    return nullptr;
}

// A machine that only answers to interrupts has legacy firmware, which knows no variables.
bool HasVariables() {
    return MachineGet().Firmware != FirmwareKind::Smi || !MachineGet().Variables.empty();
}

// Why variables can't be reached at all; 0 when they can.
std::uint32_t AccessError() {
    if (!Process().VariablesAllowed) {
        return ERROR_PRIVILEGE_NOT_HELD;
    }
    return HasVariables() ? 0 : ERROR_INVALID_FUNCTION;
}

std::uint32_t VariableRead(const std::u16string& name, const std::string& guid, Bytes* data) {
    if (const std::uint32_t error = AccessError(); error != 0) {
        return error;
    }
    const std::string narrow = Narrow(name);
    if (const FirmwareVariable* const own = OwnVariable(narrow, guid); own != nullptr) {
        *data = own->Data;
        return own->Error;
    }
    if (name.empty()) {
        // Firmware with variables refuses the empty name in a way of its own, by which programs know it.
        return guid == NoGuid ? ERROR_NOACCESS : ERROR_INVALID_PARAMETER;
    }
    if (guid == VendorGuid && MachineGet().Firmware == FirmwareKind::Variables) {
        const std::uint32_t error = VendorVariableRead(name, data);
        return error == VendorVariableUnknown ? ERROR_ENVVAR_NOT_FOUND : error;
    }
    return ERROR_ENVVAR_NOT_FOUND;
}

std::uint32_t VariableWrite(const std::u16string& name, const std::string& guid, const Bytes& data) {
    if (const std::uint32_t error = AccessError(); error != 0) {
        return error;
    }
    const std::string narrow = Narrow(name);
    FirmwareVariable* const own = OwnVariable(narrow, guid);
    if (own != nullptr && own->Error != 0) {
        return own->Error;
    }
    if (own == nullptr && guid == VendorGuid && MachineGet().Firmware == FirmwareKind::Variables) {
        const std::uint32_t error = VendorVariableWrite(name, data);
        if (error != VendorVariableUnknown) {
            return error;
        }
    }
    if (name.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    if (data.empty()) {
        // Writing nothing deletes.
        const auto gone = std::erase_if(MachineGet().Variables, [own](const auto& one) { return &one.second == own; });
        return gone != 0 ? 0 : ERROR_ENVVAR_NOT_FOUND;
    }
    (own != nullptr ? *own : MachineGet().Variables[narrow + " " + guid]).Data = data;
    return 0;
}

} // namespace

DWORD WINAPI GetFirmwareEnvironmentVariableW(LPCWSTR lpName, LPCWSTR lpGuid, PVOID pBuffer, DWORD nSize) {
    if (FailsWith(Named("GetFirmwareEnvironmentVariableW"), ERROR_GEN_FAILURE)) {
        return 0;
    }
    Bytes data;
    std::uint32_t error = VariableRead(Units(lpName), Lower(Narrow(Units(lpGuid))), &data);
    if (error == 0 && (data.size() > nSize || pBuffer == nullptr)) {
        error = ERROR_INSUFFICIENT_BUFFER;
    }
    if (error != 0) {
        return FailFalse(error);
    }
    if (!data.empty()) {
        std::memcpy(pBuffer, data.data(), data.size());
    }
    return static_cast<DWORD>(data.size());
}

BOOL WINAPI SetFirmwareEnvironmentVariableW(LPCWSTR lpName, LPCWSTR lpGuid, PVOID pValue, DWORD nSize) {
    if (FailsWith(Named("SetFirmwareEnvironmentVariableW"), ERROR_GEN_FAILURE)) {
        return FALSE;
    }
    const auto* const bytes = static_cast<const std::uint8_t*>(pValue);
    const Bytes data = bytes != nullptr ? Bytes(bytes, bytes + nSize) : Bytes();
    const std::uint32_t error = VariableWrite(Units(lpName), Lower(Narrow(Units(lpGuid))), data);
    return error == 0 || FailFalse(error);
}
