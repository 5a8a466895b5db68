// The registry under HKEY_LOCAL_MACHINE, with the two views that 32-bit programs have on a 64-bit system.
#include "machine/model/Faults.h"
#include "machine/windows/Handles.h"
#include "machine/windows/State.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <utility>

using namespace StandIn;

namespace {

constexpr LSTATUS ErrorBadPath = 161;
constexpr DWORD WriteRights = KEY_SET_VALUE | KEY_CREATE_SUB_KEY;
constexpr char Software[] = "Software";
constexpr char SoftwareOf32[] = "Software\\WOW6432Node";

using Keys = std::map<std::string, StoredKey>;

std::string ParentOf(const std::string& path) {
    const std::size_t end = path.rfind('\\');
    return end == std::string::npos ? std::string() : path.substr(0, end);
}

// Adds a key and those above it.
StoredKey& KeyMake(Keys* keys, const std::string& path) {
    for (std::string above = ParentOf(path); !above.empty(); above = ParentOf(above)) {
        keys->try_emplace(Lower(above), StoredKey{above, {}});
    }
    return keys->try_emplace(Lower(path), StoredKey{path, {}}).first->second;
}

// The keys that belong to the machine.
Keys MachineKeys() {
    Keys keys;
    KeyMake(&keys, Software);
    if (MachineGet().UnderWow64 == Wow64::Yes) {
        KeyMake(&keys, SoftwareOf32);
    }
    for (const auto& [path, data] : MachineGet().RegistryBinary) {
        const std::string key = ParentOf(path);
        if (!key.empty()) {
            const std::string name = path.substr(key.size() + 1);
            KeyMake(&keys, key).Values.try_emplace(Lower(name), StoredValue{name, REG_BINARY, data});
        }
    }
    return keys;
}

// A key as it is seen: with the values that programs gave it, and those that belong to the machine.
std::optional<StoredKey> KeySeen(const SharedState& state, const std::string& path) {
    const Keys machine = MachineKeys();
    const auto own = machine.find(Lower(path));
    const auto made = state.Keys.find(Lower(path));
    if (made == state.Keys.end()) {
        return own != machine.end() ? std::optional(own->second) : std::nullopt;
    }
    StoredKey key = made->second;
    if (own != machine.end()) {
        key.Values.insert(own->second.Values.begin(), own->second.Values.end());
    }
    return key;
}

// A key that an operation works on: its path, the view and the rights of the handle that leads there.
struct Place {
    std::string Path;
    bool View64 = false;
    DWORD Access = 0;
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
    if (view64 || place.View64 || MachineGet().UnderWow64 != Wow64::Yes) {
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

LSTATUS KeyGive(const std::string& path, bool view64, DWORD access, PHKEY result) {
    *result = static_cast<HKEY>(HandleOpen({HandleKind::Key, path, access, 0, view64}));
    return ERROR_SUCCESS;
}

// What an operation on a key below an open one works with: the shared state and the path. Status is why it can't go on.
struct PathAccess {
    // `rights` are those that are asked for, which also tell the view; `sound` whether the arguments can be used.
    PathAccess(HKEY handle, LPCSTR subKey, REGSAM rights, bool sound) {
        if (!sound) {
            Status = ERROR_INVALID_PARAMETER;
        } else if (!PlaceOf(handle, &From)) {
            Status = ERROR_INVALID_HANDLE;
        } else if ((rights & WriteRights) != 0 && !MayWrite()) {
            Status = ERROR_ACCESS_DENIED;
        } else {
            View64 = From.View64 || (rights & KEY_WOW64_64KEY) != 0;
            Status = PathBelow(From, subKey, View64, &Path);
        }
        if (Status == ERROR_SUCCESS) {
            Status = static_cast<LSTATUS>(State.Error());
        }
    }

    bool Exists() const { return KeySeen(*State, Path).has_value(); }

    SharedAccess State;
    Place From;
    std::string Path;
    bool View64 = false;
    LSTATUS Status = ERROR_SUCCESS;
};

LSTATUS KeyOpen(HKEY hKey, LPCSTR subKey, REGSAM rights, PHKEY result, bool sound = true) {
    const PathAccess key(hKey, subKey, rights, sound && result != nullptr);
    if (key.Status != ERROR_SUCCESS) {
        return key.Status;
    }
    if (!key.Path.empty() && !key.Exists()) {
        return ERROR_FILE_NOT_FOUND;
    }
    if ((rights & WriteRights) != 0 && MachineGet().RegistryReadOnly.count(key.Path) != 0) {
        return ERROR_ACCESS_DENIED;
    }
    return KeyGive(key.Path, key.View64, rights, result);
}

// What an operation on an open key works with: the shared state and the key as it is seen. Status is why it can't go
// on: a fault, unsound arguments, the state, the handle, a right that it lacks, a key that was deleted.
struct KeyAccess {
    KeyAccess(Operation operation, HKEY handle, DWORD right, bool sound = true)
        : Status(Find(operation, handle, right, sound)) {}

    SharedAccess State;
    StoredKey Key;
    LSTATUS Status;

private:
    LSTATUS Find(Operation operation, HKEY handle, DWORD right, bool sound) {
        if (Fails(operation)) {
            return ERROR_ACCESS_DENIED;
        }
        if (!sound) {
            return ERROR_INVALID_PARAMETER;
        }
        if (State.Error() != 0) {
            return static_cast<LSTATUS>(State.Error());
        }
        Place place;
        if (!PlaceOf(handle, &place)) {
            return ERROR_INVALID_HANDLE;
        }
        if ((place.Access & right) != right) {
            return ERROR_ACCESS_DENIED;
        }
        std::optional<StoredKey> seen = KeySeen(*State, place.Path);
        if (!seen) {
            return ERROR_KEY_DELETED;
        }
        Key = std::move(*seen);
        return ERROR_SUCCESS;
    }
};

// Hands out a value's type and data. Without a buffer, only its size.
LSTATUS ValueGive(const StoredValue& value, LPDWORD type, LPBYTE data, LPDWORD size) {
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

LSTATUS WINAPI RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD ulOptions, REGSAM samDesired, PHKEY phkResult) {
    if (Fails(Named("RegOpenKeyExA"))) {
        return ERROR_ACCESS_DENIED;
    }
    return KeyOpen(hKey, lpSubKey, samDesired, phkResult, ulOptions == 0);
}

LSTATUS WINAPI RegOpenKeyA(HKEY hKey, LPCSTR lpSubKey, PHKEY phkResult) {
    if (Fails(Named("RegOpenKeyA"))) {
        return ERROR_ACCESS_DENIED;
    }
    return KeyOpen(hKey, lpSubKey, MayWrite() ? KEY_ALL_ACCESS : KEY_READ, phkResult);
}

LSTATUS WINAPI RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD Reserved, LPSTR, DWORD dwOptions, REGSAM samDesired,
                               const LPSECURITY_ATTRIBUTES, PHKEY phkResult, LPDWORD) {
    if (Fails(Named("RegCreateKeyExA")) || !MayWrite()) {
        return ERROR_ACCESS_DENIED;
    }
    const bool sound = Reserved == 0 && dwOptions == REG_OPTION_NON_VOLATILE && phkResult != nullptr &&
                       lpSubKey != nullptr && *lpSubKey != 0;
    PathAccess key(hKey, lpSubKey, samDesired, sound);
    if (key.Status != ERROR_SUCCESS) {
        return key.Status;
    }
    if (!key.From.Path.empty() && !KeySeen(*key.State, key.From.Path)) {
        return ERROR_KEY_DELETED;
    }
    if (!key.Exists()) {
        if ((key.From.Access & KEY_CREATE_SUB_KEY) == 0) {
            return ERROR_ACCESS_DENIED;
        }
        // Keys above it that are there already aren't this program's.
        for (std::string made = key.Path; !made.empty() && !KeySeen(*key.State, made); made = ParentOf(made)) {
            key.State.Change().Keys.emplace(Lower(made), StoredKey{made, {}});
        }
        if (const std::uint32_t error = key.State.Commit(); error != 0) {
            return static_cast<LSTATUS>(error);
        }
    }
    return KeyGive(key.Path, key.View64, samDesired, phkResult);
}

LSTATUS WINAPI RegCloseKey(HKEY hKey) {
    const bool fails = Fails(Named("RegCloseKey"));
    if (hKey == HKEY_LOCAL_MACHINE) {
        return fails ? ERROR_INVALID_HANDLE : ERROR_SUCCESS;
    }
    if (HandleFind(hKey, HandleKind::Key) == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    HandleForget(hKey);
    return fails ? ERROR_INVALID_HANDLE : ERROR_SUCCESS;
}

LSTATUS WINAPI RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData,
                                LPDWORD lpcbData) {
    const KeyAccess access(Named("RegQueryValueExA"), hKey, KEY_QUERY_VALUE, lpReserved == nullptr);
    if (access.Status != ERROR_SUCCESS) {
        return access.Status;
    }
    const auto value = access.Key.Values.find(Lower(lpValueName));
    if (value == access.Key.Values.end()) {
        return ERROR_FILE_NOT_FOUND;
    }
    return ValueGive(value->second, lpType, lpData, lpcbData);
}

LSTATUS WINAPI RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE* lpData,
                              DWORD cbData) {
    KeyAccess access(Named("RegSetValueExA"), hKey, KEY_SET_VALUE, Reserved == 0 && (lpData != nullptr || cbData == 0));
    if (access.Status != ERROR_SUCCESS) {
        return access.Status;
    }
    const std::string& path = access.Key.Path;
    StoredKey& kept = access.State.Change().Keys.try_emplace(Lower(path), StoredKey{path, {}}).first->second;
    kept.Values[Lower(lpValueName)] = StoredValue{lpValueName, dwType, Bytes(lpData, lpData + cbData)};
    return static_cast<LSTATUS>(access.State.Commit());
}

LSTATUS WINAPI RegDeleteValueA(HKEY hKey, LPCSTR lpValueName) {
    KeyAccess access(Named("RegDeleteValueA"), hKey, KEY_SET_VALUE);
    if (access.Status != ERROR_SUCCESS) {
        return access.Status;
    }
    Keys& keys = access.State.Change().Keys;
    const auto kept = keys.find(Lower(access.Key.Path));
    if (kept == keys.end() || kept->second.Values.erase(Lower(lpValueName)) == 0) {
        return ERROR_FILE_NOT_FOUND;
    }
    return static_cast<LSTATUS>(access.State.Commit());
}

LSTATUS WINAPI RegDeleteKeyA(HKEY hKey, LPCSTR lpSubKey) {
    if (Fails(Named("RegDeleteKeyA")) || !MayWrite()) {
        return ERROR_ACCESS_DENIED;
    }
    PathAccess key(hKey, lpSubKey, 0, lpSubKey != nullptr);
    if (key.Status != ERROR_SUCCESS) {
        return key.Status;
    }
    if (!key.Exists()) {
        return ERROR_FILE_NOT_FOUND;
    }
    const std::string lower = Lower(key.Path);
    const auto below = key.State->Keys.lower_bound(lower + "\\");
    const bool hasSubkeys = below != key.State->Keys.end() && below->first.rfind(lower + "\\", 0) == 0;
    if (hasSubkeys || key.State.Change().Keys.erase(lower) == 0) {
        return ERROR_ACCESS_DENIED;
    }
    return static_cast<LSTATUS>(key.State.Commit());
}

LSTATUS WINAPI RegEnumKeyA(HKEY hKey, DWORD dwIndex, LPSTR lpName, DWORD cchName) {
    const KeyAccess access(Named("RegEnumKeyA"), hKey, KEY_ENUMERATE_SUB_KEYS);
    if (access.Status != ERROR_SUCCESS) {
        return access.Status;
    }
    const std::string parent = Lower(access.Key.Path);
    Keys seen = MachineKeys();
    const Keys& made = access.State->Keys;
    for (auto one = made.lower_bound(parent + "\\"); one != made.end() && one->first.starts_with(parent + "\\");
         ++one) {
        seen.try_emplace(one->first, StoredKey{one->second.Path, {}});
    }
    DWORD index = 0;
    for (const auto& [lower, one] : seen) {
        if (ParentOf(lower) != parent || index++ != dwIndex) {
            continue;
        }
        const std::string name = one.Path.substr(parent.size() + 1);
        if (name.size() >= cchName) {
            return ERROR_MORE_DATA;
        }
        std::memcpy(lpName, name.c_str(), name.size() + 1);
        return ERROR_SUCCESS;
    }
    return ERROR_NO_MORE_ITEMS;
}

LSTATUS WINAPI RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName, LPDWORD lpReserved,
                             LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData) {
    const bool sound = lpReserved == nullptr && lpValueName != nullptr && lpcchValueName != nullptr;
    const KeyAccess access(Named("RegEnumValueA"), hKey, KEY_QUERY_VALUE, sound);
    if (!sound || access.Status != ERROR_SUCCESS) {
        return access.Status;
    }
    if (dwIndex >= access.Key.Values.size()) {
        return ERROR_NO_MORE_ITEMS;
    }
    const StoredValue& value = std::next(access.Key.Values.begin(), dwIndex)->second;
    if (value.Name.size() >= *lpcchValueName) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(lpValueName, value.Name.c_str(), value.Name.size() + 1);
    *lpcchValueName = static_cast<DWORD>(value.Name.size());
    return ValueGive(value, lpType, lpData, lpcbData);
}
