#pragma once
// The machine that a fuzz target runs on: a fresh folder of the process's own, entered before the first input
// and removed when the process ends.

#include <string>
#include <string_view>

/// The machine's folder.
const std::string &Fuzz_Machine();
/// Writes a file at `relative` below the machine's folder, in a folder that is there or one level below one.
void Write_On_Machine(const std::string &relative, std::string_view content);
/// The file of a shared block that somebody has open: a header, then the contents. Mapped for reading and
/// writing for the rest of the process's life; null when nobody has it open.
char *Map_Shared_File(const std::string &name, std::size_t size);
inline constexpr std::size_t Shared_File_Header = 4096; // bytes
