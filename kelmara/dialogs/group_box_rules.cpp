#include <kelmara/dialogs/group_box_rules.h>

#include <kelmara/dialogs/auto_position.h>
#include <kelmara/dialogs/coordinates.h>

#include <algorithm>

Edges Middle_Of(const RECT &box) {
    const long across = Sum(box.left, Width_Of(box) / 2), down = Difference(box.bottom, Height_Of(box) / 2);
    return {across, across, down, down};
}

void Extend(Edges &edges, const RECT &member) {
    edges.left = std::min(edges.left, member.left);
    edges.right = std::max(edges.right, member.right);
    edges.top = std::min(edges.top, member.top);
    edges.bottom = std::max(edges.bottom, member.bottom);
}

GroupMargins Margins_Around(const Edges &members, const RECT &box) {
    return {Difference(members.top, box.top), Difference(members.left, box.left),
            Difference(box.bottom, members.bottom), Difference(box.right, members.right)};
}

WindowPlace Wrapped(const Edges &members, const GroupMargins &margins) {
    const long across = Difference(members.right, members.left);
    const long down = Difference(members.bottom, members.top);
    return {Difference(members.left, margins.left), Difference(members.top, margins.top),
            Sum(Sum(margins.right, across), margins.left), Sum(Sum(margins.bottom, down), margins.top),
            SWP_NOZORDER};
}

long Gap_Of_Box(long flags, const RECT &box, const RECT &neighbour) {
    if (flags & APM_ALIGN_NEIGHBOUR_LEFT) return Difference(box.left, neighbour.left);
    if (flags & APM_ALIGN_NEIGHBOUR_RIGHT) return Difference(box.right, neighbour.right);
    return 0;
}

WindowPlace Box_Beside_Neighbour(long flags, const RECT &box, const RECT &client, const RECT &neighbour,
                                 long gap) {
    constexpr UINT moves = SWP_NOSIZE | SWP_NOZORDER;
    WindowPlace place = {box.left, box.top, client.right, Height_Of(box), SWP_NOZORDER};
    if (flags & APM_ALIGN_NEIGHBOUR_LEFT) {
        place.x = Sum(gap, neighbour.left);
        place.flags = moves;
    } else if (flags & APM_ALIGN_NEIGHBOUR_RIGHT) {
        place.x = Sum(Difference(gap, client.right), neighbour.right);
        place.flags = moves;
    }
    return place;
}
