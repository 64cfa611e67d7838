#pragma once
// From a class that shows up under My Computer to its item list, by which a program opens or shows it in the
// shell, and the small tools that this takes.
//
// Lists and texts that change hands are memory of SHGetMalloc. The functions keep nothing and may run on any
// thread that has initialised COM, except that Get_Shell_Folder_ID_List uses the registry wrapper and is for
// one thread of the process at a time.

#include <kelmara/api.h>

#include <platform/shell.h>

/// True with a new list in `*out`, from the desktop, for the first item of My Computer that has the class's
/// display name; the caller frees it. False for every failure, `*out` untouched: among them a class that is
/// not registered, and one with a name of more than 255 characters.
KELMARA_API bool Get_Shell_Folder_ID_List(const _GUID *clsid, _ITEMIDLIST **out);

/// True with the first item of the folder that has this name, letter case of a to z aside, in `*out`; the
/// caller frees it. Otherwise false and null there. An item whose name cannot be had or has more than 255
/// characters is passed over; a longer `display_name` and null are no item's name.
KELMARA_API bool Get_PIDL(IShellFolder *folder, const char *display_name, _ITEMIDLIST **out);

/// The bytes of a list with its terminator; 0 for null. A list also ends, and the terminator counts all the
/// same, before an item of 1 byte, one that cannot be read to its end, and one that would make the list
/// larger than a megabyte.
KELMARA_API unsigned int Get_Itemlist_Size(const _ITEMIDLIST *list);

/// 0 with the text in `out`, whose `size` is in bytes; a wide text of the record is freed and gone from it.
/// On failure `out` is empty and the record still owns what it owned: E_OUTOFMEMORY when the text does not
/// fit with its terminator (for a size below 1 `out` is untouched), E_NOTIMPL for STRRET_OFFSET, E_INVALIDARG
/// for any other type and a wide text that is null, and what SHGetMalloc gave.
KELMARA_API long DS_StrRetToStr(_STRRET *name, char *out, int size);
