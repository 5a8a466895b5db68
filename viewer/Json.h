// JSON being written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

// A text that grows. Once there is no memory for it, it takes nothing more, and goes on saying so when it is emptied.
class JsonText {
public:
    // Adds characters as they are.
    void Add(std::string_view text);
    void Add(std::uint64_t number);

    // Adds a string with its quotes: UTF-8 where it is that, else each byte as a character of Latin-1; what controls
    // terminals or ends lines is escaped.
    void AddString(std::string_view text);

    // Adds a name and its colon, behind a comma where a member comes before it.
    void AddName(std::string_view name);

    // Adds a comma where a member or an element comes before it.
    void AddComma();

    // Adds bytes as a string of two hexadecimal digits each.
    void AddBytes(std::span<const std::uint8_t> bytes);

    // Adds 16 bytes as a string in the usual form of a UUID: its first three parts are numbers, which are stored with
    // their least significant byte first (`little`) or last.
    void AddUuid(std::span<const std::uint8_t> bytes, bool little);

    [[nodiscard]] std::string_view Text() const { return {Characters.get(), Size}; }
    [[nodiscard]] bool Failed() const { return OutOfMemory; }
    void Clear();

private:
    std::unique_ptr<char[]> Characters; // NOLINT(*-avoid-c-arrays): they grow without exceptions
    std::size_t Size = 0;
    std::size_t Room = 0;
    bool OutOfMemory = false;
};

// Whether a text is UTF-8 from its first byte to its last.
bool IsUtf8(std::string_view text);
