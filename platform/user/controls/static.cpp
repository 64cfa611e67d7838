// Texts, frames and lines that stand in a dialog. They let the pointer through to what is behind them, unless
// they have SS_NOTIFY.

#include <platform/user/controls/control.h>

#include <platform/user/snapshot/picture.h>

namespace {

class Static : public Control {
  public:
    using Control::Control;
    LRESULT Answer(UINT message, WPARAM wparam, LPARAM lparam) override;
    void Draw(Picture &picture) const override;

  private:
    DWORD Kind() const { return Style() & SS_TYPEMASK; }
    void Draw_Text(Picture &picture) const;
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
