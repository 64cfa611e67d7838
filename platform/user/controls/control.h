#pragma once
// What all controls have in common: an object of the window's own thread that answers its messages.
//
// The object is the window's contents: made with WM_NCCREATE, it lives as long as the window, and as long as
// an answer is under way in it, so that an answer may go on after a notice in which the window was destroyed.
// No memory is asked for outside Within_Memory and Code_Of: what a parent's procedure throws passes through.

#include <platform/user/window.h>

#include <platform/kernel/outcome.h>

class Picture;

class Control : public WindowContents {
  public:
    explicit Control(HWND window) : window_(window) {}

    /// Fonts, redrawing and enabling are answered here, the rest by DefWindowProcA.
    virtual LRESULT Answer(UINT message, WPARAM wparam, LPARAM lparam);
    /// Draws the client area as it stands.
    virtual void Draw(Picture &picture) const = 0;

    HFONT Font() const { return font_; }

  protected:
    LRESULT Default(UINT message, WPARAM wparam, LPARAM lparam) {
        return DefWindowProcA(window_, message, wparam, lparam);
    }
    DWORD Style() const { return static_cast<DWORD>(GetWindowLongA(window_, GWL_STYLE)); }
    bool Is_Enabled() const { return !(Style() & WS_DISABLED); }
    bool Has_Focus() const { return GetFocus() == window_; }
    bool Redraws() const { return redraws_; }
    /// With all that it stands in it is visible and enabled.
    bool Can_Be_Used() const;
    LONG Line_Height() const;
    LONG Width_Of_Text(const char *text, std::size_t length) const;
    RECT Client() const;
    bool Is_In_Client(LPARAM point) const;
    /// What is shown is no longer what is held.
    void Changed();
    /// False when the window has gone meanwhile.
    bool Notify(UINT notice);

    const HWND window_;

  private:
    HFONT font_ = nullptr;
    bool redraws_ = true;
    bool changed_unseen_ = false; // while it was not redrawn
};

/// A flag that is set for a scope's length, also when a procedure throws in it.
class WhileSet {
  public:
    explicit WhileSet(bool &flag) : flag_(flag), before_(flag) { flag_ = true; }
    ~WhileSet() { flag_ = before_; }
    WhileSet(const WhileSet &) = delete;
    WhileSet &operator=(const WhileSet &) = delete;

  private:
    bool &flag_;
    const bool before_;
};

/// The pointer's place in the client area, as mouse messages pack it.
inline POINT Point_Of(LPARAM packed) {
    const auto bits = static_cast<DWORD>(packed);
    return {static_cast<short>(bits & 0xFFFF), static_cast<short>(bits >> 16)};
}

inline LPARAM Packed_Point(POINT point) {
    return static_cast<LPARAM>((static_cast<DWORD>(point.x) & 0xFFFF) | static_cast<DWORD>(point.y) << 16);
}

/// The window that a press of the button holds on to: it gets what the pointer does until it lets go, and
/// when the one that it is a part of cannot be used any more, that one hears WM_CANCELMODE.
void Capture_Pointer(HWND window, HWND part_of);
void Release_Pointer(HWND window); // unless another has it
HWND Captured_By();

template <class Kind>
bool Give_Contents(const WindowPointer &window) {
    return Within_Memory(false, [&] {
        if (window && !window->contents) window->contents = std::make_unique<Kind>(window->handle);
        return window != nullptr;
    });
}

/// The procedure of a kind of control, also of classes of others that are built on it.
template <class Kind>
LRESULT Control_Procedure(HWND handle, UINT message, WPARAM wparam, LPARAM lparam) {
    const WindowPointer window = Find_Window(handle);
    if (message == WM_NCCREATE && !Give_Contents<Kind>(window)) return FALSE;
    auto *control = window ? dynamic_cast<Kind *>(window->contents.get()) : nullptr;
    return control ? control->Answer(message, wparam, lparam)
                   : DefWindowProcA(handle, message, wparam, lparam);
}
