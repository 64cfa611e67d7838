#include <platform/user/snapshot/picture.h>

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace {

[[gnu::format(printf, 2, 3)]] void Add(std::string &svg, const char *format, ...) {
    char line[256];
    std::va_list values;
    va_start(values, format);
    std::vsnprintf(line, sizeof line, format, values);
    va_end(values);
    svg += line;
}

constexpr char Gradient[] = "<defs><linearGradient id=\"%s\"><stop stop-color=\"%s\"/><stop offset=\"1\" "
                            "stop-color=\"%s\"/></linearGradient></defs>\n";

struct EdgeColours {
    EdgeKind kind;
    const char *outer_near, *outer_far; // near: left and top
    const char *inner_near, *inner_far; // null: a thin edge
};

constexpr EdgeColours Edges[] = {
    {EdgeKind::Raised, Colour_White, Colour_Dark, Colour_Face, Colour_Shadow},
    {EdgeKind::Sunken, Colour_Shadow, Colour_White, Colour_Dark, Colour_Face},
    {EdgeKind::Thin_Raised, Colour_White, Colour_Shadow, nullptr, nullptr},
    {EdgeKind::Thin_Sunken, Colour_Shadow, Colour_White, nullptr, nullptr},
    {EdgeKind::Etched, Colour_Shadow, Colour_White, Colour_White, Colour_Shadow},
};

} // namespace

// A font about as wide as what is measured: not every viewer looks at textLength.
Picture::Picture(SIZE size) {
    Add(svg_,
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%ld\" height=\"%ld\" "
        "shape-rendering=\"crispEdges\" "
        "font-family=\"Arial, sans-serif\">\n",
        size.cx, size.cy);
    Add(svg_, Gradient, "active", Colour_Selection, Colour_Pale_Caption);
    Add(svg_, Gradient, "inactive", Colour_Shadow, "#c0c0c0");
}

void Picture::Enter(const RECT &r) {
    Add(svg_, "<svg x=\"%ld\" y=\"%ld\" width=\"%ld\" height=\"%ld\">\n", r.left, r.top, r.right - r.left,
        r.bottom - r.top);
}

void Picture::Leave() {
    svg_ += "</svg>\n";
}

void Picture::Fill(const RECT &r, const char *colour) {
    if (r.left >= r.right || r.top >= r.bottom) return;
    Add(svg_, "<rect x=\"%ld\" y=\"%ld\" width=\"%ld\" height=\"%ld\" fill=\"%s\"/>\n", r.left, r.top,
        r.right - r.left, r.bottom - r.top, colour);
}

void Picture::Outline(const RECT &r, const char *colour) {
    Fill({r.left, r.top, r.right, r.top + 1}, colour);
    Fill({r.left, r.bottom - 1, r.right, r.bottom}, colour);
    Fill({r.left, r.top + 1, r.left + 1, r.bottom - 1}, colour);
    Fill({r.right - 1, r.top + 1, r.right, r.bottom - 1}, colour);
}

void Picture::Edge(const RECT &place, EdgeKind kind) {
    const auto draw = [this](const RECT &r, const char *near, const char *far) {
        Fill({r.left, r.top, r.right, r.top + 1}, near);
        Fill({r.left, r.top, r.left + 1, r.bottom}, near);
        Fill({r.left, r.bottom - 1, r.right, r.bottom}, far);
        Fill({r.right - 1, r.top, r.right, r.bottom}, far);
    };
    for (const EdgeColours &each : Edges) {
        if (each.kind != kind) continue;
        draw(place, each.outer_near, each.outer_far);
        const RECT inner = {place.left + 1, place.top + 1, place.right - 1, place.bottom - 1};
        if (each.inner_near) draw(inner, each.inner_near, each.inner_far);
    }
}

void Picture::Line(POINT from, POINT to, const char *colour, int width) {
    Add(svg_,
        "<path d=\"M%ld %ldL%ld %ld\" stroke=\"%s\" stroke-width=\"%d\" "
        "shape-rendering=\"geometricPrecision\"/>\n",
        from.x, from.y, to.x, to.y, colour, width);
}

void Picture::Dot(POINT centre, int radius, const char *fill, const char *line) {
    Add(svg_,
        "<circle cx=\"%ld.5\" cy=\"%ld.5\" r=\"%d\" fill=\"%s\" stroke=\"%s\" "
        "shape-rendering=\"geometricPrecision\"/>\n",
        centre.x, centre.y, radius, fill, line);
}

void Picture::Arrow(POINT at, bool up) {
    Add(svg_, "<path d=\"M%ld %ldh7l-3.5 %dz\"/>\n", at.x - 3, at.y + (up ? 2 : -2), up ? -4 : 4);
}

void Picture::Caption_Bar(const RECT &r, bool active) {
    Fill(r, active ? "url(#active)" : "url(#inactive)");
}
