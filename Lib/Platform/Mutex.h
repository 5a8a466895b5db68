// Named mutexes, shared between processes.
#pragma once

#include <cstdint>

// An open mutex; null is none. The caller closes it with MutexClose, which does nothing for none.
using MutexHandle = void*;

// Creates the mutex of that name, or opens it when it exists, without taking it. Null on failure. `existed`, when
// passed, tells whether it was there, also when it can't be opened because it is another user's.
MutexHandle MutexCreate(const char* name, bool* existed);
void MutexClose(MutexHandle mutex);

// Waits until the mutex is this thread's; also when its last holder ended without releasing it. False after the time.
bool MutexAcquire(MutexHandle mutex, std::uint32_t milliseconds);
void MutexRelease(MutexHandle mutex);
