// Where machines come from: files, and SMBIOS tables in files.
#pragma once

#include "Lib/Platform/StandIn/Machine.h"

#include <string>

namespace StandIn {

// Reads a whole file. On failure `error` names the file and says why.
bool FileRead(const std::string& path, Bytes* content, std::string* error);

// Whether a file's content is a dump: an entry point of either kind comes first.
bool IsDump(const Bytes& content);

// Installs a dump's tables into a machine: the entry point is at offset 0, and its table address is a file offset.
// `path` is for `error` only.
bool DumpInstall(Machine& machine, const std::string& path, const Bytes& content, std::string* error);

// Installs the tables of a folder that holds `smbios_entry_point` and `DMI`.
bool FolderInstall(Machine& machine, const std::string& path, std::string* error);

// Installs the tables of this computer.
bool HostInstall(Machine& machine, std::string* error);

} // namespace StandIn
