// The control codes that the driver serves.
#include "driver/Control.h"

#include "driver/Hardware.h"
#include "driver/Permission.h"
#include "driver/RootTable.h"

namespace RyxDriver {

namespace {

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

// How many users of the communication buffer an open file stands for is kept in the file itself, as a number that is
// one more: what is not open has 0.
ULONG HeldGet(const FILE_OBJECT* file) {
    return static_cast<ULONG>(reinterpret_cast<ULONG_PTR>(file->FsContext) - 1);
}

void HeldSet(FILE_OBJECT* file, ULONG held) {
    file->FsContext = reinterpret_cast<PVOID>(ULONG_PTR{held} + 1);
}

// Counts users off; the last one frees the buffer.
void BufferUsersLeave(ULONG users) {
    if (users < Buffer.Users) {
        Buffer.Users -= users;
    } else {
        ControlEnd();
    }
}

// The part of the communication buffer that a memory request stands for, or null when it leaves the buffer.
UCHAR* BufferPart(ULONG address, ULONG length) {
    if (Buffer.Bytes == nullptr || address < Buffer.Address || address - Buffer.Address >= Buffer.Size ||
        length > Buffer.Size - (address - Buffer.Address)) {
        return nullptr;
    }
    return Buffer.Bytes + (address - Buffer.Address);
}

NTSTATUS MemoryRead(Request* request) {
    const ULONG address = Number(request->Input);
    NTSTATUS status = STATUS_ACCESS_DENIED;
    if (const UCHAR* const own = BufferPart(address, request->OutputLength); own != nullptr) {
        Copy(request->Output, own, request->OutputLength);
        status = STATUS_SUCCESS;
    } else if (PermissionRead(address, request->OutputLength)) {
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
    return PermissionWrite(address, request->OutputLength)
               ? HardwareWrite(address, request->OutputLength, request->Output)
               : STATUS_ACCESS_DENIED;
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
    return Buffer.Bytes != nullptr && size <= Buffer.Size && Buffer.Users < ~ULONG{0} - 1;
}

NTSTATUS BufferGet(Request* request) {
    if (!BufferProvide(Number(request->Input))) {
        Answer(request, ULONG{0});
        return STATUS_INSUFFICIENT_RESOURCES;
    }
    ++Buffer.Users;
    HeldSet(request->File, HeldGet(request->File) + 1);
    return Answer(request, Buffer.Address);
}

NTSTATUS BufferRelease(Request* request) {
    const ULONG held = HeldGet(request->File);
    if (held == 0) {
        return STATUS_INVALID_PARAMETER;
    }
    HeldSet(request->File, held - 1);
    BufferUsersLeave(1);
    return STATUS_SUCCESS;
}

NTSTATUS PortByteWrite(Request* request) {
    const UCHAR* const input = request->Input;
    if ((input[3] | input[4] | input[5]) != 0) {
        return STATUS_INVALID_PARAMETER;
    }
    const auto port = static_cast<USHORT>(Number(input));
    if (!PermissionPort(port)) {
        return STATUS_ACCESS_DENIED;
    }
    HardwarePortWrite(port, input[2]);
    return STATUS_SUCCESS;
}

// Others may search meanwhile; what is kept is what a search has ended with.
NTSTATUS RootTableLocate(Request* request) {
    if (ULONG found = 0; RootTable == 0 && RootTableFindByRecord(&found)) {
        RootTable = found;
    }
    return RootTable != 0 ? Answer(request, RootTable) : STATUS_NOT_FOUND;
}

NTSTATUS RootTableLocateNear(Request* request) {
    if (ULONG found = 0; RootTable == 0 && RootTableFindNear(Number(request->Input), &found)) {
        RootTable = found;
    }
    return RootTable != 0 ? Answer(request, RootTable) : STATUS_NOT_FOUND;
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
    PermissionStart();
    Buffer = CommunicationBuffer{};
    RootTable = 0;
}

void ControlFileOpen(FILE_OBJECT* file) {
    HeldSet(file, 0);
}

bool ControlFileIsOpen(const FILE_OBJECT* file) {
    return file != nullptr && file->FsContext != nullptr;
}

void ControlFileClose(FILE_OBJECT* file) {
    BufferUsersLeave(HeldGet(file));
    file->FsContext = nullptr;
}

void ControlEnd() {
    if (Buffer.Bytes != nullptr) {
        HardwareBufferFree(Buffer.Bytes, Buffer.Size);
    }
    Buffer = CommunicationBuffer{};
}

} // namespace RyxDriver
