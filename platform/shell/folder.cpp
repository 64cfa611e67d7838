#include <platform/shell/folder.h>

#include <platform/com/class_keys.h>
#include <platform/kernel/code_page.h>
#include <platform/kernel/windows_version.h>
#include <platform/shell/item_enumerator.h>

#include <algorithm>

namespace {

template <class Pointer>
HRESULT Not_To_Be_Had(Pointer *out) {
    if (out) *out = nullptr;
    return E_NOTIMPL;
}

std::string Parsing_Name_Of(const ShellItem &item) {
    return item.Is_Class() ? "::" + Text_Of(item.Class()) : std::string{item.Drive(), ':', '\\'};
}

HRESULT Give_Wide(const std::string &text, STRRET &out) {
    auto *const wide = static_cast<WCHAR *>(CoTaskMemAlloc((text.size() + 1) * sizeof(WCHAR)));
    if (!wide) return E_OUTOFMEMORY;
    *std::transform(text.begin(), text.end(), wide, Wide_Of_Ansi) = 0;
    out.uType = STRRET_WSTR;
    out.pOleStr = wide;
    return S_OK;
}

HRESULT Give_Text(const std::string &text, STRRET &out) {
    if (text.size() >= sizeof out.cStr || Windows_Of_This_Machine().nt) return Give_Wide(text, out);
    out.uType = STRRET_CSTR;
    std::memcpy(out.cStr, text.c_str(), text.size() + 1);
    return S_OK;
}

} // namespace

HRESULT Folder::QueryInterface(REFIID iid, void **out) {
    if (!out) return E_POINTER;
    const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IShellFolder);
    *out = known ? this : nullptr;
    return known ? AddRef(), S_OK : E_NOINTERFACE;
}

HRESULT Folder::EnumObjects(HWND, DWORD flags, IEnumIDList **out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    return Result_Within_Memory([&] {
        const bool any = flags & SHCONTF_FOLDERS;
        auto items = std::make_shared<const std::vector<ShellItem>>(any ? Items() : std::vector<ShellItem>());
        return *out = new ItemEnumerator(std::move(items)), S_OK;
    });
}

HRESULT Folder::BindToObject(LPCITEMIDLIST list, IBindCtx *, REFIID iid, void **out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    const std::optional<ShellItem> item = ShellItem::Read(list);
    if (!item || !Has(*item)) return E_INVALIDARG;
    return Result_Within_Memory([&] { return Open(*item, iid, out); });
}

HRESULT Folder::GetDisplayNameOf(LPCITEMIDLIST list, DWORD flags, STRRET *name) {
    if (!name) return E_POINTER;
    const std::optional<ShellItem> item = ShellItem::Read(list);
    if (!item || !Has(*item)) return E_INVALIDARG;
    return Result_Within_Memory(
        [&] { return Give_Text(flags & SHGDN_FORPARSING ? Parsing_Name_Of(*item) : Name_Of(*item), *name); });
}

HRESULT Folder::ParseDisplayName(HWND, IBindCtx *, WCHAR *, ULONG *eaten, LPITEMIDLIST *out, ULONG *) {
    if (eaten) *eaten = 0;
    return Not_To_Be_Had(out);
}

HRESULT Folder::BindToStorage(LPCITEMIDLIST, IBindCtx *, REFIID, void **out) {
    return Not_To_Be_Had(out);
}

HRESULT Folder::CreateViewObject(HWND, REFIID, void **out) {
    return Not_To_Be_Had(out);
}

HRESULT Folder::GetUIObjectOf(HWND, UINT, LPCITEMIDLIST *, REFIID, UINT *, void **out) {
    return Not_To_Be_Had(out);
}

HRESULT Folder::SetNameOf(HWND, LPCITEMIDLIST, const WCHAR *, DWORD, LPITEMIDLIST *out) {
    return Not_To_Be_Had(out);
}
