#include <platform/user/menus/menu_table.h>

#include <platform/kernel.h>
#include <platform/kernel/everlasting.h>
#include <platform/kernel/fork_lock.h>
#include <platform/machine.h>

#include <algorithm>

namespace {

struct LockedTable {
    ForkLock lock;
    MenuTable menus;
};

LockedTable &The_Table() {
    static Everlasting<LockedTable> table;
    return *table;
}

} // namespace

MenuTable::Use::Use() {
    The_Table().lock.lock();
}

MenuTable::Use::~Use() {
    The_Table().lock.unlock();
}

MenuTable *MenuTable::Use::operator->() const {
    return &The_Table().menus;
}

HMENU MenuTable::Make() {
    if (entries_.size() >= Most_Menus) {
        SetLastError(ERROR_NOT_ENOUGH_QUOTA);
        return nullptr;
    }
    auto made = std::make_unique<Menu>();
    HMENU handle;
    do {
        last_ = last_ < 0x7FFFFFF0 ? last_ + 4 : 0x10000;
        handle = reinterpret_cast<HMENU>(last_);
    } while (Find(handle));
    entries_.push_back({handle, std::move(made)});
    return handle;
}

Menu *MenuTable::Find(HMENU menu) {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [menu](const Entry &each) { return each.handle == menu; });
    return found == entries_.end() ? nullptr : found->menu.get();
}

void MenuTable::Destroy(HMENU menu) {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [menu](const Entry &each) { return each.handle == menu; });
    if (found == entries_.end()) return;
    const std::unique_ptr<Menu> gone = std::move(found->menu);
    entries_.erase(found);
    for (const MenuItem &item : gone->items) Destroy(item.submenu);
}

bool MenuTable::Stands_In(HMENU menu, HMENU above) {
    if (menu == above) return true;
    const Menu *found = Find(above);
    return found && std::any_of(found->items.begin(), found->items.end(), [&](const MenuItem &item) {
               return item.submenu && Stands_In(menu, item.submenu);
           });
}

unsigned long Menu_Count_In_Table() {
    const MenuTable::Use table;
    return table->entries_.size();
}

std::vector<MenuItem> Items_Of_Menu(HMENU menu) {
    const MenuTable::Use table;
    const Menu *found = table->Find(menu);
    return found ? found->items : std::vector<MenuItem>();
}

void Destroy_Menu_Of_Window(HMENU menu) {
    const MenuTable::Use table;
    if (menu) table->Destroy(menu);
}

bool Is_Menu(HMENU menu) {
    const MenuTable::Use table;
    return table->Find(menu) != nullptr;
}

extern "C" unsigned long Menu_Count() {
    return Menu_Count_In_Table();
}
