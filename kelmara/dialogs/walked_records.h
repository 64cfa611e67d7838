#pragma once
// Inside the library: keeps a list of controls' records whole while it is walked and windows are moved, whose
// procedures may release controls.

#include <kelmara/dialogs/auto_position.h>

/// For the length of a scope of this thread, records that are released stay in their list with a null
/// control. They go at the end of the outermost scope for that list.
class WalkedRecords {
  public:
    explicit WalkedRecords(CDSList &records);
    ~WalkedRecords();
    WalkedRecords(const WalkedRecords &) = delete;
    WalkedRecords &operator=(const WalkedRecords &) = delete;

    /// Takes a record out of its list and frees it, now or when nobody walks it any more.
    static void Release(CDSList &records, ControlsListEntry *record);

  private:
    static bool Are_Walked(const CDSList &records);

    CDSList &m_Records;
    WalkedRecords *const m_Around;
};
