// What memory error structures (32-bit and 64-bit) call the kind, the granularity and the operation of an error.
#pragma once

inline constexpr const char* MemoryErrorTypeTexts[] = {
    "",
    "Other",
    "Unknown",
    "OK",
    "Bad read",
    "Parity error",
    "Single-bit error",
    "Double-bit error",
    "Multi-bit error",
    "Nibble error",
    "Checksum error",
    "CRC error",
    "Corrected single-bit error",
    "Corrected error",
    "Uncorrectable error",
};

inline constexpr const char* MemoryErrorGranularityTexts[] = {
    "", "Other", "Unknown", "Device level", "Memory partition level",
};

inline constexpr const char* MemoryErrorOperationTexts[] = {"", "Other", "Unknown", "Read", "Write", "Partial write"};
