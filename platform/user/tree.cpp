#include <platform/user/window.h>

#include <platform/user/frame.h>

#include <algorithm>

Window &Root_Of(Window &window) {
    Window *root = &window;
    while (root->parent && root->parent->parent) root = root->parent;
    return *root;
}

bool Is_Descendant(const Window &window, const Window &ancestor) {
    for (const Window *above = window.parent; above; above = above->parent) {
        if (above == &ancestor) return true;
    }
    return false;
}

HWND Handle_Of(const Window *window) {
    return window ? window->handle : nullptr;
}

void Collect_Descendants(const Window &window, std::vector<HWND> &found) {
    for (const Window *child : window.children) {
        found.push_back(child->handle);
        Collect_Descendants(*child, found);
    }
}

void Link(Window &window, Window &parent) {
    parent.children.insert(parent.children.begin(), &window);
    window.parent = &parent;
}

void Unlink(Window &window) {
    if (!window.parent) return;
    std::erase(window.parent->children, &window);
    window.parent = nullptr;
}

// Rotates within the list, so that no memory is needed.
void Restack(Window &window, const Window *after) {
    if (!window.parent || after == &window) return;
    auto &siblings = window.parent->children;
    const auto at = std::find(siblings.begin(), siblings.end(), &window);
    const auto behind = after ? std::find(siblings.begin(), siblings.end(), after) : siblings.end();
    if (after && behind == siblings.end()) return;
    const auto target = after ? behind + 1 : siblings.begin();
    if (target <= at)
        std::rotate(target, at, at + 1);
    else
        std::rotate(at, at + 1, target);
}

POINT Window_Origin(const Window &window) {
    POINT origin = {window.rectangle.left, window.rectangle.top};
    if (!window.parent || !window.parent->parent) return origin;
    const POINT above = Client_Origin(*window.parent);
    return {origin.x + above.x, origin.y + above.y};
}

POINT Client_Origin(const Window &window) {
    const POINT origin = Window_Origin(window);
    const RECT client = Client_Area(window);
    return {origin.x + client.left, origin.y + client.top};
}

DWORD Window::Style() const {
    return (style & ~State_Bits) | (State() & State_Bits);
}

DWORD Window::State() const {
    if (row) return row->state.load(std::memory_order_acquire);
    return (style & State_Bits) | (zoomed_before_iconic ? Zoomed_Before_Iconic : 0);
}

void Window::Set_State_Bits(DWORD bits) {
    if (row)
        SharedWindows::Change_State(*row, [bits](DWORD) { return bits; });
    else
        zoomed_before_iconic = Following_State(State(), bits) & Zoomed_Before_Iconic;
    style = (style & ~State_Bits) | bits;
}

void Window::Set_Zoomed_Before_Iconic(bool zoomed) {
    if (!row)
        zoomed_before_iconic = zoomed;
    else if (zoomed)
        row->state.fetch_or(Zoomed_Before_Iconic, std::memory_order_acq_rel);
    else
        row->state.fetch_and(~Zoomed_Before_Iconic, std::memory_order_acq_rel);
}

bool Window::Is_Visible_In_All() const {
    for (const Window *each = this; each; each = each->parent) {
        if (!each->Is(WS_VISIBLE)) return false;
    }
    return true;
}
