#pragma once
// What of a window is drawn around its client area: edges, caption, menu bar, scroll bars.

#include <platform/user/snapshot/picture.h>
#include <platform/user/window.h>

/// What a picture needs to know of a window, taken in one go.
struct FrameFacts {
    SIZE size = {};
    RECT client = {}; // from the window's own corner
    DWORD style = 0, extended_style = 0;
    LONG menu_height = 0;
    HMENU menu = nullptr;
    bool is_child = false;
    bool active = false;
};

FrameFacts Facts_Of(const Window &window); // the caller holds the tree's lock
void Draw_Frame(Picture &picture, const FrameFacts &facts, const std::string &title);
