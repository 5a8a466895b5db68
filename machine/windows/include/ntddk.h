// The kernel operations, types and values that the helper driver uses, answered by the stand-in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <winnt.h>

#define NTAPI
#define NTSYSAPI

typedef void* PVOID;
typedef char CHAR, CCHAR;
typedef unsigned char UCHAR, BOOLEAN;
typedef std::int16_t SHORT, CSHORT;
typedef std::uint16_t USHORT;
typedef std::int32_t LONG, NTSTATUS;
typedef std::uint32_t ULONG;
typedef long long LONGLONG;
typedef unsigned long long ULONGLONG;
typedef std::uintptr_t ULONG_PTR;
typedef std::size_t SIZE_T;
typedef wchar_t WCHAR;
typedef void* HANDLE;
typedef HANDLE* PHANDLE;
typedef ULONG ACCESS_MASK, SECURITY_INFORMATION, DEVICE_TYPE;
typedef PVOID PSECURITY_DESCRIPTOR;
typedef CCHAR KPROCESSOR_MODE;
typedef struct _ACCESS_STATE* PACCESS_STATE;
typedef struct _OBJECT_TYPE* POBJECT_TYPE;

#define FALSE 0
#define TRUE 1

#define NT_SUCCESS(Status) ((NTSTATUS)(Status) >= 0)
#define STATUS_SUCCESS ((NTSTATUS)0x00000000)
#define STATUS_UNSUCCESSFUL ((NTSTATUS)0xC0000001)
#define STATUS_INVALID_PARAMETER ((NTSTATUS)0xC000000D)
#define STATUS_INVALID_DEVICE_REQUEST ((NTSTATUS)0xC0000010)
#define STATUS_ACCESS_DENIED ((NTSTATUS)0xC0000022)
#define STATUS_BUFFER_TOO_SMALL ((NTSTATUS)0xC0000023)
#define STATUS_OBJECT_NAME_NOT_FOUND ((NTSTATUS)0xC0000034)
#define STATUS_OBJECT_NAME_COLLISION ((NTSTATUS)0xC0000035)
#define STATUS_INSUFFICIENT_RESOURCES ((NTSTATUS)0xC000009A)
#define STATUS_NOT_FOUND ((NTSTATUS)0xC0000225)

#define FILE_READ_DATA 0x0001
#define FILE_WRITE_DATA 0x0002
#define WRITE_DAC 0x00040000L
#define DACL_SECURITY_INFORMATION 0x00000004L
#define OBJ_KERNEL_HANDLE 0x00000200L

#define FILE_DEVICE_UNKNOWN 0x00000022
#define FILE_DEVICE_SECURE_OPEN 0x00000100
#define FILE_ANY_ACCESS 0
#define METHOD_BUFFERED 0
#define METHOD_IN_DIRECT 1
#define METHOD_OUT_DIRECT 2
#define METHOD_NEITHER 3
#define CTL_CODE(DeviceType, Function, Method, Access)                                                                 \
    (((DeviceType) << 16) | ((Access) << 14) | ((Function) << 2) | (Method))

#define IRP_MJ_CREATE 0x00
#define IRP_MJ_CLOSE 0x02
#define IRP_MJ_DEVICE_CONTROL 0x0e
#define IRP_MJ_CLEANUP 0x12
#define IRP_MJ_MAXIMUM_FUNCTION 0x1b
#define IO_NO_INCREMENT 0

#define PAGE_READONLY 0x02
#define PAGE_READWRITE 0x04
#define PAGE_NOCACHE 0x200

#define MDL_MAPPED_TO_SYSTEM_VA 0x0001
#define MDL_SOURCE_IS_NONPAGED_POOL 0x0004

enum MODE { KernelMode };
typedef enum _KWAIT_REASON { Executive } KWAIT_REASON;
typedef enum _MEMORY_CACHING_TYPE { MmNonCached, MmCached } MEMORY_CACHING_TYPE;
typedef enum _MM_PAGE_PRIORITY : ULONG { NormalPagePriority = 16 } MM_PAGE_PRIORITY;

typedef struct _UNICODE_STRING {
    USHORT Length; // in bytes
    USHORT MaximumLength;
    WCHAR* Buffer;
} UNICODE_STRING, *PUNICODE_STRING;

typedef LARGE_INTEGER PHYSICAL_ADDRESS;

typedef struct _PHYSICAL_MEMORY_RANGE {
    PHYSICAL_ADDRESS BaseAddress;
    LARGE_INTEGER NumberOfBytes;
} PHYSICAL_MEMORY_RANGE;

typedef struct _KMUTEX {
    LONG Taken;
} KMUTEX, *PRKMUTEX;

typedef struct _IO_STATUS_BLOCK {
    NTSTATUS Status;
    ULONG_PTR Information;
} IO_STATUS_BLOCK;

typedef struct _MDL {
    CSHORT MdlFlags;
    PVOID MappedSystemVa;
    PVOID StartVa;
    ULONG ByteCount;
} MDL, *PMDL;

typedef struct _IO_SECURITY_CONTEXT {
    ACCESS_MASK DesiredAccess;
} IO_SECURITY_CONTEXT;

struct _IRP;
struct _DRIVER_OBJECT;

typedef struct _DEVICE_OBJECT {
    struct _DRIVER_OBJECT* DriverObject;
    struct _DEVICE_OBJECT* NextDevice;
    ULONG Flags;
    ULONG Characteristics;
} DEVICE_OBJECT, *PDEVICE_OBJECT;

typedef struct _FILE_OBJECT {
    PDEVICE_OBJECT DeviceObject;
    PVOID FsContext;
} FILE_OBJECT, *PFILE_OBJECT;

typedef NTSTATUS(NTAPI* PDRIVER_DISPATCH)(DEVICE_OBJECT* DeviceObject, struct _IRP* Irp);

typedef struct _DRIVER_OBJECT {
    PDEVICE_OBJECT DeviceObject; // the first of the driver's devices
    void(NTAPI* DriverUnload)(struct _DRIVER_OBJECT* DriverObject);
    PDRIVER_DISPATCH MajorFunction[IRP_MJ_MAXIMUM_FUNCTION + 1];
} DRIVER_OBJECT, *PDRIVER_OBJECT;

typedef struct _IO_STACK_LOCATION {
    UCHAR MajorFunction;
    union {
        struct {
            IO_SECURITY_CONTEXT* SecurityContext;
        } Create;
        struct {
            ULONG OutputBufferLength;
            ULONG InputBufferLength;
            ULONG IoControlCode;
        } DeviceIoControl;
    } Parameters;
    PFILE_OBJECT FileObject;
} IO_STACK_LOCATION, *PIO_STACK_LOCATION;

typedef struct _IRP {
    PMDL MdlAddress;
    union {
        PVOID SystemBuffer;
    } AssociatedIrp;
    IO_STATUS_BLOCK IoStatus;
    IO_STACK_LOCATION* CurrentStackLocation;
    ULONG Completions;
} IRP, *PIRP;

extern "C" {

// The entry of a driver, called when its service starts.
NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT* DriverObject, UNICODE_STRING* RegistryPath);

NTSTATUS NTAPI IoCreateDevice(PDRIVER_OBJECT DriverObject, ULONG DeviceExtensionSize, PUNICODE_STRING DeviceName,
                              DEVICE_TYPE DeviceType, ULONG DeviceCharacteristics, BOOLEAN Exclusive,
                              PDEVICE_OBJECT* DeviceObject);
void NTAPI IoDeleteDevice(PDEVICE_OBJECT DeviceObject);
NTSTATUS NTAPI IoCreateSymbolicLink(PUNICODE_STRING SymbolicLinkName, PUNICODE_STRING DeviceName);
NTSTATUS NTAPI IoDeleteSymbolicLink(PUNICODE_STRING SymbolicLinkName);
void NTAPI IoCompleteRequest(PIRP Irp, CCHAR PriorityBoost);

void NTAPI KeInitializeMutex(PRKMUTEX Mutex, ULONG Level);
NTSTATUS NTAPI KeWaitForSingleObject(PVOID Object, KWAIT_REASON WaitReason, KPROCESSOR_MODE WaitMode, BOOLEAN Alertable,
                                     PLARGE_INTEGER Timeout);
LONG NTAPI KeReleaseMutex(PRKMUTEX Mutex, BOOLEAN Wait);

PVOID NTAPI MmMapLockedPagesSpecifyCache(PMDL MemoryDescriptorList, KPROCESSOR_MODE AccessMode,
                                         MEMORY_CACHING_TYPE CacheType, PVOID RequestedAddress, ULONG BugCheckOnFailure,
                                         ULONG Priority);

NTSTATUS NTAPI ZwClose(HANDLE Handle);

// The driver that ships reaches the machine by these. The stand-in's answers come in their place, in
// KernelHardware.cpp; only a test answers these.
PVOID NTAPI MmMapIoSpace(PHYSICAL_ADDRESS PhysicalAddress, SIZE_T NumberOfBytes, MEMORY_CACHING_TYPE CacheType);
void NTAPI MmUnmapIoSpace(PVOID BaseAddress, SIZE_T NumberOfBytes);
PVOID NTAPI MmAllocateContiguousMemorySpecifyCache(SIZE_T NumberOfBytes, PHYSICAL_ADDRESS LowestAcceptableAddress,
                                                   PHYSICAL_ADDRESS HighestAcceptableAddress,
                                                   PHYSICAL_ADDRESS BoundaryAddressMultiple,
                                                   MEMORY_CACHING_TYPE CacheType);
void NTAPI MmFreeContiguousMemory(PVOID BaseAddress);
void NTAPI MmFreeContiguousMemorySpecifyCache(PVOID BaseAddress, SIZE_T NumberOfBytes, MEMORY_CACHING_TYPE CacheType);
PHYSICAL_ADDRESS NTAPI MmGetPhysicalAddress(PVOID BaseAddress);
PVOID NTAPI MmGetSystemRoutineAddress(PUNICODE_STRING SystemRoutineName);
void NTAPI ExFreePool(PVOID P);
}

inline PIO_STACK_LOCATION IoGetCurrentIrpStackLocation(PIRP Irp) {
    return Irp->CurrentStackLocation;
}

inline ULONG MmGetMdlByteCount(const MDL* Mdl) {
    return Mdl->ByteCount;
}

inline PVOID MmGetSystemAddressForMdlSafe(PMDL Mdl, MM_PAGE_PRIORITY Priority) {
    return (Mdl->MdlFlags & (MDL_MAPPED_TO_SYSTEM_VA | MDL_SOURCE_IS_NONPAGED_POOL)) != 0
               ? Mdl->MappedSystemVa
               : MmMapLockedPagesSpecifyCache(Mdl, KernelMode, MmCached, nullptr, FALSE, Priority);
}

inline LONG InterlockedIncrement(volatile LONG* Addend) {
    return __atomic_add_fetch(Addend, 1, __ATOMIC_SEQ_CST);
}

inline LONG InterlockedDecrement(volatile LONG* Addend) {
    return __atomic_sub_fetch(Addend, 1, __ATOMIC_SEQ_CST);
}
