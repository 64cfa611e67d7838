#include <platform/user/hands/hit.h>

#include <platform/user/frame.h>
#include <platform/user/thread_queue.h>

#include <platform/kernel/outcome.h>

namespace {

bool Holds(const RECT &r, POINT at) {
    return at.x >= r.left && at.x < r.right && at.y >= r.top && at.y < r.bottom;
}

RECT On_Screen(const Window &window) {
    const POINT at = Window_Origin(window);
    const RECT &r = window.rectangle;
    return {at.x, at.y, at.x + (r.right - r.left), at.y + (r.bottom - r.top)};
}

RECT Client_On_Screen(const Window &window) {
    const POINT at = Client_Origin(window);
    const RECT client = Client_Area(window);
    return {at.x, at.y, at.x + (client.right - client.left), at.y + (client.bottom - client.top)};
}

// Visible children at the place, from the front. The caller holds the lock.
std::vector<WindowPointer> Children_At(const Window &parent, POINT place) {
    std::vector<WindowPointer> found;
    for (const Window *child : parent.children) {
        if (child->Is(WS_VISIBLE) && Holds(On_Screen(*child), place))
            found.push_back(Find_Window(child->handle));
    }
    return found;
}

LRESULT Code_At(const WindowPointer &window, POINT place) {
    const LPARAM packed =
        static_cast<LPARAM>((static_cast<DWORD>(place.x) & 0xFFFF) | static_cast<DWORD>(place.y) << 16);
    const LRESULT said = Send_To(window, WM_NCHITTEST, 0, packed);
    if (said != HTCLIENT) return said;
    const TreeLock lock;
    const RECT client = Client_On_Screen(*window);
    if (Holds(client, place)) return HTCLIENT;
    const bool above = place.y < client.top && (window->style & WS_CAPTION) == WS_CAPTION;
    return above && place.y < client.top - window->menu_height ? HTCAPTION : HTBORDER;
}

// False when the window lets the pointer through.
bool Find_In(const WindowPointer &window, POINT place, Hit &hit) {
    std::vector<WindowPointer> children;
    {
        const TreeLock lock;
        if (window->gone) return false;
        if (Holds(Client_On_Screen(*window), place)) children = Children_At(*window, place);
    }
    for (const WindowPointer &child : children) {
        bool disabled;
        {
            const TreeLock lock;
            disabled = child->style & WS_DISABLED;
        }
        if (disabled) break;
        if (Find_In(child, place, hit)) return true;
    }
    const LRESULT code = Code_At(window, place);
    if (code == HTTRANSPARENT) return false;
    hit.window = window->handle;
    hit.code = code;
    return true;
}

Hit Find_At(POINT place) {
    std::vector<WindowPointer> topmost;
    {
        const TreeLock lock;
        topmost = Children_At(Desktop(), place);
    }
    for (const WindowPointer &each : topmost) {
        if (!each->queue->Is_Own()) return {};
        Hit hit;
        hit.topmost = each->handle;
        if (!IsWindowEnabled(each->handle)) return {};
        if (Find_In(each, place, hit)) return hit;
    }
    return {};
}

} // namespace

Hit Hit_At(POINT place) {
    return Find_At(place);
}
