#include <platform/user/controls/combo_box.h>

#include <platform/user/snapshot/picture.h>

void ComboBox::Draw(Picture &picture) const {
    RECT field = Client();
    field.bottom = Height_Without_List();
    picture.Fill(field, Is_Enabled() ? Colour_White : Colour_Face);
    picture.Edge(field, EdgeKind::Sunken);
    const RECT arrow = Arrow();
    if (Drops()) {
        picture.Fill(arrow, Colour_Face);
        picture.Edge(arrow, EdgeKind::Raised);
        picture.Arrow({(arrow.left + arrow.right) / 2, (arrow.top + arrow.bottom) / 2});
    }
    if (edit_) return;
    TextLook look;
    look.font = Font();
    look.enabled = Is_Enabled();
    look.down = Down::Centre;
    RECT place = {Edge + 1, Edge + 1, arrow.left - 1, field.bottom - Edge - 1};
    if (Has_Focus() && !dropped_) {
        picture.Fill(place, Colour_Selection);
        look.colour = Colour_White;
    }
    place.left += 2;
    picture.Text(place, Chosen_Text(), look);
}
