#include <platform/user/frame.h>

#include <algorithm>

LONG Within_Reach(LONG coordinate) {
    return std::clamp(coordinate, -Farthest, Farthest);
}

RECT Within_Reach(const RECT &rectangle) {
    const LONG left = Within_Reach(rectangle.left), top = Within_Reach(rectangle.top);
    return {left, top, std::min(Within_Reach(rectangle.right), left + Farthest),
            std::min(Within_Reach(rectangle.bottom), top + Farthest)};
}

LONG Frame_Size(DWORD style, DWORD extended_style) {
    LONG size = 0;
    if (style & WS_THICKFRAME)
        size = Sizing_Frame_Size;
    else if ((style & WS_DLGFRAME) || (extended_style & WS_EX_DLGMODALFRAME))
        size = Dialog_Frame_Size;
    else if (style & WS_BORDER)
        size = Border_Size;
    if (extended_style & WS_EX_CLIENTEDGE) size += Edge_Size;
    if (extended_style & WS_EX_STATICEDGE) size += Border_Size;
    return size;
}

RECT Client_Area(SIZE size, DWORD style, DWORD extended_style, LONG menu_height) {
    const LONG frame = Frame_Size(style, extended_style);
    const LONG caption = (style & WS_CAPTION) == WS_CAPTION ? Caption_Height : 0;
    RECT client = {frame, frame + caption + menu_height, size.cx - frame, size.cy - frame};
    if ((style & WS_VSCROLL) && client.right - client.left >= Scroll_Bar_Size)
        client.right -= Scroll_Bar_Size;
    if ((style & WS_HSCROLL) && client.bottom - client.top >= Scroll_Bar_Size)
        client.bottom -= Scroll_Bar_Size;
    client.right = std::max(client.right, client.left);
    client.bottom = std::max(client.bottom, client.top);
    return client;
}

RECT Client_Area(const Window &window) {
    const RECT &outer = window.rectangle;
    const DWORD style = window.Style();
    if (style & WS_MINIMIZE) return {};
    return Client_Area({outer.right - outer.left, outer.bottom - outer.top}, style, window.extended_style,
                       window.menu_height);
}

RECT Client_In_Parent(const Window &window) {
    const RECT client = Client_Area(window), &outer = window.rectangle;
    return {outer.left + client.left, outer.top + client.top, outer.left + client.right,
            outer.top + client.bottom};
}
