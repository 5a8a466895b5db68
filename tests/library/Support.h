// What all tests share: captured output and temporary folders.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Runs something and gives what it wrote to standard output, its line ends as the program writes them.
std::string Captured(const std::function<void()>& action);

// A folder that goes with the object, and everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Writes a file in the folder and gives its path.
    std::string Write(const std::string& name, const std::string& content) const;
    std::string Write(const std::string& name, const std::vector<std::uint8_t>& content) const;

    const std::string Path;
};
