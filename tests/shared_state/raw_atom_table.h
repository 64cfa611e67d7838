#pragma once
// The shared block of the atom table, mapped beside the table as any process may map it.

#include <kelmara/shared_state/atom_table.h>

#include <platform/kernel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

class RawAtomTable {
  public:
    RawAtomTable() {
        mapping_ = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, Atom_Block_Size,
                                      "DS-ATOM-TABLE-HI-MOM");
        header = static_cast<AtomTableHeader *>(MapViewOfFile(mapping_, FILE_MAP_ALL_ACCESS, 0, 0, 0));
        records = reinterpret_cast<AtomRecord *>(reinterpret_cast<char *>(header) + 1036);
    }
    ~RawAtomTable() {
        UnmapViewOfFile(header);
        CloseHandle(mapping_);
    }

    std::vector<long> Chain() const {
        std::vector<long> slots;
        for (long slot = header->Head; slot != -1 && slots.size() <= 256; slot = records[slot].Next) {
            slots.push_back(slot);
        }
        return slots;
    }

    /// What must hold whenever nobody has the lock.
    void Expect_Whole() const {
        ASSERT_GE(header->Count, 0);
        ASSERT_LE(header->Count, 256);
        const std::vector<long> chain = Chain();
        ASSERT_EQ(chain.size(), static_cast<std::size_t>(header->Count));
        std::set<long> slots(header->FreeSlots, header->FreeSlots + (256 - header->Count));
        long before = -1;
        for (const long slot : chain) {
            slots.insert(slot);
            ASSERT_EQ(records[slot].Prev, before);
            ASSERT_EQ(records[slot].InUse, 1);
            before = slot;
        }
        ASSERT_EQ(header->Tail, before);
        ASSERT_EQ(slots.size(), 256u) << "one is free twice, free and in the chain, or twice in the chain";
        ASSERT_EQ(*slots.begin(), 0);
        ASSERT_EQ(*slots.rbegin(), 255);
        for (long slot = 0; slot < 256; ++slot) {
            ASSERT_EQ(records[slot].Slot, slot);
            ASSERT_EQ(records[slot].Reserved, 0);
        }
        ASSERT_EQ(std::count_if(records, records + 256, [](const AtomRecord &r) { return r.InUse; }),
                  header->Count);
    }

    AtomTableHeader *header = nullptr;
    AtomRecord *records = nullptr;

  private:
    HANDLE mapping_ = nullptr;
};
