// What the fuzz targets share: reading an input piece by piece, and a fresh machine under the library for each.
#pragma once

#include "machine/model/Machine.h"
#include "viewer/ProgramRun.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Takes an input apart from the front. What is not there reads as zero or as nothing.
class InputReader {
public:
    InputReader(const std::uint8_t* data, std::size_t size) : At(data), Left(size) {}

    std::uint8_t Byte();
    std::uint16_t Word();

    // At most that many bytes.
    StandIn::Bytes Take(std::size_t count);

    // A 16-bit length and as many bytes of it as there are.
    StandIn::Bytes Piece() { return Take(Word()); }

    StandIn::Bytes Rest() { return Take(Left); }
    bool Empty() const { return Left == 0; }

private:
    const std::uint8_t* At;
    std::size_t Left;
};

// Makes the machine the process's, without a console, and the library and the viewer as they are at process start. A
// driver that was loaded is forgotten with its machine.
void StartOver(StandIn::Machine machine);

// As StartOver, with the driver loaded: what a request needs.
void StartWithDriver(StandIn::Machine machine);

// Runs the whole program on the process's machine, and gives its exit code.
int ProgramRun(const std::vector<std::string>& arguments, const std::function<std::uint32_t()>& work = ViewerMain);

// What is printed from here on, until it is asked for again, is collected here instead of being dropped.
void OutputCollect(std::string* output);

// Stops the fuzzer with a message: something that must never be was seen.
[[noreturn]] void Fault(const std::string& what);

// Finds fault with a machine on which a run left more than the emptied key of the tools' count.
void LeftoversCheck();

// A folder in memory that becomes the working directory; it goes when the process ends as it should.
const std::string& WorkFolder();
