#include <platform/gdi/objects.h>

#include <platform/gdi/bitmap.h>
#include <platform/kernel.h>
#include <platform/kernel/everlasting.h>
#include <platform/kernel/fork_lock.h>
#include <platform/kernel/outcome.h>
#include <platform/machine.h>

#include <algorithm>
#include <cstring>

namespace {

// How many ObjectLocks this thread holds, one in the other.
[[gnu::tls_model("initial-exec")]] constinit thread_local int held = 0;

ForkLock &Lock_Of_Objects() {
    static Everlasting<ForkLock> lock;
    return *lock;
}

constexpr std::uintptr_t First_Number = 0x1000; // stock objects' are below, four times their number

constexpr int Stock_Objects[] = {ANSI_VAR_FONT, SYSTEM_FONT, DEFAULT_PALETTE, DEFAULT_GUI_FONT};

ObjectTable<GdiObject> &Objects() {
    static Everlasting<ObjectTable<GdiObject>> objects(First_Number);
    return *objects;
}

bool Is_Stock_Object(HGDIOBJ object) {
    const auto number = reinterpret_cast<std::uintptr_t>(object) / 4;
    return object && number < First_Number / 4 && GetStockObject(static_cast<int>(number)) == object;
}

template <class Told>
int Give(const Told &told, int size, void *out) {
    constexpr int needed = sizeof told;
    if (!out) return needed;
    if (size < needed) return Succeed_Or_Tell(ERROR_INVALID_PARAMETER);
    std::memcpy(out, &told, needed);
    return needed;
}

BITMAP Described(Bitmap &bitmap) {
    const auto row = static_cast<LONG>(bitmap.is_section ? bitmap.Pitch() : bitmap.Even_Row_Size());
    return {0,
            bitmap.width,
            bitmap.height,
            row,
            1,
            bitmap.bits,
            bitmap.is_section ? bitmap.pixels.get() : nullptr};
}

} // namespace

ObjectLock::ObjectLock() {
    if (held == 0) Lock_Of_Objects().lock();
    ++held;
}

ObjectLock::~ObjectLock() {
    if (--held == 0) Lock_Of_Objects().unlock();
}

HGDIOBJ Enter_Object(std::unique_ptr<GdiObject> object) {
    return Objects().Enter(std::move(object));
}

GdiObject *Find_Object(const void *handle) {
    return Objects().Find(handle);
}

bool Remove_Object(const void *handle) {
    return Objects().Remove(handle);
}

bool Is_Selected(const void *font) {
    return std::any_of(Objects().begin(), Objects().end(), [font](const auto &each) {
        const auto *const context = dynamic_cast<const DeviceContext *>(each.second.get());
        return context && context->font == font;
    });
}

void Tell_No_Such_Object() {
    SetLastError(ERROR_INVALID_HANDLE);
}

extern "C" {

HGDIOBJ GetStockObject(int number) {
    for (const int stock : Stock_Objects) {
        if (stock == number) return reinterpret_cast<HGDIOBJ>(number * 4);
    }
    return nullptr;
}

BOOL DeleteObject(HGDIOBJ object) {
    if (Is_Stock_Object(object)) return TRUE;
    const ObjectLock lock;
    GdiObject *const found = Find_Object(object);
    if (dynamic_cast<FontObject *>(found) && Is_Selected(object)) return FALSE;
    const bool is_one = found && !dynamic_cast<DeviceContext *>(found);
    return Succeed_Or_Tell(is_one && Remove_Object(object) ? NO_ERROR : ERROR_INVALID_HANDLE);
}

int GetObjectA(HGDIOBJ object, int size, void *out) {
    const ObjectLock lock;
    if (auto *const bitmap = dynamic_cast<Bitmap *>(Find_Object(object)))
        return Give(Described(*bitmap), size, out);
    if (const UINT entries = GetPaletteEntries(static_cast<HPALETTE>(object), 0, 0, nullptr))
        return Give(static_cast<WORD>(entries), size, out);
    return Succeed_Or_Tell(ERROR_INVALID_HANDLE);
}

unsigned long Gdi_Object_Count() {
    const ObjectLock lock;
    return Objects().Count();
}
}
