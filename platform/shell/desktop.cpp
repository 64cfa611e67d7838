#include <platform/shell/my_computer.h>

namespace {

// Lasts as long as the process, whatever is counted.
class Desktop final : public Folder {
  public:
    ULONG AddRef() override { return 2; }
    ULONG Release() override { return 1; }

  private:
    std::vector<ShellItem> Items() const override { return {ShellItem::Of_Class(CLSID_MyComputer)}; }
    bool Has(const ShellItem &item) const override { return item.Is_Class(CLSID_MyComputer); }
    std::string Name_Of(const ShellItem &) const override { return "My Computer"; }
    HRESULT Open(const ShellItem &, REFIID iid, void **out) const override {
        return Open_My_Computer(iid, out);
    }
};

constinit Desktop desktop;

} // namespace

extern "C" {

HRESULT SHGetMalloc(IMalloc **out) {
    return CoGetMalloc(1, out);
}

HRESULT SHGetDesktopFolder(IShellFolder **out) {
    if (!out) return E_POINTER;
    return *out = &desktop, S_OK;
}

HRESULT SHGetSpecialFolderLocation(HWND, int folder, LPITEMIDLIST *out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (folder != CSIDL_DRIVES) return E_INVALIDARG;
    *out = ShellItem::Of_Class(CLSID_MyComputer).Give_List();
    return *out ? S_OK : E_OUTOFMEMORY;
}
}
