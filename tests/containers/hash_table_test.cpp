#include <kelmara/containers/hash_table.h>

#include <tests/containers/list_fixture.h>

#include <kelmara/foundation/memory.h>

#include <platform/errors.h>

#include <climits>
#include <map>
#include <random>
#include <tuple>

namespace {

struct Table : CHashTable {
    using CHashTable::Bucket_Count;
    using CHashTable::Buckets;
    using CHashTable::Determine_Location;
    using CHashTable::Entry_List;
    using CHashTable::Get_Hash_Entry;
    using CHashTable::Next_Pool_Entry;
    using CHashTable::Old_Pool_Count;
    using CHashTable::Pool_Free;
    using CHashTable::Reset;

    explicit Table(int count = -1) {
        if (count >= 0) Initialize(count);
    }
};

char one[] = "one", two[] = "two", three[] = "three";

/// The data of the entry that is found, "absent", or what is thrown.
template <class Key>
std::string Found(Table &table, Key key) {
    char *data = one;
    long size = 99;
    try {
        const long result = table.Find(key, &data, &size);
        EXPECT_EQ(table.Find(key, nullptr, nullptr), result);
        EXPECT_EQ(result == 0, data != nullptr);
        if (result == 0) return std::string(data, static_cast<std::size_t>(size));
        EXPECT_EQ(size, 0);
        return result == ERROR_NOT_FOUND ? "absent" : "another result";
    } catch (int number) {
        return "thrown " + std::to_string(number);
    }
}

/// "key=data " of all entries, from a walk.
std::string Walked(Table &table) {
    const long walk = table.Get_Entries_Iterator();
    std::string text = std::to_string(table.Get_Num_Entries()) + ":";
    if (const void *data = table.Reset_Iterator(walk)) text += static_cast<const char *>(data);
    char key[Hash_Key_Size];
    long size = 0;
    while (const void *data = table.Iterate_Next(walk, key, &size)) {
        text += " " + std::string(key) + "=" + std::string(static_cast<const char *>(data), size_t(size));
    }
    EXPECT_STREQ(key, "");
    table.Return_Iterator(walk);
    return text;
}

class Tables : public Lists {
  protected:
    /// Takes all items that the pool has, until the test ends.
    void Drain_Items() {
        const long free = Free_Items();
        for (long i = 0; i < free; ++i) m_Drain.Add(1, 0);
    }

  private:
    CDSList m_Drain;
};

TEST_F(Tables, FindTheOlderOfTwoByTheWholeKey) {
    Table table(3);
    const std::string longest(255, 'k'), too_long(256, 'k');
    table.Add(longest.c_str(), one, 3);
    table.Add(too_long.c_str(), two, 3);
    table.Add_Volatile(too_long.c_str(), two, 3);
    table.Add("same", one, 3);
    table.Add("same", two, 3);
    table.Add("SAME", three, 5);
    table.Add("", two, 2);
    table.Add("\xFF\x80\xFF\xFF", two, 3); // signed bytes of less than nothing
    table.Add("none", nullptr, 7);
    const char *const no_key = nullptr;
    table.Add(no_key, one, 3);
    table.Add_Volatile(no_key, one, 3);
    EXPECT_EQ(table.Get_Num_Entries(), 7);
    EXPECT_EQ(table.Replace_Data("same", three, 5, nullptr, false), 0);
    const std::pair<const char *, const char *> rows[] = {
        {longest.c_str(), "one"}, {too_long.c_str(), "absent"},
        {"same", "three"},        {"SAME", "three"},
        {"sam", "absent"},        {"", "tw"},
        {no_key, "absent"},       {"\xFF\x80\xFF\xFF", "two"}};
    for (const auto &[key, found] : rows) EXPECT_EQ(Found(table, key), found) << (key ? key : "null");
    EXPECT_EQ(table.Get_Hash_Entry(no_key), nullptr);
}

TEST_F(Tables, TakeNumbersForFourCharacters) {
    Table table(5);
    table.Add(0x41424344, one, 3);
    table.Add(0x4142L, two, 3);
    table.Add_Volatile(0L, three, 5);
    EXPECT_EQ(Found(table, "ABCD"), "one");
    EXPECT_EQ(Found(table, "__AB"), "two");
    for (const long key : {0L, 0x5F5F5F5FL, 0x5F000000L}) EXPECT_EQ(Found(table, key), "three");
    EXPECT_EQ(table.Replace_Data(0x4142L, one, 3, nullptr, false), 0);
    EXPECT_EQ(Found(table, 0x4142L), "one");
    EXPECT_EQ(table.Replace_Data(0x43L, one, 3, nullptr, false), ERROR_NOT_FOUND);
}

TEST_F(Tables, StandEmptyAndUninitialised) {
    Table empty(0), fresh, negative, huge;
    EXPECT_EQ(negative.Initialize(-1), E_OUTOFMEMORY);
    for (const int count : {INT_MAX, INT_MAX / 268 + 1}) EXPECT_EQ(huge.Initialize(count), E_OUTOFMEMORY);
    empty.Add_Volatile("key", one, 3);
    for (Table *table : {&empty, &fresh, &negative, &huge}) {
        if (table != &empty) {
            EXPECT_THROW(table->Add_Volatile("key", one, 3), int);
        }
        EXPECT_EQ(Found(*table, "key"), table == &empty ? "absent" : "thrown -1");
        char *old = one;
        EXPECT_EQ(table->Replace_Data("key", two, 3, &old, false), ERROR_NOT_FOUND);
        EXPECT_EQ(old, one);
        EXPECT_EQ(Walked(*table), "0:");
    }
}

TEST_F(Tables, OwnTheirCopiesAndWhatReplacesThem) {
    char data[] = "data";
    char *old = nullptr, *const block = static_cast<char *>(ds_malloc(4)),
         *const last = static_cast<char *>(ds_malloc(4));
    Table table(2);
    table.Add("lent", one, 3);
    table.Add_Volatile("owned", data, 4);
    table.Add_Volatile("empty", data, 0);
    table.Add_Volatile("no bytes", nullptr, 0);
    table.Add_Volatile("negative", data, -1);
    table.Add_Volatile("null", nullptr, 1);
    data[0] = 'X';
    EXPECT_EQ(Walked(table), "4:one owned=data empty= no bytes=");

    EXPECT_EQ(table.Replace_Data("owned", block, 4, &old, true), 0);
    EXPECT_EQ(std::string(old, 4), "data") << "the caller's now";
    ds_free(old);
    const long live = Live_Blocks();
    EXPECT_EQ(table.Replace_Data("owned", nullptr, 0, &old, false), 0);
    EXPECT_EQ(old, nullptr);
    EXPECT_EQ(Live_Blocks(), live - 1);
    EXPECT_EQ(table.Replace_Data("owned", last, 0, nullptr, false), 0) << "goes with the table";
    for (const bool keep : {false, true}) {
        EXPECT_EQ(table.Replace_Data("lent", keep ? three : two, 3, &old, keep), 0);
        EXPECT_EQ(old, keep ? two : one);
    }
}

TEST_F(Tables, WalkInTheOrderOfAddition) {
    Table table(3);
    const long early = table.Get_Entries_Iterator();
    EXPECT_EQ(table.Reset_Iterator(early), nullptr);
    table.Add("b", two, 3);
    table.Add("a", one, 3);
    table.Add("b", three, 5);
    EXPECT_EQ(Walked(table), "3:two a=one b=three");
    EXPECT_EQ(table.Reset_Iterator(early), two);
    long size = 77;
    char key[Hash_Key_Size];
    for (int i = 0; i < 2; ++i) table.Iterate_Next(early, key, nullptr);
    EXPECT_EQ(table.Iterate_Next(early, key, &size), nullptr);
    EXPECT_EQ(key[0], 0);
    EXPECT_EQ(size, 77);
    table.Return_Iterator(early);
    const FailingMemory failing(1);
    EXPECT_EQ(table.Get_Entries_Iterator(), 0);
    EXPECT_EQ(table.Reset_Iterator(0), nullptr);
    EXPECT_EQ(table.Iterate_Next(0, key, &size), nullptr);
    table.Return_Iterator(0);
}

TEST_F(Tables, LoseEverythingWhenInitialisedAnew) {
    static std::vector<void *> released;
    released.clear();
    const auto release = [](void *raw) {
        released.push_back(raw);
        throw 1;
    };
    Table table;
    table.Associate_Raw_Data(one, release);
    EXPECT_EQ(table.Initialize(2), 0);
    EXPECT_TRUE(released.empty()) << "the table was not initialised before";
    for (int i = 0; i < 5; ++i) table.Add_Volatile("key", two, 3);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(table.Initialize(3), 0);
        EXPECT_EQ(released, std::vector<void *>{one});
        EXPECT_EQ(Found(table, "key"), "absent");
        EXPECT_EQ(table.Get_Num_Entries(), 0);
        EXPECT_EQ(table.Old_Pool_Count, 0);
    }
    {
        const FailingMemory failing(5); // the entries, the buckets, a word for each
        EXPECT_EQ(table.Initialize(3), E_OUTOFMEMORY);
    }
    EXPECT_EQ(Found(table, "key"), "thrown -1");
    EXPECT_EQ(table.Bucket_Count, 0);
    EXPECT_EQ(table.Initialize(3), 0);
    table.Add_Volatile("key", two, 3);
    table.Entry_List.Lock(false);
    table.Add("refused", one, 3);
    EXPECT_EQ(Found(table, "refused"), "absent");
    table.Reset();
    EXPECT_EQ(Walked(table), "0:");
    table.Associate_Raw_Data(three, release);
    { const Table last = table; } // a copy shares everything: of the two the one that ends
    EXPECT_EQ(released, (std::vector<void *>{one, three}));
    table.Associate_Raw_Data(nullptr, release);
}

// One bucket of one entry: the second addition needs each kind of memory.
TEST_F(Tables, AddNothingWithoutMemory) {
    for (long nth = 1; nth <= 4; ++nth) { // the copy, a pool block, its record, the bucket
        Table table(1);
        table.Add("first", one, 3);
        const long live = Live_Blocks(), new_pools = nth == 4;
        const FailingMemory failing(nth);
        table.Add_Volatile("second", two, 3);
        EXPECT_EQ(failing.Refused(), 1);
        EXPECT_EQ(Found(table, "second"), "absent");
        EXPECT_EQ(table.Get_Num_Entries(), 1);
        EXPECT_EQ(table.Buckets[0]->Count, 1);
        EXPECT_EQ(table.Pool_Free, new_pools);
        EXPECT_EQ(Live_Blocks(), live + 2 * new_pools);
        table.Add("second", two, 3);
        EXPECT_EQ(table.Pool_Free, 0);
        EXPECT_EQ(Walked(table), "2:one second=two");
    }
}

TEST_F(Tables, AddNothingWithoutListItems) {
    Table table(8);
    table.Add("first", one, 3);
    Drain_Items();
    for (long nth = 1; nth <= 3; ++nth) { // the pool's records, a block, its stack
        const NoLeak no_leak;
        Heap().Fail(nth);
        EXPECT_NO_THROW(table.Add_Volatile("second", two, 3));
        Heap().Fail(0);
        EXPECT_EQ(Found(table, "second"), "absent") << nth;
        EXPECT_EQ(table.Get_Num_Entries(), 1);
        EXPECT_EQ(table.Pool_Free, 7);
        EXPECT_EQ(table.Buckets[table.Determine_Location("second")]->Count, 0);
    }
    table.Add("second", two, 3);
    EXPECT_EQ(Walked(table), "2:one second=two");
}

enum Index { Kept, Refused, Lost };

// Two words, and two for each of its cells, a power of 2.
std::size_t Live_Indexes() {
    std::size_t count = 0;
    for (std::size_t cells = 8; cells <= 4096; cells *= 2) count += LibraryHeap::Blocks(8 + 8 * cells).size();
    return count;
}

// The first characters of all keys are the same: there is but one bucket.
TEST_F(Tables, AnswerAlikeWithAndWithoutAnIndex) {
    static char data[1000];
    for (const Index index : {Kept, Refused, Lost}) {
        std::mt19937 random(7);
        std::vector<std::string> keys; // of the bucket
        std::map<std::string, char *> found;
        if (index == Refused) Heap().Fail(1);
        Table table(2);
        EXPECT_EQ(Live_Indexes(), index == Refused ? 0u : 1u);
        for (unsigned step = 0; step < 2000; ++step) {
            const unsigned number = random() % (step / 4 + 1); // at first few keys, then many
            const std::string key = "SHARED" + std::string(number % 40, 'x') + std::to_string(number);
            char *const value = data + random() % sizeof data;
            if (random() % 4 == 0 && table.Replace_Data(key.c_str(), value, 1, nullptr, false) == 0) {
                found[key] = value;
            } else if (random() % 2 == 0) {
                if (index == Lost && step > 20) Heap().Fail(1);
                table.Add(key.c_str(), value, 1);
                Heap().Fail(0);
                keys.push_back(key);
                found.try_emplace(key, value);
            }
            const HashTableEntry *const entry = table.Get_Hash_Entry(key.c_str());
            ASSERT_EQ(entry != nullptr, found.contains(key)) << key;
            ASSERT_TRUE(!entry || entry->Data == found[key]) << key;
        }
        EXPECT_EQ(Live_Indexes(), index == Kept ? 1u : 0u);
        HashTableBucket *const bucket = table.Buckets[table.Determine_Location("SHARED")];
        ASSERT_EQ(bucket->Count, static_cast<long>(keys.size()));
        for (std::size_t i = 0; i < keys.size(); ++i) EXPECT_EQ(bucket->Entries()[i]->Key, keys[i]);
        table.Reset();
        EXPECT_EQ(Live_Indexes(), 0u);
    }
}

TEST_F(Tables, GiveUpTheIndexForKeysMadeToHashAlike) {
    const auto key = [](int i) { return std::to_string(1000 + i) + "\x6B\xCA\xEB\x85"; };
    Table table(100);
    for (int i = 0; i < 2000; ++i) table.Add(key(i).c_str(), two, i);
    EXPECT_EQ(Live_Indexes(), 0u);
    long size = -1;
    for (int i = 0; i < 2000; ++i) EXPECT_TRUE(table.Find(key(i).c_str(), nullptr, &size) == 0 && size == i);
}

} // namespace
