#pragma once
// What tells the working file of a command: "texts.ltx.kelmara-new123-1760000000" is one of process 123. The
// time stands behind it while it is being written.

namespace tools {

inline constexpr char Working_Mark[] = ".kelmara-new";

} // namespace tools
