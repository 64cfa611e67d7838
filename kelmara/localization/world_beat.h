#pragma once
// Texts in the user's language: strings of an `.ltx` file by identifier, and dialogs, menus and texts that
// are written with identifiers in their place.
//
//     CWorldBeat beat;
//     beat.Load_Localization("otherStrings.ltx", false);
//     beat.Localize_Dialog(dialog); // a control with the text "^KMSTR_CANCEL" becomes "Cancel"
//
// A text is a reference when it begins with a caret; all behind that is the identifier. The object owns its
// table. Nothing is reported to the user: a file that cannot be opened leaves the table as it was, and
// without a table no string is found. Operations that fill a CSafeStr throw what a CSafeStr throws, `long`
// E_OUTOFMEMORY, for strings of more than 511 characters; for all others a string that finds no memory is one
// that is not there, but a control or menu item then keeps its reference, and Get_String to a buffer answers
// 0x8007000E.
//
// One thread at a time, and one thread of the process for Get_Temp_String. Identifiers may be null, which no
// string has. A copy shares the table: of the two only one may be loaded anew or destroyed.

#include <kelmara/localization/string_table.h>

#include <platform/errors.h>

class KELMARA_API CWorldBeat : public CAutoDeleteableObject {
  public:
    /// Nothing is found until a table is loaded.
    CWorldBeat();
    CWorldBeat(const CWorldBeat &other);
    CWorldBeat &operator=(const CWorldBeat &other);
    ~CWorldBeat() override;

    /// Loads a file in place of what was loaded: `name` in the suite's folder "Localization", or with
    /// `whole_path` the path `name`. 0; what CKMFile::Open or CStringTable::Load_Table answers; 2 for a path
    /// of more than 255 characters. The debug log has the path, and a name that was not there.
    long Load_Localization(const char *name, bool whole_path);

    /// Replaces the text of a window and of all its descendants where it is a reference; an unknown
    /// identifier leaves an empty text. Of a text 511 characters are looked at, strings may have any length.
    /// Windows may be destroyed meanwhile. Null is ignored.
    void Localize_Dialog(HWND window);

    /// The same with a menu's items and, before the item that opens it, each submenu. Each "\t" in a string
    /// becomes a tab. An item that was a reference is neither grayed nor checked afterwards.
    void Localize_Menu(HMENU menu);

    /// Substitutes each reference in a text, from a caret to a blank, tab, line feed, carriage return or the
    /// end, wherever the same characters stand in it; references that strings bring with them in turn. These
    /// stay as they are: those that are not found or empty, those whose string holds the same reference, and
    /// those whose string does not fit into the storage that the text has (511 characters inside the object).
    /// It ends after as many substitutions as the text has carets and 1,000 more. What has no string's
    /// signature is left alone. Without memory the rest of the text stays.
    void Localize_String(CSafeStr &text);

    /// A string that belongs to the process: it is good until the next call, of any object. Empty when there
    /// is no such identifier.
    CSafeStr &Get_Temp_String(const char *identifier);

    /// Empty when there is no such identifier.
    void Get_String(const char *identifier, CSafeStr &out);

    /// The string with its terminator, to `buffer` of `size` bytes. 0; 122 when it does not fit, and
    /// E_OUTOFMEMORY, with the buffer untouched; 122 for a null one too. One that is not found is empty.
    long Get_String(const char *identifier, char *buffer, int size);

    /// A message box whose text and title are identifiers, without a caret, or stand for themselves if there
    /// is no such string, or an empty one. What the machine's message box answers.
    int MessageBoxA(HWND owner, const char *text, const char *title, unsigned long type);

    /// A log entry by a string of the table as printf's format; nothing when it is empty or not found. At
    /// most 2,047 characters are made. The conversions are d i u o x X c s p e E f g G; what else the string
    /// asks for stands in the entry as it is, with all behind it, and a text that cannot be read is left out.
    void Std_Log_Entry(const char *identifier, ...);

  protected:
    /// The step for one window. Always 1.
    static int EnumChildProc(HWND window, CWorldBeat *self);

  private:
    friend struct WorldBeatLayout;

    KELMARA_INTERNAL bool Find(const char *identifier, CSafeStr &out);
    // The same for a marker and its identifier. A lone marker finds nothing, whatever the table holds.
    KELMARA_INTERNAL bool Find_Marked(const char *marked, CSafeStr &out);
    KELMARA_INTERNAL void Localize_Window(HWND window);
    KELMARA_INTERNAL void Localize_Item(HMENU menu, int position);
    KELMARA_INTERNAL void Substitute(CSafeStr &text);

    CStringTable m_Table; // offset 4
};
static_assert(sizeof(CWorldBeat) == 24);
