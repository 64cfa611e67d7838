#include <platform/user/controls/button.h>

#include <platform/user/snapshot/picture.h>

namespace {

constexpr LONG Mark_Size = 13, Mark_Gap = 4;

RECT Inside(const RECT &r, LONG by) {
    return {r.left + by, r.top + by, r.right - by, r.bottom - by};
}

} // namespace

void Button::Draw_Push(Picture &picture) const {
    RECT face = Client();
    if (Kind() == BS_DEFPUSHBUTTON || Has_Focus()) {
        picture.Outline(face, Colour_Black);
        face = Inside(face, 1);
    }
    picture.Fill(face, Colour_Face);
    if (pushed_)
        picture.Outline(face, Colour_Shadow);
    else
        picture.Edge(face, EdgeKind::Raised);
    TextLook look;
    look.font = Font();
    look.enabled = Is_Enabled();
    look.prefix = true;
    look.across = Across::Centre;
    look.down = Down::Centre;
    const LONG shift = pushed_ ? 1 : 0;
    picture.Text({face.left + shift, face.top + shift, face.right, face.bottom}, Text_Of_Window(window_),
                 look);
}

void Button::Draw_Mark(Picture &picture, const RECT &box) const {
    const bool usable = Is_Enabled() && check_ != BST_INDETERMINATE;
    const char *ground = usable && !pushed_ ? Colour_White : Colour_Face;
    const char *ink = usable ? Colour_Black : Colour_Shadow;
    const POINT centre = {box.left + Mark_Size / 2, box.top + Mark_Size / 2};
    if (Is_Radio()) {
        picture.Dot(centre, 6, ground, Colour_Shadow);
        if (check_) picture.Dot(centre, 2, ink, ink);
        return;
    }
    picture.Fill(box, ground);
    picture.Edge(box, EdgeKind::Sunken);
    if (!check_) return;
    picture.Line({box.left + 3, box.top + 6}, {box.left + 5, box.top + 9}, ink, 2);
    picture.Line({box.left + 5, box.top + 9}, {box.left + 10, box.top + 4}, ink, 2);
}

void Button::Draw_With_Mark(Picture &picture) const {
    const RECT client = Client();
    const bool at_right = Style() & BS_LEFTTEXT;
    const LONG left = at_right ? client.right - Mark_Size : 0;
    const LONG top = (client.bottom - Mark_Size) / 2;
    Draw_Mark(picture, {left, top, left + Mark_Size, top + Mark_Size});
    TextLook look;
    look.font = Font();
    look.enabled = Is_Enabled();
    look.prefix = true;
    look.down = Down::Centre;
    const LONG beside = Mark_Size + Mark_Gap;
    const RECT place = {at_right ? 0 : beside, 0, at_right ? client.right - beside : client.right,
                        client.bottom};
    picture.Text(place, Text_Of_Window(window_), look);
}

void Button::Draw_Group(Picture &picture) const {
    const RECT client = Client();
    const LONG height = Line_Height();
    picture.Edge({0, height / 2, client.right, client.bottom}, EdgeKind::Etched);
    std::size_t mnemonic;
    const std::string text = Text_Of_Window(window_);
    if (text.empty()) return;
    const std::string shown = Without_Prefix(text, mnemonic);
    TextLook look;
    look.font = Font();
    look.enabled = Is_Enabled();
    look.prefix = true;
    constexpr LONG Indent = 9;
    const RECT place = {Indent, 0, Indent + Width_Of_Text(shown.data(), shown.size()), height};
    picture.Fill({place.left - 2, 0, place.right + 2, height}, Colour_Face);
    picture.Text(place, text, look);
}

void Button::Draw(Picture &picture) const {
    if (Is_Push())
        Draw_Push(picture);
    else if (Kind() == BS_GROUPBOX)
        Draw_Group(picture);
    else
        Draw_With_Mark(picture);
}
