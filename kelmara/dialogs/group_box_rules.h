#pragma once
// Inside the library: where a group box stands around its members, as arithmetic that asks no window. Wraps
// at 32 bits.

#include <kelmara/dialogs/placements.h>

struct Edges {
    long left, right, bottom, top;
};

struct GroupMargins {
    long top, left, bottom, right;
};

/// The middle of a box, from which its members' edges are counted: never its own edges.
Edges Middle_Of(const RECT &box);
void Extend(Edges &edges, const RECT &member);

GroupMargins Margins_Around(const Edges &members, const RECT &box);
/// The box with those margins around its members.
WindowPlace Wrapped(const Edges &members, const GroupMargins &margins);

/// The distance to be kept from the neighbour; 0 without a flag for it.
long Gap_Of_Box(long flags, const RECT &box, const RECT &neighbour);
/// The box beside a neighbour that has moved. Without a flag for it, it keeps its left edge and takes the
/// width of its client area.
WindowPlace Box_Beside_Neighbour(long flags, const RECT &box, const RECT &client, const RECT &neighbour,
                                 long gap);
