#pragma once
// A key of the machine with all below it, as registry text.

#include <tools/reg/key_path.h>

namespace tools::reg {

/// Keys and values stand in the order of their names, so that two texts can be compared. Classes of keys have
/// no place in such a text: they are named on standard error and left out. Fails with 1 when there is no such
/// key, with 2 for what the text cannot carry (text_writer.h).
std::string Export_Key(const KeyPath &path);

} // namespace tools::reg
