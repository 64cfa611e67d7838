#pragma once
// The shell's namespace: the desktop, My Computer on it, and the machine's drives and registered classes in
// that. The calls of SHELL32.
//
// A place is named by an item list: items that each begin with a 16-bit size, which counts those two bytes
// too, and behind the last a size of 0. Lists and texts that a call gives out are memory of SHGetMalloc, and
// the receiver frees them. A list that is given in need not be one: it is read no further than it can be, and
// what is not of the folder's kind is E_INVALIDARG, while an item that has gone still is. Folders and
// enumerators are used on the thread that got them; nobody has to have initialised COM.
//
// A class shows up in My Computer when it has a subkey of its identifier in
// HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\Explorer\MyComputer\NameSpace and a key in
// HKEY_CLASSES_ROOT\CLSID, whose default value is what it is called.

#include <platform/com.h>

#pragma pack(push, 1)
struct SHITEMID {
    WORD cb; // bytes, these two included
    BYTE abID[1];
};
struct _ITEMIDLIST {
    SHITEMID mkid;
};
#pragma pack(pop)
using ITEMIDLIST = _ITEMIDLIST;
using LPITEMIDLIST = ITEMIDLIST *;
using LPCITEMIDLIST = const ITEMIDLIST *;
static_assert(sizeof(ITEMIDLIST) == 3);

inline constexpr UINT STRRET_WSTR = 0;   // pOleStr, which the receiver frees
inline constexpr UINT STRRET_OFFSET = 1; // uOffset, into the item
inline constexpr UINT STRRET_CSTR = 2;   // cStr

struct _STRRET {
    UINT uType;
    union {
        WCHAR *pOleStr;
        UINT uOffset;
        char cStr[MAX_PATH];
    };
};
using STRRET = _STRRET;
static_assert(sizeof(STRRET) == 264 && offsetof(STRRET, cStr) == 4);

inline constexpr int CSIDL_DRIVES = 0x11; // My Computer

inline constexpr DWORD SHCONTF_FOLDERS = 0x20;
inline constexpr DWORD SHCONTF_NONFOLDERS = 0x40;
inline constexpr DWORD SHCONTF_INCLUDEHIDDEN = 0x80;

inline constexpr DWORD SHGDN_NORMAL = 0;
inline constexpr DWORD SHGDN_INFOLDER = 1;
inline constexpr DWORD SHGDN_INCLUDE_NONFILESYS = 0x2000;
inline constexpr DWORD SHGDN_FORADDRESSBAR = 0x4000;
inline constexpr DWORD SHGDN_FORPARSING = 0x8000;

inline constexpr GUID CLSID_MyComputer = {
    0x20D04FE0, 0x3AEA, 0x1069, {0xA2, 0xD8, 0x08, 0x00, 0x2B, 0x30, 0x30, 0x9D}};
inline constexpr GUID IID_IShellFolder = {0x000214E6, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IEnumIDList = {0x000214F2, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// The items of a folder as they were when it was asked for them.
class IEnumIDList : public IUnknown {
  public:
    /// The next `count` items, each a list of its own, to `out`. S_FALSE when there are fewer: `*given`,
    /// which may be null when one is asked for, tells how many. On another failure none is given out.
    virtual HRESULT Next(ULONG count, LPITEMIDLIST *out, ULONG *given) = 0;
    /// S_FALSE, at the end, when there are fewer.
    virtual HRESULT Skip(ULONG count) = 0;
    virtual HRESULT Reset() = 0;
    /// Another that is as far as this one.
    virtual HRESULT Clone(IEnumIDList **out) = 0;

  protected:
    ~IEnumIDList() = default;
};

class IBindCtx;

/// One folder. What comes without a comment the machine's own folders have not: E_NOTIMPL, and null where a
/// pointer is to be given out.
class IShellFolder : public IUnknown {
  public:
    virtual HRESULT ParseDisplayName(HWND owner, IBindCtx *context, WCHAR *name, ULONG *eaten,
                                     LPITEMIDLIST *out, ULONG *attributes) = 0;
    /// All that is here is a folder: without SHCONTF_FOLDERS there is nothing. Drives come before classes.
    virtual HRESULT EnumObjects(HWND owner, DWORD flags, IEnumIDList **out) = 0;
    /// The folder that an item is: My Computer from the desktop. E_NOTIMPL for what is in My Computer.
    virtual HRESULT BindToObject(LPCITEMIDLIST item, IBindCtx *context, REFIID iid, void **out) = 0;
    virtual HRESULT BindToStorage(LPCITEMIDLIST item, IBindCtx *context, REFIID iid, void **out) = 0;
    virtual HRESULT CompareIDs(LPARAM order, LPCITEMIDLIST one, LPCITEMIDLIST other) = 0;
    virtual HRESULT CreateViewObject(HWND owner, REFIID iid, void **out) = 0;
    virtual HRESULT GetAttributesOf(UINT count, LPCITEMIDLIST *items, ULONG *attributes) = 0;
    virtual HRESULT GetUIObjectOf(HWND owner, UINT count, LPCITEMIDLIST *items, REFIID iid, UINT *reserved,
                                  void **out) = 0;
    /// The name of an item of this folder: STRRET_WSTR on a machine of the NT family, and anywhere for a name
    /// that the record cannot hold; otherwise STRRET_CSTR. With SHGDN_FORPARSING "C:\" or "::{...}"; other
    /// flags mean nothing. A failure leaves the record as it was.
    virtual HRESULT GetDisplayNameOf(LPCITEMIDLIST item, DWORD flags, STRRET *name) = 0;
    virtual HRESULT SetNameOf(HWND owner, LPCITEMIDLIST item, const WCHAR *name, DWORD flags,
                              LPITEMIDLIST *out) = 0;

  protected:
    ~IShellFolder() = default;
};

extern "C" {

/// The memory of CoGetMalloc.
PLATFORM_API HRESULT SHGetMalloc(IMalloc **out);
/// A reference to the one desktop.
PLATFORM_API HRESULT SHGetDesktopFolder(IShellFolder **out);
/// A folder's list, from the desktop. E_INVALIDARG and null for any folder but CSIDL_DRIVES.
PLATFORM_API HRESULT SHGetSpecialFolderLocation(HWND owner, int folder, LPITEMIDLIST *out);
}
