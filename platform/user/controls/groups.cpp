#include <platform/user/controls/groups.h>

#include <platform/kernel.h>

#include <algorithm>

namespace {

bool Begins_Group(const Window *window) {
    return (window->style & WS_GROUP) != 0;
}

} // namespace

long Collect_Group(HWND control, std::vector<HWND> &group) {
    const TreeLock lock;
    const WindowPointer window = Find_Window_Or_Tell(control);
    if (!window) return static_cast<long>(GetLastError());
    if (!window->parent) return ERROR_INVALID_WINDOW_HANDLE;
    const auto &siblings = window->parent->children;
    const auto at = std::find(siblings.begin(), siblings.end(), window.get());
    auto first = at;
    while (first != siblings.begin() && !Begins_Group(*first)) --first;
    const auto last = std::find_if(at + 1, siblings.end(), Begins_Group);
    for (auto each = first; each != last; ++each) group.push_back((*each)->handle);
    return NO_ERROR;
}

std::vector<HWND> Tab_Stops(HWND dialog, HWND from) {
    std::vector<HWND> all, stops;
    const auto holds = [from](HWND stop) { return IsChild(stop, from); };
    const TreeLock lock;
    const WindowPointer window = Find_Window(dialog);
    if (!window) return stops;
    Collect_Descendants(*window, all);
    for (const HWND each : all) {
        const WindowPointer control = Find_Window(each);
        const bool usable = control && !(control->style & WS_DISABLED) && control->Is_Visible_In_All();
        const bool stop = usable && (control->style & WS_TABSTOP);
        if (stop || (each == from && std::none_of(stops.begin(), stops.end(), holds))) stops.push_back(each);
    }
    return stops;
}
