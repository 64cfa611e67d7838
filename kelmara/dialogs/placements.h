#pragma once
// Inside the library: where windows stand, and the one call that puts them elsewhere. What cannot be read is
// all zero.

#include <platform/user.h>

/// What SetWindowPos is given; what `flags` leave out counts for nothing.
struct WindowPlace {
    long x, y, width, height;
    UINT flags;
};

inline constexpr int Text_Limit = 255; // bytes of a control's text that are read, with its terminator

inline WINDOWPLACEMENT Placement_Of(HWND window) {
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof placement;
    GetWindowPlacement(window, &placement);
    return placement;
}

inline RECT Normal_Place_Of(HWND window) {
    return Placement_Of(window).rcNormalPosition;
}

inline RECT Client_Of(HWND window) {
    RECT client = {};
    GetClientRect(window, &client);
    return client;
}

inline RECT Screen_Place_Of(HWND window) {
    RECT place = {};
    GetWindowRect(window, &place);
    return place;
}

inline void Put(HWND window, const WindowPlace &place) {
    SetWindowPos(window, nullptr, static_cast<int>(place.x), static_cast<int>(place.y),
                 static_cast<int>(place.width), static_cast<int>(place.height), place.flags);
}
