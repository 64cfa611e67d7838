#include <kelmara/dialogs/window_helpers.h>

#include <kelmara/dialogs/coordinates.h>

#include <platform/user.h>

namespace {

RECT Moved_Up(RECT rectangle, long distance) {
    return {rectangle.left, Difference(rectangle.top, distance), rectangle.right,
            Difference(rectangle.bottom, distance)};
}

RECT With_Height(const RECT &rectangle, long height) {
    return {rectangle.left, rectangle.top, rectangle.right, Sum(rectangle.top, height)};
}

bool Lies_Inside(const RECT &inner, const RECT &outer) {
    return inner.left >= outer.left && inner.right <= outer.right && inner.top >= outer.top &&
           inner.bottom <= outer.bottom;
}

void Move_To(HWND window, const RECT &place, bool repaint) {
    MoveWindow(window, static_cast<int>(place.left), static_cast<int>(place.top),
               static_cast<int>(Width_Of(place)), static_cast<int>(Height_Of(place)), repaint);
}

// In the coordinates that MoveWindow takes for it. An owner is no parent.
bool Place_Of(HWND window, RECT &place) {
    if (!GetWindowRect(window, &place)) return false;
    const bool is_child = (static_cast<DWORD>(GetWindowLongA(window, GWL_STYLE)) & WS_CHILD) != 0;
    if (is_child) GlobalToLocalRect(&place, &place, GetParent(window));
    return true;
}

bool Place_Of_Item(HWND dialog, int id, bool hide, RECT &place) {
    const HWND item = GetDlgItem(dialog, id);
    if (!item || !GetWindowRect(item, &place)) return false;
    GlobalToLocalRect(&place, &place, dialog);
    if (hide) ShowWindow(item, SW_HIDE);
    return true;
}

} // namespace

// --- moving and measuring windows -------------------------------------------------------------------------

void MoveWindowTo(HWND window, short x, short y, bool repaint) {
    RECT place;
    if (!Place_Of(window, place)) return;
    const long width = Width_Of(place), height = Height_Of(place);
    if (x != -1) place.left = x;
    if (y != -1) place.top = y;
    Move_To(window, {place.left, place.top, Sum(place.left, width), Sum(place.top, height)}, repaint);
}

void MoveWindowVert(HWND window, int distance, HWND reference) {
    RECT place;
    if (!GetWindowRect(window, &place)) return;
    GlobalToLocalRect(&place, &place, reference);
    Move_To(window, Moved_Up(place, distance), true);
}

void SetWindowHeight(HWND window, int height) {
    RECT place;
    if (Place_Of(window, place)) Move_To(window, With_Height(place, height), true);
}

int GetWindowHeight(HWND window) {
    RECT place;
    return GetWindowRect(window, &place) ? static_cast<int>(Height_Of(place)) : 0;
}

void Set_Window_Rect(HWND window, const RECT *rectangle) {
    Move_To(window, *rectangle, true);
}

void Get_Frame_Offset(HWND dialog, int id, short *x, short *y, bool hide) {
    RECT place;
    if (!Place_Of_Item(dialog, id, hide, place)) return;
    *x = static_cast<short>(place.left);
    *y = static_cast<short>(place.top);
}

void Get_Frame_Rect(HWND dialog, int id, RECT *rectangle, bool hide) {
    RECT place;
    if (Place_Of_Item(dialog, id, hide, place)) *rectangle = place;
}

// --- folding a part away ----------------------------------------------------------------------------------

namespace {

enum FoldPass { Hide_Framed = 1, Close_Gap = 2 };

struct Fold {
    FoldPass pass;
    HWND dialog;
    RECT frame; // on the screen
};

BOOL Fold_Child(HWND child, LPARAM parameter) {
    const Fold &fold = *reinterpret_cast<const Fold *>(parameter);
    RECT place;
    if (!GetWindowRect(child, &place)) return TRUE;
    if (fold.pass == Hide_Framed) {
        if (Lies_Inside(place, fold.frame)) ShowWindow(child, SW_HIDE);
        return TRUE;
    }
    if (place.bottom < fold.frame.bottom) return TRUE;
    GlobalToLocalRect(&place, &place, fold.dialog);
    Move_To(child, Moved_Up(place, Height_Of(fold.frame)), false);
    return TRUE;
}

void Fold_Children(Fold &fold, FoldPass pass) {
    fold.pass = pass;
    EnumChildWindows(fold.dialog, Fold_Child, reinterpret_cast<LPARAM>(&fold));
}

} // namespace

void Hide_Bound_Items(HWND dialog, int frame_id) {
    Fold fold = {Hide_Framed, dialog, {}};
    const HWND frame = GetDlgItem(dialog, frame_id);
    if (!frame || !GetWindowRect(frame, &fold.frame)) return;
    Fold_Children(fold, Hide_Framed);
    Fold_Children(fold, Close_Gap);
    RECT place;
    if (!Place_Of(dialog, place)) return;
    Move_To(dialog, With_Height(place, Difference(Height_Of(place), Height_Of(fold.frame))), false);
}

// --- rectangles -------------------------------------------------------------------------------------------

void GlobalToLocalRect(const RECT *in, RECT *out, void *window) {
    POINT top_left = {in->left, in->top}, bottom_right = {in->right, in->bottom};
    ScreenToClient(static_cast<HWND>(window), &top_left);
    ScreenToClient(static_cast<HWND>(window), &bottom_right);
    *out = {top_left.x, top_left.y, bottom_right.x, bottom_right.y};
}

void CenterRectInRect(RECT *inner, const RECT *outer) {
    const RECT around = *outer;
    const long width = Width_Of(*inner), height = Height_Of(*inner);
    const long x = Difference(Width_Of(around), width) / 2, y = Difference(Height_Of(around), height) / 2;
    *inner = {x, y, Sum(x, width), Sum(y, height)};
    AdjustRectToOffset(inner, static_cast<int>(around.top), static_cast<int>(around.left));
}

void AdjustRectToBase(RECT *rectangle) {
    *rectangle = {0, 0, Width_Of(*rectangle), Height_Of(*rectangle)};
}

void AdjustRectToOffset(RECT *rectangle, int down, int right) {
    *rectangle = {Sum(rectangle->left, right), Sum(rectangle->top, down), Sum(rectangle->right, right),
                  Sum(rectangle->bottom, down)};
}
