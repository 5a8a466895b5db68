// The control codes that the driver serves.
#pragma once

#include "driver/Kernel.h"

namespace RyxDriver {

// A request with checked lengths. For codes of METHOD_OUT_DIRECT the output is the caller's own memory, which may
// change at any time: it is copied from and to, never looked at.
struct Request {
    const UCHAR* Input;
    ULONG OutputLength;
    UCHAR* Output;
    ULONG Returned;    // bytes of output
    FILE_OBJECT* File; // that the request came through
};

struct ControlCode {
    ULONG Code;
    ULONG InputLength; // exactly
    ULONG OutputLeast;
    ULONG OutputMost;
    NTSTATUS (*Serve)(Request*);
};

// Whether a code's output comes as a list of memory pages, and not through the system's own buffer.
constexpr bool OutputIsDirect(const ControlCode& code) {
    return (code.Code & 3U) == METHOD_OUT_DIRECT;
}

// The record of a code that the driver serves, or null.
const ControlCode* ControlCodeFind(ULONG code);

// STATUS_INVALID_PARAMETER: the input hasn't the code's length, or the output is too long; STATUS_BUFFER_TOO_SMALL.
NTSTATUS ControlLengthsCheck(const ControlCode& code, ULONG inputLength, ULONG outputLength);

// Makes everything as at the driver's start; called before any other of these.
void ControlStart();

// A file that has been opened holds nothing; one that is closed gives back what it held. Only a file in between may
// send requests: null is none, and one whose open was refused isn't either.
void ControlFileOpen(FILE_OBJECT* file);
bool ControlFileIsOpen(const FILE_OBJECT* file);
void ControlFileClose(FILE_OBJECT* file);

// Frees what is held, whoever uses it.
void ControlEnd();

} // namespace RyxDriver
