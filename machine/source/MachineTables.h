// Where machines come from: files, and SMBIOS tables in files.
#pragma once

#include "machine/model/Machine.h"

#include <string>

namespace StandIn {

// Ends a line that says that a file is no machine.
constexpr char AcceptedForms[] =
    "; a machine is a folder with smbios_entry_point and DMI, a dump (an entry point, which begins with _SM_ or _SM3_, "
    "and its structure table), or a machine file (lines of the form key = value)";

// What a line says of a file that takes more memory than there is.
constexpr char NoMemory[] = "not enough memory to read it";

// Reads a whole file; on failure `error` is the line that says why.
bool FileRead(const std::string& path, Bytes* content, std::string* error);

// Whether a file's content is a dump: an entry point of either kind comes first.
bool IsDump(const Bytes& content);

// What a file holds that is no dump, in words; empty when it may be text. The path is for the words only.
std::string ContentName(const Bytes& content, const std::string& path);

// In what follows, `error` is the line that says why it failed, and `notice` is set to one that the user should see
// although the tables can be used.

// Installs a dump's tables into a machine: the entry point is at offset 0, and its table address is a file offset.
// `path` is for the lines only.
bool DumpInstall(Machine& machine, const std::string& path, const Bytes& content, std::string* error,
                 std::string* notice);

// Installs the tables of a folder that holds `smbios_entry_point` and `DMI`. The result is 0, or the number of the
// system's error.
int FolderInstall(Machine& machine, const std::string& path, std::string* error, std::string* notice);

} // namespace StandIn
