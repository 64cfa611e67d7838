#pragma once
// How a window gets from one state to another: visible, iconic, zoomed, active.

#include <platform/user/thread_queue.h>

/// Gives the window these State_Bits, tells its procedure and moves it to where they have it.
enum class Activation { Yes, No };
void Change_State(const WindowPointer &window, DWORD state, Activation activation);

/// Sees to what others have changed about the thread's windows: their state, and which is in the foreground.
void Catch_Up_With_The_Machine(ThreadQueue &queue);

/// Makes a window without a parent the thread's active one; null for none. WM_ACTIVATE, and the focus goes
/// with it. Both are of the calling thread: another's window changes nothing. Without Take the machine's
/// foreground goes along only from the one that was active before, or when nobody has it.
enum class Foreground { Take, Leave };
void Activate(ThreadQueue &queue, const WindowPointer &window, Foreground foreground);
/// WM_CANCELMODE to what the pointer is held for, if it is the window or stands in it.
void Cancel_Pointer_In(const WindowPointer &window);
/// Activate for a window of any thread: another's comes to it when it looks for messages.
void Bring_To_Front(const WindowPointer &window);
/// Whether the window, or one that stands in it, has its thread's focus.
bool Has_Focus_Within(const Window &window);
