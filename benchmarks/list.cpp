// What the list's pool of items saves: filled, drained and used as a stack, beside the C++ library's list on
// its heap and, where Boost is at hand, on the fastest of Boost's pools.

#include <benchmarks/growth.h>

#include <kelmara/kelmara.h>

#include <list>
#include <vector>

#if defined(HAS_BOOST)
#include <boost/pool/pool_alloc.hpp>
#endif

namespace {

constexpr long Entries = 100000;
constexpr long Depth = 100;
constexpr long Lists = 1000;

void *Value(long number) {
    return reinterpret_cast<void *>(number);
}

struct OurList {
    CDSList list;
    void Append(void *value) { list.Add(value, 0); }
    void Push(void *value) { list.Push(value, 0); }
    void *Pop() { return list.Pop(0); }
};

template <class Allocator>
struct PeerList {
    std::list<void *, Allocator> list;
    void Append(void *value) { list.push_back(value); }
    void Push(void *value) { list.push_front(value); }
    void *Pop() {
        void *value = list.front();
        list.pop_front();
        return value;
    }
};

using HeapList = PeerList<std::allocator<void *>>;

template <class List>
void Fill_And_Drain(List &list) {
    for (long number = 0; number < Entries; ++number) list.Append(Value(number));
    for (long number = 0; number < Entries; ++number) measure::Keep(list.Pop());
}

template <class List>
void Push_And_Pop(List &list) {
    list.Push(measure::Hidden(Value(7)));
    measure::Keep(list.Pop());
}

// Items that lie beside one another belong to different lists, so each goes back to another block.
template <class List>
void Spread_And_Drain(std::vector<List> &lists) {
    for (long number = 0; number < Entries; ++number) lists[number % Lists].Append(Value(number));
    for (List &list : lists) {
        for (long number = 0; number < Entries / Lists; ++number) measure::Keep(list.Pop());
    }
}

template <class Peer>
void Measure_Beside(const char *peer_name, double limit, double spread_limit) {
    measure::Heading("list", peer_name);
    OurList ours;
    Peer peer;
    measure::Compare(
        "fill and drain 100,000 entries", [&] { Fill_And_Drain(ours); }, [&] { Fill_And_Drain(peer); },
        limit);
    for (long number = 0; number < Depth; ++number) {
        ours.Push(Value(number));
        peer.Push(Value(number));
    }
    measure::Compare(
        "push and pop at a depth of 100", [&] { Push_And_Pop(ours); }, [&] { Push_And_Pop(peer); }, limit);

    std::vector<OurList> our_lists(Lists);
    std::vector<Peer> peer_lists(Lists);
    measure::Compare(
        "the same entries over 1,000 lists, then drain each", [&] { Spread_And_Drain(our_lists); },
        [&] { Spread_And_Drain(peer_lists); }, spread_limit);
}

int Compare_Values(void *a, void *b, long) {
    return (a > b) - (a < b);
}

void Measure_Growth() {
    measure::Growth_Heading("list");
    measure::Growth fill("add n entries and pop them", 1.1), walk("walk over n entries", 1.1);
    measure::Growth last("the last of n entries by its index", 1.1), copy("a copy of n entries", 1.1);
    measure::Growth sort("sort n entries that stand in reverse", 2.1);
    for (const long size : measure::Sizes(100000)) {
        OurList ours;
        fill.At(size, [&] {
            for (long number = 0; number < size; ++number) ours.Append(Value(number));
            for (long number = 0; number < size; ++number) measure::Keep(ours.Pop());
        });
        for (long number = 0; number < size; ++number) ours.Append(Value(number));
        walk.At(size, [&] {
            CIterator walker;
            for (void *entry = walker.Iterate(&ours.list); walker.More(); entry = walker.Next())
                measure::Keep(entry);
        });
        last.At(size, [&] { measure::Keep(ours.list.GetEntry(measure::Hidden(size - 1), 0)); });
        copy.At(size, [&] { Delete_List(ours.list.ShallowClone()); });
        if (size > 1000) continue;
        ours.list.SetListSortProc(Compare_Values, 0);
        bool ascending = false;
        sort.At(size, [&] { ours.list.Sort(ascending = !ascending, 0); });
    }
}

} // namespace

int main() {
    measure::Use_Plain_Memory();
    Measure_Beside<HeapList>("std::list", 1.0 / 3, 1.0);
#if defined(HAS_BOOST)
    using BoostPool = boost::fast_pool_allocator<void *, boost::default_user_allocator_new_delete,
                                                 boost::details::pool::null_mutex>;
    Measure_Beside<PeerList<BoostPool>>("std::list on Boost's fast_pool_allocator", 1.0, 2.0);
#endif
    Measure_Growth();
    return 0;
}
