#pragma once
// Section files: named sections of `name=value` items, parsed from a text in memory to a list of sections.
//
//     CDSList sections;
//     if (Load_Sections(text, size, &sections, true) == 0) {
//         auto *first = static_cast<CSectionEntry *>(sections.GetEntry(0, 0));
//         char *number = first->Get_Item_Data("Number", nullptr);
//     }
//     Unload_Sections(&sections);
//
// How a text reads: "[name]" begins a section, `name=value` is an item of it, and a line ends in CR, LF or
// both. A semicolon begins a comment wherever it stands, in quotes too. Tabs and spaces count within a value
// alone, not around it. A line without "=" is the beginning of the next item's name. A "[" begins a section
// anywhere but in a value, so `key=[x]` is the item `key`, empty, of the section X. An item before the first
// section has no end: no header behind its value is seen.
//
// A section owns its items; names and values that it gives are pointers into them, valid as long as it lives
// and its caller's to leave alone. The list of sections is the caller's, and its entries are to be taken out
// by Unload_Sections. Nothing is locked: sections and lists are for one thread at a time (list.h), and the
// reference count is a plain number.

#include <kelmara/containers/list.h>
#include <kelmara/foundation/new_delete.h>

#include <platform/errors.h>

inline constexpr long Malformed_Sections = -8306;

inline constexpr GUID IID_ISectionEntryInterface = {
    0x8A503B80, 0x7679, 0x11D2, {0xAE, 0x14, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};

/// A section as components see it. Part of the contract between separately built components: neither the
/// order of the operations nor a signature changes.
class KELMARA_API ISectionEntryInterface {
  public:
    virtual long QueryInterface(const GUID &iid, void **object) = 0;
    virtual unsigned long AddRef() = 0;
    virtual unsigned long Release() = 0;
    virtual void Get_Section_Name(char *name) = 0;
    virtual long Add_Item(char *name, char *value, long size) = 0;
    virtual char *Get_Item_Data(char *name, long *size) = 0;
    virtual long Get_Item_Count() = 0;
    virtual void Get_Next_Item(int index, char **name, char **value, long *size) = 0;

  protected:
    ~ISectionEntryInterface() = default;
};

class KELMARA_API CSectionEntry final : public ISectionEntryInterface {
  public:
    KELMARA_CLASS_ALLOCATION

    /// An empty section with one reference, the caller's. A name of more than 255 characters is cut to them,
    /// null is an empty one. Throws as a list does when there is no memory (list.h).
    explicit CSectionEntry(const char *name);
    /// A copy shares the items of its original, and assignment forgets the target's own: after it, change and
    /// destroy only one of the two, unless both are empty. The reference count is copied too.
    CSectionEntry(const CSectionEntry &other);
    CSectionEntry &operator=(const CSectionEntry &other);
    /// Releases all items, whatever the reference count.
    ~CSectionEntry();

    /// 0 for IID_IUnknown and IID_ISectionEntryInterface, with `*object` the section and a reference counted;
    /// otherwise E_NOINTERFACE with `*object` null. E_INVALIDARG for a null `object`.
    long QueryInterface(const GUID &iid, void **object) override;
    unsigned long AddRef() override;
    /// The last reference destroys the section, which must have been made with `new`.
    unsigned long Release() override;

    /// To `name` of at least 256 bytes; null is ignored.
    void Get_Section_Name(char *name) override;
    /// Appends a copy of the name and of `size` bytes of `value`, zero bytes among them too, with a
    /// terminator behind them; a name that is there already is added all the same. 0, or E_OUTOFMEMORY and
    /// nothing added. E_INVALIDARG, and nothing added, for a null name, one of more than 255 characters, a
    /// `size` below 0 and a null value of any bytes.
    long Add_Item(char *name, char *value, long size) override;
    /// The value of the first item of that name, whatever the letter case, and its size as it was added: 1
    /// more than the value's length for what was parsed. Null, and `*size` as it was, when there is none.
    char *Get_Item_Data(char *name, long *size) override;
    long Get_Item_Count() override;
    /// The item at an index counted from 0, in the order of the file; with none there, name and value are
    /// null and `*size` is as it was. Any output may be null. It walks from the first item on.
    void Get_Next_Item(int index, char **name, char **value, long *size) override;

  private:
    friend struct SectionEntryLayout;

    char m_Name[256];    // offset 4
    CDSList m_Items;     // offset 260, of records that it owns (sections.cpp)
    long m_RefCount = 1; // offset 300
};
static_assert(sizeof(CSectionEntry) == 304);

/// Appends a CSectionEntry to `sections` for each section in `size` bytes of `text`, which need no terminator
/// and are only read. With `stripQuotes` double quotes are dropped everywhere but in a section's name.
/// Section names are folded to capitals; the 256th character of one is dropped. 0; Malformed_Sections for a
/// name of more than 255 characters, a section name that has no end on its line or more than 256 characters,
/// a `size` below 0, and no text or list; E_OUTOFMEMORY; E_UNEXPECTED for a locked list. Sections and items
/// before the fault stay in the list. Throws what the list does when it has no memory for an entry.
KELMARA_API long Load_Sections(const char *text, long size, CDSList *sections, bool stripQuotes);

/// Takes every section out of the list and destroys it, whatever references there are to it. Always 0. Of a
/// locked list nothing is taken.
KELMARA_API long Unload_Sections(CDSList *sections);

/// Whether `param` stands in `text` as the start of a word, in any letter case: at the very start or behind
/// anything but an ASCII letter. `*after` is then the place behind it, otherwise null; `after` may be null. A
/// null text holds nothing, a null `param` is nowhere.
KELMARA_API bool Is_Param(const char *param, const char *text, char **after);

/// 1 and the number of line feeds: an empty text has a line, and a line feed at the end begins another. 0 for
/// null.
KELMARA_API int Count_Lines(const char *text);
