#pragma once
// Texts under names, kept as the lines "NAME=TEXT" of one registry value: what is stored is always all of one
// set, also when a process is killed while it stores another. One thread of the process at a time.

#include <kelmara/containers/smart_buffer.h>

/// What may throw for want of memory leaves everything as it was.
class StoredLines {
  public:
    static constexpr long Largest = 65536; // bytes

    /// To be called first. Takes the lines of a value below HKEY_LOCAL_MACHINE; none when there is no such
    /// value. 0; ERROR_FILE_NOT_FOUND without the key; ERROR_INVALID_DATA for what is no lines, or too many;
    /// a code of the registry. What was here is gone.
    long Load(const char *key, const char *value);
    /// 0 when they are on the disk. ERROR_FILE_NOT_FOUND without the key, which is not made;
    /// ERROR_WRITE_FAULT when they are not known to be on the disk: others may read them all the same.
    long Store(const char *key, const char *value);

    /// Null when there is none. Valid until the lines change.
    const char *Find(const char *name) const;
    /// 0, E_OUTOFMEMORY, or ERROR_NOT_ENOUGH_QUOTA for more than Largest. `name` has no "=".
    long Set(const char *name, const char *text);
    void Remove(const char *name);

    /// The lines one after the other: the first for null, null behind the last.
    const char *Next(const char *line) const;

  private:
    long Take(const char *bytes, long size);
    const char *Line(const char *name) const;
    void Cut(const char *line);
    const char *End() const;

    mutable CSmartBuffer m_Lines; // each with its terminator
};
