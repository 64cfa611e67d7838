#pragma once
// Dialogs and children for tests of their layout, and a layout that shows its records.

#include <kelmara/dialogs/auto_position.h>

#include <tests/support/window_verbs.h>

class AutoPosition : public WindowTest {};

struct Layout : CAutoPositionManager {
    explicit Layout(HWND parent) { Initialize(parent); }
    using CAutoPositionManager::Find_Entry;
    using CAutoPositionManager::Get_GroupBox_Extremes;
    using CAutoPositionManager::m_Controls;
    using CAutoPositionManager::m_GroupBoxes;
    long Manage(HWND control, long flags, HWND neighbour = nullptr) {
        return Manage_Control(control, flags, neighbour, nullptr);
    }
};

struct Dialog : TestWindow {
    explicit Dialog(DWORD style = WS_POPUP) : TestWindow(style, {100, 100, 500, 400}) {}
    void Resize(int width, int height) {
        SetWindowPos(*this, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
    }
};

struct Child : TestWindow {
    Child(HWND dialog, RECT place, const char *text = "", DWORD style = 0, TestProcedure procedure = {},
          int id = 0)
        : TestWindow(WS_CHILD | WS_VISIBLE | style, place, dialog, id, std::move(procedure), text) {}
};

inline RECT Normal(HWND window) {
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof placement;
    GetWindowPlacement(window, &placement);
    return placement.rcNormalPosition;
}

inline std::string At(HWND window) {
    return Text_Of(Normal(window));
}

inline void Move(HWND window, const RECT &r) {
    MoveWindow(window, static_cast<int>(r.left), static_cast<int>(r.top), static_cast<int>(r.right - r.left),
               static_cast<int>(r.bottom - r.top), FALSE);
}

inline long Width(HWND window) {
    return Normal(window).right - Normal(window).left;
}
