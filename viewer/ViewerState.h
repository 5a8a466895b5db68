// The viewer's selection and frame state: set by the command flow, read and counted up by the decoders.
#pragma once

#include "Lib/API/RyxBin.h"

#include <cstdint>

extern std::int64_t ViewerFieldSelected; // selected field number; 0 means every field
extern std::uint8_t ViewerFieldCounter;  // number of the last field that the decoder went past
extern std::uint8_t ViewerDecoderRan;    // set by a decoder that has found a structure to show
extern std::uint8_t ViewerInstanceFirst; // instance range, from 1; the end is excluded
extern std::uint8_t ViewerInstanceEnd;
extern std::uint8_t ViewerSmbiosMajor; // SMBIOS version read at start-up; 0.0 when it could not be read
extern std::uint8_t ViewerSmbiosMinor;
extern RyxBin* ViewerFieldBin; // latest value read, or none; kept with all earlier ones

extern bool ViewerJson; // the output is for programs

// Whether texts come to a console, which they could drive. It is asked for once a run.
bool ViewerToConsole();

// Lets the next run ask for its output anew.
void ViewerToConsoleForget();

// Clears ViewerFieldBin and keeps nothing of earlier reads in it.
void ViewerBinClear();

// Keeps a value until the end of the viewer's run and makes it ViewerFieldBin. RyxErrorMemory: no memory, the value is
// released and ViewerFieldBin as before.
RyxStatus ViewerBinKeep(RyxBinOwner bin);

// Releases every value of the run and clears ViewerFieldBin.
void ViewerBinsRelease();

// Puts the viewer back to where it is at process start, with a range of every instance, releasing what it keeps. For
// tests: a process runs the viewer once.
void ViewerStateReset();
