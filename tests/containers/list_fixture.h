#pragma once
// The fixture of all list tests: at its end every item is back in the pool and every block released.

#include <kelmara/containers/iterator.h>
#include <kelmara/containers/list.h>

#include <tests/support/library_heap.h>
#include <tests/support/test_memory.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

// A list's destructor is not virtual, so classes derived from it have none either: here and in the tests.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

inline constexpr long Block_Bytes = 8000;
inline constexpr long Items_To_A_Block = 499; // one of 500 is never handed out

inline void *Value(long number) {
    return reinterpret_cast<void *>(number);
}

/// The list's values as numbers, in a row: "123".
inline std::string Content(CDSList &list) {
    std::string text;
    CIterator walk;
    for (void *value = walk.Iterate(&list); walk.More(); value = walk.Next()) {
        text += std::to_string(reinterpret_cast<long>(value));
    }
    return text;
}

inline void Add_Numbers(CDSList &list, int first, int last) {
    for (int number = first; number <= last; ++number) list.Add(number, 0);
}

/// Every way to add an entry; those from First_Copying on ask for memory of their own.
inline constexpr std::size_t First_Copying = 3, Push_Volatile = 4;
inline char Text_X[] = "\1x"; // with its length in front, and without
inline unsigned char *const Pascal_X = reinterpret_cast<unsigned char *>(Text_X);
inline bool (*const Additions[])(CDSList &list, long key) = {
    [](CDSList &list, long key) { return list.Add(Value(2), key); },
    [](CDSList &list, long key) { return list.Push(Value(2), key); },
    [](CDSList &list, long key) { return list.Insert(Value(2), 0, key); },
    [](CDSList &list, long key) { return list.AddVolatile(Text_X, 1, key) != nullptr; },
    [](CDSList &list, long key) { return list.PushVolatile(Text_X, 1, key); },
    [](CDSList &list, long key) { return list.AddCString(Text_X, key); },
    [](CDSList &list, long key) { return list.PushCString(Text_X, key); },
    [](CDSList &list, long key) { return list.AddPString(Pascal_X, key); },
    [](CDSList &list, long key) { return list.AddStr255(Pascal_X, key); },
};

/// What comes of an addition: "done", "refused" or what it threw.
inline std::string Outcome(bool (*addition)(CDSList &, long), CDSList &list, long key = 0) {
    try {
        return addition(list, key) ? "done" : "refused";
    } catch (int number) {
        return "int " + std::to_string(number);
    } catch (long number) {
        return "long " + std::to_string(number);
    } catch (CDSList::NoItem number) {
        return "no item " + std::to_string(number);
    } catch (const std::string &text) {
        return text;
    }
}

/// A list that makes no items when it is told so, and tells what is protected.
class OddList final : public CDSList {
  public:
    enum Making { From_Pool, Gives_Null, Throws };
    Making making = From_Pool;
    long made = 0, deleted = 0;

    using CDSList::contentsOfItem;
    using CDSList::GetListItem;

    CListItem *CreateNewItem(void *data, CListItem *prev, CListItem *next, long flag) override {
        return Makes() ? CDSList::CreateNewItem(data, prev, next, flag) : nullptr;
    }
    CListItem *CreateNewItem(void *data, CListItem *prev, long flag) override {
        return Makes() ? CDSList::CreateNewItem(data, prev, flag) : nullptr;
    }
    void DeleteItem(CListItem *item) override {
        ++deleted;
        CDSList::DeleteItem(item);
    }

  private:
    bool Makes() {
        if (making == Throws) throw std::string("own");
        if (making == From_Pool) ++made;
        return making == From_Pool;
    }
};

class Lists : public ::testing::Test {
  protected:
    Lists() {
        CDSList().Add(0, 0); // from here on there is a pool
        heap_.emplace();
        free_items_ = Free_Items();
    }
    ~Lists() override {
        const long grown = static_cast<long>(LibraryHeap::Blocks(Block_Bytes).size());
        EXPECT_EQ(Free_Items(), free_items_ + grown * Items_To_A_Block) << "items lost";
    }

    LibraryHeap &Heap() { return *heap_; }

    /// What the pool has in reserve: what can be added when it gets no more memory.
    long Free_Items() {
        CDSList all;
        heap_->Fail(1, true);
        long count = 0;
        try {
            for (;; ++count) all.Add(1, 0);
        } catch (long) {
        }
        heap_->Fail(0);
        return count;
    }

  private:
    NoLeak no_leak_;
    std::optional<LibraryHeap> heap_;
    long free_items_ = 0;
};
