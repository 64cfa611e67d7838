#include <tests/containers/list_fixture.h>

#include <tests/support/second_process.h>

#include <platform/errors.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <unistd.h>

namespace {

struct Pool : Lists {
    Pool() { // leaves all blocks that were there empty, and a fresh one but for a single item
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

TEST_F(Pool, MarksWhatComesBackAndIgnoresTheRest) {
    OddList list;
    list.Push(5, 0);
    list.Push(6, 0);
    char *item = First_Item(list);
    list.Pop(0);
    EXPECT_EQ(std::string(item, 16), std::string(16, '\xDB'));

    CListItem foreign;
    foreign.InitListItem(Value(1), 0);
    list.DeleteItem(&foreign);
    EXPECT_EQ(foreign.Entry, Value(1));
    list.DeleteItem(reinterpret_cast<CListItem *>(item));
    list.Push(7, 0);
    EXPECT_EQ(First_Item(list), item);
    list.Push(8, 0);
    EXPECT_NE(First_Item(list), item) << "given back twice, it is handed out once";
}

TEST_F(Pool, ThrowsWhenMemoryRunsOut) {
    CDSList list;
    for (long n = 0; n < 498; ++n) list.Add(1, 0);
    const long blocks_before = LibraryHeap::Live_Blocks();
    std::vector<std::string> thrown;
    for (long nth = 1;; ++nth) {
        Heap().Fail(nth);
        thrown.push_back(Outcome(Additions[0], list));
        if (thrown.back() == "done") break;
        const NoLeak no_leak;
        for (const auto &addition : Additions) {
            Heap().Fail(nth);
            const bool quiet = &addition == &Additions[Push_Volatile];
            EXPECT_EQ(Outcome(addition, list), quiet ? "refused" : thrown.back()) << &addition - Additions;
        }
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

// Where blocks come to lie: close together, below and above those before; listed as they are given out.
constexpr long Most_Blocks = 64;
char arena[Most_Blocks * Block_Bytes];
std::vector<char *> blocks;

void *Scattered_Malloc(std::size_t size) {
    if (size != Block_Bytes) return std::malloc(size);
    const std::size_t place = (Most_Blocks - 1 - blocks.size()) ^ 1; // 62, 63, 60, 61 ...
    blocks.push_back(arena + place * Block_Bytes);
    return blocks.back();
}

SECOND_PROCESS(uses_the_pool_at_random) {
    const ReplacedImport malloc("libkelmara.so", "malloc", reinterpret_cast<void *>(Scattered_Malloc));
    std::vector<std::vector<char *>> free; // the items as the pool is to hand them out
    std::size_t current = 0;
    const auto take = [&] {
        if (free.empty() || free[current].size() == 1) {
            for (current = 0; current < free.size() && free[current].size() == 1; ++current) {
            }
        }
        if (current == free.size()) {
            free.emplace_back();
            for (long i = 0; i < 500; ++i) free.back().push_back(blocks.at(current) + i * 16);
        }
        char *item = free[current].back();
        free[current].pop_back();
        return item;
    };
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
            if (First_Item(list) != take()) std::_Exit(2);
        } else if (list.Entries(0) > 0) {
            --count;
            char *item = First_Item(list);
            list.Pop(0);
            const auto its_block = [&](char *block) { return item >= block && item < block + Block_Bytes; };
            const auto block = std::find_if(blocks.begin(), blocks.end(), its_block);
            free[static_cast<std::size_t>(block - blocks.begin())].push_back(item);
        }
    }
    std::_Exit(blocks.size() > 15 ? 0 : 3); // nobody is to free the arena
}

TEST(PoolAtRandom, ServesItemsFromTheFirstBlockThatHasSome) {
    SecondProcess user("uses_the_pool_at_random");
    EXPECT_EQ(user.Wait(), 0) << "2: not the model's item; 3: too few blocks" << user.Errors();
}

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
    report += std::to_string(LibraryHeap::Live_Blocks()) + " blocks\n";
    CDSList().Add(1, 0); // a new pool
    delete last_heap;
    return write(STDOUT_FILENO, report.data(), report.size()) < 0 ? 0 : static_cast<ssize_t>(size);
}

SECOND_PROCESS(ends_after_a_list) {
    last_heap = new LibraryHeap;
    std::fputs("?", fopencookie(nullptr, "w", {nullptr, Tell_At_Last, nullptr, nullptr}));
    alignas(CDSList) static char place[sizeof(CDSList)];
    CDSList list;
    if (!process.Arguments().empty()) last_list = new (place) CDSList;
    for (long n = 0; n < 600; ++n) (last_list ? last_list : &list)->Add(1, 0);
    process.Tell(std::to_string(LibraryHeap::Live_Blocks()));
    return 0;
}

TEST(PoolAtExit, GoesWithTheLastList) {
    SecondProcess tidy("ends_after_a_list"), survivor("ends_after_a_list", {"and leaves one behind"});
    for (SecondProcess *process : {&tidy, &survivor}) {
        EXPECT_NE(process->Hear(), "0");
        EXPECT_EQ(process->Hear(), process == &tidy ? "0 blocks" : "601 entries, 0 blocks");
        EXPECT_EQ(process->Wait(), 0) << process->Errors();
    }
}

} // namespace
