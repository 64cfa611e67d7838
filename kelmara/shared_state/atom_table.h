#pragma once
// A small table of facts that all processes of the machine share.
//
// An atom is a record of 256 bytes under a two-part key, (group, id). Every process that calls Initialize
// sees the same 256 records; they have no owner and last until somebody deletes them or the last process lets
// go of the table. All users give Initialize the same name: it names the lock, and there is one block of
// records.
//
//     CAtomTable table;
//     if (table.Initialize("SUITE-ATOMS") != 0) return;
//     long slot = table.New_Atom(1, 42, "hello", 6);
//
// Any thread of any process may call any operation; each takes the lock and waits for it as long as it takes.
// A process killed in the middle of a change leaves no trace of it: whoever takes the lock next puts the
// table in order, with every atom whose New_Atom had returned and none whose Delete_Atom had. (Bytes that a
// killed Set_Atom_Data had copied already stay.) A copy of a table object attaches to the table by itself;
// where it cannot, it is one on which Initialize has failed.

#include <kelmara/foundation/auto_deleteable_object.h>

class CMutexHolder;

inline constexpr long Atom_Capacity = 256;
inline constexpr long Atom_Data_Size = 256; // bytes

/// The shared block's layout, frozen: the header, then the records. Native little-endian, 32-bit words.
struct AtomTableHeader {
    long Count;                    // offset 0, atoms in use
    long Head;                     // offset 4, slot of the oldest atom, -1 when empty
    long Tail;                     // offset 8, slot of the newest atom, -1 when empty
    long FreeSlots[Atom_Capacity]; // offset 12, of which the first 256 - Count are free, next to hand out
                                   // first
};
struct AtomRecord {
    long Slot;     // offset 0, the record's own number
    long InUse;    // offset 4, 1 while it holds an atom
    long Prev;     // offset 8, slot of the atom made before, -1 at the head
    long Next;     // offset 12, slot of the atom made after, -1 at the tail
    long Group;    // offset 16
    long Id;       // offset 20
    long Reserved; // offset 24, always 0 for whoever holds the lock
    char Data[Atom_Data_Size];
};
static_assert(offsetof(AtomTableHeader, FreeSlots) == 12 && sizeof(AtomTableHeader) == 1036);
static_assert(offsetof(AtomRecord, Group) == 16 && offsetof(AtomRecord, Data) == 28);
static_assert(sizeof(AtomRecord) == 284);
inline constexpr unsigned long Atom_Block_Size = sizeof(AtomTableHeader) + Atom_Capacity * sizeof(AtomRecord);
static_assert(Atom_Block_Size == 0x1200C);

class KELMARA_API CAtomTable : public CAutoDeleteableObject {
  public:
    CAtomTable();
    CAtomTable(const CAtomTable &other);
    CAtomTable &operator=(const CAtomTable &other);
    ~CAtomTable() override;

    /// Attaches to the table, making it if nobody has it. A null `name` is "DS-GENERIC_ATOM_TABLE". 0 on
    /// success; -1 when the lock could not be had; otherwise the Win32 code of what failed, among them 206
    /// for a name of more than 249 characters; a process of another layout on the machine shows as -1, for
    /// its mutex, or as 1306. After a failure every operation fails until an Initialize succeeds; an object
    /// that was attached before stays as it was.
    long Initialize(const char *name);

    /// Makes an atom with the first `size` bytes of `data`, at most 256; the bytes behind them are what an
    /// earlier atom left. The atom's slot, 0 to 255; -1 when the table is full or the lock was not had; -183
    /// when the key exists, whose atom stays as it is. Here and below a size under 0 counts as 0, and null
    /// `data` as no data.
    long New_Atom(long group, long id, const char *data, long size);

    /// Copies the first `size` bytes, at most 256, to `buffer`; a null buffer only asks whether the atom
    /// exists. False, and the buffer untouched, when it does not or `slot` is not 0 to 255.
    bool Get_Atom_Data(long group, long id, char *buffer, long size);
    bool Get_Atom_Data(long slot, char *buffer, long size);

    /// Overwrites the first `size` bytes, at most 256; the rest stays. False when there is no such atom.
    bool Set_Atom_Data(long group, long id, const char *data, long size);
    bool Set_Atom_Data(long slot, const char *data, long size);

    /// Calls `callback` for each atom of the group, oldest first, until it answers false. `data` points into
    /// the shared block and is valid during the call. The lock is held throughout: the callback must be
    /// short. It may make, change and delete atoms of this table, the one it is handed too; it may not attach
    /// the object anew, assign to it or destroy it. A walk that its callback prolongs ends after 65,536
    /// atoms. Always false.
    bool Iterate_Atoms(long group, bool (*callback)(long slot, long id, char *data, long user), long user);

    /// False when there is no such atom.
    bool Delete_Atom(long group, long id);
    bool Delete_Atom(long slot);

  protected:
    /// Both with the lock held. The slot, or -1; a slot that holds no atom is left alone.
    long Get_Atom_Index(long group, long id);
    void Release_Atom(long slot);

  private:
    KELMARA_INTERNAL bool Take_Lock(CMutexHolder &lock);
    KELMARA_INTERNAL bool Holds_Atom(long slot) const;
    KELMARA_INTERNAL long Attach();
    KELMARA_INTERNAL long Attach_To_Block();
    KELMARA_INTERNAL bool Is_Half_Made() const;
    KELMARA_INTERNAL void Swap(CAtomTable &other);
    KELMARA_INTERNAL void Make_Fresh();
    KELMARA_INTERNAL void Repair();
    KELMARA_INTERNAL void Detach();

    AtomTableHeader *m_Header = nullptr;
    AtomRecord *m_Records = nullptr;
    char m_Name[256] = {};
    HANDLE m_Mutex = nullptr;
    HANDLE m_Mapping = nullptr;
};
static_assert(sizeof(CAtomTable) == 276);
