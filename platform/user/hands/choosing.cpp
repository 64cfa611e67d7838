#include <platform/machine.h>
#include <platform/user/controls/combo_box.h>
#include <platform/user/controls/combo_box_ex.h>
#include <platform/user/controls/list_box.h>
#include <platform/user/hands/hit.h>
#include <platform/user/hands/queue_work.h>

namespace {

template <class Kind>
WindowPointer Find_Control(HWND handle) {
    const WindowPointer window = Find_Window(handle);
    return window && window->queue && dynamic_cast<Kind *>(window->contents.get()) ? window : nullptr;
}

template <class Kind>
Kind &As(const WindowPointer &window) {
    return static_cast<Kind &>(*window->contents);
}

bool Click_In(HWND window, POINT place) {
    return ClientToScreen(window, &place) && Click_At(place.x, place.y);
}

bool Click_Line(HWND list, int line) {
    if (SendMessageA(list, LB_GETCOUNT, 0, 0) <= line || line < 0) return false;
    RECT place, client;
    const auto is_shown = [&] {
        SendMessageA(list, LB_GETITEMRECT, static_cast<WPARAM>(line), As_Parameter(&place));
        return GetClientRect(list, &client) && place.top >= 0 && place.bottom <= client.bottom;
    };
    if (!is_shown()) SendMessageA(list, LB_SETTOPINDEX, static_cast<WPARAM>(line), 0);
    if (!is_shown() && place.top < 0) return false;
    if (!IsWindowVisible(list) || !IsWindowEnabled(list)) return false;
    const POINT at = {client.right / 2, place.top + 1};
    POINT on_screen = at;
    ClientToScreen(list, &on_screen);
    const bool covered = Hit_At(on_screen).window != list;
    return !covered && Click_In(list, at) &&
           (!IsWindow(list) || SendMessageA(list, LB_GETCURSEL, 0, 0) == line);
}

// A line that is not there is not gone to, and the list is closed again.
bool Choose_In_Combo(const WindowPointer &window, int line) {
    ComboBox &combo = As<ComboBox>(window);
    const HWND list = combo.List_Part();
    if (SendMessageA(list, LB_GETCOUNT, 0, 0) <= line || line < 0) return false;
    if (!IsWindowEnabled(window->handle)) return false;
    const RECT arrow = combo.Arrow();
    if (arrow.right > arrow.left && !combo.Is_Dropped()) {
        const POINT at = {(arrow.left + arrow.right) / 2, (arrow.top + arrow.bottom) / 2};
        if (!Click_In(window->handle, at) || !combo.Is_Dropped()) return false;
    }
    return Click_Line(list, line);
}

} // namespace

extern "C" bool Choose_Line(HWND handle, int line) {
    if (Hands_Are_Busy()) return false;
    return Within_Memory(false, [&] {
        if (const WindowPointer extended = Find_Control<ComboBoxEx>(handle))
            handle = As<ComboBoxEx>(extended).Combo_Part();
        if (const WindowPointer combo = Find_Control<ComboBox>(handle)) return Choose_In_Combo(combo, line);
        return Find_Control<ListBox>(handle) && Click_Line(handle, line);
    });
}
