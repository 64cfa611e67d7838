#include <kelmara/dialogs/window_helpers.h>

#include <kelmara/system/reg_master.h>

#include <platform/user.h>

#include <climits>

namespace {

constexpr char Positions_Key[] = "Software\\Dunmerit Software\\Kelmara\\Window Positions";

// What is stored, and how it has been stored since the first release.
static_assert(sizeof(WINDOWPLACEMENT) == 44 && offsetof(WINDOWPLACEMENT, flags) == 4);
static_assert(offsetof(WINDOWPLACEMENT, showCmd) == 8 && offsetof(WINDOWPLACEMENT, ptMinPosition) == 12);
static_assert(offsetof(WINDOWPLACEMENT, ptMaxPosition) == 20);
static_assert(offsetof(WINDOWPLACEMENT, rcNormalPosition) == 28);

// False for one that ends beyond the desktop, or would by more than a number holds.
bool Fit_On_Desktop(RECT &place, const RECT &desktop) {
    if (place.bottom > desktop.bottom || place.right > desktop.right) return false;
    if (place.left >= 0) return true;
    if (place.right > LONG_MAX + place.left) return false;
    place.right -= place.left;
    place.left = 0;
    return true;
}

bool Read_Placement(const char *name, WINDOWPLACEMENT &placement) try {
    CRegMaster registry;
    unsigned long size = sizeof placement;
    return registry.OpenKey(HKEY_LOCAL_MACHINE, Positions_Key) &&
           registry.GetRegEntry(name, reinterpret_cast<char *>(&placement), &size) &&
           size == sizeof placement;
} catch (...) { // a list's constructor throws
    return false;
}

} // namespace

void Save_Window_Position(const char *name, HWND window) try {
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof placement;
    if (!GetWindowPlacement(window, &placement)) return;
    CRegMaster registry;
    if (!registry.CreateKey(HKEY_LOCAL_MACHINE, Positions_Key)) return;
    registry.SetRegEntry(name, reinterpret_cast<const long *>(&placement), sizeof placement);
} catch (...) { // a list's constructor throws
}

void Restore_Saved_Window_Position(const char *name, HWND window, bool foreground) {
    WINDOWPLACEMENT placement;
    RECT desktop;
    if (!Read_Placement(name, placement) || !GetWindowRect(GetDesktopWindow(), &desktop)) return;
    if (!Fit_On_Desktop(placement.rcNormalPosition, desktop)) return;
    placement.showCmd = SW_SHOW;
    SetWindowPlacement(window, &placement);
    if (foreground) SetForegroundWindow(window);
}
