// The registry under HKEY_LOCAL_MACHINE, with the two views that 32-bit programs have on a 64-bit system.
#include "Lib/Platform/StandIn/Faults.h"
#include "Lib/Platform/StandIn/Handles.h"
#include "Lib/Platform/StandIn/State.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

using namespace StandIn;

namespace {

constexpr LSTATUS ErrorBadPath = 161;
constexpr DWORD WriteRights = KEY_SET_VALUE | KEY_CREATE_SUB_KEY;
constexpr char Software[] = "Software";
constexpr char SoftwareOf32[] = "Software\\WOW6432Node";

using Keys = std::map<std::string, RegistryKey>;

std::string ParentOf(const std::string& path) {
    const std::size_t end = path.rfind('\\');
    return end == std::string::npos ? std::string() : path.substr(0, end);
}

// Adds a key and those above it.
RegistryKey& KeyMake(Keys* keys, const std::string& path) {
    for (std::string above = ParentOf(path); !above.empty(); above = ParentOf(above)) {
        keys->try_emplace(Lower(above), RegistryKey{above, {}});
    }
    return keys->try_emplace(Lower(path), RegistryKey{path, {}}).first->second;
}

// All keys that can be seen: those that programs made, and those that belong to the machine.
Keys KeysSeen(const SharedState& state) {
    Keys keys = state.Keys;
    KeyMake(&keys, Software);
    if (MachineGet().Bits == Wow64::Yes) {
        KeyMake(&keys, SoftwareOf32);
    }
    for (const auto& [path, data] : MachineGet().RegistryBinary) {
        const std::string key = ParentOf(path);
        if (!key.empty()) {
            const std::string name = path.substr(key.size() + 1);
            KeyMake(&keys, key).Values.try_emplace(Lower(name), RegistryValue{name, REG_BINARY, data});
        }
    }
    return keys;
}

// A key that an operation works on: its path, the view and the rights of the handle that leads there.
struct Place {
    std::string Path;
    bool View64;
    DWORD Access;
};

bool PlaceOf(HKEY key, Place* place) {
    if (key == HKEY_LOCAL_MACHINE) {
        *place = Place{"", false, KEY_ALL_ACCESS};
        return true;
    }
    const Handle* const handle = HandleFind(key, HandleKind::Key);
    if (handle == nullptr) {
        return false;
    }
    *place = Place{handle->Name, handle->View64, handle->Access};
    return true;
}

// The path that a subkey's name leads to from a place.
LSTATUS PathBelow(const Place& place, LPCSTR subKey, bool view64, std::string* path) {
    std::string name = subKey != nullptr ? subKey : "";
    if (!name.empty() && (name.front() == '\\' || name.find("\\\\") != std::string::npos)) {
        return ErrorBadPath;
    }
    if (!name.empty() && name.back() == '\\') {
        name.pop_back();
    }
    *path = place.Path.empty() ? name : name.empty() ? place.Path : place.Path + "\\" + name;
    if (view64 || place.View64 || MachineGet().Bits != Wow64::Yes) {
        return ERROR_SUCCESS;
    }
    // A 32-bit program that doesn't ask for the other view gets the subtree of its own.
    const std::string lower = Lower(*path) + "\\";
    const std::string common = Lower(Software) + "\\";
    const std::string own = Lower(SoftwareOf32) + "\\";
    if (lower.rfind(common, 0) == 0 && lower.rfind(own, 0) != 0) {
        *path = SoftwareOf32 + path->substr(std::strlen(Software));
    }
    return ERROR_SUCCESS;
}

bool MayWrite() {
    return MachineGet().Administrator;
}

LSTATUS KeyHandle(const std::string& path, bool view64, DWORD access, PHKEY result) {
    Handle handle;
    handle.Kind = HandleKind::Key;
    handle.Name = path;
    handle.View64 = view64;
    handle.Access = access;
    *result = static_cast<HKEY>(HandleOpen(std::move(handle)));
    return *result != nullptr ? ERROR_SUCCESS : ERROR_NO_SYSTEM_RESOURCES;
}

LSTATUS KeyOpen(HKEY hKey, LPCSTR subKey, REGSAM rights, PHKEY result) {
    Place place;
    if (result == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!PlaceOf(hKey, &place)) {
        return ERROR_INVALID_HANDLE;
    }
    if ((rights & WriteRights) != 0 && !MayWrite()) {
        return ERROR_ACCESS_DENIED;
    }
    std::string path;
    const bool view64 = place.View64 || (rights & KEY_WOW64_64KEY) != 0;
    if (const LSTATUS status = PathBelow(place, subKey, view64, &path); status != ERROR_SUCCESS) {
        return status;
    }
    const SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<LSTATUS>(state.Error());
    }
    if (!path.empty() && KeysSeen(*state).count(Lower(path)) == 0) {
        return ERROR_FILE_NOT_FOUND;
    }
    return KeyHandle(path, view64, rights, result);
}

// Finds the key of a handle among those seen. The result is the error number when it can't be used for that.
LSTATUS KeyFind(HKEY hKey, DWORD right, Keys* keys, RegistryKey** key) {
    Place place;
    if (!PlaceOf(hKey, &place)) {
        return ERROR_INVALID_HANDLE;
    }
    if ((place.Access & right) != right) {
        return ERROR_ACCESS_DENIED;
    }
    const auto found = keys->find(Lower(place.Path));
    if (found == keys->end()) {
        return ERROR_KEY_DELETED;
    }
    *key = &found->second;
    return ERROR_SUCCESS;
}

// Hands out a value's type and data. Without a buffer, only its size.
LSTATUS ValueGive(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size) {
    if (type != nullptr) {
        *type = value.Type;
    }
    if (size == nullptr) {
        return data == nullptr ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    }
    const DWORD room = *size;
    *size = static_cast<DWORD>(value.Data.size());
    if (data == nullptr) {
        return ERROR_SUCCESS;
    }
    if (room < value.Data.size()) {
        return ERROR_MORE_DATA;
    }
    std::copy(value.Data.begin(), value.Data.end(), data);
    return ERROR_SUCCESS;
}

} // namespace

LSTATUS WINAPI RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD, REGSAM samDesired, PHKEY phkResult) {
    if (Fails(Named("RegOpenKeyExA"))) {
        return ERROR_ACCESS_DENIED;
    }
    return KeyOpen(hKey, lpSubKey, samDesired, phkResult);
}

LSTATUS WINAPI RegOpenKeyA(HKEY hKey, LPCSTR lpSubKey, PHKEY phkResult) {
    if (Fails(Named("RegOpenKeyA"))) {
        return ERROR_ACCESS_DENIED;
    }
    return KeyOpen(hKey, lpSubKey, MayWrite() ? KEY_ALL_ACCESS : KEY_READ, phkResult);
}

LSTATUS WINAPI RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD, LPSTR, DWORD, REGSAM samDesired,
                               const LPSECURITY_ATTRIBUTES, PHKEY phkResult, LPDWORD lpdwDisposition) {
    if (Fails(Named("RegCreateKeyExA")) || !MayWrite()) {
        return ERROR_ACCESS_DENIED;
    }
    Place place;
    if (phkResult == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!PlaceOf(hKey, &place)) {
        return ERROR_INVALID_HANDLE;
    }
    std::string path;
    const bool view64 = place.View64 || (samDesired & KEY_WOW64_64KEY) != 0;
    if (const LSTATUS status = PathBelow(place, lpSubKey, view64, &path); status != ERROR_SUCCESS) {
        return status;
    }
    if (path.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<LSTATUS>(state.Error());
    }
    const Keys seen = KeysSeen(*state);
    if (!place.Path.empty() && seen.count(Lower(place.Path)) == 0) {
        return ERROR_KEY_DELETED;
    }
    const bool exists = seen.count(Lower(path)) != 0;
    if (!exists) {
        if ((place.Access & KEY_CREATE_SUB_KEY) == 0) {
            return ERROR_ACCESS_DENIED;
        }
        // Keys above it that are there already aren't this program's.
        for (std::string above = ParentOf(path); !above.empty() && seen.count(Lower(above)) == 0;
             above = ParentOf(above)) {
            state->Keys.emplace(Lower(above), RegistryKey{above, {}});
        }
        state->Keys.emplace(Lower(path), RegistryKey{path, {}});
        if (const std::uint32_t error = state.Commit(); error != 0) {
            return static_cast<LSTATUS>(error);
        }
    }
    if (lpdwDisposition != nullptr) {
        *lpdwDisposition = exists ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
    }
    return KeyHandle(path, view64, samDesired, phkResult);
}

LSTATUS WINAPI RegCloseKey(HKEY hKey) {
    const bool fails = Fails(Named("RegCloseKey"));
    if (hKey == HKEY_LOCAL_MACHINE) {
        return fails ? ERROR_INVALID_HANDLE : ERROR_SUCCESS;
    }
    Handle* const handle = HandleFind(hKey, HandleKind::Key);
    if (handle == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    HandleForget(handle);
    return fails ? ERROR_INVALID_HANDLE : ERROR_SUCCESS;
}

LSTATUS WINAPI RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD, LPDWORD lpType, LPBYTE lpData,
                                LPDWORD lpcbData) {
    if (Fails(Named("RegQueryValueExA"))) {
        return ERROR_ACCESS_DENIED;
    }
    const SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<LSTATUS>(state.Error());
    }
    Keys keys = KeysSeen(*state);
    RegistryKey* key = nullptr;
    if (const LSTATUS status = KeyFind(hKey, KEY_QUERY_VALUE, &keys, &key); status != ERROR_SUCCESS) {
        return status;
    }
    const auto value = key->Values.find(Lower(lpValueName != nullptr ? lpValueName : ""));
    return value == key->Values.end() ? ERROR_FILE_NOT_FOUND : ValueGive(value->second, lpType, lpData, lpcbData);
}

LSTATUS WINAPI RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD, DWORD dwType, const BYTE* lpData, DWORD cbData) {
    if (Fails(Named("RegSetValueExA"))) {
        return ERROR_ACCESS_DENIED;
    }
    if (lpData == nullptr && cbData != 0) {
        return ERROR_INVALID_PARAMETER;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<LSTATUS>(state.Error());
    }
    Keys keys = KeysSeen(*state);
    RegistryKey* key = nullptr;
    if (const LSTATUS status = KeyFind(hKey, KEY_SET_VALUE, &keys, &key); status != ERROR_SUCCESS) {
        return status;
    }
    const std::string name = lpValueName != nullptr ? lpValueName : "";
    RegistryKey& kept = state->Keys.try_emplace(Lower(key->Path), RegistryKey{key->Path, {}}).first->second;
    kept.Values[Lower(name)] = RegistryValue{name, dwType, Bytes(lpData, lpData + cbData)};
    return static_cast<LSTATUS>(state.Commit());
}

LSTATUS WINAPI RegDeleteValueA(HKEY hKey, LPCSTR lpValueName) {
    if (Fails(Named("RegDeleteValueA"))) {
        return ERROR_ACCESS_DENIED;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<LSTATUS>(state.Error());
    }
    Keys keys = KeysSeen(*state);
    RegistryKey* key = nullptr;
    if (const LSTATUS status = KeyFind(hKey, KEY_SET_VALUE, &keys, &key); status != ERROR_SUCCESS) {
        return status;
    }
    const auto kept = state->Keys.find(Lower(key->Path));
    const std::string name = Lower(lpValueName != nullptr ? lpValueName : "");
    if (kept == state->Keys.end() || kept->second.Values.erase(name) == 0) {
        return ERROR_FILE_NOT_FOUND;
    }
    return static_cast<LSTATUS>(state.Commit());
}

LSTATUS WINAPI RegDeleteKeyA(HKEY hKey, LPCSTR lpSubKey) {
    if (Fails(Named("RegDeleteKeyA")) || !MayWrite()) {
        return ERROR_ACCESS_DENIED;
    }
    Place place;
    if (lpSubKey == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!PlaceOf(hKey, &place)) {
        return ERROR_INVALID_HANDLE;
    }
    std::string path;
    if (const LSTATUS status = PathBelow(place, lpSubKey, place.View64, &path); status != ERROR_SUCCESS) {
        return status;
    }
    SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<LSTATUS>(state.Error());
    }
    const std::string lower = Lower(path);
    if (KeysSeen(*state).count(lower) == 0) {
        return ERROR_FILE_NOT_FOUND;
    }
    const auto below = state->Keys.lower_bound(lower + "\\");
    const bool hasSubkeys = below != state->Keys.end() && below->first.rfind(lower + "\\", 0) == 0;
    if (hasSubkeys || state->Keys.erase(lower) == 0) {
        return ERROR_ACCESS_DENIED;
    }
    return static_cast<LSTATUS>(state.Commit());
}

LSTATUS WINAPI RegEnumKeyA(HKEY hKey, DWORD dwIndex, LPSTR lpName, DWORD cchName) {
    if (Fails(Named("RegEnumKeyA"))) {
        return ERROR_ACCESS_DENIED;
    }
    const SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<LSTATUS>(state.Error());
    }
    Keys keys = KeysSeen(*state);
    Place place;
    if (PlaceOf(hKey, &place) && place.Path.empty()) {
        keys.emplace("", RegistryKey{});
    }
    RegistryKey* key = nullptr;
    if (const LSTATUS status = KeyFind(hKey, KEY_ENUMERATE_SUB_KEYS, &keys, &key); status != ERROR_SUCCESS) {
        return status;
    }
    const std::string parent = key->Path;
    DWORD index = 0;
    for (const auto& [lower, one] : keys) {
        if (lower.empty() || Lower(ParentOf(one.Path)) != Lower(parent) || index++ != dwIndex) {
            continue;
        }
        const std::string name = parent.empty() ? one.Path : one.Path.substr(parent.size() + 1);
        if (name.size() >= cchName) {
            return ERROR_MORE_DATA;
        }
        std::memcpy(lpName, name.c_str(), name.size() + 1);
        return ERROR_SUCCESS;
    }
    return ERROR_NO_MORE_ITEMS;
}

LSTATUS WINAPI RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName, LPDWORD,
                             LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData) {
    if (Fails(Named("RegEnumValueA"))) {
        return ERROR_ACCESS_DENIED;
    }
    if (lpValueName == nullptr || lpcchValueName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    const SharedAccess state;
    if (state.Error() != 0) {
        return static_cast<LSTATUS>(state.Error());
    }
    Keys keys = KeysSeen(*state);
    RegistryKey* key = nullptr;
    if (const LSTATUS status = KeyFind(hKey, KEY_QUERY_VALUE, &keys, &key); status != ERROR_SUCCESS) {
        return status;
    }
    if (dwIndex >= key->Values.size()) {
        return ERROR_NO_MORE_ITEMS;
    }
    const RegistryValue& value = std::next(key->Values.begin(), dwIndex)->second;
    if (value.Name.size() >= *lpcchValueName) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(lpValueName, value.Name.c_str(), value.Name.size() + 1);
    *lpcchValueName = static_cast<DWORD>(value.Name.size());
    return ValueGive(value, lpType, lpData, lpcbData);
}
