#include <platform/user/controls/edit.h>

std::string Edit::Shown() const {
    return (Style() & ES_PASSWORD) ? std::string(text_.size(), '*') : text_;
}

TextLook Edit::Look() const {
    TextLook look;
    look.font = Font();
    look.colour = Is_Enabled() ? Colour_Black : Colour_Shadow;
    look.wraps = Has_Lines();
    const DWORD side = Style() & (ES_CENTER | ES_RIGHT);
    look.across = side == ES_CENTER ? Across::Centre : side == ES_RIGHT ? Across::Right : Across::Left;
    return look;
}

RECT Edit::Text_Place() const {
    const RECT client = Client();
    return {Margin, 0, client.right - Margin, client.bottom};
}

void Edit::Draw(Picture &picture) const {
    const RECT client = Client();
    const bool usable = Is_Enabled() && !Is_Read_Only();
    picture.Fill(client, usable ? Colour_White : Colour_Face);
    const std::string shown = Shown();
    TextLook look = Look();
    picture.Text(Text_Place(), shown, look);
    const bool selected = Has_Focus() || (Style() & ES_NOHIDESEL);
    if (!selected || First() == Last() || Has_Lines() || look.across != Across::Left) return;
    const LONG left = Margin + Width_Of_Text(shown.data(), First());
    const LONG right = Margin + Width_Of_Text(shown.data(), Last());
    picture.Fill({left, 0, right, Line_Height()}, Colour_Selection);
    look.colour = Colour_White;
    picture.Text({left, 0, client.right, client.bottom}, shown.substr(First(), Last() - First()), look);
}
