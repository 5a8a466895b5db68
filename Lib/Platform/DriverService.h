// The kernel service of the helper driver, and the device that the running driver offers.
#pragma once

#include <cstdint>

// Creates the service for the driver file at `path` and starts it. What comes of it shows when the device is opened.
void DriverServiceStart(const char* path);

// Stops the service and deletes it; a service that is missing or refuses is left alone.
void DriverServiceRemove();

// An open device of the driver; null is none. DriverDeviceClose does nothing for none.
using DriverDevice = void*;
DriverDevice DriverDeviceOpen();
void DriverDeviceClose(DriverDevice device);

// Sends one control request. False when the driver refuses it or the device is none.
bool DriverDeviceControl(DriverDevice device, std::uint32_t code, const void* input, std::uint32_t inputLength,
                         void* output, std::uint32_t outputLength);

// The driver file that the program carries: the 64-bit or the 32-bit one. The bytes stay the program's. False when the
// program carries none.
bool DriverImageFind(bool bits64, const void** image, std::uint32_t* size);
