#include <platform/user/menus/menu_table.h>

#include <platform/kernel.h>
#include <platform/kernel/outcome.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr UINT No_Item = 0xFFFFFFFF;
constexpr UINT Kept_Flags = MF_SEPARATOR | MF_GRAYED | MF_DISABLED | MF_CHECKED | MF_POPUP;

struct Place {
    Menu *menu = nullptr;
    std::size_t index = 0;
    MenuItem &Item() const { return menu->items[index]; }
};

// An identifier is looked for in the submenus too, each where it hangs. The caller holds the table.
bool Find_Item(const MenuTable::Use &table, HMENU handle, UINT item, UINT flags, Place &place) {
    Menu *menu = table->Find(handle);
    if (!menu) return false;
    if (flags & MF_BYPOSITION) {
        place = {menu, item};
        return item < menu->items.size();
    }
    for (std::size_t i = 0; i < menu->items.size(); ++i) {
        const MenuItem &each = menu->items[i];
        if (each.submenu && Find_Item(table, each.submenu, item, flags, place)) return true;
        place = {menu, i};
        if (!each.submenu && each.id == item) return true;
    }
    return false;
}

// The item that the arguments describe; a submenu is not marked as one yet.
long Make_Item(const MenuTable::Use &table, HMENU menu, UINT flags, UINT id, const char *text,
               MenuItem &item) {
    item.flags = flags & Kept_Flags;
    item.id = id;
    if (text && !(flags & MF_SEPARATOR)) item.text = text;
    if (!(flags & MF_POPUP)) return NO_ERROR;
    item.submenu = reinterpret_cast<HMENU>(id);
    if (!table->Find(item.submenu)) return ERROR_INVALID_MENU_HANDLE;
    return table->Stands_In(menu, item.submenu) ? ERROR_INVALID_PARAMETER : NO_ERROR;
}

// An item that stays may name a submenu that has been destroyed on its own.
void Mark_Submenu(const MenuTable::Use &table, const MenuItem &item) {
    if (Menu *submenu = table->Find(item.submenu)) submenu->is_submenu = true;
}

long Insert(HMENU handle, UINT position, UINT flags, UINT id, const char *text) {
    const MenuTable::Use table;
    Menu *menu = table->Find(handle);
    if (!menu) return ERROR_INVALID_MENU_HANDLE;
    MenuItem item;
    if (const long error = Make_Item(table, handle, flags, id, text, item)) return error;
    if (item.submenu && table->Find(item.submenu)->is_submenu) return ERROR_INVALID_PARAMETER;
    Place place = {menu, menu->items.size()};
    const bool found = position != No_Item && Find_Item(table, handle, position, flags, place);
    if (!found) {
        if (position != No_Item && !(flags & MF_BYPOSITION)) return ERROR_MENU_ITEM_NOT_FOUND;
        place = {menu, menu->items.size()};
    }
    auto &items = place.menu->items;
    items.insert(items.begin() + static_cast<std::ptrdiff_t>(place.index), item);
    Mark_Submenu(table, item);
    return NO_ERROR;
}

long Modify(HMENU handle, UINT position, UINT flags, UINT id, const char *text) {
    const MenuTable::Use table;
    if (!table->Find(handle)) return ERROR_INVALID_MENU_HANDLE;
    Place place;
    if (!Find_Item(table, handle, position, flags, place)) return ERROR_MENU_ITEM_NOT_FOUND;
    MenuItem &old = place.Item(), item;
    const bool stays = old.submenu && !(flags & MF_POPUP) && id == No_Item;
    if (const long error = Make_Item(table, handle, flags, id, text, item)) return error;
    if (stays) {
        item.flags |= MF_POPUP;
        item.id = old.id;
        item.submenu = old.submenu;
    } else if (item.submenu && item.submenu != old.submenu && table->Find(item.submenu)->is_submenu) {
        return ERROR_INVALID_PARAMETER;
    }
    const HMENU before = old.submenu;
    Mark_Submenu(table, item);
    old = std::move(item);
    if (before && before != old.submenu) table->Destroy(before);
    return NO_ERROR;
}

long Destroy(HMENU handle) {
    const MenuTable::Use table;
    if (!table->Find(handle)) return ERROR_INVALID_MENU_HANDLE;
    table->Destroy(handle);
    return NO_ERROR;
}

// What `look` finds in an item of a menu; `none`, with the last error, when there is none.
template <class Result, class Look>
Result Look_At(HMENU menu, UINT item, UINT flags, Result none, Look look) {
    const MenuTable::Use table;
    Place place;
    if (!table->Find(menu)) return SetLastError(ERROR_INVALID_MENU_HANDLE), none;
    if (!Find_Item(table, menu, item, flags, place)) return SetLastError(ERROR_MENU_ITEM_NOT_FOUND), none;
    return look(place.Item());
}

HMENU Make() {
    return Within_Memory(HMENU(nullptr), [] {
        const MenuTable::Use table;
        return table->Make();
    });
}

} // namespace

extern "C" {

HMENU CreateMenu() {
    return Make();
}

HMENU CreatePopupMenu() {
    return Make();
}

BOOL DestroyMenu(HMENU menu) {
    return Succeed_Or_Tell(Destroy(menu));
}

BOOL AppendMenuA(HMENU menu, UINT flags, UINT id, LPCSTR text) {
    return InsertMenuA(menu, No_Item, flags | MF_BYPOSITION, id, text);
}

BOOL InsertMenuA(HMENU menu, UINT position, UINT flags, UINT id, LPCSTR text) {
    return Succeed_Or_Tell(Code_Of([&] { return Insert(menu, position, flags, id, text); }));
}

BOOL ModifyMenuA(HMENU menu, UINT position, UINT flags, UINT id, LPCSTR text) {
    return Succeed_Or_Tell(Code_Of([&] { return Modify(menu, position, flags, id, text); }));
}

int GetMenuItemCount(HMENU menu) {
    const MenuTable::Use table;
    if (const Menu *found = table->Find(menu)) return static_cast<int>(found->items.size());
    SetLastError(ERROR_INVALID_MENU_HANDLE);
    return -1;
}

UINT GetMenuItemID(HMENU menu, int position) {
    return Look_At(menu, static_cast<UINT>(position), MF_BYPOSITION, No_Item,
                   [](const MenuItem &item) { return item.submenu ? No_Item : item.id; });
}

HMENU GetSubMenu(HMENU menu, int position) {
    return Look_At(menu, static_cast<UINT>(position), MF_BYPOSITION, HMENU(nullptr),
                   [](const MenuItem &item) { return item.submenu; });
}

int GetMenuStringA(HMENU menu, UINT item, LPSTR text, int size, UINT flags) {
    if (text && size > 0) *text = 0;
    return Look_At(menu, item, flags, 0, [=](const MenuItem &found) {
        const std::size_t whole = found.text.size();
        if (!text || size <= 0) return static_cast<int>(whole);
        const std::size_t length = std::min(whole, static_cast<std::size_t>(size) - 1);
        std::memcpy(text, found.text.data(), length);
        text[length] = 0;
        return static_cast<int>(length);
    });
}
}
