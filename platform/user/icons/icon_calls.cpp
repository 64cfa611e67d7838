#include <platform/user/icons/icon.h>

#include <platform/kernel.h>
#include <platform/kernel/everlasting.h>
#include <platform/kernel/outcome.h>
#include <platform/machine.h>
#include <platform/user.h>

namespace {

constexpr std::uintptr_t First_Number = 0x40000000; // beyond those of GDI's objects

ObjectTable<Icon> &Icons() {
    static Everlasting<ObjectTable<Icon>> icons(First_Number);
    return *icons;
}

std::unique_ptr<Bitmap> Copy_Of(const Bitmap &from) {
    return Converted(from, from.width, from.height, from.bits);
}

HICON Make_Icon(const ICONINFO &information) {
    const Bitmap *const mask = Find_Bitmap_Or_Tell(information.hbmMask);
    const Bitmap *const colours = information.hbmColor ? Find_Bitmap_Or_Tell(information.hbmColor) : nullptr;
    if (!mask || (information.hbmColor && !colours)) return nullptr;
    const Bitmap &whole = colours ? *colours : *mask;
    auto made = Icon_Of(*mask, colours, {whole.width, whole.height});
    if (!made) return nullptr;
    made->is_cursor = !information.fIcon;
    if (made->is_cursor)
        made->hot_spot = {static_cast<LONG>(information.xHotspot), static_cast<LONG>(information.yHotspot)};
    return Enter_Icon(std::move(made));
}

long Describe(HICON handle, ICONINFO *information) {
    const Icon *const icon = Find_Icon(handle);
    if (!icon) return ERROR_INVALID_CURSOR_HANDLE;
    if (!information) return ERROR_INVALID_PARAMETER;
    auto mask = Copy_Of(*icon->mask);
    auto colours = icon->colours ? Copy_Of(*icon->colours) : nullptr;
    const HBITMAP mask_handle = Enter_Bitmap(std::move(mask));
    HBITMAP colour_handle;
    try {
        colour_handle = Enter_Bitmap(std::move(colours));
    } catch (...) {
        DeleteObject(mask_handle);
        throw;
    }
    *information = {!icon->is_cursor, static_cast<DWORD>(icon->hot_spot.x),
                    static_cast<DWORD>(icon->hot_spot.y), mask_handle, colour_handle};
    return NO_ERROR;
}

} // namespace

HICON Enter_Icon(std::unique_ptr<Icon> icon) {
    return static_cast<HICON>(Icons().Enter(std::move(icon)));
}

const Icon *Find_Icon(HICON handle) {
    return Icons().Find(handle);
}

std::unique_ptr<Icon> Icon_Of(const Bitmap &mask, const Bitmap *colours, SIZE size) {
    auto made = std::make_unique<Icon>();
    if (!colours && size.cy % 2 != 0) {
        Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    made->mask = Converted(mask, size.cx, size.cy, 1);
    if (colours) made->colours = Converted(*colours, size.cx, size.cy, Screen_Depth());
    if (!made->mask || (colours && !made->colours)) return nullptr;
    made->hot_spot = {made->Size().cx / 2, made->Size().cy / 2};
    return made;
}

extern "C" {

HICON CreateIconIndirect(const ICONINFO *information) {
    if (!information) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return Within_Memory(HICON(nullptr), [information] {
        const ObjectLock lock;
        return Make_Icon(*information);
    });
}

BOOL GetIconInfo(HICON icon, ICONINFO *information) {
    const ObjectLock lock;
    return Succeed_Or_Tell(Code_Of([&] { return Describe(icon, information); }));
}

BOOL DestroyIcon(HICON icon) {
    const ObjectLock lock;
    return Succeed_Or_Tell(Icons().Remove(icon) ? NO_ERROR : ERROR_INVALID_CURSOR_HANDLE);
}

unsigned long Icon_Count() {
    const ObjectLock lock;
    return Icons().Count();
}

DWORD GetGuiResources(HANDLE process, DWORD kind) {
    const bool known = kind == GR_GDIOBJECTS || kind == GR_USEROBJECTS;
    if (process != GetCurrentProcess() || !known) {
        SetLastError(known ? ERROR_INVALID_HANDLE : ERROR_INVALID_PARAMETER);
        return 0;
    }
    return kind == GR_GDIOBJECTS ? Gdi_Object_Count() : Window_Count() + Menu_Count() + Icon_Count();
}
}
