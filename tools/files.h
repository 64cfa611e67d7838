#pragma once
// Files that commands read and write. A name is a path of the host, or with a drive letter and a colon in
// front
// ("c:\suite\texts.ltx") one of the machine.

#include <string>

namespace tools {

/// The bytes of a file, or of standard input for "-". Fails, with 2, for what cannot be read whole and for
/// more than a gigabyte.
std::string Read_File(const std::string &name);

/// Puts `content` at `name`, all or nothing: it is written to a working file beside it, reaches the disk, and
/// takes the name in one step. What stood there keeps its permissions; through a symbolic link its target is
/// replaced, or made where there is none yet. Fails with 2, and what stood there is as it was; a killed
/// command can leave a working file.
/// "-" is standard output; into a device or a pipe the content is written.
void Replace_File(const std::string &name, const std::string &content);

/// A name as the library's functions want it: "z:\home\..." for a path of the host. Fails with 2 when the
/// host's name has characters that no path of the machine can have, or is longer than 255 characters.
std::string Machine_Path(const std::string &name);

/// A name as the host wants it. Fails with 2 for a path of the machine whose drive is not there.
std::string Host_Name(const std::string &name);

/// Whether a name is a path of the machine.
bool Is_Machine_Path(const std::string &name);

} // namespace tools
