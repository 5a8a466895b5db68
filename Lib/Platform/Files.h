// Whole files of the platform: the driver file and the program's own executable.
#pragma once

#include "Lib/Platform/Handle.h"
#include "Lib/RyxStatus.h"

#include <cstddef>
#include <cstdint>
#include <memory>

// Makes a file of `size` bytes that only administrators and the system may open. An older file of that name, or a link,
// is deleted first, never written to. RyxErrorFileOpen: that can't be deleted, or the file can't be created;
// RyxErrorGeneral: the bytes could not all be written, and the file is removed again.
RyxStatus FileMake(const char* path, const void* data, std::uint32_t size);

// Holds a file so that nobody can write to it, replace it or delete it. Null when it can't be opened, is a link, or
// holds anything but these `size` bytes. It is held as long as the handle has its owner.
HandleOwner FileHold(const char* path, const void* data, std::uint32_t size);

// Gives the path that a held file itself has, whatever links led to it. Where the system does not tell, or the file
// lies on no drive, `path` stays as it is. False when it doesn't fit `capacity` characters.
bool HeldPathGet(const HandleOwner& file, char* path, std::size_t capacity);

// Reads the whole file of this process's program, whatever characters its path has and whoever else has it open, into a
// new block of `size` bytes. RyxErrorFileOpen: it can't be opened or its path or size is not told; RyxErrorMemory;
// RyxErrorFileRead: the bytes could not all be read.
RyxStatus ExecutableRead(std::unique_ptr<std::uint8_t[]>* data, std::uint32_t* size);

// Whether a name is that of a file or of a link to one: not of a folder, a device or a pipe, whose opening may wait for
// somebody at its other end.
bool FileIsRegular(const char* path);

// Removes the file's read-only, hidden and system marks; removes the file. Failures are left alone.
void FileAttributesClear(const char* path);
void FileRemove(const char* path);
