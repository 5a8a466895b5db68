// The kernel in which the helper driver runs: loading it, and the requests that reach its device.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Each process runs a driver of its own: the one that starts the service until the service stops, any other while it
// has the device open. So what the driver keeps ends with the process, however that ends; processes share only whether
// the service runs.
namespace StandIn {

// Runs the driver's entry, as the service's start does. The result is an error number.
std::uint32_t KernelDriverStart();

// Unloads a driver that was started, at once or when its last file closes.
void KernelDriverStop();

// Opens the device behind a name (without its prefix), for a caller with or without administrator rights. `file` then
// stands for it until KernelFileClose. The result is an error number.
std::uint32_t KernelFileOpen(const std::string& name, std::uint32_t access, bool administrator, void** file);

void KernelFileClose(void* file);

// Closes every file, as the end of a process does.
void KernelFilesClose();

// Sends a control request. `returned` gets the number of output bytes, and is left alone when the request fails. The
// result is an error number.
std::uint32_t KernelControl(void* file, std::uint32_t code, const void* input, std::uint32_t inputLength, void* output,
                            std::uint32_t outputLength, std::uint32_t* returned);

// Forgets driver, devices and files without a word to the driver.
void KernelForget();

// What the driver left in the kernel although it is not loaded, and the memory that it holds: one line each.
std::vector<std::string> KernelLeftovers();

} // namespace StandIn
