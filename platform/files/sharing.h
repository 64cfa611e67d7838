#pragma once
// Files that are open as streams: such a file cannot be deleted or renamed, by no process of the machine.
//
// The mark is a shared lock of the host on the open file, so that it goes with its last descriptor. Whoever
// deletes or renames a file has it locked alone meanwhile. The lock on names, where it is needed too, is
// taken before; nobody who has a file's lock waits for another. Disks that know no locks have no marks.

#include <platform/kernel/file_descriptor.h>

#include <string>

/// For as long as the file behind the descriptor is open. Waits for whoever is deleting or renaming it, which
/// takes a moment; false when it is locked for longer than two seconds. It may have another name afterwards,
/// or none: Leads_To tells.
bool Mark_As_Open(int descriptor);

/// Before it is closed: children that were forked meanwhile have it open a little longer. Leaves errno alone.
void Unmark_As_Open(int descriptor);

/// Whether the path is one of the file behind the descriptor.
bool Leads_To(const std::string &host_path, int descriptor);

/// What a file's name is changed under: while it lives nobody of the machine opens, deletes or renames the
/// file. False when it is open somewhere. True, with nothing held, for what is no plain file, and for one
/// that may not be read.
class SoleUse {
  public:
    explicit SoleUse(const std::string &host_path);
    ~SoleUse();
    SoleUse(const SoleUse &) = delete;
    SoleUse &operator=(const SoleUse &) = delete;

    explicit operator bool() const { return granted_; }

  private:
    FileDescriptor file_;
    bool granted_ = false;
};
