#pragma once
// The suite's wait companion: a small window that says that a program is busy.
//
// The window has a thread of its own, so that it answers the machine while the program's threads are busy,
// and whichever thread calls. Each routine returns when what it does is done; it waits for that thread alone,
// which calls nobody back. None lets an exception out. The process's end and the unloading of the module
// close the window and end the thread. In a process forked from the one that loaded it nothing happens.

extern "C" {

/// Opens the window in the middle of the screen, without taking the focus from the program. One that is open
/// stays as it is. Where no thread or no window is to be had nothing is open.
void Startup();

/// Closes the window. Without one nothing happens.
void Finished();

/// Shows or hides an open window. Without one nothing happens.
void Show(bool show);
}
