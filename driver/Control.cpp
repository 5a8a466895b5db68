// The control codes that the driver serves.
#include "driver/Control.h"

#include "driver/Hardware.h"
#include "driver/ManagedMemory.h"
#include "driver/RootTable.h"

namespace RyxDriver {

namespace {

constexpr ULONGLONG AddressEnd = 1ULL << 32;
constexpr ULONG LargestTransfer = 16U << 20;

// The version word: major and minor number of the release.
constexpr USHORT VersionWord = RYX_VERSION_MAJOR << 8 | RYX_VERSION_MINOR;

// One buffer for all users, from the first one that asks for it to the last one that leaves.
struct CommunicationBuffer {
    UCHAR* Bytes; // null while there is none
    ULONG Size;
    ULONG Address;
    ULONG Users;
};

constinit CommunicationBuffer Buffer{};
constinit ULONG RootTable = 0; // 0 until one is found

void Copy(UCHAR* to, const UCHAR* from, ULONG length) {
    for (ULONG place = 0; place < length; ++place) {
        to[place] = from[place];
    }
}

template <typename Value> NTSTATUS Answer(Request* request, Value value) {
    for (ULONG place = 0; place < sizeof value; ++place) {
        request->Output[place] = static_cast<UCHAR>(value >> (8 * place));
    }
    request->Returned = sizeof value;
    return STATUS_SUCCESS;
}

// The part of the communication buffer that a memory request stands for, or null when it leaves the buffer.
UCHAR* BufferPart(ULONG address, ULONG length) {
    if (Buffer.Bytes == nullptr || address < Buffer.Address || address - Buffer.Address >= Buffer.Size ||
        length > Buffer.Size - (address - Buffer.Address)) {
        return nullptr;
    }
    return Buffer.Bytes + (address - Buffer.Address);
}

// Whether memory outside the communication buffer may be touched.
NTSTATUS RangeCheck(ULONG address, ULONG length) {
    const ULONGLONG end = ULONGLONG{address} + length;
    return end > AddressEnd || ManagedMemory().Meets(address, end) ? STATUS_ACCESS_DENIED : STATUS_SUCCESS;
}

NTSTATUS MemoryRead(Request* request) {
    const ULONG address = Number(request->Input);
    NTSTATUS status = STATUS_SUCCESS;
    if (const UCHAR* const own = BufferPart(address, request->OutputLength); own != nullptr) {
        Copy(request->Output, own, request->OutputLength);
    } else if (status = RangeCheck(address, request->OutputLength); NT_SUCCESS(status)) {
        status = HardwareRead(address, request->OutputLength, request->Output);
    }
    if (NT_SUCCESS(status)) {
        request->Returned = request->OutputLength;
    }
    return status;
}

NTSTATUS MemoryWrite(Request* request) {
    const ULONG address = Number(request->Input);
    if (UCHAR* const own = BufferPart(address, request->OutputLength); own != nullptr) {
        Copy(own, request->Output, request->OutputLength);
        return STATUS_SUCCESS;
    }
    const NTSTATUS status = RangeCheck(address, request->OutputLength);
    return NT_SUCCESS(status) ? HardwareWrite(address, request->OutputLength, request->Output) : status;
}

// A buffer that is there already serves whoever asks for no more than its size.
bool BufferProvide(ULONG size) {
    if (size == 0 || size > LargestTransfer) {
        return false;
    }
    if (Buffer.Bytes == nullptr) {
        Buffer.Bytes = HardwareBufferAllocate(size, &Buffer.Address);
        Buffer.Size = size;
        Buffer.Users = 0;
    }
    return Buffer.Bytes != nullptr && size <= Buffer.Size && Buffer.Users != ~ULONG{0};
}

NTSTATUS BufferGet(Request* request) {
    if (!BufferProvide(Number(request->Input))) {
        Answer(request, ULONG{0});
        return STATUS_INSUFFICIENT_RESOURCES;
    }
    ++Buffer.Users;
    ++request->Held;
    return Answer(request, Buffer.Address);
}

NTSTATUS BufferRelease(Request* request) {
    if (request->Held == 0) {
        return STATUS_INVALID_PARAMETER;
    }
    --request->Held;
    ControlBufferUsersLeave(1);
    return STATUS_SUCCESS;
}

NTSTATUS PortByteWrite(Request* request) {
    HardwarePortWrite(static_cast<USHORT>(Number(request->Input)), request->Input[2]);
    return STATUS_SUCCESS;
}

NTSTATUS RootTableLocate(Request* request) {
    return RootTable != 0 || RootTableFindByRecord(&RootTable) ? Answer(request, RootTable) : STATUS_NOT_FOUND;
}

NTSTATUS RootTableLocateNear(Request* request) {
    return RootTable != 0 || RootTableFindNear(Number(request->Input), &RootTable) ? Answer(request, RootTable)
                                                                                   : STATUS_NOT_FOUND;
}

NTSTATUS VersionGet(Request* request) {
    return Answer(request, VersionWord);
}

constexpr ULONG Code(ULONG function, ULONG method) {
    return CTL_CODE(FILE_DEVICE_UNKNOWN, function, method, FILE_ANY_ACCESS);
}

constexpr ControlCode Codes[] = {
    {Code(0x860, METHOD_OUT_DIRECT), 4, 1, LargestTransfer, MemoryRead},
    {Code(0x861, METHOD_OUT_DIRECT), 4, 1, LargestTransfer, MemoryWrite},
    {Code(0x862, METHOD_OUT_DIRECT), 4, 4, 4, BufferGet},
    {Code(0x863, METHOD_OUT_DIRECT), 4, 0, 0, BufferRelease},
    {Code(0x867, METHOD_OUT_DIRECT), 6, 0, 0, PortByteWrite},
    {Code(0x86A, METHOD_OUT_DIRECT), 0, 4, 4, RootTableLocate},
    {Code(0x86C, METHOD_BUFFERED), 0, 2, 2, VersionGet},
    {Code(0x870, METHOD_OUT_DIRECT), 4, 4, 4, RootTableLocateNear},
};

} // namespace

const ControlCode* ControlCodeFind(ULONG code) {
    for (const ControlCode& one : Codes) {
        if (one.Code == code) {
            return &one;
        }
    }
    return nullptr;
}

NTSTATUS ControlLengthsCheck(const ControlCode& code, ULONG inputLength, ULONG outputLength) {
    if (inputLength != code.InputLength || outputLength > code.OutputMost) {
        return STATUS_INVALID_PARAMETER;
    }
    return outputLength < code.OutputLeast ? STATUS_BUFFER_TOO_SMALL : STATUS_SUCCESS;
}

void ControlStart() {
    HardwareStart();
    Buffer = CommunicationBuffer{};
    RootTable = 0;
}

void ControlBufferUsersLeave(BufferCount users) {
    if (users < Buffer.Users) {
        Buffer.Users -= users;
    } else {
        ControlEnd();
    }
}

void ControlEnd() {
    if (Buffer.Bytes != nullptr) {
        HardwareBufferFree(Buffer.Bytes, Buffer.Size);
    }
    Buffer = CommunicationBuffer{};
}

} // namespace RyxDriver
