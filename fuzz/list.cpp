// A CDSList and a std::list, told to do the same, hold the same.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/containers/list.h>

#include <algorithm>
#include <iterator>
#include <list>

namespace {

using Model = std::list<long>;

long Number(void *value) {
    return static_cast<long>(reinterpret_cast<std::uintptr_t>(value));
}

void *Entry(long value) {
    return reinterpret_cast<void *>(value);
}

int Compare(void *left, void *right, long) {
    return Number(left) == Number(right) ? 0 : Number(left) > Number(right) ? 1 : -1;
}

Model::iterator At(Model &model, long index) {
    return std::next(model.begin(), std::clamp(index, 0L, static_cast<long>(model.size())));
}

void Compare_All(CDSList &list, const Model &model) {
    REQUIRE(list.Entries(0) == static_cast<long>(model.size()));
    CIterator walk;
    void *entry = walk.Iterate(&list);
    for (const long value : model) {
        REQUIRE(walk.More() && Number(entry) == value);
        entry = walk.Next();
    }
    REQUIRE(!walk.More());
    for (auto value = model.rbegin(); value != model.rend(); ++value)
        REQUIRE(Number(walk.Previous()) == *value);
}

void Take_Out(CDSList &list, Model &model, long value) {
    const auto found = std::find(model.begin(), model.end(), value);
    const bool there = found != model.end();
    REQUIRE(list.Contains(Entry(value), 0) == (there ? std::distance(model.begin(), found) : -1));
    REQUIRE(Number(list.Remove(Entry(value), 0)) == (there ? value : 0));
    if (there) model.erase(found);
}

void Take_Out_At(CDSList &list, Model &model, long index) {
    const bool inside = index >= 0 && index < static_cast<long>(model.size());
    const long value = inside ? *At(model, index) : 0;
    REQUIRE(Number(list.GetEntry(index, 0)) == value && Number(list.RemoveAt(index)) == value);
    const auto first = std::find(model.begin(), model.end(), value);
    if (first != model.end()) model.erase(first);
}

void Walk_And_Delete(CDSList &list, Model &model, long divisor) {
    CIterator walk;
    for (void *entry = walk.Iterate(&list); walk.More(); entry = walk.Next()) {
        if (Number(entry) % divisor == 0) walk.Delete_Current();
    }
    model.remove_if([divisor](long value) { return value % divisor == 0; });
}

void Do_Both(CDSList &list, Model &model, FuzzInput &input) {
    const unsigned what = input.Byte();
    const long number = input.Byte() % 32;
    switch (what % 10) {
    case 0:
        return REQUIRE(list.Add(Entry(number), 0)), model.push_back(number);
    case 1:
        return REQUIRE(list.Push(Entry(number), 0)), model.push_front(number);
    case 2:
        REQUIRE(list.Insert(Entry(number), number - 2, 0));
        model.insert(At(model, number - 1), number);
        return;
    case 3:
        REQUIRE(Number(list.Pop(0)) == (model.empty() ? 0 : model.front()));
        if (!model.empty()) model.pop_front();
        return;
    case 4:
        return Take_Out(list, model, number);
    case 5:
        return Take_Out_At(list, model, number - 1);
    case 6:
        return Walk_And_Delete(list, model, number + 2);
    case 7:
        if (model.size() > 8) return; // each pass of a sort gives its time slice away
        list.SetListSortProc(Compare, 0);
        list.Sort(number % 2, 0);
        number % 2 ? model.sort() : model.sort(std::greater<>());
        return;
    case 8: {
        CDSList *const twin = list.ShallowClone();
        Compare_All(*twin, model);
        Delete_List(twin);
        return;
    }
    default:
        const long key = list.Lock(false);
        REQUIRE(!list.Add(Entry(number), key + 1) && !list.Pop(key + 1));
        REQUIRE(list.Add(Entry(number), key));
        model.push_back(number);
        list.Unlock(key);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    CDSList list;
    Model model;
    while (input.More()) Do_Both(list, model, input);
    Compare_All(list, model);
    return 0;
}
