#include <kelmara/localization/string_table.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/system/file.h>

#include <platform/errors.h>

#include <tests/support/file_verbs.h>
#include <tests/support/library_heap.h>
#include <tests/support/test_memory.h>

#include <cstring>
#include <tuple>

namespace {

struct Table : CStringTable {
    explicit Table(bool unindexed = true) : CStringTable(unindexed) {}
    using CStringTable::Get_Entry;
};

constexpr int Lookups_To_Index = 70; // more than a table answers by walking

std::string Bytes(const void *of, std::size_t size) {
    return {static_cast<const char *>(of), size};
}

std::string Header(long count, unsigned long per_character = 1, unsigned long first = 20) {
    const unsigned long words[] = {first, per_character, static_cast<unsigned long>(count), 0, 0};
    return Bytes(words, sizeof words);
}

std::string Entry(const std::string &identifier, const std::string &text, const std::string &comments = "",
                  long type = 0) {
    StringEntry entry = {};
    entry.Size = text.size() + 207;
    entry.Length = static_cast<short>(text.size());
    identifier.copy(entry.Identifier, sizeof entry.Identifier);
    comments.copy(entry.Comments, sizeof entry.Comments);
    entry.Type = type;
    return Bytes(&entry, sizeof entry) + text + std::string(3, '\0');
}

std::string Text(CSafeStr &text) {
    return Bytes(static_cast<char *>(text), static_cast<std::size_t>(text.Length()));
}

class StringTables : public FileTest {
  protected:
    long Load(CStringTable &table, const std::string &bytes) {
        machine.Write("drive_c/t.ltx", bytes);
        CKMFile file;
        EXPECT_EQ(file.Open("t.ltx", false, false), 0);
        return table.Load_Table(&file);
    }
    std::string Saved(CStringTable &table) {
        CKMFile file;
        EXPECT_EQ(file.Open("saved.ltx", true, true), 0);
        EXPECT_EQ(table.Save_Changes(&file), table.Save_Changes(nullptr) == 1006 ? 0 : -1);
        file.Close();
        return machine.Read("drive_c/saved.ltx");
    }
    static std::string String(CStringTable &table, long index) {
        CSafeStr text("before");
        table.Get_String(index, text);
        return Text(text);
    }
    static std::string Found(CStringTable &table, const char *identifier) {
        CSafeStr text("before");
        table.Get_String_From_Identifier(identifier, text);
        return Text(text);
    }
    /// "identifier=string/type/comments " of all entries.
    static std::string All(CStringTable &table) {
        std::string all;
        for (long i = 0; i < table.Count_Entries(); ++i) {
            CSafeStr identifier("?"), comments("?");
            table.Get_String_Identifier(i, identifier);
            table.Get_String_Comments(i, comments);
            all += Text(identifier) + "=" + String(table, i) + "/" +
                   std::to_string(table.Get_String_Type(i)) + "/" + Text(comments) + " ";
        }
        return all;
    }
    static std::string Exported(CStringTable &table, long index) {
        std::string line(1358, '#');
        table.Get_Export_String(index, line.data(), 1);
        EXPECT_EQ(line.back(), '#');
        return line.c_str();
    }
};

TEST_F(StringTables, GrowByMoreThanTheirEntries) {
    Table table;
    ASSERT_EQ(table.New_Table(), 0);
    EXPECT_EQ(Saved(table), Header(0));
    EXPECT_EQ(table.Set_String(0, "abc"), 0);
    EXPECT_EQ(Saved(table), Header(1) + Entry("", "abc") + '\0');
    EXPECT_EQ(table.Set_String(1, "defg"), 1);
    table.Set_Identifier(1, "ID");
    table.Set_Comments(1, "note");
    table.Set_Type(1, -7);
    const std::string whole =
        Header(2) + Entry("", "abc") + Entry("ID", "defg", "note", -7) + std::string(2, '\0');
    EXPECT_EQ(Saved(table), whole);
}

TEST_F(StringTables, AreEditedWithoutLossBehindTheEdit) {
    const std::string one = Entry("ONE", "first", "a", 1), two = Entry("TWO", "second", "b", 2),
                      three = Entry("THREE", "third", "c", 3), tail = "-spare-";
    const auto edited = [&](auto edit, int result) {
        Table table;
        Load(table, Header(3) + one + two + three + tail);
        EXPECT_EQ(edit(table), result);
        return Saved(table);
    };
    for (const char *text : {"", "x", "as long", "a good deal longer than it was before"}) {
        EXPECT_EQ(edited([&](Table &t) { return t.Set_String(1, text); }, 2),
                  Header(3) + one + Entry("TWO", text, "b", 2) + three + tail);
        EXPECT_EQ(edited([&](Table &t) { return t.Set_String(-5, text); }, 2),
                  Header(3) + Entry("ONE", text, "a", 1) + two + three + tail);
        const std::string last = edited([&](Table &t) { return t.Set_String(2, text); }, 2);
        const std::string wanted = Header(3) + one + two + Entry("THREE", text, "c", 3);
        EXPECT_EQ(last.size(), wanted.size() + tail.size());
        EXPECT_EQ(last.substr(0, wanted.size() - 3), wanted.substr(0, wanted.size() - 3));
        const std::string more = edited([&](Table &t) { return t.Set_String(3, text); }, 3);
        const std::string appended = Header(4) + one + two + three + Entry("", text);
        EXPECT_EQ(more.substr(0, appended.size()), appended);
        EXPECT_EQ(more.size(), appended.size() + tail.size() + 1);
    }
    const auto deleted = [&](long index) {
        return edited([&](Table &t) { return t.Delete_String(index), 0; }, 0);
    };
    EXPECT_EQ(deleted(0), Header(2) + two + three + tail);
    EXPECT_EQ(deleted(1), Header(2) + one + three + tail);
    EXPECT_EQ(deleted(2).substr(0, 20 + one.size() + two.size()), Header(2) + one + two);
    EXPECT_EQ(deleted(2).size(), (Header(2) + one + two + tail).size());
    EXPECT_EQ(deleted(3), Header(3) + one + two + three + tail);
}

TEST_F(StringTables, KeepToTheirLimits) {
    Table table;
    EXPECT_EQ(table.Set_String(0, "x"), -1) << "there is no table";
    EXPECT_EQ(table.Import_String("x\ty\t1\tzz"), -1);
    ASSERT_EQ(table.New_Table(), 0);
    EXPECT_EQ(table.Set_String(-1, "x"), -1);
    EXPECT_EQ(table.Set_String(1, "x"), -1);
    const std::string longest(32767, 's');
    EXPECT_EQ(table.Set_String(0, longest.c_str()), 0);
    EXPECT_EQ(String(table, 0), longest);
    const std::string before = Saved(table);
    EXPECT_EQ(table.Set_String(0, (longest + "s").c_str()), -1);
    EXPECT_EQ(table.Set_String(1, (longest + "s").c_str()), -1);
    for (const long index : {1L, 0x7FFFFFFFL}) {
        table.Set_Identifier(index, "x");
        table.Set_Comments(index, "x");
        table.Set_Type(index, 1);
        table.Delete_String(index);
    }
    EXPECT_EQ(Saved(table), before);
    EXPECT_EQ(table.Set_String(0, "s"), 0);
    for (const std::size_t length : {63u, 64u, 600u}) {
        table.Set_Identifier(0, std::string(length, 'i').c_str());
        table.Set_Comments(0, std::string(length * 2 + 1, 'c').c_str());
        EXPECT_EQ(All(table), std::string(63, 'i') + "=s/0/" + std::string(127, 'c') + " ") << length;
    }
    const std::tuple<unsigned long, const char *> rows[] = {{0, "old"}, {2, "new"}, {0xFFFFFFFF, "new"}};
    for (const auto &[per_character, text] : rows) {
        Load(table, Header(1, per_character) + Entry("ID", "old"));
        EXPECT_EQ(table.Set_String(0, "new"), 0);
        EXPECT_EQ(String(table, 0), text) << per_character;
    }
}

TEST_F(StringTables, ExportAndImportLines) {
    const std::string c255(255, 'c'), s2000(2000, 's'), tabs(127, '\t');
    struct {
        std::string line, entry, exported; // no entry: refused
    } const rows[] = {
        {"text\tID\t7\tnote", "ID=text/7/note ", "text\tID\t7\tnote\r\n"},
        {"text\tID\t7\tnote\r\n", "ID=text/7/note\r\n ", "text\tID\t7\tnote\\r\\n\r\n"},
        {"\t\ttext\t\tID\t\t -7x\t\t \r\n", "ID=text/-7/ ", "text\tID\t-7\t \r\n"},
        {"100%s %n\t%d\tx\t%s%n", "%d=100%s %n/0/%s%n ", "100%s %n\t%d\t0\t%s%n\r\n"},
        {"a\r\nb\\t\\\\r\tID\t1\t\\r\\n\\t\\x\\\\n", "ID=a\\r\\nb\\t\\\\r/1/\r\n\t\\x\\\n ",
         "a\\r\\nb\\t\\\\r\tID\t1\t\\r\\n\\t\\x\\\\n\r\n"},
        {"text\tID\t99999999999\tx", "ID=text/2147483647/ ", "text\tID\t2147483647\t \r\n"},
        {"text\tID\t1\t note", "ID=text/1/ ", "text\tID\t1\t \r\n"},
        {c255 + "\t" + c255 + "\t1\t" + c255,
         c255.substr(0, 63) + "=" + c255 + "/1/" + c255.substr(0, 127) + " ", ""},
        {s2000 + "\tID\t1\t" + std::string(2047 - 2000 - 6, 'x'),
         "ID=" + s2000 + "/1/" + std::string(41, 'x') + " ",
         s2000.substr(0, 1023) + "\tID\t1\t" + std::string(41, 'x') + "\r\n"},
        {s2000 + "\tID\t1\t" + std::string(2048 - 2000 - 6, 'x'), "", ""},
        {"", "", ""},
        {"text\tID\t1\t", "", ""},
        {"text\tID\t1\t\t\t", "", ""},
    };
    for (const auto &row : rows) {
        Table table;
        table.New_Table();
        EXPECT_EQ(table.Import_String(row.line.c_str()), row.entry.empty() ? -1 : 0) << row.line;
        EXPECT_EQ(All(table), row.entry) << row.line;
        if (!row.exported.empty()) {
            EXPECT_EQ(Exported(table, 0), row.exported);
        }
    }
    Table table;
    table.New_Table();

    Load(table, Header(4) + Entry("ID", std::string("a\0b", 3)) + Entry("", "") +
                    Entry(std::string(63, 'i'), std::string(1022, 's') + "\nx", tabs, -2147483647 - 1) +
                    Entry("ID", std::string(1021, 's') + "\nx"));
    EXPECT_EQ(Exported(table, 0), "a\tID\t0\t \r\n");
    EXPECT_EQ(Exported(table, 1), "\t\t0\t \r\n");
    EXPECT_EQ(table.Import_String(Exported(table, 1).c_str()), -1) << "an empty string does not survive";
    const std::string line = Exported(table, 2);
    EXPECT_EQ(line.substr(0, 1024), std::string(1022, 's') + "\ti") << "no half of a sequence";
    EXPECT_EQ(line.size(), 1356u - 1);
    EXPECT_EQ(Exported(table, 3), std::string(1021, 's') + "\\n\tID\t0\t \r\n");
}

TEST_F(StringTables, FindTheFirstWithTheWholeIdentifier) {
    const std::string i63(63, 'i');
    const std::string bytes = Header(6) + Entry("KMSTR_A", "one") + Entry("KMSTR_B", "two") +
                              Entry("KMSTR_A", "other") + Entry(i63, "longest") + Entry("", "nameless") +
                              Entry(std::string(64, 'u'), std::string("z\0z", 3));
    for (const bool unindexed : {false, true}) {
        Table table(unindexed);
        EXPECT_EQ(Found(table, "KMSTR_A"), "") << "no table";
        ASSERT_EQ(Load(table, bytes), 0);
        for (int lookup = 0; lookup < Lookups_To_Index; ++lookup) {
            EXPECT_EQ(Found(table, "KMSTR_A") + Found(table, "KMSTR_B") + Found(table, ""), "onetwonameless");
            for (const char *absent : {"KMSTR_", "KMSTR_AB", "kmstr_a", "x"})
                EXPECT_EQ(Found(table, absent), "");
            EXPECT_EQ(Found(table, i63.c_str()) + Found(table, (i63 + "i").c_str()), "longest");
            EXPECT_EQ(Found(table, std::string(63, 'u').c_str()), "z");
            EXPECT_EQ(Found(table, std::string(64, 'u').c_str()) + Found(table, nullptr), "");
        }

        table.Set_String(1, std::string(5000, '2').c_str());
        EXPECT_EQ(Found(table, "KMSTR_B"), std::string(5000, '2'));
        table.Set_Identifier(0, "KMSTR_C");
        table.Delete_String(4);
        for (int lookup = 0; lookup < Lookups_To_Index; ++lookup) {
            EXPECT_EQ(Found(table, "KMSTR_A") + Found(table, "KMSTR_C") + Found(table, ""), "otherone");
        }
        CSafeStr both("KMSTR_C");
        table.Get_String_From_Identifier(both, both);
        EXPECT_EQ(Text(both), "one");
        ASSERT_EQ(Load(table, Header(0)), 0);
        for (int i = 0; i < 100; ++i) {
            EXPECT_EQ(table.Import_String(("s\tKMSTR_" + std::to_string(i) + "\t0\t ").c_str()), i);
            EXPECT_EQ(Found(table, ("KMSTR_" + std::to_string(i)).c_str()), "s");
        }
    }
}

/// Everything that a table can be asked and told, whatever it holds. What is saved before is what was loaded.
class Damaged : public StringTables {
  protected:
    void Use(const std::string &bytes) {
        for (const bool unindexed : {false, true}) {
            Table table(unindexed);
            ASSERT_EQ(Load(table, bytes), 0);
            if (!bytes.empty()) {
                EXPECT_EQ(Saved(table), bytes);
            }
            EXPECT_LE(static_cast<std::size_t>(table.Count_Entries()), bytes.size() / 204);
            All(table);
            for (int lookup = 0; lookup < Lookups_To_Index; ++lookup) Found(table, "TWO");
            EXPECT_EQ(Found(table, "absent"), "");
            for (long index : {-1L, 0L, 1L, 2L, 3L, 0x7FFFFFFFL})
                Exported(table, index), table.Get_Entry(index);
            table.Set_Identifier(1, "NEW");
            table.Set_Type(2, 5);
            table.Set_String(1, "a longer string");
            table.Set_String(0, "");
            const long count = table.Count_Entries();
            if (table.Import_String("text\tID\t1\tnote") >= 0) {
                EXPECT_EQ(table.Count_Entries(), count + 1);
            }
            for (long left = table.Count_Entries(); left >= 0; --left) table.Delete_String(0);
            Found(table, "TWO");
        }
    }
    const std::string whole = Header(3) + Entry("ONE", "first", "a", 1) + Entry("TWO", "second", "b", 2) +
                              Entry("THREE", "third", "c", 3) + std::string(2, '\0');
};

TEST_F(Damaged, TablesThatAreCutAreUsedAsFarAsTheyReach) {
    for (std::size_t length = 0; length <= whole.size(); length += length < 24 ? 1 : 3)
        Use(whole.substr(0, length));
    Table table;
    Load(table, whole.substr(0, 20 + 212 + 204 + 2));
    EXPECT_EQ(All(table), "ONE=first/1/a TWO=se/2/b ");
    EXPECT_EQ(table.Set_String(1, "x"), -1) << "an entry that is cut cannot be resized";
}

TEST_F(Damaged, TablesWithWrongNumbersAreNotFollowedOutside) {
    std::vector<std::size_t> places;
    for (std::size_t at = 0; at < 20; ++at) places.push_back(at);
    for (const std::size_t entry : {20u, 20u + 212u, 20u + 212u + 213u}) {
        for (std::size_t at = 0; at < 6; ++at) places.push_back(entry + at);
    }
    for (const std::size_t place : places) {
        for (const char flip : {'\x01', '\x40', '\x80', '\xFF'}) {
            SCOPED_TRACE(place);
            std::string bytes = whole;
            bytes[place] = static_cast<char>(bytes[place] ^ flip);
            Use(bytes);
        }
    }
    for (const long count : {0x7FFFFFFFL, -1L}) {
        Use(Header(count) + std::string(5000, '\0'));
        Use(Header(count) + std::string(5000, '\xFF'));
    }
}

TEST_F(StringTables, StandLackOfMemory) {
    const std::string bytes = Header(2) + Entry("ONE", "first") + Entry("TWO", std::string(600, 't'));
    Table table;
    Load(table, bytes);
    LibraryHeap heap;
    const long blocks = LibraryHeap::Live_Blocks();
    heap.Fail(1);
    EXPECT_EQ(table.Set_String(0, "f"), 1) << "a block that cannot shrink stays";
    EXPECT_EQ(All(table), "ONE=f/0/ TWO=" + std::string(600, 't') + "/0/ ");
    CKMFile file;
    ASSERT_EQ(file.Open("t.ltx", false, false), 0);
    heap.Fail(1);
    EXPECT_EQ(table.Load_Table(&file), E_OUTOFMEMORY);
    EXPECT_EQ(table.Count_Entries(), 0);
    EXPECT_EQ(table.Load_Table(nullptr), 1006);
    heap.Fail(0);
    EXPECT_LE(LibraryHeap::Live_Blocks(), blocks + 1) << "the file's buffer";
}

TEST_F(StringTables, StandLackOfTheMemoryServices) {
    const std::string long_text(600, 't');
    const std::string bytes =
        Header(3) + Entry("ONE", "first") + Entry("TWO", long_text) + Entry("ONE", "other");
    machine.Write("drive_c/t.ltx", bytes);
    {
        Table table(false);
        Load(table, bytes);
        for (int lookup = 0; lookup < Lookups_To_Index; ++lookup) Found(table, "ONE");
    }
    const NoLeak no_leak;
    bool done = false;
    for (long nth = 1; !done; ++nth) {
        ASSERT_LT(nth, 100);
        Table table(false);
        CKMFile file;
        ASSERT_EQ(file.Open("t.ltx", false, false), 0);
        FailingMemory failing(nth);
        const long result = table.Load_Table(&file);
        EXPECT_EQ(result, failing.Refused() ? E_OUTOFMEMORY : 0) << nth;
        EXPECT_EQ(table.Count_Entries(), result == 0 ? 3 : 0);
        for (int lookup = 0; lookup < 3 * Lookups_To_Index; ++lookup) {
            ASSERT_EQ(Found(table, "ONE"), result == 0 ? "first" : "") << nth;
        }
        done = !failing.Refused();
    }
}

TEST_F(StringTables, NeedNoMemoryToBeSearched) {
    const std::string bytes = Header(2) + Entry("ONE", "first") + Entry("TWO", std::string(600, 't'));
    Table table(false);
    Load(table, bytes);
    CSafeStr text("before");
    const FailingMemory failing(1, true);
    for (int lookup = 0; lookup < Lookups_To_Index; ++lookup) EXPECT_EQ(Found(table, "ONE"), "first");
    EXPECT_EQ(failing.Refused(), 0) << "lookups need no memory";
    EXPECT_THROW(table.Get_String_From_Identifier("TWO", text), long);
    EXPECT_THROW(table.Get_String(1, text), long);
    EXPECT_EQ(Text(text), "");
}

TEST_F(StringTables, AreReadTheSameInAnyOrderBetweenEdits) {
    Table table;
    ASSERT_EQ(Load(table, Header(6) + Entry("a", "one") + Entry("b", "two") + Entry("c", "three") +
                              Entry("d", "four") + Entry("e", "five") + Entry("f", "six")),
              0);
    const auto reads_as_saved = [&](long first) {
        std::string read;
        for (long i : {first, 0L, first, first + 1, first - 1, 5L}) read += String(table, i) + " ";
        Table fresh;
        EXPECT_EQ(Load(fresh, Saved(table)), 0);
        std::string saved;
        for (long i : {first, 0L, first, first + 1, first - 1, 5L}) saved += String(fresh, i) + " ";
        EXPECT_EQ(read, saved) << first;
    };
    for (long at : {3L, 1L, 4L, 2L}) {
        EXPECT_NE(String(table, 5), "before");
        table.Set_String(at, std::string(static_cast<std::size_t>(9 * at), 'x').c_str());
        reads_as_saved(at);
        EXPECT_NE(String(table, 4), "before");
        table.Delete_String(at);
        reads_as_saved(at);
        table.Set_String(table.Count_Entries(), "at the end");
        reads_as_saved(at);
    }
}

} // namespace
