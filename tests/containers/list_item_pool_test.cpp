#include <tests/containers/list_fixture.h>

#include <tests/support/second_process.h>

#include <platform/errors.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <unistd.h>

namespace {

struct Pool : Lists {
    // All blocks that were there are empty now; one block is fresh but for a single item.
    Pool() {
        for (long left = Free_Items() + 1; left > 0; --left) filler_.Add(1, 0);
        EXPECT_EQ(Blocks().size(), 1u);
    }

    static std::vector<char *> Blocks() { return LibraryHeap::Blocks(Block_Bytes); }

  private:
    CDSList filler_;
};

char *First_Item(CDSList &list) {
    CIterator walk;
    return static_cast<char *>(walk.Iterate(&list, static_cast<short>(0)));
}

TEST_F(Pool, FillsABlockTo499) {
    CDSList list;
    for (long n = 0; n < 498; ++n) list.Add(1, 0);
    EXPECT_EQ(Blocks().size(), 1u);
    EXPECT_EQ(LibraryHeap::Blocks(2000).size(), 1u) << "its stack of 500 places";
    list.Add(1, 0);
    EXPECT_EQ(Blocks().size(), 2u);
    EXPECT_EQ(Live_Blocks(), 0) << "the memory services are not asked";
    list.Pop(0);
    for (long n = 0; n < 498; ++n) list.Add(1, 0);
    list.Add(1, 0);
    EXPECT_EQ(Blocks().size(), 2u) << "when the second is empty the first serves again";
    list.Add(1, 0);
    EXPECT_EQ(Blocks().size(), 3u);
}

struct OpenList final : CDSList {
    using CDSList::DeleteItem;
};

TEST_F(Pool, MarksWhatComesBackAndIgnoresTheRest) {
    OpenList list;
    list.Push(5, 0);
    list.Push(6, 0);
    char *item = First_Item(list);
    list.Pop(0);
    EXPECT_EQ(std::string(item, 16), std::string(16, '\xDB'));

    CListItem foreign;
    foreign.InitListItem(Value(1), 0);
    list.DeleteItem(&foreign);
    EXPECT_EQ(foreign.Entry, Value(1));
    list.DeleteItem(nullptr);
    list.DeleteItem(reinterpret_cast<CListItem *>(item));
    list.Push(7, 0);
    EXPECT_EQ(First_Item(list), item);
    list.Push(8, 0);
    EXPECT_NE(First_Item(list), item) << "given back twice, it is handed out once";
}

TEST_F(Pool, ThrowsWhenMemoryRunsOut) {
    const auto outcome = [](auto operation) -> std::string {
        try {
            return operation() ? "done" : "refused";
        } catch (int number) {
            return "int " + std::to_string(number);
        } catch (long number) {
            return "long " + std::to_string(number);
        }
    };
    const std::initializer_list<bool (*)(CDSList &)> operations = {
        [](CDSList &full) { return full.Add(2, 0); },
        [](CDSList &full) { return full.Push(2, 0); },
        [](CDSList &full) { return full.Insert(Value(2), 3, 0); },
        [](CDSList &full) { return full.PushCString("2", 0); },
        [](CDSList &full) { return full.AddCString(const_cast<char *>("2"), 0); },
    };
    CDSList list;
    for (long n = 0; n < 498; ++n) list.Add(1, 0);
    const long blocks_before = LibraryHeap::Live_Blocks();
    std::vector<std::string> thrown;
    for (long nth = 1;; ++nth) {
        Heap().Fail(nth);
        thrown.push_back(outcome([&] { return list.Add(2, 0); }));
        if (thrown.back() == "done") break;
        const NoLeak no_leak;
        for (const auto operation : operations) {
            Heap().Fail(nth);
            EXPECT_EQ(outcome([&] { return operation(list); }), thrown.back()) << nth;
        }
        char text[] = "";
        Heap().Fail(nth);
        EXPECT_FALSE(list.PushVolatile(text, 1, 0));
        Heap().Fail(nth);
        EXPECT_EQ(list.ShallowClone(), nullptr);
        EXPECT_EQ(list.Entries(0), 498);
        EXPECT_LE(LibraryHeap::Live_Blocks(), blocks_before + 2) << "but for tables that have grown already";
    }
    EXPECT_EQ(std::erase(thrown, "done"), 1u);
    EXPECT_EQ(std::erase(thrown, "int -1"), 2u) << "the two parts of a block";
    EXPECT_GE(std::erase(thrown, "long " + std::to_string(E_OUTOFMEMORY)), 1u) << "the tables";
    EXPECT_TRUE(thrown.empty());
    EXPECT_EQ(Blocks().size(), 2u);
}

// --- beside a model of it ---------------------------------------------------------------------------------

// Where blocks come to lie: close together, below and above those before. They are listed as they are given
// out.
constexpr long Most_Blocks = 64;
char arena[Most_Blocks * Block_Bytes];
std::vector<char *> blocks;

void *Scattered_Malloc(std::size_t size) {
    if (size != Block_Bytes) return std::malloc(size);
    const std::size_t place = (Most_Blocks - 1 - blocks.size()) ^ 1; // 62, 63, 60, 61 ...
    blocks.push_back(arena + place * Block_Bytes);
    return blocks.back();
}

// The items as the pool is to hand them out.
class Model {
  public:
    char *Take() {
        if (free_.empty() || free_[current_].size() == 1) Choose_Block();
        char *item = free_[current_].back();
        free_[current_].pop_back();
        return item;
    }
    void Return(char *item) {
        for (std::size_t block = 0; block < free_.size(); ++block) {
            if (item >= blocks[block] && item < blocks[block] + Block_Bytes) free_[block].push_back(item);
        }
    }

  private:
    void Choose_Block() {
        for (current_ = 0; current_ < free_.size(); ++current_) {
            if (free_[current_].size() > 1) return;
        }
        free_.emplace_back();
        for (long i = 0; i < 500; ++i) free_.back().push_back(blocks.at(current_) + i * 16);
    }

    std::vector<std::vector<char *>> free_;
    std::size_t current_ = 0;
};

std::string Use_At_Random() {
    Model model;
    CDSList plain[4];
    OddList odd[2]; // goes the long way round
    CDSList *lists[] = {plain, plain + 1, plain + 2, plain + 3, odd, odd + 1};
    std::mt19937 random(5);
    long most = 0, count = 0;
    for (long step = 0; step < 200000; ++step) {
        CDSList &list = *lists[random() % 6];
        if (step % 25000 == 0) most = most == 15000 ? 300 : 15000; // ebb and flow
        if (count < most && random() % 3 != 0) {
            ++count;
            list.Push(Value(step), 0);
            if (First_Item(list) != model.Take()) return "another item at step " + std::to_string(step);
        } else if (list.Entries(0) > 0) {
            --count;
            char *item = First_Item(list);
            list.Pop(0);
            model.Return(item);
        }
    }
    return blocks.size() > 15 ? "as the model" : "too few blocks";
}

SECOND_PROCESS(uses_the_pool_at_random) {
    const ReplacedImport malloc("libkelmara.so", "malloc", reinterpret_cast<void *>(Scattered_Malloc));
    process.Tell(Use_At_Random());
    std::_Exit(0); // nobody is to free the arena
}

TEST(PoolAtRandom, ServesItemsFromTheFirstBlockThatHasSome) {
    SecondProcess user("uses_the_pool_at_random");
    EXPECT_EQ(user.Hear(), "as the model");
    EXPECT_EQ(user.Wait(), 0) << user.Errors();
}

// --- what happens at the exit of a process ----------------------------------------------------------------

LibraryHeap *last_heap = nullptr; // watches to the very end
CDSList *last_list = nullptr;

// Runs when the C runtime flushes its streams, behind all exit routines.
ssize_t Tell_At_Last(void *, const char *, std::size_t size) {
    std::string report;
    if (last_list) {
        last_list->Add(2, 0);
        report = std::to_string(last_list->Entries(0)) + " entries, ";
        last_list->~CDSList();
    }
    report += std::to_string(LibraryHeap::Live_Blocks()) + " blocks";
    CDSList().Add(1, 0); // a new pool
    delete last_heap;
    report += "\n";
    if (write(STDOUT_FILENO, report.data(), report.size()) < 0) return 0;
    return static_cast<ssize_t>(size);
}

void Arrange_Last_Word() {
    last_heap = new LibraryHeap;
    FILE *stream = fopencookie(nullptr, "w", {nullptr, Tell_At_Last, nullptr, nullptr});
    std::fputs("?", stream);
}

SECOND_PROCESS(leaves_a_list_behind) {
    Arrange_Last_Word();
    alignas(CDSList) static char place[sizeof(CDSList)];
    last_list = new (place) CDSList;
    for (long n = 0; n < 600; ++n) last_list->Add(1, 0);
    return 0;
}

SECOND_PROCESS(leaves_no_list) {
    Arrange_Last_Word();
    CDSList list;
    list.Add(1, 0);
    process.Tell(std::to_string(LibraryHeap::Live_Blocks()));
    return 0;
}

TEST(PoolAtExit, GoesWithTheLastList) {
    SecondProcess survivor("leaves_a_list_behind");
    EXPECT_EQ(survivor.Hear(), "601 entries, 0 blocks");
    EXPECT_EQ(survivor.Wait(), 0) << survivor.Errors();
    SecondProcess tidy("leaves_no_list");
    EXPECT_NE(tidy.Hear(), "0");
    EXPECT_EQ(tidy.Hear(), "0 blocks");
    EXPECT_EQ(tidy.Wait(), 0) << tidy.Errors();
}

} // namespace
