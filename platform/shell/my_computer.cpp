#include <platform/shell/my_computer.h>

#include <platform/com/class_keys.h>
#include <platform/com/reference.h>
#include <platform/files.h>
#include <platform/files/drive_places.h>
#include <platform/files/drives.h>
#include <platform/registry.h>

#include <algorithm>
#include <new>

namespace {

constexpr char Classes_Key[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MyComputer\\NameSpace";
constexpr DWORD Name_Size = 256;

// Open for reading, or null: for want of memory it throws.
class ReadKey {
  public:
    ReadKey(HKEY root, const std::string &path) {
        Check(RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &key_));
    }
    ~ReadKey() {
        if (key_) RegCloseKey(key_);
    }
    ReadKey(const ReadKey &) = delete;
    ReadKey &operator=(const ReadKey &) = delete;

    bool Is_Open() const { return key_ != nullptr; }
    bool Subkey(DWORD index, char (&name)[Name_Size]) const {
        DWORD size = Name_Size;
        return key_ && Check(RegEnumKeyExA(key_, index, name, &size, nullptr, nullptr, nullptr, nullptr));
    }

  private:
    static bool Check(LONG result) {
        if (result == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
        return result == ERROR_SUCCESS;
    }
    HKEY key_ = nullptr;
};

std::string Class_Key(REFCLSID clsid) {
    return "CLSID\\" + Text_Of(clsid);
}

bool Is_Class_Name(std::string_view name, CLSID &clsid) {
    const std::basic_string<WCHAR> wide(name.begin(), name.end());
    return CLSIDFromString(wide.c_str(), &clsid) == S_OK;
}

void Add_Drives(std::vector<ShellItem> &items) {
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        if (!Drive_Root(letter).empty()) items.push_back(ShellItem::Of_Drive(letter));
    }
}

void Add_Classes(std::vector<ShellItem> &items) {
    const ReadKey key(HKEY_LOCAL_MACHINE, Classes_Key);
    char name[Name_Size];
    CLSID clsid;
    for (DWORD index = 0; key.Subkey(index, name); ++index) {
        if (!Is_Class_Name(name, clsid) || !ReadKey(HKEY_CLASSES_ROOT, Class_Key(clsid)).Is_Open()) continue;
        items.push_back(ShellItem::Of_Class(clsid));
    }
}

struct NamedKind {
    UINT kind;
    const char *name;
};

constexpr NamedKind Kinds[] = {
    {DRIVE_REMOVABLE, "Removable Disk"}, {DRIVE_FIXED, "Local Disk"}, {DRIVE_REMOTE, "Network Drive"},
    {DRIVE_CDROM, "CD Drive"},           {DRIVE_RAMDISK, "RAM Disk"},
};

std::string Name_Of_Drive(char letter) {
    const UINT kind = Drive_Kind(letter);
    const auto *const known = std::find_if(std::begin(Kinds), std::end(Kinds),
                                           [=](const NamedKind &each) { return each.kind == kind; });
    const char *const name = known == std::end(Kinds) ? "Disk" : known->name;
    return std::string(name).append({' ', '(', letter, ':', ')'});
}

class MyComputer final : public Folder {
  public:
    ULONG AddRef() override { return ++count_; }
    ULONG Release() override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }

  private:
    ~MyComputer() = default;
    std::vector<ShellItem> Items() const override {
        std::vector<ShellItem> items;
        Add_Drives(items);
        Add_Classes(items);
        return items;
    }
    bool Has(const ShellItem &item) const override { return !item.Is_Class(CLSID_MyComputer); }
    std::string Name_Of(const ShellItem &item) const override {
        return item.Is_Class() ? Default_Value_Of(Class_Key(item.Class())) : Name_Of_Drive(item.Drive());
    }
    HRESULT Open(const ShellItem &, REFIID, void **) const override { return E_NOTIMPL; }

    ULONG count_ = 1;
};

} // namespace

HRESULT Open_My_Computer(REFIID iid, void **out) {
    return Reference<MyComputer>(new MyComputer)->QueryInterface(iid, out);
}
