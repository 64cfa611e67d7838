#include <platform/user/window_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>

namespace {

// The front, the back or a neighbour among the window's siblings. The caller holds the lock.
Window *Sibling(const Window &window, UINT relation) {
    if (!window.parent) return nullptr;
    const auto &siblings = window.parent->children;
    const auto at = std::find(siblings.begin(), siblings.end(), &window);
    switch (relation) {
    case GW_HWNDFIRST:
        return siblings.front();
    case GW_HWNDLAST:
        return siblings.back();
    case GW_HWNDNEXT:
        return at + 1 == siblings.end() ? nullptr : *(at + 1);
    default:
        return at == siblings.begin() ? nullptr : *(at - 1);
    }
}

Window *Relative(const Window &window, UINT relation) {
    if (relation == GW_OWNER) return window.owner;
    if (relation == GW_CHILD) return window.children.empty() ? nullptr : window.children.front();
    return relation <= GW_HWNDPREV ? Sibling(window, relation) : nullptr;
}

Window *Parent_Or_Owner(const Window &window) {
    if (window.style & WS_CHILD) return window.parent;
    return (window.style & WS_POPUP) ? window.owner : nullptr;
}

// Looks at a window under the lock.
template <class Look>
HWND Look_At(HWND handle, Look look) {
    return Within_Memory(HWND(nullptr), [&]() -> HWND {
        const WindowPointer window = Find_Window_Or_Tell(handle);
        if (!window) return nullptr;
        const TreeLock lock;
        return Handle_Of(look(*window));
    });
}

bool Collect(HWND parent, std::vector<HWND> &found) {
    return Within_Memory(false, [&] {
        const TreeLock lock;
        if (!parent) {
            for (const Window *each : Desktop().children) found.push_back(each->handle);
            return true;
        }
        const WindowPointer window = Find_Window_Or_Tell(parent);
        if (!window) return false;
        Collect_Descendants(*window, found);
        return true;
    });
}

} // namespace

extern "C" {

HWND GetParent(HWND window) {
    return Look_At(window, Parent_Or_Owner);
}

HWND GetWindow(HWND window, UINT relation) {
    return Look_At(window, [relation](const Window &found) { return Relative(found, relation); });
}

HWND GetDlgItem(HWND parent, int id) {
    return Look_At(parent, [id](const Window &found) -> Window * {
        for (Window *child : found.children) {
            if (child->id == id) return child;
        }
        SetLastError(ERROR_CONTROL_ID_NOT_FOUND);
        return nullptr;
    });
}

int GetDlgCtrlID(HWND window) {
    return static_cast<int>(GetWindowLongA(window, GWL_ID));
}

BOOL IsChild(HWND parent, HWND window) {
    return Within_Memory(FALSE, [&]() -> BOOL {
        const WindowPointer above = Find_Window_Or_Tell(parent), below = Find_Window_Or_Tell(window);
        if (!above || !below || !above->queue) return FALSE;
        const TreeLock lock;
        return Is_Descendant(*below, *above);
    });
}

BOOL EnumChildWindows(HWND parent, WNDENUMPROC procedure, LPARAM lparam) {
    std::vector<HWND> found;
    if (!procedure || !Collect(parent, found)) return FALSE;
    for (const HWND each : found) {
        const bool there = Within_Memory(false, [each] { return Find_Window(each) != nullptr; });
        if (there && !procedure(each, lparam)) return FALSE;
    }
    return TRUE;
}
}
