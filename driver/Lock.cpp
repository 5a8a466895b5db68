// Requests are served one after another, under one lock.
#include "driver/Lock.h"

#include "driver/Kernel.h"

namespace RyxDriver {

namespace {

KMUTEX Lock;

} // namespace

void LockMake() {
    KeInitializeMutex(&Lock, 0);
}

LockHeld::LockHeld() {
    KeWaitForSingleObject(&Lock, Executive, KernelMode, FALSE, nullptr);
}

LockHeld::~LockHeld() {
    KeReleaseMutex(&Lock, FALSE);
}

void LockPause() {
    KeReleaseMutex(&Lock, FALSE);
    KeWaitForSingleObject(&Lock, Executive, KernelMode, FALSE, nullptr);
}

} // namespace RyxDriver
