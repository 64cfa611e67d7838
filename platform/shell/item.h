#pragma once
// One item of an item list: a class by its identifier, or a drive by its letter. What an item says is in the
// item itself, so that it means the same in every process and after the machine was left.

#include <platform/shell.h>

#include <optional>

class ShellItem {
  public:
    static ShellItem Of_Class(REFCLSID clsid) { return ShellItem(clsid, 0); }
    static ShellItem Of_Drive(char letter) { return ShellItem({}, letter); }
    /// From a list of this one item. None for any other list and for what cannot be read.
    static std::optional<ShellItem> Read(LPCITEMIDLIST list);

    bool Is_Class() const { return drive_ == 0; }
    bool Is_Class(REFCLSID clsid) const { return Is_Class() && IsEqualGUID(clsid_, clsid); }
    REFCLSID Class() const { return clsid_; }
    char Drive() const { return drive_; }
    /// A new list of it. Null when there is no memory.
    LPITEMIDLIST Give_List() const;

  private:
    ShellItem(REFCLSID clsid, char drive) : clsid_(clsid), drive_(drive) {}

    CLSID clsid_;
    char drive_; // 'A' to 'Z', 0 for a class
};
