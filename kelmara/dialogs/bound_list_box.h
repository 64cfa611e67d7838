#pragma once
// A list box in which each line is bound to a value of its own.
//
//     auto *list_box = cache.GetListboxControl();
//     list_box->AttachTo(window);
//     list_box->AddBoundListEntry(new CBoundListEntry(list_box, 0));     // the list box owns it from then on
//
// A line that is added, inserted or removed by anybody but the binding has every entry write: the line at the
// entry's place among the entries. A value is shown in the line with the entry's number, which is not always
// the same place. Everything else is as with the other bound controls (bound_control.h).

#include <kelmara/containers/list.h>
#include <kelmara/dialogs/bound_control.h>

// The base's destructor is not virtual, and this one is.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class CBoundListboxControl;

/// One line. It never has a window; an entry that is invalid neither shows nor writes. Values are of at most
/// 255 characters.
class KELMARA_API CBoundListEntry : public CBoundControlNotifier {
  public:
    CBoundListEntry(CBoundListboxControl *list_box, int index);
    CBoundListEntry(const CBoundListEntry &other);
    CBoundListEntry &operator=(const CBoundListEntry &other);
    virtual ~CBoundListEntry();

    void Binding_Changed() override;
    /// Null writes nothing.
    void Write_String(const char *text);

  protected:
    // Offsets are frozen.
    CBoundListboxControl *m_List; // offset 32
    int m_Index;                  // offset 36, the line's number

  private:
    friend struct BoundListBoxLayout;
};
static_assert(sizeof(CBoundListEntry) == 40);

class KELMARA_API CBoundListboxControl {
  public:
    KELMARA_CLASS_ALLOCATION

    /// Throws as a list does where there is no memory for the pool of items.
    CBoundListboxControl();
    CBoundListboxControl(const CBoundListboxControl &other);
    CBoundListboxControl &operator=(const CBoundListboxControl &other);
    /// Destroys the entries; a window that is still attached gets its procedure back.
    virtual ~CBoundListboxControl();

    /// As a notifier's, but messages are passed on to the procedure that the window has then.
    virtual bool AttachTo(HWND window);
    void Detach();

    /// Appends an entry made with `new`; null is ignored. Throws as a list's Add where there is no memory;
    /// the entry is then the caller's.
    void AddBoundListEntry(CBoundListEntry *entry);
    /// Has every entry write its line, an empty text where there is none. A line that is longer than 255
    /// characters passes whole, one for which there is no memory is left out.
    void ListChanged();
    /// Copies a line to `text`, which must take any line of the list. False and an empty text when there is
    /// none.
    bool GetEntry(int line, char *text);
    /// Replaces a line; one behind the last is appended. An empty text removes the line. The old line stays
    /// where there is no memory for the new one. Nothing for null and a line below 0. Nothing is written.
    void SetEntry(int line, const char *text);

  protected:
    static long ExternWndProc(HWND window, unsigned int message, unsigned int wparam, long lparam);

    // Offsets are frozen; the pointer to the virtual table is at 0.
    CDSList m_Entries;                     // offset 4
    void *m_UserData = nullptr;            // offset 44, the window's record
    BoundProcedure m_OldWndProc = nullptr; // offset 48, what messages are passed on to
    HWND m_Hwnd = nullptr;                 // offset 52, null when detached

  private:
    friend struct BoundWindow;
    friend struct BoundListBoxLayout;

    KELMARA_INTERNAL void Write_Line(int line, CBoundListEntry *entry);
};
static_assert(sizeof(CBoundListboxControl) == 56);

#pragma GCC diagnostic pop
