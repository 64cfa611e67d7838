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

/// The list's values as numbers, separated by spaces: "1 2 3".
inline std::string Content(CDSList &list) {
    std::string text;
    CIterator walk;
    for (void *value = walk.Iterate(&list); walk.More(); value = walk.Next()) {
        if (!text.empty()) text += ' ';
        text += std::to_string(reinterpret_cast<long>(value));
    }
    return text;
}

inline void Add_Numbers(CDSList &list, int first, int last) {
    for (int number = first; number <= last; ++number) list.Add(number, 0);
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
        if (making == Throws) throw std::string("no item");
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
