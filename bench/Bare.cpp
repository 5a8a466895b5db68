// What a listing can't do without, and nothing else: copies of a table, each in a block of its own, and prints, each
// seen off by itself. Arguments: the number of copies; the table's size; a file of the prints, each ended by a NUL.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

int main(int argc, char** argv) {
    std::FILE* const file = argc == 4 ? std::fopen(argv[3], "r") : nullptr;
    if (file == nullptr) {
        return 1;
    }
    constexpr std::size_t most = 1 << 20;
    const std::unique_ptr<char[]> prints(new char[most]);
    const std::size_t printed = std::fread(prints.get(), 1, most, file);
    std::fclose(file);

    // Through a pointer that may change at any time, so that no copy is left out.
    void* (*volatile const copy)(void*, const void*, std::size_t) = std::memcpy;
    const std::size_t size = std::strtoul(argv[2], nullptr, 10);
    const auto table = std::make_unique<std::uint8_t[]>(size);
    for (unsigned long count = std::strtoul(argv[1], nullptr, 10); count != 0; --count) {
        const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[size]);
        copy(block.get(), table.get(), size);
    }
    for (std::size_t at = 0; at < printed;) {
        const std::size_t length = std::strlen(&prints[at]);
        if (std::fwrite(&prints[at], 1, length, stdout) != length || std::fflush(stdout) != 0) {
            return 1;
        }
        at += length + 1;
    }
    return 0;
}
