#pragma once
// Inside the library: a block for a record whose first word is its size and which grows until what a service
// has to tell fits; and texts in records that others filled.

#include <platform/local_memory.h>

/// Holds one block, which goes at the end of its scope.
class SizedRecord {
  public:
    SizedRecord() = default;
    ~SizedRecord() { LocalFree(m_Block); }
    SizedRecord(const SizedRecord &) = delete;
    SizedRecord &operator=(const SizedRecord &) = delete;

    /// Clears the block and writes its size, at least `size` bytes, into the first word. A block that is too
    /// small goes and a larger one comes. Null, with `label` as the debugger's text, without memory.
    void *Make(unsigned long size, const char *label);

    /// Bytes of the block, whatever a service has written into its first word.
    unsigned long Size() const { return m_Size; }

  private:
    HLOCAL m_Block = nullptr;
    unsigned long m_Size = 0;
};

/// A text in a record; it is not necessarily terminated.
struct RecordText {
    const char *start;
    unsigned long length;

    bool Equals(const char *text) const;
};

/// The text at an offset of a record of `size` bytes. It ends at its terminator or where the record does, and
/// is empty beyond it.
RecordText Text_In_Record(const void *record, unsigned long size, unsigned long offset);
