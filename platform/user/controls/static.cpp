// Texts, frames and lines that stand in a dialog. They let the pointer through to what is behind them, unless
// they have SS_NOTIFY.

#include <platform/user/controls/control.h>

#include <platform/user/icons/icon.h>
#include <platform/user/snapshot/picture.h>

#include <utility>

namespace {

class Static : public Control {
  public:
    using Control::Control;
    LRESULT Answer(UINT message, WPARAM wparam, LPARAM lparam) override;
    void Draw(Picture &picture) const override;

  private:
    DWORD Kind() const { return Style() & SS_TYPEMASK; }
    void Draw_Text(Picture &picture) const;
    void Draw_Its_Icon(Picture &picture) const;
    LRESULT Set_Icon(HICON icon);

    HICON icon_ = nullptr; // whoever set it destroys it
};

const BuiltInClass static_class("Static", Control_Procedure<Static>);

struct Look {
    DWORD kind;
    const char *fill;
    const char *line;
};

constexpr Look Looks[] = {{SS_BLACKRECT, Colour_Black, nullptr},   {SS_GRAYRECT, Colour_Shadow, nullptr},
                          {SS_WHITERECT, Colour_White, nullptr},   {SS_BLACKFRAME, nullptr, Colour_Black},
                          {SS_GRAYFRAME, nullptr, Colour_Shadow},  {SS_WHITEFRAME, nullptr, Colour_White},
                          {SS_ETCHEDFRAME, nullptr, Colour_Shadow}};

LRESULT Static::Answer(UINT message, WPARAM wparam, LPARAM lparam) {
    const bool notifies = Style() & SS_NOTIFY;
    switch (message) {
    case WM_NCHITTEST:
        return notifies ? HTCLIENT : HTTRANSPARENT;
    case WM_GETDLGCODE:
        return DLGC_STATIC;
    case STM_SETICON:
        return Set_Icon(reinterpret_cast<HICON>(wparam));
    case STM_GETICON:
        return As_Parameter(icon_);
    case STM_SETIMAGE:
        return wparam == IMAGE_ICON ? Set_Icon(reinterpret_cast<HICON>(lparam)) : 0;
    case STM_GETIMAGE:
        return wparam == IMAGE_ICON ? As_Parameter(icon_) : 0;
    case WM_LBUTTONDOWN:
        if (notifies) Notify(STN_CLICKED);
        return 0;
    case WM_ENABLE:
        Changed();
        if (notifies) Notify(wparam ? STN_ENABLE : STN_DISABLE);
        return 0;
    default:
        return Control::Answer(message, wparam, lparam);
    }
}

LRESULT Static::Set_Icon(HICON icon) {
    if (Kind() != SS_ICON) return 0;
    const HICON before = std::exchange(icon_, icon);
    const RECT client = Client();
    SIZE size = {client.right, client.bottom};
    {
        const ObjectLock lock;
        if (const Icon *const shown = Find_Icon(icon)) size = shown->Size();
    }
    const bool keeps_size = Style() & (SS_CENTERIMAGE | SS_REALSIZECONTROL);
    if (!keeps_size)
        SetWindowPos(window_, nullptr, 0, 0, static_cast<int>(size.cx), static_cast<int>(size.cy),
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Changed();
    return As_Parameter(before);
}

void Static::Draw_Its_Icon(Picture &picture) const {
    const RECT client = Client();
    const ObjectLock lock;
    if (const Icon *const shown = Find_Icon(icon_))
        Draw_Icon(picture, {client.right / 2, client.bottom / 2}, *shown);
}

void Static::Draw_Text(Picture &picture) const {
    const DWORD kind = Kind();
    TextLook look;
    look.font = Font();
    look.enabled = Is_Enabled();
    look.prefix = !(Style() & SS_NOPREFIX);
    look.across = kind == SS_CENTER ? Across::Centre : kind == SS_RIGHT ? Across::Right : Across::Left;
    look.wraps = kind <= SS_RIGHT && !(Style() & SS_CENTERIMAGE);
    look.down = (Style() & SS_CENTERIMAGE) ? Down::Centre : Down::Top;
    picture.Text(Client(), Text_Of_Window(window_), look);
}

void Static::Draw(Picture &picture) const {
    const RECT client = Client();
    const DWORD kind = Kind();
    if (Style() & SS_SUNKEN) picture.Edge(client, EdgeKind::Thin_Sunken);
    if (kind == SS_ICON) return Draw_Its_Icon(picture);
    if (kind == SS_ETCHEDHORZ) return picture.Edge({0, 0, client.right, 2}, EdgeKind::Etched);
    if (kind == SS_ETCHEDVERT) return picture.Edge({0, 0, 2, client.bottom}, EdgeKind::Etched);
    for (const Look &look : Looks) {
        if (look.kind != kind) continue;
        if (look.fill) picture.Fill(client, look.fill);
        if (look.line) picture.Outline(client, look.line);
        return;
    }
    if (kind == SS_LEFT || kind == SS_CENTER || kind == SS_RIGHT || kind == SS_SIMPLE ||
        kind == SS_LEFTNOWORDWRAP)
        Draw_Text(picture);
}

} // namespace
