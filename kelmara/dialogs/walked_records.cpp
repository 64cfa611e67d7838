#include <kelmara/dialogs/walked_records.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/foundation/memory.h>

namespace {

[[gnu::tls_model("initial-exec")]] constinit thread_local WalkedRecords *Innermost = nullptr;

void Free_Released(CDSList &records) {
    CIterator walk;
    for (void *entry = walk.Iterate(&records); walk.More(); entry = walk.Next()) {
        if (static_cast<const ControlsListEntry *>(entry)->m_Control) continue;
        walk.Delete_Current();
        ds_free(entry);
    }
}

} // namespace

WalkedRecords::WalkedRecords(CDSList &records) : m_Records(records), m_Around(Innermost) {
    Innermost = this;
}

WalkedRecords::~WalkedRecords() {
    Innermost = m_Around;
    if (!Are_Walked(m_Records)) Free_Released(m_Records);
}

bool WalkedRecords::Are_Walked(const CDSList &records) {
    for (const WalkedRecords *each = Innermost; each; each = each->m_Around) {
        if (&each->m_Records == &records) return true;
    }
    return false;
}

void WalkedRecords::Release(CDSList &records, ControlsListEntry *record) {
    record->m_Control = nullptr;
    if (Are_Walked(records)) return;
    records.Remove(record, 0);
    ds_free(record);
}
