// Start and stop of the library.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>

// Starts the library and the platform: clears the options, records the arguments (kept, not copied), pins the process
// to one processor, checks administrator rights, loads the helper driver, registers the instance, holds the system
// awake and chooses a firmware communication method. The environment variable QUARRINET_WHOLE, set to anything but the
// empty text or 0, makes the whole table count (RyxSmbiosWholeGet), and so does RyxSmbiosWholeDefaultSet without it.
// RyxErrorGeneral, RyxErrorNotAdministrator, RyxErrorDriverLoad, RyxErrorPowerRequest; what was done by then is not
// undone.
RyxStatus RyxLibInit(std::uint32_t argumentCount, char** arguments);

// Undoes the start in reverse; the last tool on the machine removes the driver service. RyxErrorDriverRequest: the
// driver did not release its communication buffer (the rest is skipped); RyxErrorDriverUnload; RyxErrorPowerRequest.
RyxStatus RyxLibExit();

// Prints the line that reports a failed start, straight to the stream that prints go to.
void RyxLibInitErrorPrint();

// The exit code of a failed start.
std::uint8_t RyxLibErrorCodeGet();

// Registers this process as a running tool, in the machine-wide count and under its image mutex. RyxOk always.
RyxStatus RyxInstanceRegister();

// Undoes RyxInstanceRegister. RyxOk always.
RyxStatus RyxInstanceUnregister();

// The states of the tool count and of this executable: RyxInstanceFirst, RyxInstanceAnother, RyxErrorArgument before
// registration, or the failure that kept the image from being registered. Either out-parameter may be null.
void RyxInstanceStateGet(RyxStatus* tools, RyxStatus* image);
