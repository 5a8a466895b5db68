// Registry keys under HKEY_LOCAL_MACHINE.
#include "Lib/Platform/Registry.h"

#include <windows.h>

#include <new>

namespace {

REGSAM Access(REGSAM rights, RegistryView view) {
    return view == RegistryView::Bits64 ? rights | KEY_WOW64_64KEY : rights;
}

RegistryKey KeyOpen(const char* path, REGSAM rights, RegistryView view, bool* missing = nullptr) {
    HKEY key = nullptr;
    const LSTATUS opened = RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, Access(rights, view), &key);
    if (missing != nullptr) {
        *missing = opened == ERROR_FILE_NOT_FOUND;
    }
    return RegistryKey(opened == ERROR_SUCCESS ? key : nullptr);
}

// The registry operations that the deep read needs, looked up when it runs.
struct RegistryCalls {
    LSTATUS(WINAPI* KeyOpenEx)(HKEY, LPCSTR, DWORD, REGSAM, PHKEY);
    LSTATUS(WINAPI* KeyEnum)(HKEY, DWORD, LPSTR, DWORD);
    LSTATUS(WINAPI* KeyOpen)(HKEY, LPCSTR, PHKEY);
    LSTATUS(WINAPI* KeyClose)(HKEY);
    LSTATUS(WINAPI* ValueEnum)(HKEY, DWORD, LPSTR, LPDWORD, LPDWORD, LPDWORD, LPBYTE, LPDWORD);
    LSTATUS(WINAPI* ValueQuery)(HKEY, LPCSTR, LPDWORD, LPDWORD, LPBYTE, LPDWORD);
};

template <typename Function> bool Find(HMODULE module, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    return *function != nullptr;
}

bool CallsFind(RegistryCalls* calls) {
    const HMODULE module = GetModuleHandleA("advapi32");
    return module != nullptr && Find(module, "RegOpenKeyExA", &calls->KeyOpenEx) &&
           Find(module, "RegEnumKeyA", &calls->KeyEnum) && Find(module, "RegOpenKeyA", &calls->KeyOpen) &&
           Find(module, "RegCloseKey", &calls->KeyClose) && Find(module, "RegEnumValueA", &calls->ValueEnum) &&
           Find(module, "RegQueryValueExA", &calls->ValueQuery);
}

// Replaces a key by its first subkey, level by level. A tree deeper than any real one ends the descent.
bool Descend(const RegistryCalls& calls, HKEY* key) {
    constexpr int levelLimit = 32;
    char name[256];
    for (int level = 0; level < levelLimit; ++level) {
        if (calls.KeyEnum(*key, 0, name, sizeof name) != ERROR_SUCCESS) {
            return true;
        }
        HKEY below = nullptr;
        if (calls.KeyOpen(*key, name, &below) != ERROR_SUCCESS) {
            return false;
        }
        calls.KeyClose(*key);
        *key = below;
    }
    return false;
}

bool FirstBinaryRead(const RegistryCalls& calls, HKEY key, std::unique_ptr<std::uint8_t[]>* data, std::uint32_t* size) {
    constexpr DWORD largest = 16U << 20U;
    constexpr DWORD valueLimit = 1024;
    char name[256];
    for (DWORD index = 0; index < valueLimit; ++index) {
        DWORD nameLength = sizeof name;
        DWORD type = REG_NONE;
        const LSTATUS found = calls.ValueEnum(key, index, name, &nameLength, nullptr, &type, nullptr, nullptr);
        if (found == ERROR_MORE_DATA) {
            continue; // a name too long to ask for
        }
        if (found != ERROR_SUCCESS) {
            return false;
        }
        if (type != REG_BINARY) {
            continue;
        }
        DWORD length = 0;
        if (calls.ValueQuery(key, name, nullptr, nullptr, nullptr, &length) != ERROR_SUCCESS || length == 0 ||
            length > largest) {
            return false;
        }
        std::unique_ptr<std::uint8_t[]> block(new (std::nothrow) std::uint8_t[length]);
        if (block == nullptr || calls.ValueQuery(key, name, nullptr, nullptr, block.get(), &length) != ERROR_SUCCESS) {
            return false;
        }
        *data = std::move(block);
        *size = length;
        return true;
    }
    return false;
}

} // namespace

void RegistryKeyClose::operator()(void* key) const {
    RegCloseKey(static_cast<HKEY>(key));
}

RegistryKey RegistryKeyOpen(const char* path, RegistryView view, bool* missing) {
    return KeyOpen(path, KEY_ALL_ACCESS, view, missing);
}

RegistryKey RegistryKeyCreate(const char* path, RegistryView view) {
    HKEY key = nullptr;
    const LSTATUS made = RegCreateKeyExA(HKEY_LOCAL_MACHINE, path, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                         Access(KEY_ALL_ACCESS, view), nullptr, &key, nullptr);
    return RegistryKey(made == ERROR_SUCCESS ? key : nullptr);
}

bool RegistryKeyDelete(const char* parent, const char* name, RegistryView view) {
    // The deletion takes no view; it works in that of the parent's handle, whose rights it does not look at.
    const RegistryKey key = KeyOpen(parent, KEY_ENUMERATE_SUB_KEYS, view);
    return key != nullptr && RegDeleteKeyA(static_cast<HKEY>(key.get()), name) == ERROR_SUCCESS;
}

bool RegistryNumberRead(const RegistryKey& key, const char* value, std::uint32_t* number, bool* missing) {
    DWORD type = REG_NONE;
    DWORD data = 0;
    DWORD size = sizeof data;
    const LSTATUS found =
        RegQueryValueExA(static_cast<HKEY>(key.get()), value, nullptr, &type, reinterpret_cast<LPBYTE>(&data), &size);
    const bool read = found == ERROR_SUCCESS && type == REG_DWORD && size == sizeof data;
    if (missing != nullptr) {
        // A value that is too large for a number was found, too.
        *missing = !read && (found == ERROR_SUCCESS || found == ERROR_FILE_NOT_FOUND || found == ERROR_MORE_DATA);
    }
    if (read) {
        *number = data;
    }
    return read;
}

bool RegistryNumberWrite(const RegistryKey& key, const char* value, std::uint32_t number) {
    const DWORD data = number;
    return RegSetValueExA(static_cast<HKEY>(key.get()), value, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&data),
                          sizeof data) == ERROR_SUCCESS;
}

bool RegistryValueDelete(const RegistryKey& key, const char* value) {
    return RegDeleteValueA(static_cast<HKEY>(key.get()), value) == ERROR_SUCCESS;
}

bool RegistryDeepBinaryRead(const char* path, std::unique_ptr<std::uint8_t[]>* data, std::uint32_t* size) {
    RegistryCalls calls{};
    HKEY key = nullptr;
    if (!CallsFind(&calls) || calls.KeyOpenEx(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return false;
    }
    const bool read = Descend(calls, &key) && FirstBinaryRead(calls, key, data, size);
    calls.KeyClose(key);
    return read;
}
