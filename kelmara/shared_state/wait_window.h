#pragma once
// The wait window that a busy program shows: the client side of the wait companion, a library that the value
// "Wait" of the suite's registry key names by its full path.
//
// The companion is loaded by the first call that opens or closes the window, with the current directory left
// alone. Where it is missing or has no such export the calls do nothing, silently, and each later one tries
// again; nothing that the companion throws gets out. All calls may be made from any thread; two that load it
// at once load it once. The library's exit routine closes the window and gives the companion back, unless
// another thread is in it for two seconds more, or the process was ended from within it: then nobody asks it
// again and it stays loaded, its window going with the process. From then on nothing is loaded any more. A
// forked process leaves the window and the companion to the one that loaded it.

#include <kelmara/api.h>

/// Opens the window.
KELMARA_API void Open_Kelmara_Wait_Window();

/// Closes it. As the first call of the process it too loads the companion, and tells it so.
KELMARA_API void Close_Kelmara_Wait_Window();

/// Shows or hides an open one. Loads nothing: before the companion is loaded nothing happens.
KELMARA_API void Show_Kelmara_Wait_Window(bool show);
