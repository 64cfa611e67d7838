#include <kelmara/shared_state/atom_table.h>

#include <kelmara/shared_state/mutex_holder.h>

#include <platform/kernel.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <utility>

// A process may be killed between any two instructions of a change. So each change is made in steps of which
// one decides, and is fenced by a mark in the block:
//   - New_Atom fills its record while nothing leads to it; the link from the chain decides.
//   - Release_Atom decides by clearing InUse; the record keeps its links, so the chain still leads through
//   it.
//   - Count, Tail, Prev and FreeSlots follow from that, and are made anew by whoever finds the mark set.
// The mark is the Reserved word of record 0, which is 0 again before the lock is given up.

namespace {

constexpr char Block_Name[] = "DS-ATOM-TABLE-HI-MOM";
constexpr char Default_Name[] = "DS-GENERIC_ATOM_TABLE";
constexpr char Mutex_Suffix[] = "-MUTEX";
constexpr long None = -1;
constexpr long Key_Exists = -ERROR_ALREADY_EXISTS;

// A chain that a stray write has bent into a ring ends too. Far above what a walk needs whose callback makes
// and deletes atoms.
constexpr int Most_Steps_Of_A_Walk = 65536;

// Keeps the compiler from moving stores over the border of a step.
void End_Step() {
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

class MarkedChange {
  public:
    explicit MarkedChange(AtomRecord *records) : m_Mark(records[0].Reserved) {
        m_Mark = 1;
        End_Step();
    }
    ~MarkedChange() {
        End_Step();
        m_Mark = 0;
    }
    MarkedChange(const MarkedChange &) = delete;
    MarkedChange &operator=(const MarkedChange &) = delete;

  private:
    long &m_Mark;
};

constexpr bool Is_Slot(long slot) {
    return slot >= 0 && slot < Atom_Capacity;
}

constexpr std::size_t Bounded_Size(long size) {
    if (size < 0) return 0;
    return static_cast<std::size_t>(size < Atom_Data_Size ? size : Atom_Data_Size);
}

// A whole atom is the usual size, which the compiler copies in place.
void Copy_Out(char *to, const char *from, long size) {
    if (!to) return;
    if (size >= Atom_Data_Size)
        std::memcpy(to, from, Atom_Data_Size);
    else
        std::memcpy(to, from, Bounded_Size(size));
}

// The caller's bytes may be those of an atom, handed to it by an iteration.
void Copy_In(char *to, const char *from, long size) {
    if (from) std::memmove(to, from, Bounded_Size(size));
}

// The atoms that the chain leads to, oldest first; how many.
long Collect_Chain(const AtomTableHeader &header, const AtomRecord *records, long (&chain)[Atom_Capacity]) {
    bool seen[Atom_Capacity] = {};
    long count = 0;
    for (long slot = header.Head; Is_Slot(slot) && !seen[slot]; slot = records[slot].Next) {
        seen[slot] = true;
        if (records[slot].InUse) chain[count++] = slot;
    }
    return count;
}

// The slots outside the chain, those that stand in the old list first and in its order.
void Collect_Free(const long (&old_list)[Atom_Capacity], bool (&taken)[Atom_Capacity],
                  long (&free_slots)[Atom_Capacity]) {
    long count = 0;
    const auto add = [&](long slot) {
        if (!Is_Slot(slot) || taken[slot]) return;
        taken[slot] = true;
        free_slots[count++] = slot;
    };
    for (const long slot : old_list) add(slot);
    for (long slot = 0; slot < Atom_Capacity; ++slot) add(slot);
}

} // namespace

CAtomTable::CAtomTable() = default;

CAtomTable::CAtomTable(const CAtomTable &other) : CAutoDeleteableObject(other) {
    *this = other;
}

CAtomTable &CAtomTable::operator=(const CAtomTable &other) {
    if (this == &other) return *this;
    Detach();
    std::memcpy(m_Name, other.m_Name, sizeof m_Name);
    if (other.m_Header) Initialize(other.m_Name);
    return *this;
}

CAtomTable::~CAtomTable() {
    Detach();
}

void CAtomTable::Detach() {
    if (m_Mutex) CloseHandle(m_Mutex);
    if (m_Header) UnmapViewOfFile(m_Header);
    if (m_Mapping) CloseHandle(m_Mapping);
    m_Mutex = nullptr;
    m_Header = nullptr;
    m_Records = nullptr;
    m_Mapping = nullptr;
}

// What is attached already stays until the new is had, so that the last holder of the block keeps its atoms.
long CAtomTable::Initialize(const char *name) {
    if (!name) name = Default_Name;
    if (std::strlen(name) + sizeof Mutex_Suffix > sizeof m_Name) return ERROR_FILENAME_EXCED_RANGE;
    CAtomTable fresh;
    std::memcpy(fresh.m_Name, name, std::strlen(name) + 1);
    const long result = fresh.Attach();
    if (result != 0 && m_Header) return result;
    Swap(fresh);
    return result;
}

void CAtomTable::Swap(CAtomTable &other) {
    std::swap(m_Header, other.m_Header);
    std::swap(m_Records, other.m_Records);
    std::swap(m_Name, other.m_Name);
    std::swap(m_Mutex, other.m_Mutex);
    std::swap(m_Mapping, other.m_Mapping);
}

long CAtomTable::Attach() {
    char mutex_name[sizeof m_Name];
    std::snprintf(mutex_name, sizeof mutex_name, "%.249s%s", m_Name, Mutex_Suffix);
    m_Mutex = CreateMutexA(nullptr, FALSE, mutex_name);
    CMutexHolder lock;
    if (m_Mutex) lock.Acquire(m_Mutex, -1);
    if (!lock.Is_Held()) return -1;
    return Attach_To_Block();
}

long CAtomTable::Attach_To_Block() {
    const HANDLE mapping =
        CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, Atom_Block_Size, Block_Name);
    const long error = static_cast<long>(GetLastError());
    if (error != NO_ERROR && error != ERROR_ALREADY_EXISTS) return error;

    // The size is asked for, so that a smaller block is refused.
    void *view = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, Atom_Block_Size);
    if (!view) {
        const long map_error = static_cast<long>(GetLastError());
        CloseHandle(mapping);
        return map_error;
    }
    m_Mapping = mapping;
    m_Header = static_cast<AtomTableHeader *>(view);
    m_Records = reinterpret_cast<AtomRecord *>(static_cast<char *>(view) + sizeof(AtomTableHeader));
    if (error == NO_ERROR || Is_Half_Made())
        Make_Fresh();
    else if (m_Records[0].Reserved)
        Repair();
    return 0;
}

// The block of a process that was killed in Make_Fresh: an empty table of which Head was not yet written. A
// change that was cut short has its mark.
bool CAtomTable::Is_Half_Made() const {
    return m_Header->Count == 0 && m_Header->Head != None && !m_Records[0].Reserved;
}

// The block is zero-filled when it comes here, but for what an earlier Make_Fresh wrote. Head says that it is
// done.
void CAtomTable::Make_Fresh() {
    for (long i = 0; i < Atom_Capacity; ++i) {
        m_Header->FreeSlots[i] = i;
        m_Records[i].Slot = i;
    }
    m_Header->Tail = None;
    End_Step();
    m_Header->Head = None;
}

// Makes everything anew that follows from the chain. May itself be cut short: the links that it writes lead
// through the same atoms as those that it finds, and the mark stays set until all is done.
void CAtomTable::Repair() {
    long chain[Atom_Capacity];
    const long count = Collect_Chain(*m_Header, m_Records, chain);
    long free_slots[Atom_Capacity];
    bool taken[Atom_Capacity] = {};
    for (long i = 0; i < count; ++i) taken[chain[i]] = true;
    Collect_Free(m_Header->FreeSlots, taken, free_slots);

    MarkedChange change(m_Records);
    for (long i = 0; i < count; ++i) {
        m_Records[chain[i]].Prev = i > 0 ? chain[i - 1] : None;
        m_Records[chain[i]].Next = i + 1 < count ? chain[i + 1] : None;
    }
    m_Header->Head = count > 0 ? chain[0] : None;
    m_Header->Tail = count > 0 ? chain[count - 1] : None;
    End_Step();
    for (long i = 0; i < Atom_Capacity - count; ++i) {
        m_Records[free_slots[i]].InUse = 0;
        m_Header->FreeSlots[i] = free_slots[i];
    }
    m_Header->Count = count;
}

bool CAtomTable::Take_Lock(CMutexHolder &lock) {
    if (!m_Header) return false;
    lock.Acquire(m_Mutex, -1);
    if (!lock.Is_Held()) return false;
    if (m_Records[0].Reserved) [[unlikely]]
        Repair();
    return true;
}

bool CAtomTable::Holds_Atom(long slot) const {
    return Is_Slot(slot) && m_Records[slot].InUse;
}

long CAtomTable::New_Atom(long group, long id, const char *data, long size) {
    CMutexHolder lock;
    if (!Take_Lock(lock)) return -1;
    const long count = m_Header->Count;
    if (count < 0 || count >= Atom_Capacity) return -1;
    if (Get_Atom_Index(group, id) != None) return Key_Exists;
    const long slot = m_Header->FreeSlots[0];
    if (!Is_Slot(slot)) return -1;

    AtomRecord &record = m_Records[slot];
    MarkedChange change(m_Records);
    record.Group = group;
    record.Id = id;
    record.Prev = m_Header->Tail;
    record.Next = None;
    Copy_In(record.Data, data, size);
    record.InUse = 1;
    End_Step();
    if (Is_Slot(record.Prev)) m_Records[record.Prev].Next = slot;
    if (m_Header->Head == None) m_Header->Head = slot;
    End_Step();
    m_Header->Tail = slot;
    m_Header->Count = count + 1;
    std::memmove(m_Header->FreeSlots, m_Header->FreeSlots + 1,
                 static_cast<std::size_t>(Atom_Capacity - count - 1) * sizeof(long));
    return slot;
}

void CAtomTable::Release_Atom(long slot) {
    const long count = m_Header->Count;
    if (count <= 0 || count > Atom_Capacity || !Holds_Atom(slot)) return;
    AtomRecord &record = m_Records[slot];
    MarkedChange change(m_Records);
    record.InUse = 0;
    End_Step();
    if (Is_Slot(record.Next)) m_Records[record.Next].Prev = record.Prev;
    if (Is_Slot(record.Prev)) m_Records[record.Prev].Next = record.Next;
    if (m_Header->Head == slot) m_Header->Head = record.Next;
    if (m_Header->Tail == slot) m_Header->Tail = record.Prev;
    m_Header->Count = count - 1;
    m_Header->FreeSlots[Atom_Capacity - count] = slot;
}

long CAtomTable::Get_Atom_Index(long group, long id) {
    long slot = m_Header->Head;
    for (long steps = 0; steps < Atom_Capacity && Is_Slot(slot); ++steps) {
        const AtomRecord &record = m_Records[slot];
        if (record.Group == group && record.Id == id) return slot;
        slot = record.Next;
    }
    return None;
}

bool CAtomTable::Get_Atom_Data(long group, long id, char *buffer, long size) {
    CMutexHolder lock;
    if (!Take_Lock(lock)) return false;
    const long slot = Get_Atom_Index(group, id);
    if (slot == None) return false;
    Copy_Out(buffer, m_Records[slot].Data, size);
    return true;
}

bool CAtomTable::Get_Atom_Data(long slot, char *buffer, long size) {
    CMutexHolder lock;
    if (!Take_Lock(lock) || !Holds_Atom(slot)) return false;
    Copy_Out(buffer, m_Records[slot].Data, size);
    return true;
}

bool CAtomTable::Set_Atom_Data(long group, long id, const char *data, long size) {
    CMutexHolder lock;
    if (!Take_Lock(lock)) return false;
    const long slot = Get_Atom_Index(group, id);
    if (slot == None) return false;
    Copy_In(m_Records[slot].Data, data, size);
    return true;
}

bool CAtomTable::Set_Atom_Data(long slot, const char *data, long size) {
    CMutexHolder lock;
    if (!Take_Lock(lock) || !Holds_Atom(slot)) return false;
    Copy_In(m_Records[slot].Data, data, size);
    return true;
}

bool CAtomTable::Delete_Atom(long group, long id) {
    CMutexHolder lock;
    if (!Take_Lock(lock)) return false;
    const long slot = Get_Atom_Index(group, id);
    if (slot == None) return false;
    Release_Atom(slot);
    return true;
}

bool CAtomTable::Delete_Atom(long slot) {
    CMutexHolder lock;
    if (!Take_Lock(lock) || !Holds_Atom(slot)) return false;
    Release_Atom(slot);
    return true;
}

// A released record keeps its links, so the walk goes on from an atom that its callback has deleted.
bool CAtomTable::Iterate_Atoms(long group, bool (*callback)(long slot, long id, char *data, long user),
                               long user) {
    CMutexHolder lock;
    if (!Take_Lock(lock)) return false;
    long slot = m_Header->Head;
    for (int steps = 0; steps < Most_Steps_Of_A_Walk && Is_Slot(slot); ++steps) {
        AtomRecord &record = m_Records[slot];
        if (record.InUse && record.Group == group && !callback(slot, record.Id, record.Data, user)) break;
        slot = record.Next;
    }
    return false;
}
