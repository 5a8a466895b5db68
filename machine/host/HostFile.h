// Files and folders of this computer.
#pragma once

#include "machine/model/Machine.h"

#include <cstddef>
#include <string>
#include <unistd.h>
#include <utility>

namespace StandIn {

// An open file, closed with the object; negative when there is none.
class Descriptor {
public:
    explicit Descriptor(int number) : Number(number) {}
    ~Descriptor() {
        if (Number >= 0) {
            close(Number);
        }
    }
    Descriptor(Descriptor&& other) noexcept : Number(std::exchange(other.Number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(Number, other.Number);
        return *this;
    }

    operator int() const { return Number; }

private:
    int Number;
};

constexpr std::size_t FileSizeLimit = std::size_t{256} << 20; // also ends the reading of endless devices

// Reads a whole file of at most `limit` bytes; a FIFO only if somebody writes to it. The result is 0 or the number of
// the system's error. May throw std::bad_alloc.
int HostFileRead(const std::string& path, Bytes* content, std::size_t limit = FileSizeLimit);

// The same with a file that was opened not to block.
int HostFileRead(int file, Bytes* content, std::size_t limit = FileSizeLimit);

// One line that names the file and says what an error number means.
std::string HostFault(const std::string& path, int error);

bool HostFolderExists(const std::string& path);

// Makes a folder, and those above it, where they are missing. The result is 0 or the number of the system's error.
int HostFolderMake(const std::string& path);

} // namespace StandIn
