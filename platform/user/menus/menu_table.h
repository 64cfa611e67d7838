#pragma once
// The menus of this process. A menu is a number, a multiple of 4, and a list of items; a submenu hangs below
// one item at most, so that menus form trees. All of it is under the table's lock, which calls nothing.

#include <platform/menus.h>

#include <memory>
#include <string>
#include <vector>

struct Menu;

struct MenuItem {
    UINT flags = 0; // MF_
    UINT id = 0;
    std::string text;
    HMENU submenu = nullptr;
};

struct Menu {
    std::vector<MenuItem> items;
    bool is_submenu = false;
};

class MenuTable {
  public:
    static constexpr std::size_t Most_Menus = 10000;

    /// For a call's length: locks the table.
    class Use {
      public:
        Use();
        ~Use();
        Use(const Use &) = delete;
        Use &operator=(const Use &) = delete;
        MenuTable *operator->() const;
    };

    /// Null, with the last error, when there are too many. May throw std::bad_alloc.
    HMENU Make();
    /// Null when it is none.
    Menu *Find(HMENU menu);
    /// With all below it.
    void Destroy(HMENU menu);
    bool Stands_In(HMENU menu, HMENU above);

  private:
    friend unsigned long Menu_Count_In_Table();
    struct Entry {
        HMENU handle;
        std::unique_ptr<Menu> menu;
    };
    std::vector<Entry> entries_;
    std::uintptr_t last_ = 0x10000;
};

/// What a window's bar shows: the texts of its items, an empty list for no menu. May throw std::bad_alloc.
std::vector<MenuItem> Items_Of_Menu(HMENU menu);
/// The menu of a window that goes.
void Destroy_Menu_Of_Window(HMENU menu);
bool Is_Menu(HMENU menu);
