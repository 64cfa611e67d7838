#pragma once
// The order in which a dialog's keys go from control to control: the order of its children, from the front.

#include <platform/user/window.h>

#include <vector>

/// The siblings of a control from the one with WS_GROUP at or before it to the last before the next such,
/// itself among them. Codes of errors.h. May throw std::bad_alloc.
long Collect_Group(HWND control, std::vector<HWND> &group);

/// The descendants of `dialog` that Tab stops at: visible and enabled, with WS_TABSTOP. Where `from` neither
/// is one nor stands in one it is there too, so that its neighbours are known. May throw std::bad_alloc.
std::vector<HWND> Tab_Stops(HWND dialog, HWND from = nullptr);
