#include <platform/user/menus/menu_table.h>
#include <platform/user/state_changes.h>
#include <platform/user/window_end.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <utility>

namespace {

// What is held while a window is being destroyed. Disarmed by the window's end; when a procedure throws, the
// window stays and may be destroyed again.
class InDestruction {
    static void Forget_What_Was_Told(Window &window) {
        for (Window *child : window.children) {
            child->told_of_destruction = false;
            Forget_What_Was_Told(*child);
        }
    }

  public:
    explicit InDestruction(Window &window) : window_(window) {
        const TreeLock lock;
        window_.in_destruction = true;
    }
    ~InDestruction() {
        const TreeLock lock;
        window_.in_destruction = false;
        Forget_What_Was_Told(window_);
    }
    InDestruction(const InDestruction &) = delete;
    InDestruction &operator=(const InDestruction &) = delete;

  private:
    Window &window_;
};

bool Is_Gone(const Window &window) {
    const TreeLock lock;
    return window.gone;
}

// Nothing here needs memory: the next in turn is looked for anew each time. Procedures change the tree.
WindowPointer Next_Owned_By(const Window &window) {
    const TreeLock lock;
    for (const Window *each : Desktop().children) {
        const bool in_turn =
            each->owner == &window && each->row && !each->in_destruction && each->queue->Is_Own();
        if (in_turn) return Find_Window(each->handle);
    }
    return nullptr;
}

WindowPointer Next_To_Tell(const Window &window) {
    const TreeLock lock;
    for (Window *child : window.children) {
        if (child->told_of_destruction) continue;
        child->told_of_destruction = true;
        return Find_Window(child->handle);
    }
    return nullptr;
}

WindowPointer First_Child(const Window &window) {
    const TreeLock lock;
    return window.children.empty() ? nullptr : Find_Window(window.children.front()->handle);
}

void Say_Destroy(const WindowPointer &window) {
    Send_To(window, WM_DESTROY, 0, 0);
    while (const WindowPointer child = Next_To_Tell(*window)) Say_Destroy(child);
}

void End(const WindowPointer &window) {
    struct Last {
        Window &window;
        ~Last() {
            const TreeLock lock;
            Take_Out(window);
        }
    } last{*window};
    while (const WindowPointer child = First_Child(*window)) End(child);
    Send_To(window, WM_NCDESTROY, 0, 0);
}

// The focus and the foreground go elsewhere while procedures may still be asked.
void Withdraw(const WindowPointer &window) {
    const HWND above = window->Is_Top_Level() ? nullptr : GetParent(window->handle);
    if (GetWindowLongA(window->handle, GWL_STYLE) & WS_VISIBLE) ShowWindow(window->handle, SW_HIDE);
    if (!Has_Focus_Within(*window)) return;
    SetFocus(above);
    if (Has_Focus_Within(*window)) SetFocus(nullptr); // the parent would not have it
}

void Destroy(const WindowPointer &window) {
    const InDestruction mark(*window);
    while (const WindowPointer owned = Next_Owned_By(*window)) DestroyWindow(owned->handle);
    if (!Is_Gone(*window)) Withdraw(window);
    if (!Is_Gone(*window)) Say_Destroy(window);
    if (!Is_Gone(*window)) End(window);
}

// What a control has on the desktop without being a window of its own there, as a list that drops down.
Window *Part_On_Desktop(const Window &window) {
    for (Window *each : Desktop().children) {
        if (each->owner == &window && !each->row) return each;
    }
    return nullptr;
}

} // namespace

void Take_Out(Window &window) {
    if (window.gone) return;
    window.gone = true;
    Destroy_Menu_Of_Window(std::exchange(window.menu, nullptr));
    while (!window.children.empty()) Take_Out(*window.children.front());
    while (Window *part = Part_On_Desktop(window)) Take_Out(*part);
    for (Window *each : Desktop().children) {
        if (each->owner == &window) each->owner = nullptr;
    }
    Unlink(window);
    window.owner = nullptr;
    if (window.queue->focus == &window) window.queue->focus = nullptr;
    if (window.queue->active == &window) window.queue->active = nullptr;
    window.queue->Forget_Window(window.handle);
    if (WindowRow *row = std::exchange(window.row, nullptr)) SharedWindows::Give_Back(*row);
    Remove_From_Table(window.handle);
}

void Remove_Windows_Of(ThreadQueue &queue) {
    for (;;) {
        WindowPointer window; // goes outside the lock
        const TreeLock lock;
        window = Any_Window_Of(queue);
        if (!window) return;
        Take_Out(*window);
    }
}

extern "C" {

BOOL DestroyWindow(HWND handle) {
    const WindowPointer window = Within_Memory(WindowPointer(), [&] { return Find_Window_Or_Tell(handle); });
    if (!window) return FALSE;
    if (!window->queue || !window->queue->Is_Own()) return Succeed_Or_Tell(ERROR_ACCESS_DENIED);
    {
        const TreeLock lock;
        if (window->in_destruction || window->told_of_destruction) return TRUE;
    }
    Destroy(window);
    return TRUE;
}
}
