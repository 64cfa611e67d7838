// What the list's pool of items saves: filled, drained and used as a stack, beside the C++ library's list on
// its heap and, where Boost is at hand, on the fastest of Boost's pools.

#include <benchmarks/measure.h>

#include <kelmara/kelmara.h>

#include <list>
#include <random>
#include <vector>

#if __has_include(<boost/pool/pool_alloc.hpp>)
#include <boost/pool/pool_alloc.hpp>
#define HAS_BOOST 1
#endif

namespace {

constexpr long Entries = 100000;
constexpr long Depth = 100;

void *Value(long number) {
    return reinterpret_cast<void *>(number);
}

struct OurList {
    CDSList list;
    void Append(void *value) { list.Add(value, 0); }
    void Push(void *value) { list.Push(value, 0); }
    void *Pop() { return list.Pop(0); }

    using Place = CIterator;
    std::vector<Place> Places() {
        std::vector<Place> places;
        CIterator walk;
        for (walk.Iterate(&list); walk.More(); walk.Next()) places.push_back(walk);
        return places;
    }
    void Remove(Place &place) { place.Delete_Current(); }
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

    using Place = typename std::list<void *, Allocator>::iterator;
    std::vector<Place> Places() {
        std::vector<Place> places;
        for (Place place = list.begin(); place != list.end(); ++place) places.push_back(place);
        return places;
    }
    void Remove(Place &place) { list.erase(place); }
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

template <class List>
void Fill_And_Remove_At_Random(List &list) {
    for (long number = 0; number < Entries; ++number) list.Append(Value(number));
    std::vector<typename List::Place> places = list.Places();
    std::shuffle(places.begin(), places.end(), std::minstd_rand(1));
    for (auto &place : places) list.Remove(place);
}

template <class Peer>
void Measure_Beside(const char *title, double limit) {
    measure::Heading(title);
    OurList ours;
    Peer peer;
    measure::Compare(
        "fill and drain 100,000 entries", [&] { Fill_And_Drain(ours); }, [&] { Fill_And_Drain(peer); },
        limit);
    measure::Compare(
        "fill, and remove the entries in random order", [&] { Fill_And_Remove_At_Random(ours); },
        [&] { Fill_And_Remove_At_Random(peer); }, 1.0);
    for (long number = 0; number < Depth; ++number) {
        ours.Push(Value(number));
        peer.Push(Value(number));
    }
    measure::Compare(
        "push and pop at a depth of 100", [&] { Push_And_Pop(ours); }, [&] { Push_And_Pop(peer); }, limit);
}

} // namespace

int main() {
    measure::Use_Plain_Memory();
    Measure_Beside<HeapList>("list (peer: std::list)", 1.0 / 3);
#if HAS_BOOST
    using BoostPool = boost::fast_pool_allocator<void *, boost::default_user_allocator_new_delete,
                                                 boost::details::pool::null_mutex>;
    Measure_Beside<PeerList<BoostPool>>("list (peer: std::list with Boost's fast_pool_allocator)", 1.0);
#endif
    return 0;
}
