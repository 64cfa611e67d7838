#pragma once
// What all folders of the machine's own have in common; a kind of folder says which items it has.

#include <platform/shell/item.h>

#include <string>
#include <vector>

class Folder : public IShellFolder {
  public:
    HRESULT QueryInterface(REFIID iid, void **out) override;
    HRESULT ParseDisplayName(HWND, IBindCtx *, WCHAR *, ULONG *eaten, LPITEMIDLIST *out, ULONG *) override;
    HRESULT EnumObjects(HWND owner, DWORD flags, IEnumIDList **out) override;
    HRESULT BindToObject(LPCITEMIDLIST item, IBindCtx *context, REFIID iid, void **out) override;
    HRESULT BindToStorage(LPCITEMIDLIST, IBindCtx *, REFIID, void **out) override;
    HRESULT CompareIDs(LPARAM, LPCITEMIDLIST, LPCITEMIDLIST) override { return E_NOTIMPL; }
    HRESULT CreateViewObject(HWND, REFIID, void **out) override;
    HRESULT GetAttributesOf(UINT, LPCITEMIDLIST *, ULONG *) override { return E_NOTIMPL; }
    HRESULT GetUIObjectOf(HWND, UINT, LPCITEMIDLIST *, REFIID, UINT *, void **out) override;
    HRESULT GetDisplayNameOf(LPCITEMIDLIST item, DWORD flags, STRRET *name) override;
    HRESULT SetNameOf(HWND, LPCITEMIDLIST, const WCHAR *, DWORD, LPITEMIDLIST *out) override;

  protected:
    ~Folder() = default;

    // All but Has may throw std::bad_alloc.
    virtual std::vector<ShellItem> Items() const = 0;
    /// Whether an item is of this folder's kind. It need not be there any more.
    virtual bool Has(const ShellItem &item) const = 0;
    virtual std::string Name_Of(const ShellItem &item) const = 0;
    virtual HRESULT Open(const ShellItem &item, REFIID iid, void **out) const = 0;
};
