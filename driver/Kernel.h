// What the driver calls of the kernel, and what its sources share.
#pragma once

#ifdef __MINGW32__
// Two of the compiler's own operations stand in the kernel's header once more, where C++ doesn't take them.
#include <intrin.h>
#define InterlockedBitTestAndSet KernelInterlockedBitTestAndSet
#define InterlockedBitTestAndReset KernelInterlockedBitTestAndReset
#endif
#include <ntddk.h>

// The kernel exports these to every driver; its headers declare them for file systems only.
extern "C" NTSYSAPI NTSTATUS NTAPI ObOpenObjectByPointer(PVOID Object, ULONG HandleAttributes,
                                                         PACCESS_STATE PassedAccessState, ACCESS_MASK DesiredAccess,
                                                         POBJECT_TYPE ObjectType, KPROCESSOR_MODE AccessMode,
                                                         PHANDLE Handle);
extern "C" NTSYSAPI NTSTATUS NTAPI ZwSetSecurityObject(HANDLE Handle, SECURITY_INFORMATION SecurityInformation,
                                                       PSECURITY_DESCRIPTOR SecurityDescriptor);

namespace RyxDriver {

constexpr ULONGLONG AddressEnd = 1ULL << 32; // of the memory that requests can name

// A literal as the kernel takes names.
template <USHORT Size> constexpr UNICODE_STRING NameOf(const WCHAR (&text)[Size]) {
    return {(Size - 1) * sizeof(WCHAR), Size * sizeof(WCHAR), const_cast<WCHAR*>(text)};
}

// A little-endian number of four bytes, wherever it stands.
inline ULONG Number(const UCHAR* bytes) {
    return bytes[0] | static_cast<ULONG>(bytes[1]) << 8 | static_cast<ULONG>(bytes[2]) << 16 |
           static_cast<ULONG>(bytes[3]) << 24;
}

} // namespace RyxDriver
