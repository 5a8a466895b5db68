// The operating system's version and this process.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstddef>
#include <cstdint>
#include <string>

// Major and minor version of the operating system (0 and 0 when it does not tell).
void SystemVersionGet(std::uint32_t* major, std::uint32_t* minor);

// True when this process is a 32-bit one under a 64-bit system; false also on systems that can't tell.
bool ProcessUnderWow64();

// The processors that this process may run on, one bit each. False when the system does not tell.
bool ProcessAffinityGet(std::uint64_t* mask);

// Restricts this process, or only the calling thread, to the processors of a mask. False when the system refuses.
bool ProcessAffinitySet(std::uint64_t mask);
bool ThreadAffinitySet(std::uint64_t mask);

// Raises this process to the high priority class; a refusal changes nothing.
void ProcessPriorityRaise();

// True when the calling thread's token (the process's, when the thread has none) passes an access check that only the
// local Administrators group can pass.
bool ProcessIsAdministrator();

// The folder that holds this process's executable, terminated, without a trailing backslash. False when the system does
// not tell or the folder does not fit `capacity` characters with its terminator.
bool ExecutableFolderGet(char* folder, std::size_t capacity);

// The folder for temporary files, terminated, as the system writes it. False as for ExecutableFolderGet.
bool TemporaryFolderGet(char* folder, std::size_t capacity);

// What the system says of one of its error numbers, in one line without a line break; empty when it says nothing.
std::string SystemErrorText(std::uint32_t error);

// Lets less than a second pass; an interrupt may end it early.
void ThreadPause(std::uint32_t milliseconds);

// The value of an environment variable, the system's own text; null when it is not set.
const char* EnvironmentGet(const char* name);
