#pragma once
// What can be wrong with strings that can be read.

#include <tools/ltx/strings_file.h>

namespace tools::ltx {

/// Identifiers that stand there more than once (the first counts) and fields that may have been cut, for they
/// are exactly as long as something holds, together with the file's faults: in the file's order.
std::vector<Finding> Check(const StringsFile &file);

/// How the strings of `file` differ from the source that they translate: in their format places, and in which
/// there are. A string that is missing is told where the source has it.
std::vector<Finding> Check_Against(const StringsFile &file, const StringsFile &source);

} // namespace tools::ltx
