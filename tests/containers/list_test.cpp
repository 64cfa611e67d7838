#include <tests/containers/list_fixture.h>

#include <tests/support/replaced_import.h>

#include <kelmara/foundation/memory.h>

#include <platform/kernel.h>

#include <atomic>
#include <cstring>
#include <ctime>
#include <set>
#include <thread>

namespace {

char *Text(const char *text) {
    return const_cast<char *>(text);
}

TEST_F(Lists, ServeAsListStackAndQueue) {
    CDSList list;
    EXPECT_EQ(list.Pop(0), nullptr);
    Add_Numbers(list, 2, 4);
    EXPECT_TRUE(list.Push(1, 0));
    EXPECT_EQ(Content(list), "1 2 3 4");
    EXPECT_EQ(list.Entries(0), 4);
    EXPECT_EQ(list.Pop(0), Value(1));
    EXPECT_TRUE(list.Add(5, 0)) << "behind an item that Pop left as the head";
    EXPECT_EQ(list.Contains(Value(4), 0), 2);
    EXPECT_EQ(list.Contains(Value(1), 0), -1);
    EXPECT_EQ(list.GetEntry(3, 0), Value(5));
    for (long index : {-1L, 4L, 1000000L}) EXPECT_EQ(list.GetEntry(index, 0), nullptr) << index;
    while (list.Pop(0)) {
    }
    EXPECT_EQ(list.Entries(0), 0);
    EXPECT_TRUE(list.Push(7, 0)) << "an emptied list starts anew at both ends";
    EXPECT_TRUE(list.Add(8, 0));
    EXPECT_EQ(Content(list), "7 8");
}

TEST_F(Lists, InsertBehindAnIndex) {
    const struct {
        long index;
        const char *content;
    } rows[] = {{-7, "9 1 2 3"}, {-1, "9 1 2 3"}, {0, "1 9 2 3"},
                {1, "1 2 9 3"},  {2, "1 2 3 9"},  {99, "1 2 3 9"}};
    for (const auto &row : rows) {
        CDSList list;
        Add_Numbers(list, 1, 3);
        EXPECT_TRUE(list.Insert(Value(9), row.index, 0));
        EXPECT_EQ(Content(list), row.content) << row.index;
        CIterator walk; // and back, over the other links
        walk.Iterate(&list, static_cast<short>(4));
        std::string back;
        for (void *value = walk.Previous(); value; value = walk.Previous()) {
            back.insert(0, std::to_string(reinterpret_cast<long>(value)) + (back.empty() ? "" : " "));
        }
        EXPECT_EQ(back, row.content) << row.index;
    }
    CDSList empty;
    EXPECT_TRUE(empty.Insert(Value(9), 5, 0));
    EXPECT_EQ(Content(empty), "9");
}

TEST_F(Lists, RemoveByValueAndByIndex) {
    CDSList list;
    for (int number : {5, 0, 6, 5, 7}) list.Add(number, 0);
    EXPECT_EQ(list.RemoveAt(3), Value(5));
    EXPECT_EQ(Content(list), "0 6 5 7") << "the first of the same value goes";
    for (long index : {-1L, 4L, 99L}) EXPECT_EQ(list.RemoveAt(index), nullptr);
    EXPECT_EQ(list.Entries(0), 4) << "an index that is not there removes no null entry";
    EXPECT_EQ(list.Remove(Value(8), 0), nullptr);
    EXPECT_EQ(list.Remove(Value(7), 0), Value(7));
    EXPECT_EQ(list.RemoveAt(0), nullptr);
    EXPECT_EQ(Content(list), "6 5");
    list.Add(8, 0);
    EXPECT_EQ(Content(list), "6 5 8") << "the tail moved with what was removed";
    list.Clear(0);
    EXPECT_EQ(list.Entries(0), 0);
}

TEST_F(Lists, RefuseEveryOtherKey) {
    CDSList list;
    list.Add(1, 0);
    const long key = list.Lock(false);
    unsigned char pascal[] = "\1x";
    for (const long wrong : {0L, key + 1}) {
        EXPECT_FALSE(list.Add(2, wrong));
        EXPECT_FALSE(list.Push(2, wrong));
        EXPECT_FALSE(list.Insert(Value(2), 0, wrong));
        EXPECT_EQ(list.AddVolatile(pascal, 1, wrong), nullptr);
        EXPECT_FALSE(list.PushVolatile(pascal, 1, wrong));
        EXPECT_FALSE(list.AddCString(Text("x"), wrong));
        EXPECT_FALSE(list.PushCString("x", wrong));
        EXPECT_FALSE(list.AddPString(pascal, wrong));
        EXPECT_FALSE(list.AddStr255(pascal, wrong));
        EXPECT_EQ(list.Pop(wrong), nullptr);
        EXPECT_EQ(list.Remove(Value(1), wrong), nullptr);
        EXPECT_EQ(list.Contains(Value(1), wrong), -1);
        EXPECT_EQ(list.GetEntry(0, wrong), nullptr);
        EXPECT_EQ(list.ContainsSpecial([](void *, unsigned long) { return 1ul; }, nullptr, wrong), nullptr);
        list.Clear(wrong);
        list.DeleteAllEntriesAsPointers(wrong);
        list.Unlock(wrong);
        EXPECT_EQ(list.Lock(false), 0) << "still locked";
        EXPECT_EQ(list.Entries(wrong), 1) << "which looks at no key";
    }
    EXPECT_EQ(list.RemoveAt(0), nullptr);
    EXPECT_TRUE(list.Add(2, key));
    EXPECT_EQ(list.Pop(key), Value(1));
    list.Unlock(key);
    EXPECT_EQ(Content(list), "2");
    EXPECT_EQ(list.Pop(key), nullptr);
}

TEST_F(Lists, LockWithTheTimeAndWait) {
    static std::atomic<bool> waits{false};
    const ReplacedImport sleep("libkelmara.so", "Sleep", reinterpret_cast<void *>(+[](DWORD milliseconds) {
                                   waits = milliseconds == 0;
                                   Sleep(0);
                               }));
    CDSList list;
    const long before = static_cast<long>(std::time(nullptr));
    const long key = list.Lock(true);
    EXPECT_GE(key, before);
    EXPECT_LE(key, static_cast<long>(std::time(nullptr)));
    long second_key = 0;
    std::thread waiting([&] { second_key = list.Lock(true); });
    while (!waits) Sleep(1);
    list.Unlock(key);
    waiting.join();
    EXPECT_GE(second_key, key);
    EXPECT_TRUE(list.Add(1, second_key));
    list.Unlock(second_key);
    EXPECT_EQ(list.Pop(0), Value(1));

    const ReplacedImport time("libkelmara.so", "__time64",
                              reinterpret_cast<void *>(+[](long long *) { return 0LL; }));
    EXPECT_NE(list.Lock(false), 0) << "the key of an open list never comes out";
}

TEST_F(Lists, ReleaseWhatTheyCopiedAndNothingElse) {
    static std::multiset<void *> given, released;
    given.clear(), released.clear();
    void *const popped = [] {
        CDSList list;
        list.Set_Mem_Procs(
            [](unsigned long size) { return *given.insert(ds_malloc(static_cast<long>(size))); },
            [](void *block) {
                released.insert(block);
                ds_free(block);
            });
        list.SetListSortProc([](void *, void *, long) { return 1; }, 0);
        static char mine[] = "mine";
        list.Add(mine, 0);
        EXPECT_STREQ(static_cast<char *>(list.AddVolatile(mine, sizeof mine, 0)), "mine");
        EXPECT_TRUE(list.AddCString(Text("text"), 0));
        list.Push(mine, 0);
        list.Insert(mine, 1, 0);
        list.AddVolatile(mine, 1, 0);
        EXPECT_EQ(list.AddVolatile(nullptr, 4, 0), nullptr);
        EXPECT_EQ(list.AddVolatile(mine, -1, 0), nullptr);
        EXPECT_FALSE(list.AddCString(nullptr, 0));
        list.Sort(true, 0); // turns everything round
        void *first = list.Pop(0);
        list.Lock(false); // and dies locked
        return first;
    }();
    EXPECT_EQ(given.size(), 3u);
    EXPECT_EQ(given.erase(popped), 1u) << "what was popped belongs to whoever has it";
    EXPECT_EQ(released, given);
    ds_free(popped);

    CDSList cleared;
    char *kept = static_cast<char *>(cleared.AddVolatile(Text("kept"), 5, 0));
    cleared.Clear(0);
    EXPECT_STREQ(kept, "kept");
    ds_free(kept);
}

TEST_F(Lists, KeepCopiesOfStrings) {
    CDSList list;
    EXPECT_TRUE(list.PushVolatile(Text("three"), 6, 0));
    EXPECT_TRUE(list.PushVolatile(Text("two"), 4, 0)) << "both go with the list";
    EXPECT_TRUE(list.PushCString("one", 0));
    EXPECT_TRUE(list.Contains_CString("two"));
    EXPECT_FALSE(list.Contains_CString("tw"));
    char *one = static_cast<char *>(list.Pop(0));
    EXPECT_STREQ(one, "one");
    ds_free(one);
    const auto longer = [](void *entry, unsigned long length) {
        return std::strlen(static_cast<char *>(entry)) > length ? 1ul : 0ul;
    };
    EXPECT_STREQ(static_cast<char *>(list.ContainsSpecial(longer, Value(3), 0)), "three");
    EXPECT_EQ(list.ContainsSpecial(longer, Value(5), 0), nullptr);
    EXPECT_FALSE(list.PushCString(nullptr, 0) || list.PushVolatile(nullptr, 1, 0));
    EXPECT_FALSE(list.AddPString(nullptr, 0) || list.AddStr255(nullptr, 0) || list.Contains_CString(nullptr));

    CDSList prefixed;
    unsigned char longest[256];
    std::memset(longest, 'y', sizeof longest);
    longest[0] = 255;
    unsigned char shortest[] = {2, 'x', 0};
    EXPECT_TRUE(prefixed.AddPString(shortest, 0));
    EXPECT_EQ(Last_Request(), 3);
    EXPECT_TRUE(prefixed.AddStr255(shortest, 0));
    EXPECT_EQ(Last_Request(), 256);
    for (unsigned char *text : {shortest, longest}) prefixed.AddPString(text, 0), prefixed.AddStr255(text, 0);
    for (long index : {0L, 1L, 2L, 3L}) EXPECT_EQ(std::memcmp(prefixed.GetEntry(index, 0), shortest, 3), 0);
    for (long index : {4L, 5L}) EXPECT_EQ(std::memcmp(prefixed.GetEntry(index, 0), longest, 256), 0);
    prefixed.Add(0, 0);
    EXPECT_FALSE(prefixed.Contains_CString("")) << "a null entry is no string";
    prefixed.DeleteAllEntriesAsPointers(0);
    EXPECT_EQ(prefixed.Entries(0), 0);
}

struct ManyList final : CDSList {
    long Entries(long) override { return 7; }
};

TEST_F(Lists, DeleteEntriesWhateverHappens) {
    static CDSList *list = nullptr;
    static long calls = 0;
    calls = 0;
    CDSList throwing;
    Add_Numbers(throwing, 0, 5);
    throwing.Set_Mem_Procs(nullptr, [](void *) {
        ++calls;
        throw 1;
    });
    throwing.DeleteAllEntriesAsPointers(0);
    EXPECT_EQ(throwing.Entries(0), 0);
    EXPECT_EQ(calls, 5) << "all but the null";

    CDSList locked;
    list = &locked;
    Add_Numbers(locked, 1, 5);
    locked.Set_Mem_Procs(nullptr, [](void *) { list->Lock(false); });
    locked.DeleteAllEntriesAsPointers(0);
    EXPECT_EQ(locked.Entries(0), 4);

    ManyList many;
    Add_Numbers(many, 1, 3);
    many.Set_Mem_Procs(nullptr, nullptr);
    many.DeleteAllEntriesAsPointers(0);
    while (many.Pop(0)) {
    }
}

TEST_F(Lists, SortStablyByExactAnswers) {
    static long sleeps = 0;
    const ReplacedImport sleep("libkelmara.so", "Sleep", reinterpret_cast<void *>(+[](DWORD) { ++sleeps; }));
    const auto by_tens = [](void *first, void *second, long data) {
        const long a = reinterpret_cast<long>(first) / 10, b = reinterpret_cast<long>(second) / 10;
        return static_cast<int>(data) * (a > b ? 1 : a < b ? -1 : 0);
    };
    const struct {
        bool ascending;
        long data;
        const char *content;
        long passes;
    } rows[] = {
        {true, 1, "5 1 21 20 22 30", 4}, {false, 1, "30 21 20 22 5 1", 3}, {true, 2, "30 5 21 20 1 22", 1}};
    for (const auto &row : rows) {
        CDSList list;
        for (int number : {30, 5, 21, 20, 1, 22}) list.Add(number, 0);
        list.Sort(row.ascending, 0);
        list.SetListSortProc(by_tens, row.data);
        list.Lock(false);
        sleeps = 0;
        list.Sort(row.ascending, 0);
        EXPECT_EQ(Content(list), row.content);
        EXPECT_EQ(sleeps, row.passes);
    }
    CDSList empty;
    empty.SetListSortProc(by_tens, 1);
    empty.Sort(true, 0);
}

TEST_F(Lists, CloneAllOrNothing) {
    CDSList list;
    for (const char *text : {"first", "other"}) list.PushCString(text, 0);
    list.Add(0, 0);
    CDSList *clone = list.Clone(6);
    EXPECT_STREQ(static_cast<char *>(clone->GetEntry(1, 0)), "first");
    EXPECT_NE(clone->GetEntry(1, 0), list.GetEntry(1, 0));
    EXPECT_EQ(clone->GetEntry(2, 0), nullptr);
    EXPECT_EQ(clone->Entries(0), 3);
    CDSList *shallow = clone->ShallowClone();
    EXPECT_EQ(Content(*shallow), Content(*clone));
    list.ShallowClone(list);
    EXPECT_EQ(list.Entries(0), 6) << "a list may be its own target";
    EXPECT_EQ(list.GetEntry(0, 0), list.GetEntry(3, 0));
    for (long n = 0; n < 3; ++n) list.Pop(0);
    clone->DeleteAllEntriesAsPointers(0);
    for (CDSList *made : {clone, shallow, static_cast<CDSList *>(nullptr)}) Delete_List(made);

    EXPECT_EQ(list.Clone(-1), nullptr);
    for (long nth = 1; nth <= 3; ++nth) {
        const NoLeak no_leak;
        const FailingMemory failing(nth);
        EXPECT_EQ(list.Clone(6), nullptr) << nth;
        const FailingMemory failing_again(1);
        EXPECT_EQ(list.ShallowClone(), nullptr);
    }
    list.DeleteAllEntriesAsPointers(0);
}

TEST_F(Lists, ShareItemsWhenCopied) {
    alignas(CDSList) char place[sizeof(CDSList)];
    CDSList list;
    Add_Numbers(list, 1, 3);
    list.AddRef();
    CDSList *copy = new (place) CDSList(list); // never destroyed: the items are the original's
    EXPECT_EQ(Content(*copy), "1 2 3");
    EXPECT_EQ(std::memcmp(&list, copy, sizeof list), 0);
    CDSList assigned;
    {
        CDSList empty;
        assigned = empty;
    }
    assigned.Add(1, 0);
    EXPECT_EQ(Content(assigned), "1") << "copies of empty lists go their own way";
}

TEST_F(Lists, CountReferences) {
    constexpr GUID unknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    constexpr GUID own = {0x1BAD2E60, 0xC1B9, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};
    constexpr GUID other = {0x1BAD2E61, 0xC1B9, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};
    auto *list = new CDSList;
    list->AddCString(Text("owned"), 0);
    EXPECT_EQ(list->Release(), 0u) << "nobody has it: its owner keeps it";
    for (const GUID &iid : {unknown, own}) {
        void *out = nullptr;
        EXPECT_EQ(list->QueryInterface(iid, &out), S_OK);
        EXPECT_EQ(static_cast<IListInterface *>(out)->Entries(0), 1);
    }
    void *out = list;
    EXPECT_EQ(list->QueryInterface(other, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(list->QueryInterface(own, nullptr), E_INVALIDARG);
    EXPECT_EQ(list->AddRef(), 3u);
    EXPECT_EQ(list->Release(), 2u);
    EXPECT_EQ(list->Release(), 1u);
    EXPECT_EQ(list->Release(), 0u) << "and the list is gone, with what it owned";
}

// A pointer to a virtual operation holds 1 plus the slot's offset.
template <class Operation>
long Slot(Operation operation) {
    long word;
    std::memcpy(&word, &operation, sizeof word);
    return (word - 1) / 4;
}

TEST_F(Lists, HaveTheSlotsOfTheirInterface) {
    using I = IListInterface;
    const long slots[] = {Slot(&I::QueryInterface), Slot(&I::AddRef),
                          Slot(&I::Release),        Slot(&I::Add),
                          Slot(&I::AddVolatile),    Slot(&I::Push),
                          Slot(&I::Insert),         Slot(&I::Pop),
                          Slot(&I::Remove),         Slot(&I::RemoveAt),
                          Slot(&I::Contains),       Slot(&I::AddCString),
                          Slot(&I::Clear),          Slot(&I::GetEntry),
                          Slot(&I::Entries),        Slot(&CDSList::DeleteAllEntriesAsPointers)};
    for (long slot = 0; slot < 16; ++slot) EXPECT_EQ(slots[slot], slot);
    using Between = CListItem *(OddList::*)(void *, CListItem *, CListItem *, long);
    using Behind = CListItem *(OddList::*)(void *, CListItem *, long);
    EXPECT_EQ(Slot(static_cast<Between>(&OddList::CreateNewItem)), 16);
    EXPECT_EQ(Slot(static_cast<Behind>(&OddList::CreateNewItem)), 17);
    EXPECT_EQ(Slot(&OddList::DeleteItem), 18);
}

TEST_F(Lists, AreEmptyHandedWithoutItems) {
    OddList list;
    list.Add(1, 0);
    list.Add(2, 0);
    for (const bool throws : {false, true}) {
        list.making = throws ? OddList::Throws : OddList::Gives_Null;
        const NoLeak no_leak;
        const auto outcome = [](auto operation) -> std::string {
            try {
                return operation() ? "done" : "refused";
            } catch (CDSList::NoItem number) {
                return std::to_string(number);
            } catch (const std::string &text) {
                return text;
            }
        };
        const std::string thrown = throws ? "no item" : "-8350", refused = throws ? "no item" : "refused";
        EXPECT_EQ(outcome([&] { return list.Add(3, 0); }), thrown);
        EXPECT_EQ(outcome([&] { return list.Push(3, 0); }), thrown);
        EXPECT_EQ(outcome([&] { return list.Insert(Value(3), 0, 0); }), thrown);
        EXPECT_EQ(outcome([&] { return list.PushCString("3", 0); }), thrown);
        EXPECT_EQ(outcome([&] { return list.AddPString(reinterpret_cast<const unsigned char *>("\1x"), 0); }),
                  thrown);
        EXPECT_EQ(outcome([&] { return list.AddCString(Text("3"), 0); }), refused);
        EXPECT_EQ(outcome([&] { return list.PushVolatile(Text("3"), 2, 0); }), "refused");
        OddList empty;
        empty.making = list.making;
        EXPECT_EQ(outcome([&] { return empty.PushVolatile(Text("3"), 2, 0); }), "refused");
    }
    EXPECT_EQ(Content(list), "1 2");
    list.making = OddList::From_Pool;
    list.Insert(Value(3), 0, 0);
    *static_cast<void **>(list.contentsOfItem(1)) = Value(4);
    EXPECT_EQ(Content(list), "1 4 2");
    EXPECT_EQ(list.contentsOfItem(3), nullptr);
    EXPECT_EQ(list.contentsOfItem(-1), nullptr);
    EXPECT_EQ(list.GetListItem(2)->Prev, list.GetListItem(1));
    list.Clear(0);
    EXPECT_EQ(list.made, 3);
    EXPECT_EQ(list.deleted, 3) << "all items came and went through the class's own operations";
}

TEST_F(Lists, KeepNothingThatFoundNoMemory) {
    CDSList list;
    list.Add(1, 0);
    unsigned char pascal[] = "\1x";
    const NoLeak no_leak;
    const FailingMemory failing(1, true);
    EXPECT_EQ(list.AddVolatile(pascal, 1, 0), nullptr);
    EXPECT_FALSE(list.PushVolatile(pascal, 1, 0));
    EXPECT_FALSE(list.AddCString(Text("x"), 0));
    EXPECT_FALSE(list.PushCString("x", 0));
    EXPECT_FALSE(list.AddPString(pascal, 0));
    EXPECT_FALSE(list.AddStr255(pascal, 0));
    EXPECT_EQ(failing.Refused(), 6);
    EXPECT_EQ(Content(list), "1");
    EXPECT_EQ(new CDSList, nullptr);
}

} // namespace
