// Registry keys under HKEY_LOCAL_MACHINE.
#pragma once

#include <cstdint>
#include <memory>

// Which half of the registry a 32-bit process sees: its own, or the one of the 64-bit system.
enum class RegistryView { Own, Bits64 };

// An open key, closed when its owner goes; null is none.
struct RegistryKeyClose {
    void operator()(void* key) const;
};
using RegistryKey = std::unique_ptr<void, RegistryKeyClose>;

// Opens an existing key for every access, or creates it. Null on failure; `missing`, when passed, tells whether that is
// because there is no such key.
RegistryKey RegistryKeyOpen(const char* path, RegistryView view, bool* missing = nullptr);
RegistryKey RegistryKeyCreate(const char* path, RegistryView view);

// Deletes the key `name` below the key at `parent`, which must have no subkeys. False on failure.
bool RegistryKeyDelete(const char* parent, const char* name, RegistryView view);

// Reads a REG_DWORD value. False, with `number` untouched, when it can't be read; `missing`, when passed, tells whether
// that is because there is no value of that name and type.
bool RegistryNumberRead(const RegistryKey& key, const char* value, std::uint32_t* number, bool* missing = nullptr);
bool RegistryNumberWrite(const RegistryKey& key, const char* value, std::uint32_t number);
bool RegistryValueDelete(const RegistryKey& key, const char* value);

// From the key at `path`, goes down through the first subkey of each level until there is none, and reads the first
// binary value there into a new block. False when a step fails, there is no such value, or memory runs out.
bool RegistryDeepBinaryRead(const char* path, std::unique_ptr<std::uint8_t[]>* data, std::uint32_t* size);
