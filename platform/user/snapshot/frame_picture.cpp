#include <platform/user/snapshot/frame_picture.h>

#include <platform/user/frame.h>
#include <platform/user/menus/menu_table.h>
#include <platform/user/thread_queue.h>

namespace {

const auto Gui_Font = reinterpret_cast<HFONT>(DEFAULT_GUI_FONT * 4);

RECT Inside(const RECT &r, LONG by) {
    return {r.left + by, r.top + by, r.right - by, r.bottom - by};
}

void Draw_Edges(Picture &picture, const FrameFacts &facts) {
    RECT edge = {0, 0, facts.size.cx, facts.size.cy};
    const bool thick = facts.style & WS_THICKFRAME;
    if (thick || (facts.style & WS_DLGFRAME) || (facts.extended_style & WS_EX_DLGMODALFRAME)) {
        picture.Edge(edge, EdgeKind::Raised);
        edge = Inside(edge, thick ? Sizing_Frame_Size : Dialog_Frame_Size);
    } else if (facts.style & WS_BORDER) {
        picture.Outline(edge, Colour_Black);
        edge = Inside(edge, Border_Size);
    }
    if (facts.extended_style & WS_EX_CLIENTEDGE) {
        RECT around = facts.client;
        if (facts.style & WS_VSCROLL) around.right += Scroll_Bar_Size;
        if (facts.style & WS_HSCROLL) around.bottom += Scroll_Bar_Size;
        picture.Edge(Inside(around, -Edge_Size), EdgeKind::Sunken);
        edge = Inside(edge, Edge_Size);
    }
    if (facts.extended_style & WS_EX_STATICEDGE) picture.Edge(edge, EdgeKind::Thin_Sunken);
}

// Its three buttons count from the right: close, zoom, iconify.
void Draw_Caption_Button(Picture &picture, const RECT &bar, int place) {
    const LONG right = bar.right - 2 - place * 16 - (place ? 2 : 0);
    const RECT button = {right - 16, bar.top + 2, right, bar.bottom - 2};
    picture.Fill(button, Colour_Face);
    picture.Edge(button, EdgeKind::Raised);
    const RECT mark = {button.left + 4, button.top + 3, button.left + 11, button.bottom - 4};
    if (place == 0) {
        picture.Line({mark.left, mark.top}, {mark.right, mark.bottom}, Colour_Black, 2);
        picture.Line({mark.right, mark.top}, {mark.left, mark.bottom}, Colour_Black, 2);
    } else if (place == 1) {
        picture.Outline(mark, Colour_Black);
        picture.Fill({mark.left, mark.top, mark.right, mark.top + 2}, Colour_Black);
    } else {
        picture.Fill({mark.left, mark.bottom - 2, mark.right - 1, mark.bottom}, Colour_Black);
    }
}

void Draw_Caption(Picture &picture, const FrameFacts &facts, const std::string &title) {
    const LONG frame = Frame_Size(facts.style, facts.extended_style & ~WS_EX_CLIENTEDGE);
    const RECT bar = {frame, frame, facts.size.cx - frame, frame + Caption_Height - 1};
    picture.Caption_Bar(bar, facts.active);
    int buttons = 0;
    if (facts.style & WS_SYSMENU) {
        Draw_Caption_Button(picture, bar, buttons++);
        if (!facts.is_child && (facts.style & WS_MAXIMIZEBOX)) Draw_Caption_Button(picture, bar, 1);
        if (!facts.is_child && (facts.style & WS_MINIMIZEBOX)) Draw_Caption_Button(picture, bar, 2);
        if (facts.style & (WS_MAXIMIZEBOX | WS_MINIMIZEBOX)) buttons = 3;
    }
    TextLook look;
    look.font = Gui_Font;
    look.colour = Colour_White;
    look.down = Down::Centre;
    const RECT place = {0, 0, bar.right - bar.left - buttons * 17 - 4, bar.bottom - bar.top};
    picture.Enter({bar.left, bar.top, bar.left + place.right, bar.bottom});
    picture.Text({4, place.top, place.right, place.bottom}, title, look);
    picture.Leave();
}

void Draw_Menu_Bar(Picture &picture, const FrameFacts &facts) {
    const LONG top = facts.client.top - facts.menu_height;
    LONG left = facts.client.left;
    for (const MenuItem &item : Items_Of_Menu(facts.menu)) {
        const std::string label = item.text.substr(0, item.text.find('\t'));
        std::size_t mnemonic;
        const std::string shown = Without_Prefix(label, mnemonic);
        TextLook look;
        look.font = Gui_Font;
        look.enabled = !(item.flags & (MF_GRAYED | MF_DISABLED));
        look.prefix = true;
        look.across = Across::Centre;
        look.down = Down::Centre;
        constexpr LONG Beside = 7;
        const LONG width = Text_Width(look.font, shown) + 2 * Beside;
        picture.Text({left, top, left + width, top + facts.menu_height - 1}, label, look);
        left += width;
    }
}

void Draw_Scroll_Bar(Picture &picture, const RECT &bar, bool upright) {
    if (bar.left >= bar.right || bar.top >= bar.bottom) return;
    picture.Fill(bar, "#eae8e4");
    const RECT first = upright ? RECT{bar.left, bar.top, bar.right, bar.top + Scroll_Bar_Size}
                               : RECT{bar.left, bar.top, bar.left + Scroll_Bar_Size, bar.bottom};
    const RECT last = upright ? RECT{bar.left, bar.bottom - Scroll_Bar_Size, bar.right, bar.bottom}
                              : RECT{bar.right - Scroll_Bar_Size, bar.top, bar.right, bar.bottom};
    for (const RECT &button : {first, last}) {
        picture.Fill(button, Colour_Face);
        picture.Edge(button, EdgeKind::Raised);
    }
    if (!upright) return;
    const LONG middle = (bar.left + bar.right) / 2;
    picture.Arrow({middle, (first.top + first.bottom) / 2}, true);
    picture.Arrow({middle, (last.top + last.bottom) / 2});
}

} // namespace

FrameFacts Facts_Of(const Window &window) {
    FrameFacts facts;
    const RECT &r = window.rectangle;
    facts.size = {r.right - r.left, r.bottom - r.top};
    facts.client = Client_Area(window);
    facts.style = window.Style();
    facts.extended_style = window.extended_style;
    facts.menu_height = window.menu_height;
    facts.menu = window.menu;
    facts.is_child = window.style & WS_CHILD;
    facts.active = window.queue && window.queue->active == &window;
    return facts;
}

void Draw_Frame(Picture &picture, const FrameFacts &facts, const std::string &title) {
    const RECT &client = facts.client;
    if (!facts.is_child) picture.Fill({0, 0, facts.size.cx, facts.size.cy}, Colour_Face);
    Draw_Edges(picture, facts);
    if ((facts.style & WS_CAPTION) == WS_CAPTION) Draw_Caption(picture, facts, title);
    if (facts.menu) Draw_Menu_Bar(picture, facts);
    if (facts.style & WS_VSCROLL)
        Draw_Scroll_Bar(picture, {client.right, client.top, client.right + Scroll_Bar_Size, client.bottom},
                        true);
    if (facts.style & WS_HSCROLL)
        Draw_Scroll_Bar(picture, {client.left, client.bottom, client.right, client.bottom + Scroll_Bar_Size},
                        false);
}
