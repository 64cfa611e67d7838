#pragma once
// A table of translatable strings: one `.ltx` file, held in memory byte for byte as it stands on the disk.
//
//     CStringTable table;                                 // to be asked by identifier
//     CKMFile file;
//     if (file.Open(path, false, false) != 0 || table.Load_Table(&file) != 0) return;
//     CSafeStr text;
//     table.Get_String_From_Identifier("KMSTR_LOW_FREE_SPACE", text);
//
// The file is one block of the C runtime's heap, read and written as a whole. A table made with `true` is to
// be edited: it has no index, and lookups walk. One made with `false` has an index from Load_Table on; the
// first lookups walk all the same, and the index is filled once there have been so many that it pays. Edits
// are seen by the lookups that follow. A lookup changes nothing outside its table.
//
// A file is not checked when it is loaded. Whatever its header and entries say, nothing outside the block is
// ever read or written: entries that do not lie in the block with their fixed bytes are not there, and those
// behind them are not either; strings end with the block, at the latest; identifiers and comments without a
// terminator are cut. An entry whose size does not lead to another place in the block, behind its fixed
// bytes, is read but neither replaced nor deleted, and nothing is appended behind it.
//
// Indices are from 0; one below 0 is that of the first entry, and one that is not below the count of none.
// One thread at a time, lookups included. A copy shares block and index: of the two only one may be changed
// or destroyed.

#include <kelmara/foundation/auto_deleteable_object.h>

class CKMFile;
class CSafeStr;
class StringIndex;

/// As it stands in the file, at any address. Behind it stand the string, without a terminator, and 3 bytes
/// that nobody reads. Little-endian.
struct [[gnu::packed]] StringEntry {
    unsigned long Size;  // offset 0, of the whole entry: the string's length and 207
    short Length;        // offset 4, of the string
    char Identifier[64]; // offset 6, with a terminator
    char Comments[128];  // offset 70, with a terminator
    char Reserved[2];    // offset 198
    long Type;           // offset 200, the callers' own
};
static_assert(offsetof(StringEntry, Length) == 4 && offsetof(StringEntry, Identifier) == 6);
static_assert(offsetof(StringEntry, Comments) == 70 && offsetof(StringEntry, Reserved) == 198);
static_assert(offsetof(StringEntry, Type) == 200 && sizeof(StringEntry) == 204);

class KELMARA_API CStringTable : public CAutoDeleteableObject {
  public:
    /// Without a table: nothing is found, set or exported until New_Table or Load_Table.
    CStringTable(bool unindexed = false);
    CStringTable(const CStringTable &other);
    CStringTable &operator=(const CStringTable &other);
    ~CStringTable() override;

    /// A table of no strings, 20 bytes, in place of what there was. It has no index: unless it was made to be
    /// edited, nothing is found in it by identifier. 0, or 0x8007000E and the table stays.
    long New_Table();

    /// Reads the whole file, which is open and stands at its start, in place of what there was. What cannot
    /// be read counts as zeroes. 0, or 0x8007000E and there is no table; 1006 for null, and the table stays.
    long Load_Table(CKMFile *file);

    /// Writes the whole block, what lies behind the last entry too: what the file answers, 1006 for null.
    long Save_Changes(CKMFile *file);

    /// What the header says, at least 0 and never more than the block has room for.
    long Count_Entries();

    /// The target is empty when there is no such entry, and when it cannot get memory, which it throws.
    void Get_String(long index, CSafeStr &out);
    /// The first entry of the file that has exactly this identifier. The two may be one object. Null is no
    /// identifier.
    void Get_String_From_Identifier(const char *identifier, CSafeStr &out);
    void Get_String_From_Identifier(const CSafeStr &identifier, CSafeStr &out);

    /// The target stays as it was when there is no such entry.
    void Get_String_Identifier(long index, CSafeStr &out);
    void Get_String_Comments(long index, CSafeStr &out);
    /// -1 when there is no such entry.
    long Get_String_Type(long index);

    /// Replaces an entry's string or, with the count for an index, appends an entry that has nothing else.
    /// The index of the last entry, whichever was set; -1 and the table stays: no memory, an index beyond the
    /// count, or a text of more than 32,767 characters. A header that asks for several bytes per character
    /// gets one all the same; one that asks for none has the string's bytes left as they are.
    int Set_String(long index, const CSafeStr &text);

    /// Nothing happens when there is no such entry. Of an identifier the first 63 characters are stored, of
    /// comments the first 127.
    void Set_Identifier(long index, const CSafeStr &identifier);
    void Set_Comments(long index, const CSafeStr &comments);
    void Set_Type(long index, long type);
    void Delete_String(long index);

    /// Writes "string<tab>identifier<tab>type<tab>comments<CR><LF>" with a terminator to `line`, whose size
    /// is not looked at: there is never more than 1,357 bytes of it. Carriage returns, line feeds and tabs of
    /// string and comments become "\r", "\n" and "\t"; empty comments become a blank. A string ends with a
    /// zero byte in it, and with the last character that fits into 1,023 bytes whole. `line` stays as it was
    /// when there is no such entry; null is ignored.
    void Get_Export_String(long index, char *line, int size);

    /// Appends an entry from such a line. Fields are parted by any number of tabs; comments are all the rest,
    /// with the line's end if there is one. In comments the sequences become characters again; the string
    /// keeps them, and what carriage returns and line feeds it has become sequences. Comments that begin with
    /// a blank, or are one character, count as none. A type without digits is 0, one too great the greatest.
    /// The new index; -1 and the table stays: fewer than four fields, a line of more than 2,047 characters,
    /// null, no memory. Within a line fields may have any length; of identifier and comments what can be
    /// stored is.
    int Import_String(const char *line);

  protected:
    /// Null when there is no such entry. Walks from the one asked for last, or from the first one if that
    /// lies behind. Valid until the table is changed; the entry's size is the table's to change.
    StringEntry *Get_Entry(long index);

  private:
    friend struct StringTableLayout;

    KELMARA_INTERNAL void Drop();
    KELMARA_INTERNAL void Forget_Index();
    KELMARA_INTERNAL unsigned long Place_Of(long index);
    KELMARA_INTERNAL long Make_Index();
    KELMARA_INTERNAL bool Grow(long bytes);
    KELMARA_INTERNAL void Shrink(long bytes);
    KELMARA_INTERNAL StringEntry *Append_Entry(long index, long length);
    KELMARA_INTERNAL StringEntry *Resize_Entry(long index, long length);
    KELMARA_INTERNAL int Store_String(long index, const char *text, long length);

    // Offsets are frozen; the pointer to the virtual table is at 0.
    char *m_Block = nullptr;        // offset 4, owned
    long m_Size = 0;                // offset 8, bytes of the block
    StringIndex *m_Index = nullptr; // offset 12, owned
    bool m_Unindexed;               // offset 16
};
static_assert(sizeof(CStringTable) == 20);
