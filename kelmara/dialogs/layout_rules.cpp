#include <kelmara/dialogs/layout_rules.h>

#include <kelmara/dialogs/auto_position.h>
#include <kelmara/dialogs/coordinates.h>

namespace {

constexpr long Default_Padding = 20;
constexpr UINT Moves = SWP_NOSIZE | SWP_NOZORDER, Sizes = SWP_NOMOVE | SWP_NOZORDER;

struct GapRule {
    long flag;
    long (*gap)(const RECT &control, const RECT &neighbour);
};

long Gap_To_The_Left(const RECT &control, const RECT &neighbour) {
    return Difference(control.left, neighbour.right);
}

long Gap_To_The_Right(const RECT &control, const RECT &neighbour) {
    return Difference(neighbour.left, control.right);
}

// In the order of their precedence, which is not that of placing.
constexpr GapRule Gap_Rules[] = {
    {APM_RIGHT_OF_NEIGHBOUR, Gap_To_The_Left},
    {APM_LEFT_OF_NEIGHBOUR, Gap_To_The_Right},
    {APM_STRETCH_TO_NEIGHBOUR, Gap_To_The_Right},
    {APM_STRETCH_FROM_NEIGHBOUR, Gap_To_The_Left},
    {APM_ALIGN_NEIGHBOUR_LEFT,
     [](const RECT &control, const RECT &neighbour) { return Difference(control.left, neighbour.left); }},
    {APM_ALIGN_NEIGHBOUR_RIGHT,
     [](const RECT &control, const RECT &neighbour) { return Difference(control.right, neighbour.right); }},
};

WindowPlace Moved_To(const Neighbourhood &here, long x) {
    return {x, here.control.top, 0, 0, Moves};
}

WindowPlace Under_Neighbour(const Neighbourhood &here) {
    return {here.neighbour.left, here.control.top, Width_Of(here.neighbour), Height_Of(here.control),
            SWP_NOZORDER};
}

struct NeighbourRule {
    long flag;
    std::optional<WindowPlace> (*place)(const Neighbourhood &here);
};
using Placed = std::optional<WindowPlace>;

// In the order of their precedence.
constexpr NeighbourRule Neighbour_Rules[] = {
    {APM_RIGHT_OF_NEIGHBOUR,
     [](const Neighbourhood &here) -> Placed { return Moved_To(here, Sum(here.neighbour.right, here.gap)); }},
    {APM_LEFT_OF_NEIGHBOUR,
     [](const Neighbourhood &here) -> Placed {
         return Moved_To(here, Difference(Difference(here.neighbour.left, here.gap), Width_Of(here.client)));
     }},
    {APM_ALIGN_NEIGHBOUR_LEFT,
     [](const Neighbourhood &here) -> Placed {
         return Moved_To(here, Difference(Sum(here.neighbour.left, here.gap), here.client.left));
     }},
    {APM_ALIGN_NEIGHBOUR_RIGHT,
     [](const Neighbourhood &here) -> Placed {
         return Moved_To(here, Difference(Sum(here.neighbour.right, here.gap), Width_Of(here.client)));
     }},
    {APM_STRETCH_TO_NEIGHBOUR,
     [](const Neighbourhood &here) -> Placed {
         const long width = Difference(Difference(here.neighbour.left, here.gap), here.control.left);
         return WindowPlace{0, 0, width, Height_Of(here.control), Sizes};
     }},
    {APM_STRETCH_FROM_NEIGHBOUR,
     [](const Neighbourhood &here) -> Placed {
         const long left = Sum(here.neighbour.right, here.gap);
         return WindowPlace{left, here.control.top, Difference(here.control.right, left),
                            Height_Of(here.control), SWP_NOZORDER};
     }},
    {APM_MATCH_NEIGHBOUR_WIDTH, [](const Neighbourhood &here) -> Placed { return Under_Neighbour(here); }},
    {APM_GROW_TO_NEIGHBOUR_WIDTH, Grown_To_Neighbour},
};

} // namespace

// --- measuring --------------------------------------------------------------------------------------------

bool Is_Padding_Measured(long flags) {
    return !(flags & (APM_NO_PADDING | APM_DEFAULT_PADDING));
}

long Padding_For(long flags, long client_width, long text_width) {
    if (!Is_Padding_Measured(flags)) return (flags & APM_NO_PADDING) ? 0 : Default_Padding;
    const long beside = Difference(client_width, text_width);
    return beside < 0 ? Default_Padding : beside;
}

std::optional<long> Gap_To_Neighbour(long flags, const RECT &control, const RECT &neighbour) {
    for (const GapRule &rule : Gap_Rules) {
        if (flags & rule.flag) return rule.gap(control, neighbour);
    }
    return std::nullopt;
}

std::optional<long> Offset_From_Right(long flags, const RECT &control, const RECT &parent_client) {
    if (flags & APM_KEEP_RIGHT) return Difference(parent_client.right, control.right);
    if (flags & APM_LEFT_FROM_RIGHT) return Difference(parent_client.right, control.left);
    return std::nullopt;
}

std::optional<long> Offset_From_Bottom(long flags, const RECT &control, const RECT &parent_client) {
    if (flags & APM_KEEP_BOTTOM) return Difference(parent_client.bottom, control.bottom);
    if (flags & APM_TOP_FROM_BOTTOM) return Difference(parent_client.bottom, control.top);
    return std::nullopt;
}

long Offset_To_Middle(long left, long right, long half) {
    return Sum(Difference(Difference(right, left) / 2, half), left);
}

// --- placing ----------------------------------------------------------------------------------------------

WindowPlace Fitted(long flags, const RECT &control, long width) {
    const long height = Height_Of(control);
    if (!(flags & APM_CENTER_ON_FIT)) return {0, 0, width, height, Sizes};
    const long left = Sum(Difference(Width_Of(control) / 2, width / 2), control.left);
    return {left, control.top, width, height, SWP_NOZORDER};
}

WindowPlace Sized_With_Parent(long flags, const RECT &control, const RECT &parent,
                              const EdgeOffsets &offsets) {
    long width = Width_Of(control), height = Height_Of(control);
    if (flags & APM_KEEP_BOTTOM) height = Difference(Difference(parent.bottom, offsets.bottom), control.top);
    if (flags & APM_KEEP_RIGHT) width = Difference(Difference(parent.right, offsets.right), control.left);
    return {0, 0, width, height, Sizes};
}

WindowPlace Kept_From_Edges(long flags, const RECT &control, const RECT &client, const RECT &parent_client,
                            const EdgeOffsets &offsets) {
    const long from_right = Difference(parent_client.right, offsets.right);
    const long from_bottom = Difference(parent_client.bottom, offsets.bottom);
    long x = control.left, y = control.top;
    if (flags & APM_KEEP_BOTTOM)
        y = Difference(from_bottom, client.bottom);
    else if (flags & APM_TOP_FROM_BOTTOM)
        y = from_bottom;
    if (flags & APM_KEEP_RIGHT)
        x = Difference(from_right, client.right);
    else if (flags & APM_LEFT_FROM_RIGHT)
        x = from_right;
    return {x, y, 0, 0, Moves};
}

std::optional<WindowPlace> Grown_To_Neighbour(const Neighbourhood &here) {
    if (Width_Of(here.neighbour) < Width_Of(here.control)) return std::nullopt;
    return Under_Neighbour(here);
}

std::optional<WindowPlace> Beside_Neighbour(long flags, const Neighbourhood &here) {
    for (const NeighbourRule &rule : Neighbour_Rules) {
        if (flags & rule.flag) return rule.place(here);
    }
    return std::nullopt;
}
