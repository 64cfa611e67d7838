#pragma once
// Inside the library: what the bound controls have in common of a window, its record (window_user_data.h) and
// its procedure. Slot 0 of the record names the control that the window is bound to.

#include <kelmara/dialogs/bound_control.h>

class CBoundListboxControl;

struct BoundWindow {
    /// The notifier or the list box that the window is bound to; null for none, and for one of the other
    /// kind.
    static CBoundControlNotifier *Notifier_Of(HWND window);
    static CBoundListboxControl *List_Box_Of(HWND window);
    /// The notifier if it is of the kind that a window procedure works for, or derived from it.
    template <class Control>
    static Control *Control_Of(HWND window) {
        return dynamic_cast<Control *>(Notifier_Of(window));
    }
    /// Lets a control other than `by` know that it has lost the window.
    static void Displace(HWND window, const void *by);

    /// What a notifier whose own procedure is `own` passes messages on to: what the window had when its
    /// record was made, without a record what it has now. Never `own`. Null for what is no window.
    static BoundProcedure Native(HWND window, BoundProcedure own);
    /// What a list box passes them on to: what the window has now; where a control is attached to it, what
    /// that control has saved, as a procedure above it would call it again. Never `own`.
    static BoundProcedure Current(HWND window, BoundProcedure own);
    /// Answers a message in the stead of `own`, which has no control to work for, as a procedure above it
    /// still calls it or one below: by what the notifier has saved that has the window, otherwise by what the
    /// window had when its record was made.
    static long Pass_On(BoundProcedure own, HWND window, unsigned int message, unsigned int wparam,
                        long lparam);
    /// Has `procedure` answer a message, or DefWindowProcA where that goes round: where this thread is at the
    /// same message of the window for the 33rd time at once. So two procedures end that each put themselves
    /// above the other.
    static long Send_On(BoundProcedure procedure, HWND window, unsigned int message, unsigned int wparam,
                        long lparam);
    /// Gives the window a saved procedure back, unless it is somebody else's by now.
    static void Give_Back(HWND window, const void *owner, BoundProcedure own, BoundProcedure saved);

    /// Enters the owner in the window's record. `record` is the one that the owner holds, once however often
    /// it enters; it gives back the one of another window. False, nothing changed, when there is none to be
    /// had.
    static bool Enter(HWND window, void *owner, void *&record);
    /// Takes the owner out of its record, gives that back and clears `record`.
    static void Leave(const void *owner, void *&record);
};
