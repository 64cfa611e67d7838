#pragma once
// What stands behind a handle of gdi.h. Found and used under ObjectLock; finding needs no memory.

#include <platform/gdi/fonts.h>
#include <platform/gdi/object_table.h>

#include <vector>

struct GdiObject {
    virtual ~GdiObject() = default;
};

struct FontObject : GdiObject {
    Font font;
};

struct DeviceContext : GdiObject {
    HWND window = nullptr;
    bool in_memory = false;
    HGDIOBJ font = nullptr;
};

struct Palette : GdiObject {
    std::vector<PALETTEENTRY> entries;
};

/// May throw std::bad_alloc.
HGDIOBJ Enter_Object(std::unique_ptr<GdiObject> object);
GdiObject *Find_Object(const void *handle);
bool Remove_Object(const void *handle);
bool Is_Selected(const void *font);

/// Sets the last error.
void Tell_No_Such_Object();

/// Null, with ERROR_INVALID_HANDLE, for what is none.
template <class Kind>
Kind *Find_Or_Tell(const void *handle) {
    auto *const found = dynamic_cast<Kind *>(Find_Object(handle));
    if (!found) Tell_No_Such_Object();
    return found;
}

/// Stock fonts too; false for what is no font.
bool Find_Font(HGDIOBJ handle, Font &font);

/// Bits of a pixel of the machine's screen.
WORD Screen_Depth();
