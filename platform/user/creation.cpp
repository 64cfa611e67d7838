#include <platform/user/frame.h>
#include <platform/user/menus/menu_table.h>
#include <platform/user/state_changes.h>
#include <platform/user/window_classes.h>
#include <platform/user/window_end.h>
#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>

namespace {

struct Wanted {
    DWORD extended_style;
    const char *class_name;
    DWORD style;
    int x, y, width, height;
    HWND parent;
    HMENU menu;
    HINSTANCE instance;
};

// What is neither child nor popup has a caption.
DWORD Complete_Style(DWORD style) {
    if (!(style & (WS_CHILD | WS_POPUP))) style |= WS_CAPTION | WS_CLIPSIBLINGS;
    return style;
}

RECT Place_Of(const Wanted &wanted) {
    const bool overlapped = !(wanted.style & (WS_CHILD | WS_POPUP));
    const bool free_place = wanted.x == CW_USEDEFAULT, free_size = wanted.width == CW_USEDEFAULT;
    RECT place;
    place.left = !free_place ? Within_Reach(wanted.x) : 0;
    place.top = !free_place ? Within_Reach(wanted.y) : 0;
    LONG width = wanted.width, height = wanted.height;
    if (free_size) {
        width = overlapped ? GetSystemMetrics(SM_CXSCREEN) * 3 / 4 : 0;
        height = overlapped ? GetSystemMetrics(SM_CYSCREEN) * 3 / 4 : 0;
    }
    place.right = place.left + std::max(Within_Reach(width), 0L);
    place.bottom = place.top + std::max(Within_Reach(height), 0L);
    return place;
}

// Where it stands in the tree. The caller holds the lock.
long Find_Family(const Wanted &wanted, Window *&parent, Window *&owner) {
    parent = &Desktop();
    owner = nullptr;
    if (!wanted.parent) return (wanted.style & WS_CHILD) ? ERROR_TLW_WITH_WSCHILD : NO_ERROR;
    const WindowPointer given = Find_Window_Or_Tell(wanted.parent);
    if (!given) return static_cast<long>(GetLastError());
    for (const Window *each = given.get(); each; each = each->parent) {
        if (each->in_destruction) return ERROR_INVALID_WINDOW_HANDLE;
    }
    const bool is_desktop = given.get() == parent;
    if (wanted.style & WS_CHILD)
        parent = given.get();
    else if (!is_desktop)
        owner = &Root_Of(*given);
    return NO_ERROR;
}

long Take_Handle(Window &window) {
    window.shared = window.queue->Shared();
    if (window.style & WS_CHILD) {
        do {
            window.handle = reinterpret_cast<HWND>(window.shared->New_Child_Handle());
        } while (Find_Window(window.handle));
        return NO_ERROR;
    }
    for (;;) {
        window.row = window.shared->Take_Window(window.queue->Row(), window.window_class->name);
        if (!window.row) return ERROR_NOT_ENOUGH_QUOTA;
        window.handle = reinterpret_cast<HWND>(window.row->handle.load(std::memory_order_relaxed));
        if (!Find_Window(window.handle)) return NO_ERROR;
        SharedWindows::Give_Back(*window.row); // the handle is still in use from a machine that was left
    }
}

long Enter_In_Family(const WindowPointer &window, const Wanted &wanted) {
    const TreeLock lock;
    Window *parent;
    if (const long error = Find_Family(wanted, parent, window->owner)) return error;
    parent->children.reserve(parent->children.size() + 1);
    Enter_In_Table(window);
    Link(*window, *parent);
    if (wanted.style & WS_CHILD) Restack(*window, parent->children.back());
    return NO_ERROR;
}

long Make_Window(const Wanted &wanted, WindowPointer &made) {
    auto window = std::make_shared<Window>();
    window->window_class = WindowClasses::Find(wanted.class_name);
    if (!window->window_class) return ERROR_CANNOT_FIND_WND_CLASS;
    window->queue = ThreadQueue::Own();
    if (!window->queue) return static_cast<long>(GetLastError());
    window->style = Complete_Style(wanted.style) & ~State_Bits;
    window->extended_style = wanted.extended_style;
    window->procedure = window->window_class->procedure;
    window->instance = wanted.instance;
    window->rectangle = window->normal = Place_Of(wanted);
    if (wanted.style & WS_CHILD)
        window->id = reinterpret_cast<LONG>(wanted.menu);
    else
        window->menu = wanted.menu;
    if (window->menu && !Is_Menu(window->menu)) return ERROR_INVALID_MENU_HANDLE;
    window->menu_height = window->menu ? static_cast<int>(Menu_Height) : 0;
    window->told_client = Client_In_Parent(*window);

    if (const long error = Take_Handle(*window)) return error;
    const long error = Code_Of([&] { return Enter_In_Family(window, wanted); });
    if (error == NO_ERROR)
        made = std::move(window);
    else if (window->row)
        SharedWindows::Give_Back(*window->row);
    return error;
}

// Takes the window away again unless its making comes to its end; also when a procedure throws.
class Making {
  public:
    explicit Making(WindowPointer window) : window_(std::move(window)) {}
    ~Making() {
        const TreeLock lock;
        if (!done_ && !window_->gone) Take_Out(*window_);
    }
    Making(const Making &) = delete;
    Making &operator=(const Making &) = delete;
    void Done() { done_ = true; }

  private:
    WindowPointer window_;
    bool done_ = false;
};

bool Still_There(const Window &window) {
    const TreeLock lock;
    return !window.gone;
}

LPARAM Packed(LONG low, LONG high) {
    return static_cast<LPARAM>((static_cast<DWORD>(low) & 0xFFFF) | static_cast<DWORD>(high) << 16);
}

void Tell_Size_And_Place(const WindowPointer &window) {
    RECT client;
    {
        const TreeLock lock;
        client = window->told_client = Client_In_Parent(*window);
    }
    Send_To(window, WM_SIZE, SIZE_RESTORED, Packed(client.right - client.left, client.bottom - client.top));
    Send_To(window, WM_MOVE, 0, Packed(client.left, client.top));
}

bool Is_Let_Live(const WindowPointer &window, CREATESTRUCTA &create) {
    Making making(window);
    if (!Send_To(window, WM_NCCREATE, 0, As_Parameter(&create))) {
        Send_To(window, WM_NCDESTROY, 0, 0);
        return false;
    }
    if (Send_To(window, WM_CREATE, 0, As_Parameter(&create)) == -1) {
        DestroyWindow(window->handle);
        return false;
    }
    making.Done();
    return Still_There(*window);
}

void Show_As_Created(const WindowPointer &window, DWORD style) {
    if (!(style & State_Bits)) return;
    const int command = !(style & WS_VISIBLE)   ? SW_HIDE
                        : (style & WS_MINIMIZE) ? SW_SHOWMINIMIZED
                        : (style & WS_MAXIMIZE) ? SW_SHOWMAXIMIZED
                                                : SW_SHOW;
    if (command == SW_HIDE)
        Change_State(window, style & State_Bits, Activation::No);
    else
        ShowWindow(window->handle, command);
}

} // namespace

extern "C" {

HWND CreateWindowExA(DWORD extended_style, LPCSTR class_name, LPCSTR text, DWORD style, int x, int y,
                     int width, int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter) {
    const Wanted wanted = {extended_style, class_name, style, x, y, width, height, parent, menu, instance};
    WindowPointer window;
    if (!Succeed_Or_Tell(Code_Of([&] { return Make_Window(wanted, window); }))) return nullptr;
    const RECT place = window->rectangle;
    CREATESTRUCTA create = {parameter,
                            instance,
                            menu,
                            parent,
                            static_cast<int>(place.bottom - place.top),
                            static_cast<int>(place.right - place.left),
                            static_cast<int>(place.top),
                            static_cast<int>(place.left),
                            static_cast<LONG>(style),
                            text,
                            class_name,
                            extended_style};
    if (!Is_Let_Live(window, create)) return nullptr;
    Tell_Size_And_Place(window);
    Show_As_Created(window, style);
    return Still_There(*window) ? window->handle : nullptr;
}
}
