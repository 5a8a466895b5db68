// What all tests share: captured output, argument vectors and temporary folders.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Runs something and gives what it wrote to standard output, its line ends as the program writes them.
std::string Captured(const std::function<void()>& action);

// Texts as a program gets its arguments: writable, and ended by a null pointer that Count does not count.
class ArgumentVector {
public:
    explicit ArgumentVector(std::vector<std::string> texts);
    ArgumentVector(const ArgumentVector&) = delete;
    ArgumentVector& operator=(const ArgumentVector&) = delete;

    std::uint32_t Count() const { return static_cast<std::uint32_t>(Texts.size()); }
    char** Data() { return Pointers.data(); }

private:
    std::vector<std::string> Texts;
    std::vector<char*> Pointers;
};

// The words behind a program's name.
std::vector<std::string> Behind(const std::string& program, const std::vector<std::string>& words);

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
