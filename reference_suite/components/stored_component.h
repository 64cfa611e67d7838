#pragma once
// A component as it is stored: which one is open, its options, and a change of them under way.
//
// Options are read as they are stored at that moment. Under the edit lock they are read and changed in a copy
// of the component's own, which Commit stores whole; until then nobody else sees it, and without it, it is
// dropped with the lock. Taking the lock reads anew, so that no change of another is undone. What is `long`
// is 0 on success and E_UNEXPECTED for a call at the wrong time. One thread at a time; anything may throw for
// want of memory.

#include <reference_suite/components/edit_lock.h>
#include <reference_suite/components/stored_lines.h>

#include <kelmara/connectivity/component_records.h>

/// The longest text of an option: what the reader's usual 255 bytes hold.
inline constexpr long Longest_Option = 254;

class StoredComponent {
  public:
    explicit StoredComponent(long kind) : m_Kind(kind) {}

    /// In place of the one that is open, whose lock is given up. On failure that stays: E_INVALIDARG for no
    /// name and another kind, ERROR_FILE_NOT_FOUND for a component that is not stored.
    long Open(const ComponentLocator &locator);
    long Open(const char *name);
    /// The key of the open one below HKEY_LOCAL_MACHINE, empty for none.
    const std::string &Key() const { return m_Key; }

    /// ERROR_SHARING_VIOLATION when another object has the lock. Taking it twice is taking it once.
    long Set_Lock(bool on);
    /// Needs the lock, which stays. A failure keeps what is stored, and the change to be committed again.
    long Commit();
    /// Needs the lock. The text up to its terminator or `length`; E_INVALIDARG for null, for no length and
    /// for more than Longest_Option characters; 62 of an account or a password, which go into a record.
    long Set(unsigned long code, const char *data, long length);
    /// `*size` in: the buffer's; out: the text's; both with the terminator. ERROR_FILE_NOT_FOUND when there
    /// is none, ERROR_MORE_DATA when it does not fit: the buffer then gets an empty text, never a part.
    long Get(unsigned long code, char *buffer, long *size);

  private:
    static long Longest_Text(unsigned long code);
    long Load();

    const long m_Kind;
    std::string m_Key;
    EditLock m_Lock;
    StoredLines m_Options; // under the lock the change, otherwise what was read last
};
