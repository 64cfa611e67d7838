#pragma once
// Components: identifiers, memory that changes hands, classes and the modules and servers that offer them.
// The calls of OLE32.
//
// A thread initialises COM before it uses a class, and takes that back as often. A class is a key
// HKEY_CLASSES_ROOT\\CLSID\\{...}: the default value of its InProcServer32 names the module, whose
// DllGetClassObject hands out the factory. Objects are used on the thread that made them, and their
// references are counted by hand. Everything else here may be called from any thread.

#include <platform/errors.h>
#include <platform/types.h>

#include <cstring>

using HRESULT = long;
using ULONG = unsigned long;
using IID = GUID;
using CLSID = GUID;
using REFIID = GUID const &;
using REFCLSID = GUID const &;

inline bool IsEqualGUID(GUID const &one, GUID const &other) {
    return std::memcmp(&one, &other, sizeof one) == 0;
}

// --- interfaces -------------------------------------------------------------------------------------------

inline constexpr GUID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IClassFactory = {1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IMalloc = {2, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// What every interface begins with. QueryInterface leaves null in `*out` when it fails; on success the
/// caller owns a reference. AddRef and Release tell the count that is left.
class IUnknown {
  public:
    virtual HRESULT QueryInterface(REFIID iid, void **out) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

  protected:
    ~IUnknown() = default;
};

/// Makes the objects of one class. `outer` is null but for an object that is to be a part of another.
class IClassFactory : public IUnknown {
  public:
    virtual HRESULT CreateInstance(IUnknown *outer, REFIID iid, void **out) = 0;
    virtual HRESULT LockServer(BOOL lock) = 0;

  protected:
    ~IClassFactory() = default;
};

/// The memory of CoTaskMemAlloc. DidAlloc is -1: nobody knows.
class IMalloc : public IUnknown {
  public:
    virtual void *Alloc(ULONG size) = 0;
    virtual void *Realloc(void *block, ULONG size) = 0;
    virtual void Free(void *block) = 0;
    virtual ULONG GetSize(void *block) = 0;
    virtual int DidAlloc(void *block) = 0;
    virtual void HeapMinimize() = 0;

  protected:
    ~IMalloc() = default;
};

/// What a module exports under these names: the factory of a class, and S_OK when nothing of the module is in
/// use any more.
using DllGetClassObjectCall = HRESULT(REFCLSID clsid, REFIID iid, void **out);
using DllCanUnloadNowCall = HRESULT();

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 4;

inline constexpr DWORD REGCLS_MULTIPLEUSE = 1;

inline constexpr DWORD COINIT_MULTITHREADED = 0;
inline constexpr DWORD COINIT_APARTMENTTHREADED = 2;

extern "C" {

// --- memory and identifiers -------------------------------------------------------------------------------

/// Memory that one component gives and another gives back. Null when there is none. Realloc of null
/// allocates; to size 0 it frees and gives null.
PLATFORM_API void *CoTaskMemAlloc(ULONG size);
PLATFORM_API void *CoTaskMemRealloc(void *block, ULONG size);
PLATFORM_API void CoTaskMemFree(void *block);
/// The same memory as an object, of which there is one. `context` is 1, otherwise E_INVALIDARG.
PLATFORM_API HRESULT CoGetMalloc(DWORD context, IMalloc **out);

/// "{DC495940-FBB2-11D1-9960-00A0244EE2F7}" to `out`: 39 with the terminator, or 0 and nothing written when
/// `size`, in characters, is less.
PLATFORM_API int StringFromGUID2(GUID const &guid, WCHAR *out, int size);
/// The same in memory of CoTaskMemAlloc, which the caller frees.
PLATFORM_API HRESULT StringFromCLSID(REFCLSID clsid, WCHAR **out);
/// The way back, digits in either case. CO_E_CLASSSTRING and zeroes for any other text; null is zeroes.
PLATFORM_API HRESULT CLSIDFromString(const WCHAR *text, CLSID *clsid);

// --- a thread's use ---------------------------------------------------------------------------------------

/// S_FALSE on a thread that has done so before: it counts all the same. RPC_E_CHANGED_MODE, not counted, when
/// it did so with the other mode, which makes no other difference here. `reserved` is null, or E_INVALIDARG.
PLATFORM_API HRESULT CoInitialize(void *reserved);
PLATFORM_API HRESULT CoInitializeEx(void *reserved, DWORD mode);
/// Takes one back; without one, nothing. With the thread's last, what it registered is revoked and the
/// objects that others use through it are let go; with the process's last, modules go as by
/// CoFreeUnusedLibraries. The end of a thread does the same, but for the first, which ends its service and
/// leaves the rest to the end of the process.
PLATFORM_API void CoUninitialize();

// --- classes ----------------------------------------------------------------------------------------------

/// The factory of a class, from what `context` allows (CLSCTX_, the module before the server). `server` is
/// null. On failure `*out` is null: CO_E_NOTINITIALIZED on a thread without COM; REGDB_E_CLASSNOTREG for a
/// class without such an entry; HRESULT_MODULE_NOT_FOUND, or 0x80070000 with another code of LoadLibraryA,
/// for a module that cannot be had; CO_E_ERRORINDLL for one that has no DllGetClassObject; and what that
/// answers.
PLATFORM_API HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void *server, REFIID iid, void **out);
/// Of a server nobody but IClassFactory is to be had. REGDB_E_CLASSNOTREG when none runs: none is started.
/// CO_E_SERVER_EXEC_FAILURE for one that does not answer the making of an object for 30 seconds; a proxy
/// module that is missing is told as above. A server's own thread gets its factory itself.
/// An object of the class: CoGetClassObject, then its CreateInstance, whose failure is handed on.
PLATFORM_API HRESULT CoCreateInstance(REFCLSID clsid, IUnknown *outer, DWORD context, REFIID iid, void **out);
/// Offers a class of this process to all processes of the machine. `context` is CLSCTX_LOCAL_SERVER, `flags`
/// REGCLS_MULTIPLEUSE, otherwise E_INVALIDARG. Calls run on this thread, whichever its mode, when it looks
/// for messages or waits for another server. Of several programs that offer a class the first one serves. The
/// factory is held until CoRevokeClassObject by the same thread, the listing until that or the program's end;
/// objects that were made live on. On failure `*cookie` is 0: CO_E_NOTINITIALIZED, E_OUTOFMEMORY,
/// E_ACCESSDENIED when the machine or its list is refused as not this user's own, E_FAIL when it cannot list
/// it.
PLATFORM_API HRESULT CoRegisterClassObject(REFCLSID clsid, IUnknown *factory, DWORD context, DWORD flags,
                                           DWORD *cookie);
/// CO_E_OBJNOTREG for what this thread has not registered.
PLATFORM_API HRESULT CoRevokeClassObject(DWORD cookie);

/// Lets go of the modules whose DllCanUnloadNow says S_OK; one without it stays as long as the process.
PLATFORM_API void CoFreeUnusedLibraries();
}
