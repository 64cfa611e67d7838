#include <kelmara/suite/shell_items.h>

#include <kelmara/foundation/case_folding.h>
#include <kelmara/foundation/conversions.h>
#include <kelmara/system/reg_master.h>

#include <platform/kernel.h>

#include <cstring>

namespace {

constexpr unsigned long Name_Size = 256;
constexpr int Class_Text_Size = 39;
constexpr unsigned int Largest_List = 1 << 20;
constexpr WORD List_End = 0;

// One reference, given back at the end of its scope.
template <class Interface>
class Held {
  public:
    Held() = default;
    ~Held() {
        if (m_Object) m_Object->Release();
    }
    Held(const Held &) = delete;
    Held &operator=(const Held &) = delete;

    explicit operator bool() const { return m_Object != nullptr; }
    Interface *operator->() const { return m_Object; }
    Interface *Get() const { return m_Object; }
    Interface **Fill() { return &m_Object; }

  private:
    Interface *m_Object = nullptr;
};

// A list of the shell's memory, freed at the end of its scope.
class ItemList {
  public:
    explicit ItemList(IMalloc *allocator) : m_Allocator(allocator) {}
    ~ItemList() {
        if (m_List) m_Allocator->Free(m_List);
    }
    ItemList(const ItemList &) = delete;
    ItemList &operator=(const ItemList &) = delete;

    _ITEMIDLIST *Get() const { return m_List; }
    _ITEMIDLIST **Fill() { return &m_List; }

  private:
    IMalloc *const m_Allocator;
    _ITEMIDLIST *m_List = nullptr;
};

void Upper(char *text) {
    case_folding::Fold_Copy(text, text, std::strlen(text));
}

WORD Word_At(const void *place) {
    WORD word;
    std::memcpy(&word, place, sizeof word);
    return word;
}

// 0 for a list that ends there.
WORD First_Item_Size(const _ITEMIDLIST *list) {
    const WORD size = list ? Word_At(list) : List_End;
    return size < sizeof size ? List_End : size;
}

bool Read_Display_Name(const _GUID *clsid, char (&name)[Name_Size]) try {
    char class_text[Class_Text_Size];
    GUIDToString(clsid, class_text, false);
    CRegMaster registry;
    unsigned long size = Name_Size;
    if (!registry.OpenKey(HKEY_CLASSES_ROOT, "CLSID") || !registry.OpenSubkey(class_text)) return false;
    if (!registry.GetDefaultValue(name, &size) || !std::memchr(name, 0, Name_Size)) return false;
    Upper(name);
    return true;
} catch (...) { // no memory for a registry object
    return false;
}

_ITEMIDLIST *Join_First_Items(IMalloc *allocator, const _ITEMIDLIST *folder, const _ITEMIDLIST *item) {
    const WORD folder_size = First_Item_Size(folder);
    const WORD item_size = First_Item_Size(item);
    if (!folder_size || !item_size) return nullptr;
    const unsigned long size = static_cast<unsigned long>(folder_size) + item_size + sizeof List_End;
    char *const joined = static_cast<char *>(allocator->Alloc(size));
    if (!joined) return nullptr;
    std::memcpy(joined, folder, folder_size);
    std::memcpy(joined + folder_size, item, item_size);
    std::memcpy(joined + folder_size + item_size, &List_End, sizeof List_End);
    return reinterpret_cast<_ITEMIDLIST *>(joined);
}

// A text that does not fit stays the record's, whose owner this is.
bool Read_Item_Name(IMalloc *allocator, IShellFolder *folder, const _ITEMIDLIST *item,
                    char (&name)[Name_Size]) {
    STRRET record = {};
    record.uType = STRRET_CSTR;
    if (folder->GetDisplayNameOf(item, SHGDN_INCLUDE_NONFILESYS, &record) < 0) return false;
    const bool fits = DS_StrRetToStr(&record, name, Name_Size) == S_OK;
    if (record.uType == STRRET_WSTR && record.pOleStr) allocator->Free(record.pOleStr);
    if (fits) Upper(name);
    return fits;
}

// Characters before the terminator; `most` when there are more.
int Wide_Length(const WCHAR *text, int most) {
    int length = 0;
    while (length < most && text[length]) ++length;
    return length;
}

long Wide_Text_To(_STRRET &name, char *out, int size) {
    if (!name.pOleStr) return E_INVALIDARG;
    if (Wide_Length(name.pOleStr, size) == size) return E_OUTOFMEMORY;
    Held<IMalloc> allocator;
    if (const long result = SHGetMalloc(allocator.Fill()); result < 0) return result;
    if (!WideCharToMultiByte(CP_ACP, 0, name.pOleStr, -1, out, size, nullptr, nullptr)) {
        *out = 0;
        return E_OUTOFMEMORY;
    }
    allocator->Free(name.pOleStr);
    name.pOleStr = nullptr;
    return S_OK;
}

long Narrow_Text_To(const _STRRET &name, char *out, int size) {
    const std::size_t length = strnlen(name.cStr, sizeof name.cStr);
    if (length >= static_cast<std::size_t>(size)) return E_OUTOFMEMORY;
    std::memcpy(out, name.cStr, length);
    out[length] = 0;
    return S_OK;
}

} // namespace

bool Get_Shell_Folder_ID_List(const _GUID *clsid, _ITEMIDLIST **out) {
    Held<IMalloc> allocator;
    char name[Name_Size];
    if (!clsid || !out || SHGetMalloc(allocator.Fill()) < 0 || !allocator) return false;
    if (!Read_Display_Name(clsid, name)) return false;
    Held<IShellFolder> desktop, my_computer;
    SHGetDesktopFolder(desktop.Fill());
    if (!desktop) return false;
    ItemList place(allocator.Get()), item(allocator.Get());
    if (SHGetSpecialFolderLocation(nullptr, CSIDL_DRIVES, place.Fill()) < 0) return false;
    const long bound = desktop->BindToObject(place.Get(), nullptr, IID_IShellFolder,
                                             reinterpret_cast<void **>(my_computer.Fill()));
    if (bound < 0 || !my_computer || !Get_PIDL(my_computer.Get(), name, item.Fill())) return false;
    _ITEMIDLIST *const joined = Join_First_Items(allocator.Get(), place.Get(), item.Get());
    if (joined) *out = joined;
    return joined != nullptr;
}

bool Get_PIDL(IShellFolder *folder, const char *display_name, _ITEMIDLIST **out) {
    if (!out) return false;
    *out = nullptr;
    Held<IMalloc> allocator;
    if (!folder || !display_name || SHGetMalloc(allocator.Fill()) < 0 || !allocator) return false;
    char wanted[Name_Size] = {}, name[Name_Size];
    const std::size_t length = strnlen(display_name, Name_Size);
    if (length == Name_Size) return false;
    case_folding::Fold_Copy(wanted, display_name, length);
    Held<IEnumIDList> items;
    folder->EnumObjects(nullptr, SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN, items.Fill());
    if (!items) return false;
    for (ULONG given; items->Next(1, out, &given) == S_OK && *out;) {
        if (Read_Item_Name(allocator.Get(), folder, *out, name) && std::strcmp(name, wanted) == 0)
            return true;
        allocator->Free(*out);
        *out = nullptr;
    }
    *out = nullptr;
    return false;
}

unsigned int Get_Itemlist_Size(const _ITEMIDLIST *list) {
    if (!list) return 0;
    const char *const bytes = reinterpret_cast<const char *>(list);
    unsigned int end = 0;
    while (!IsBadReadPtr(bytes + end, sizeof(WORD))) {
        const unsigned int size = Word_At(bytes + end);
        if (size < sizeof(WORD) || end + size + sizeof List_End > Largest_List) break;
        if (IsBadReadPtr(bytes + end, size)) break;
        end += size;
    }
    return end + sizeof List_End;
}

long DS_StrRetToStr(_STRRET *name, char *out, int size) {
    if (size < 1) return E_OUTOFMEMORY;
    if (!out) return E_INVALIDARG;
    *out = 0;
    if (!name) return E_INVALIDARG;
    switch (name->uType) {
    case STRRET_WSTR:
        return Wide_Text_To(*name, out, size);
    case STRRET_OFFSET:
        return E_NOTIMPL;
    case STRRET_CSTR:
        return Narrow_Text_To(*name, out, size);
    default:
        return E_INVALIDARG;
    }
}
