#pragma once
// Inside the library: what is measured of a designed layout, and where it puts a control, as arithmetic that
// asks no window. A control's and its neighbour's places are in the parent's client coordinates, client areas
// in their own, unless a line says otherwise. Everything wraps at 32 bits; halves are cut towards zero.

#include <kelmara/dialogs/placements.h>

#include <optional>

struct EdgeOffsets {
    long right, bottom;
};

// --- measuring --------------------------------------------------------------------------------------------

/// What stands beside the text in a control that shows it now. Without Is_Padding_Measured the widths do not
/// count.
bool Is_Padding_Measured(long flags);
long Padding_For(long flags, long client_width, long text_width);
/// The distance that the flags want kept from the neighbour; none: they have no use for one.
std::optional<long> Gap_To_Neighbour(long flags, const RECT &control, const RECT &neighbour);
/// The distances from the parent's right and bottom edges; none likewise.
std::optional<long> Offset_From_Right(long flags, const RECT &control, const RECT &parent_client);
std::optional<long> Offset_From_Bottom(long flags, const RECT &control, const RECT &parent_client);

/// How far to the left a range goes so that its middle comes to `half` of the width around it.
long Offset_To_Middle(long left, long right, long half);

// --- placing ----------------------------------------------------------------------------------------------

/// A control as wide as its text wants it.
WindowPlace Fitted(long flags, const RECT &control, long width);
/// A control that grows with its parent. Both places are on the screen, the offsets those of client areas.
WindowPlace Sized_With_Parent(long flags, const RECT &control, const RECT &parent,
                              const EdgeOffsets &offsets);
/// A control that keeps its distances from the parent's edges. From its client area come its sizes, so that a
/// frame shifts it.
WindowPlace Kept_From_Edges(long flags, const RECT &control, const RECT &client, const RECT &parent_client,
                            const EdgeOffsets &offsets);

/// A control beside its neighbour.
struct Neighbourhood {
    RECT control, client, neighbour;
    long gap;
};
/// Where the first flag in force has the control; none: it stays.
std::optional<WindowPlace> Beside_Neighbour(long flags, const Neighbourhood &here);
/// Under the neighbour if that is as wide or wider.
std::optional<WindowPlace> Grown_To_Neighbour(const Neighbourhood &here);
