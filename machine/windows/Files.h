// The files that programs make on the machine, and the names of devices.
#pragma once

#include "machine/windows/State.h"

#include <windows.h>

#include <string>

namespace StandIn {

// The one form of a path that all its spellings share: absolute, with single backslashes, in lower case.
std::string FileKey(const std::string& path);

// Whether this process has the file open in a way that keeps others from reading it.
bool FileHeldExclusively(const std::string& key);

// Where a path leads when the links on the way are followed, and one at its end if `last`. A link is a file with the
// attribute of a reparse point, whose data is the path that it leads to.
std::string PathFollowed(const SharedState& state, std::string path, bool last = true);

// What a look-up of GetFinalPathNameByHandleA gives: the length of a stored file's own path, or the room that it needs.
DWORD WINAPI FinalPathQuery(HANDLE file, LPSTR buffer, DWORD room, DWORD flags);

} // namespace StandIn
