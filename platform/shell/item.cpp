#include <platform/shell/item.h>

#include <platform/kernel.h>

namespace {

constexpr BYTE Class_Mark = 0x1F;
constexpr BYTE Drive_Mark = 0x23;

// As they lie in memory.
#pragma pack(push, 1)
struct ClassItem {
    WORD size = sizeof(ClassItem);
    BYTE mark = Class_Mark;
    BYTE reserved = 0;
    CLSID clsid;
};
struct DriveItem {
    WORD size = sizeof(DriveItem);
    BYTE mark = Drive_Mark;
    char root[4] = {0, ':', '\\', 0};
};
#pragma pack(pop)
static_assert(sizeof(ClassItem) == 20 && sizeof(DriveItem) == 7);

constexpr WORD List_End = 0;

template <class Item>
LPITEMIDLIST Give_List_Of(const Item &item) {
    auto *const list = static_cast<BYTE *>(CoTaskMemAlloc(sizeof item + sizeof List_End));
    if (!list) return nullptr;
    std::memcpy(list, &item, sizeof item);
    std::memcpy(list + sizeof item, &List_End, sizeof List_End);
    return reinterpret_cast<LPITEMIDLIST>(list);
}

// A whole list of one item of this kind.
template <class Item>
bool Read_One(LPCITEMIDLIST list, Item &item) {
    const auto *const bytes = reinterpret_cast<const BYTE *>(list);
    WORD size, end;
    if (IsBadReadPtr(bytes, sizeof size)) return false;
    std::memcpy(&size, bytes, sizeof size);
    if (size != sizeof item || IsBadReadPtr(bytes, size + sizeof end)) return false;
    std::memcpy(&end, bytes + size, sizeof end);
    if (end != List_End || bytes[offsetof(Item, mark)] != item.mark) return false;
    std::memcpy(&item, bytes, sizeof item);
    return true;
}

} // namespace

std::optional<ShellItem> ShellItem::Read(LPCITEMIDLIST list) {
    ClassItem of_class;
    if (Read_One(list, of_class)) return Of_Class(of_class.clsid);
    DriveItem drive;
    const bool known = Read_One(list, drive) && drive.root[0] >= 'A' && drive.root[0] <= 'Z';
    return known ? std::optional(Of_Drive(drive.root[0])) : std::nullopt;
}

LPITEMIDLIST ShellItem::Give_List() const {
    if (Is_Class()) return Give_List_Of(ClassItem{.clsid = clsid_});
    return Give_List_Of(DriveItem{.root = {drive_, ':', '\\', 0}});
}
