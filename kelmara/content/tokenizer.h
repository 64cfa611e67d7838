#pragma once
// The template engine: a text with embedded tokens in, the text with their values out.
//
//     CTokenizer tokenizer;
//     tokenizer.Use_Variable_Table(&variables);
//     char letter[2048];
//     const bool done = tokenizer.Tokenize("Dear ^NAME^, 10%% off, see <NAME>.", letter, sizeof letter);
//
// A token stands between two of the same sigil, "<" and ">" in one case; the sigil tells where its value
// comes from. A sigil twice is that character.
//     $'TTTT','FFFF'$  field FFFF of binding table TTTT, four-character codes both (conversions.h)
//     &name&           a field of the binding host, by the name that a define file gives its code
//     %name%           WINDOWS, TEMP, DESKTOP: that folder with a backslash at its end; any other name: the
//                      value of that name in the suite's registry key. Nothing where there is none.
//     <name>           VERSION, SERIALCODE or NAME of the component; nothing for any other name
//     ^name^           a variable of the caller's table
// Names of the last three are folded to capitals first. A name has at most 255 characters: the byte behind
// the 255th ends it, whatever it is. Values are not scanned for tokens, and end at their first zero byte; at
// most 1,024 bytes of one are taken, and a registry value that is longer gives nothing. A text that ends
// within a token ends in front of it.
//
// Binding hosts are held with a reference; tables and the descriptor are the caller's and must live as long
// as the tokenizer uses them. Tokenize changes nothing in the object, so threads may share one that is set
// up, if the hosts can take it; the other calls are for one thread at a time, as lists are (list.h).

#include <kelmara/containers/list.h>
#include <kelmara/foundation/auto_deleteable_object.h>

#include <platform/errors.h>

class CHashTable;

inline constexpr long Unknown_Binding_Table = -8314;

/// Where the values of fields come from; implemented by components. Part of the contract with them: neither
/// the order of the operations nor a signature changes. The library calls the four that are pure.
class KELMARA_API IBindingHostInterface {
  public:
    virtual long QueryInterface(const GUID &iid, void **object) = 0;
    virtual unsigned long AddRef() = 0;
    virtual unsigned long Release() = 0;
    // Slots 4 to 7 are between components.
    virtual long Slot_4() { return E_NOTIMPL; }
    virtual long Slot_5() { return E_NOTIMPL; }
    virtual long Slot_6() { return E_NOTIMPL; }
    virtual long Slot_7() { return E_NOTIMPL; }
    /// Fills `buffer`, of `size` bytes, with the text of a field. 0, or a code that the caller passes on.
    virtual long Get_Field_Value(long field, char *buffer, long size) = 0;

  protected:
    ~IBindingHostInterface() = default;
};

/// What a component tells of itself. Offsets are frozen; what else the record holds is the component's.
struct ComponentDescriptor {
    unsigned char Unread[2]; // offset 0
    char Name[138];          // offset 2, with its terminator
    unsigned long Code;      // offset 140, a four-character code
    long Version;            // offset 144
};
static_assert(offsetof(ComponentDescriptor, Name) == 2 && offsetof(ComponentDescriptor, Code) == 140);
static_assert(offsetof(ComponentDescriptor, Version) == 144);

class KELMARA_API CTokenizer : public CAutoDeleteableObject {
  public:
    /// Nothing is set up. Throws as a list does when there is no memory (list.h).
    CTokenizer();
    /// Copies share all with their originals and take no references: of the two only one may be set up anew
    /// or destroyed, and what the target of an assignment had is not released.
    CTokenizer(const CTokenizer &other);
    CTokenizer &operator=(const CTokenizer &other);
    ~CTokenizer() override;

    /// For `&` tokens; null for none. With the host that it has already nothing happens.
    void Use_Binding_Host(IBindingHostInterface *host);
    /// For `<` tokens; null for none.
    void Use_Component_Desc(ComponentDescriptor *descriptor);
    /// For `&` tokens: a table of the tokenizer's own, made from a file in place of the table it had. What
    /// Tokenize_Define_File answers; after a failure there is a table without a file, and `&` tokens throw as
    /// CHashTable::Find does. E_OUTOFMEMORY when there is no memory for a table: then there is none.
    long Use_Define_File(const char *name);
    /// For `&` tokens: a table of the caller's in place of the one it had; null for none.
    void Use_Token_Table(CHashTable *table);
    /// For `^` tokens; null for none.
    void Use_Variable_Table(CHashTable *table);
    /// For `$` tokens. Of two with one code the first counts. A null host is not added, and where there is no
    /// memory for it, none is: tokens of that table fail.
    void Add_Binding_Table(long table, IBindingHostInterface *host);

    /// Clears the `size` bytes of `result` and puts the expanded text there, cut to them; a text of `size`
    /// characters and more has no terminator. `text` must not lie in `result`. A `size` below 1 takes
    /// nothing. False when a token has no value, and `result` stays cleared; GetLastError is then what its
    /// source answered: 1168 for a name that a table does not have; E_INVALIDARG for a source that is not set
    /// up, a `$` name that is not 13 characters long and a value for `&` that has no code (less than 5
    /// bytes); Unknown_Binding_Table; the host's own code. Also E_OUTOFMEMORY, and E_INVALIDARG for null.
    /// What a table or host throws passes through: an `int` -1 of a table that is not initialised.
    bool Tokenize(const char *text, char *result, int size);

  protected:
    /// The host of a table code, of the first table for -1: 0, without a reference. Unknown_Binding_Table and
    /// `*host` as it was when there is none.
    long Get_Binding_Interface(long table, IBindingHostInterface **host);
    /// The codes at 1 and at 8 of a text of 13 characters, whatever the others are. E_INVALIDARG for any
    /// other length, and for null; the outputs then stay.
    long Get_Table_Field_Pair(const char *text, long *table, long *field);

  private:
    friend struct TokenizerLayout;
    class Expansion;

    KELMARA_INTERNAL void Drop_Token_Table();

    IBindingHostInterface *m_BindingHost = nullptr; // offset 4, a reference
    ComponentDescriptor *m_Descriptor = nullptr;    // offset 8, borrowed
    CHashTable *m_TokenTable = nullptr;             // offset 12
    CHashTable *m_VariableTable = nullptr;          // offset 16, borrowed
    CDSList m_BindingTables;                        // offset 20, of records that it owns (tokenizer.cpp)
    bool m_OwnsTokenTable = false;                  // offset 60
};
static_assert(sizeof(CTokenizer) == 64);
