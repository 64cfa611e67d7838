#pragma once
// How a text, or a list of texts, reaches a caller's buffer in the calls that tell the length.

#include <platform/types.h>

#include <cstring>
#include <string>

/// Copied with a terminator if it fits: its length. Otherwise the room that it needs, and nothing is copied.
inline DWORD Give_Text(const std::string &text, LPSTR out, DWORD size) {
    if (!out || size <= text.size()) return static_cast<DWORD>(text.size()) + 1;
    std::memcpy(out, text.c_str(), text.size() + 1);
    return static_cast<DWORD>(text.size());
}
