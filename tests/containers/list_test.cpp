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

TEST_F(Lists, ServeAsListStackAndQueue) {
    CDSList list;
    Add_Numbers(list, 2, 4);
    EXPECT_TRUE(list.Push(1, 0));
    EXPECT_EQ(Content(list), "1234");
    EXPECT_EQ(list.Pop(0), Value(1));
    EXPECT_TRUE(list.Add(5, 0)) << "behind an item that Pop left as the head";
    EXPECT_EQ(list.Contains(Value(4), 0), 2);
    EXPECT_EQ(list.Contains(Value(1), 0), -1);
    EXPECT_EQ(list.GetEntry(3, 0), Value(5));
    for (long index : {-1L, 4L}) EXPECT_EQ(list.GetEntry(index, 0), nullptr) << index;
    for (long value : {2L, 3L, 4L, 5L, 0L}) EXPECT_EQ(list.Pop(0), Value(value));
    EXPECT_TRUE(list.Push(7, 0)) << "an emptied list starts anew at both ends";
    EXPECT_TRUE(list.Add(8, 0));
    EXPECT_EQ(Content(list), "78");
}

TEST_F(Lists, InsertAndRemoveByIndexAndByValue) {
    const std::pair<long, std::string> rows[] = {{-7, "9123"}, {-1, "9123"}, {0, "1923"},
                                                 {1, "1293"},  {2, "1239"},  {99, "1239"}};
    for (const auto &[index, content] : rows) {
        CDSList inserted, empty;
        Add_Numbers(inserted, 1, 3);
        EXPECT_TRUE(inserted.Insert(Value(9), index, 0) && empty.Insert(Value(9), index, 0));
        EXPECT_EQ(Content(inserted), content) << index;
        EXPECT_EQ(Content(empty), "9");
        CIterator walk; // and back, over the other links
        walk.Iterate(&inserted, static_cast<short>(4));
        for (auto at = content.rbegin(); at != content.rend(); ++at)
            EXPECT_EQ(walk.Previous(), Value(*at - '0'));
    }
    CDSList list;
    for (int number : {5, 0, 6, 5, 7}) list.Add(number, 0);
    EXPECT_EQ(list.RemoveAt(3), Value(5));
    EXPECT_EQ(Content(list), "0657") << "the first of the same value goes";
    EXPECT_EQ(list.RemoveAt(99), nullptr);
    EXPECT_EQ(Content(list), "657") << "no value is a null value: the first entry of that went";
    for (long index : {-1L, 4L}) EXPECT_EQ(list.RemoveAt(index), nullptr);
    EXPECT_EQ(list.Entries(0), 3);
    EXPECT_EQ(list.Remove(Value(7), 0), Value(7));
    list.Add(8, 0);
    EXPECT_EQ(Content(list), "658") << "the tail moved with what was removed";
}

TEST_F(Lists, RefuseEveryOtherKey) {
    CDSList list;
    list.Add(1, 0);
    const long key = list.Lock(false);
    for (const long wrong : {0L, key + 1}) {
        for (const auto &add : Additions) EXPECT_EQ(Outcome(add, list, wrong), "refused") << &add - Additions;
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
    EXPECT_EQ(list.Pop(key), nullptr);
    EXPECT_EQ(Content(list), "2");
}

TEST_F(Lists, LockWithTheTimeAndWait) {
    static std::atomic<bool> waits{false};
    const auto waiting_sleep = [](DWORD milliseconds) {
        waits = milliseconds == 0;
        Sleep(0);
    };
    const ReplacedImport sleep("libkelmara.so", "Sleep", reinterpret_cast<void *>(+waiting_sleep));
    CDSList list;
    const long before = static_cast<long>(std::time(nullptr)), key = list.Lock(true);
    EXPECT_GE(key, before);
    EXPECT_LE(key, static_cast<long>(std::time(nullptr)));
    long second_key = 0;
    std::thread waiting([&] { second_key = list.Lock(true); });
    while (!waits) Sleep(1);
    list.Unlock(key);
    waiting.join();
    EXPECT_TRUE(list.Add(1, second_key));
    list.Unlock(second_key);
    const auto epoch = [](long long *) { return 0LL; };
    const ReplacedImport time("libkelmara.so", "__time64", reinterpret_cast<void *>(+epoch));
    EXPECT_NE(list.Lock(false), 0) << "the key of an open list never comes out";
}

TEST_F(Lists, ReleaseWhatTheyCopiedAndNothingElse) {
    static std::multiset<void *> given, released;
    given.clear(), released.clear();
    void *popped = nullptr;
    {
        CDSList list;
        list.Set_Mem_Procs(
            [](unsigned long size) { return *given.insert(ds_malloc(static_cast<long>(size))); },
            [](void *block) {
                released.insert(block);
                ds_free(block);
            });
        list.SetListSortProc([](void *, void *, long) { return 1; }, 0);
        char mine[] = "mine";
        list.Add(mine, 0);
        EXPECT_STREQ(static_cast<char *>(list.AddVolatile(mine, sizeof mine, 0)), "mine");
        EXPECT_TRUE(list.AddCString(mine, 0));
        EXPECT_EQ(list.AddVolatile(nullptr, 4, 0), nullptr);
        EXPECT_EQ(list.AddVolatile(mine, -1, 0), nullptr);
        EXPECT_FALSE(list.AddCString(nullptr, 0));
        list.Sort(true, 0); // turns everything round
        popped = list.Pop(0);
        list.Lock(false); // and dies locked
    }
    EXPECT_EQ(given.size(), 2u);
    EXPECT_EQ(given.erase(popped), 1u) << "what was popped belongs to whoever has it";
    EXPECT_EQ(released, given);
    ds_free(popped);
}

TEST_F(Lists, KeepCopiesOfStrings) {
    CDSList list;
    char three[] = "three", two[] = "two";
    EXPECT_TRUE(list.PushVolatile(three, 6, 0));
    EXPECT_TRUE(list.PushVolatile(two, 4, 0)) << "both go with the list";
    EXPECT_TRUE(list.PushCString("one", 0));
    EXPECT_TRUE(list.Contains_CString("two"));
    EXPECT_FALSE(list.Contains_CString("tw"));
    void *one = list.Pop(0);
    EXPECT_STREQ(static_cast<char *>(one), "one");
    ds_free(one);
    const auto longer = [](void *entry, unsigned long length) {
        return std::strlen(static_cast<char *>(entry)) > length ? 1ul : 0ul;
    };
    EXPECT_STREQ(static_cast<char *>(list.ContainsSpecial(longer, Value(3), 0)), "three");
    EXPECT_EQ(list.ContainsSpecial(longer, Value(5), 0), nullptr);
    EXPECT_FALSE(list.PushCString(nullptr, 0) || list.PushVolatile(nullptr, 1, 0));
    EXPECT_FALSE(list.AddPString(nullptr, 0) || list.AddStr255(nullptr, 0) || list.Contains_CString(nullptr));

    CDSList prefixed;
    unsigned char longest[256], shortest[] = {2, 'x', 0};
    std::memset(longest, 'y', sizeof longest);
    longest[0] = 255;
    for (unsigned char *text : {shortest, longest}) {
        EXPECT_TRUE(prefixed.AddPString(text, 0));
        EXPECT_EQ(Last_Request(), text[0] + 1);
        EXPECT_TRUE(prefixed.AddStr255(text, 0));
        EXPECT_EQ(Last_Request(), 256);
    }
    for (long index : {0L, 1L}) EXPECT_EQ(std::memcmp(prefixed.GetEntry(index, 0), shortest, 3), 0);
    for (long index : {2L, 3L}) EXPECT_EQ(std::memcmp(prefixed.GetEntry(index, 0), longest, 256), 0);
    prefixed.DeleteAllEntriesAsPointers(0);
    EXPECT_EQ(prefixed.Entries(0), 0);
}

TEST_F(Lists, DeleteEntriesWhateverHappens) {
    static CDSList *list = nullptr;
    static long calls = 0;
    calls = 0;
    CDSList throwing, locked;
    Add_Numbers(throwing, 0, 5);
    throwing.Set_Mem_Procs(nullptr, [](void *) {
        ++calls;
        throw 1;
    });
    throwing.DeleteAllEntriesAsPointers(0);
    EXPECT_EQ(throwing.Entries(0), 0);
    EXPECT_EQ(calls, 5) << "all but the null";
    list = &locked;
    Add_Numbers(locked, 1, 5);
    locked.Set_Mem_Procs(nullptr, [](void *) { list->Lock(false); });
    locked.DeleteAllEntriesAsPointers(0);
    EXPECT_EQ(locked.Entries(0), 4);
}

TEST_F(Lists, SortStablyByExactAnswers) {
    static long sleeps = 0;
    const ReplacedImport sleep("libkelmara.so", "Sleep", reinterpret_cast<void *>(+[](DWORD) { ++sleeps; }));
    const auto by_threes = [](void *first, void *second, long data) {
        const long a = reinterpret_cast<long>(first) / 3, b = reinterpret_cast<long>(second) / 3;
        return static_cast<int>(data) * (a > b ? 1 : a < b ? -1 : 0);
    };
    const std::tuple<bool, long, const char *, long> rows[] = {
        {true, 1, "217689", 4}, {false, 1, "976821", 3}, {true, 2, "927618", 1}};
    for (const auto &[ascending, data, content, passes] : rows) {
        CDSList list, empty;
        for (int number : {9, 2, 7, 6, 1, 8}) list.Add(number, 0);
        list.Sort(ascending, 0);
        list.SetListSortProc(by_threes, data);
        list.Lock(false);
        sleeps = 0;
        list.Sort(ascending, 0);
        EXPECT_EQ(Content(list), content);
        EXPECT_EQ(sleeps, passes);
        empty.SetListSortProc(by_threes, data);
        empty.Sort(ascending, 0);
    }
}

TEST_F(Lists, CloneAllOrNothing) {
    CDSList list;
    for (const char *text : {"first", "other"}) list.PushCString(text, 0);
    list.Add(0, 0);
    CDSList *clone = list.Clone(6), *shallow = clone->ShallowClone();
    EXPECT_STREQ(static_cast<char *>(clone->GetEntry(1, 0)), "first");
    EXPECT_NE(clone->GetEntry(1, 0), list.GetEntry(1, 0));
    EXPECT_EQ(clone->GetEntry(2, 0), nullptr);
    EXPECT_EQ(clone->Entries(0), 3);
    EXPECT_EQ(Content(*shallow), Content(*clone));
    list.ShallowClone(list);
    EXPECT_EQ(list.Entries(0), 6) << "a list may be its own target";
    EXPECT_EQ(list.GetEntry(0, 0), list.GetEntry(3, 0));
    for (long n = 0; n < 3; ++n) list.Pop(0);
    clone->DeleteAllEntriesAsPointers(0);
    for (CDSList *made : {clone, shallow, static_cast<CDSList *>(nullptr)}) Delete_List(made);

    EXPECT_EQ(list.Clone(-1), nullptr);
    list.DeleteAllEntriesAsPointers(0);
}

TEST_F(Lists, ShareItemsWhenCopied) {
    alignas(CDSList) char place[sizeof(CDSList)];
    CDSList list;
    Add_Numbers(list, 1, 3);
    new (place) CDSList(list); // never destroyed: the items are the original's
    EXPECT_EQ(std::memcmp(&list, place, sizeof list), 0);
}

constinit CDSList *dying = nullptr;

TEST_F(Lists, CountReferences) {
    constexpr GUID unknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    constexpr GUID own = {0x1BAD2E60, 0xC1B9, 0x11D1, {0x99, 0x60, 0x00, 0xA0, 0x24, 0x4E, 0xE2, 0xF7}};
    GUID other = own;
    ++other.Data1;
    auto *list = new CDSList;
    list->AddCString(Text_X, 0);
    list->Set_Mem_Procs(ds_malloc_procptr, [](void *block) {
        dying->AddRef(); // by the list's own destructor: it is not destroyed again
        dying->Release();
        ds_free(block);
    });
    dying = list;
    void *out = nullptr;
    for (const GUID &iid : {unknown, own}) {
        EXPECT_EQ(list->QueryInterface(iid, &out), S_OK);
        EXPECT_EQ(static_cast<IListInterface *>(out)->Entries(0), 1);
    }
    EXPECT_EQ(list->QueryInterface(other, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(list->QueryInterface(own, nullptr), E_INVALIDARG);
    EXPECT_EQ(list->AddRef(), 3u);
    for (unsigned long left : {2ul, 1ul, 0ul})
        EXPECT_EQ(list->Release(), left) << "0: gone, with what it owned";
}

TEST_F(Lists, AreEmptyHandedWithoutItemsOrMemory) {
    OddList list, empty;
    Add_Numbers(list, 1, 2);
    for (const bool throws : {false, true}) {
        list.making = empty.making = throws ? OddList::Throws : OddList::Gives_Null;
        const NoLeak no_leak;
        for (std::size_t i = 0; i < std::size(Additions); ++i) {
            const bool quiet =
                i == Push_Volatile || (!throws && (i == 3 || i == 5)); // AddVolatile, AddCString
            EXPECT_EQ(Outcome(Additions[i], list), quiet ? "refused" : throws ? "own" : "no item -8350") << i;
        }
        EXPECT_EQ(Outcome(Additions[Push_Volatile], empty), "refused");
    }
    list.making = OddList::From_Pool;
    {
        const NoLeak no_leak;
        const FailingMemory failing(1, true);
        for (std::size_t i = First_Copying; i < std::size(Additions); ++i) {
            EXPECT_EQ(Outcome(Additions[i], list), "refused") << i;
        }
        EXPECT_EQ(failing.Refused(), 6);
        EXPECT_EQ(new CDSList, nullptr);
    }
    EXPECT_EQ(Content(list), "12");
    list.Insert(Value(3), 0, 0);
    *static_cast<void **>(list.contentsOfItem(1)) = Value(4);
    EXPECT_EQ(Content(list), "142");
    for (short index : {3, -1}) EXPECT_EQ(list.contentsOfItem(index), nullptr);
    EXPECT_EQ(list.GetListItem(2)->Prev, list.GetListItem(1));
    list.Clear(0);
    EXPECT_EQ(list.made, 3);
    EXPECT_EQ(list.deleted, 3) << "all items came and went through the class's own operations";
}

} // namespace
