#pragma once
// The windows of this process by their handles.

#include <platform/user/window.h>

/// Makes the window findable. May throw std::bad_alloc. The caller holds the tree's lock, as for the rest.
void Enter_In_Table(const WindowPointer &window);
void Remove_From_Table(HWND handle);
/// Any one, null when the thread has none left.
WindowPointer Any_Window_Of(const ThreadQueue &queue);

/// A fact of the machine about a window without a parent, of whatever process; an empty pointer when it is
/// none.
struct MachineWindow {
    std::shared_ptr<SharedWindows> shared;
    WindowRow *row = nullptr;
    explicit operator bool() const { return row != nullptr; }
};
MachineWindow Find_On_Machine(HWND handle);
