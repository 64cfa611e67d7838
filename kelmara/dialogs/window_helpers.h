#pragma once
// Free functions that dialogs share: where windows stand and stood, rectangles, the size of texts, an edit
// field's filter, and folding a part of a dialog away.
//
// They keep nothing but the saved positions in the registry, and none reports an error: what cannot be done
// is not done. A handle that is no window leaves everything as it is and measures 0; null measures on the
// screen. Coordinates and sizes are in pixels. A child stands in its parent's client coordinates, any other
// window on the screen, whoever owns it. Each function is for the thread that owns the windows. Rectangles
// are never null; arithmetic on them wraps at 32 bits.

#include <kelmara/api.h>

// --- saved positions --------------------------------------------------------------------------------------

/// Saves where a window stands under `name`, as a binary value of 44 bytes: its WINDOWPLACEMENT.
KELMARA_API void Save_Window_Position(const char *name, HWND window);

/// Puts a window where it was saved, and shows it whatever it was then. A place that ends below or to the
/// right of the desktop is dropped whole, one that begins to the left of it is shifted right; the top is not
/// looked at. With `foreground` the window also becomes the foreground window. Nothing happens without a
/// saved value of exactly 44 bytes.
KELMARA_API void Restore_Saved_Window_Position(const char *name, HWND window, bool foreground);

// --- moving and measuring windows -------------------------------------------------------------------------

/// -1 leaves a coordinate as it is, and the size stays.
KELMARA_API void MoveWindowTo(HWND window, short x, short y, bool repaint);
/// Moves a window up, down if `distance` is negative. Its place is taken in `reference`'s client coordinates:
/// its parent's, if it is to move straight.
KELMARA_API void MoveWindowVert(HWND window, int distance, HWND reference);
/// The top edge stays.
KELMARA_API void SetWindowHeight(HWND window, int height);
KELMARA_API int GetWindowHeight(HWND window);
KELMARA_API void Set_Window_Rect(HWND window, const RECT *rectangle);

/// The left and top of a dialog's item, or its whole rectangle, in the dialog's client coordinates; with
/// `hide` it is hidden too. Without such an item the outputs stay as they were.
KELMARA_API void Get_Frame_Offset(HWND dialog, int id, short *x, short *y, bool hide);
KELMARA_API void Get_Frame_Rect(HWND dialog, int id, RECT *rectangle, bool hide);

/// Takes the part of a dialog out of sight that the item `frame_id` frames, and closes the gap: all that lies
/// wholly inside the item is hidden, the item too, what ends at or below its bottom moves up by its height,
/// and the dialog becomes as much less high. Nothing is painted. Descendants of controls take part like
/// controls, and are moved as if they stood in the dialog itself.
KELMARA_API void Hide_Bound_Items(HWND dialog, int frame_id);

// --- texts ------------------------------------------------------------------------------------------------

/// Removes characters from an edit control: those that are not in `allowed`, or those that are in
/// `forbidden`. The other list is null; with both or neither nothing happens. For each character gone a beep
/// sounds, and each end of the selection moves back by one, though not below 0. The control is touched only
/// if a character goes; of a longer text its first 254 characters are then all that is left.
KELMARA_API void Filter_Edit_Field(HWND edit, const char *allowed, const char *forbidden);

/// In the window's font, or ANSI_VAR_FONT if it has none: how wide a text is on one line with what a slanted
/// last letter and a border need, how high a line is. A null text is empty. 0 where it cannot be measured:
/// for what is no window, and without memory.
KELMARA_API int Text_Width(HWND window, const char *text);
KELMARA_API int Text_Height(HWND window);
/// How high the window must be so that a text wrapped at its blanks fits; a word wider than the window has a
/// line to itself, and the one before it. 0 for an empty text and null, and for what is no window; -1 without
/// memory.
KELMARA_API int Textbox_Height(HWND window, const char *text);

// --- rectangles -------------------------------------------------------------------------------------------

/// From screen to client coordinates of `window`; as it is when that is none. The two may be the same.
KELMARA_API void GlobalToLocalRect(const RECT *in, RECT *out, void *window);
/// The size of `inner` stays. An odd pixel more is to the right and below.
KELMARA_API void CenterRectInRect(RECT *inner, const RECT *outer);
/// Moves a rectangle to 0, 0.
KELMARA_API void AdjustRectToBase(RECT *rectangle);
KELMARA_API void AdjustRectToOffset(RECT *rectangle, int down, int right);
