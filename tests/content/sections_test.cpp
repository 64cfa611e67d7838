#include <kelmara/content/sections.h>

#include <tests/content/damaged_texts.h>
#include <tests/support/test_memory.h>

#include <gtest/gtest.h>

#include <climits>

namespace {

constexpr bool Strip = true, Keep = false;

/// Sections that were loaded, shown as "[NAME]key=value;key=value;" with the end of each size tested.
class LoadedSections {
  public:
    explicit LoadedSections(const std::string &text, bool strip_quotes = Strip) { Load(text, strip_quotes); }
    LoadedSections() = default;
    ~LoadedSections() { Unload_Sections(&list); }

    void Load(const std::string &text, bool strip_quotes = Strip) {
        const ExactBytes bytes(text);
        result = Load_Sections(bytes.Get(), bytes.Size(), &list, strip_quotes);
        EXPECT_EQ(text, std::string(bytes.Get(), text.size()));
    }
    CSectionEntry &At(long index) { return *static_cast<CSectionEntry *>(list.GetEntry(index, 0)); }
    std::string Shown() {
        std::string shown = result == 0 ? "" : std::to_string(result) + " ";
        for (long i = 0; i < list.Entries(0); ++i) shown += Shown(At(i));
        return shown;
    }
    static std::string Shown(CSectionEntry &section) {
        char name[256];
        section.Get_Section_Name(name);
        std::string shown = std::string("[") + name + "]";
        for (int i = 0; i < section.Get_Item_Count(); ++i) {
            char *item = nullptr, *value = nullptr;
            long size = 0;
            section.Get_Next_Item(i, &item, &value, &size);
            EXPECT_EQ(value[size], 0);
            EXPECT_EQ(value[size - 1], 0);
            shown += std::string(item) + "=" + std::string(value, static_cast<std::size_t>(size - 1)) + ";";
        }
        return shown;
    }

    CDSList list;
    long result = 0;
};

class Sections : public ::testing::Test {
  protected:
    Sections() { CDSList().Add(0, 0); } // from here on there is a pool
    NoLeak no_leak_;
};

TEST_F(Sections, ReadEveryLineToItsEnd) {
    const struct {
        std::string text, shown;
    } cases[] = {
        {"", ""},
        {"[ab c]", "[AB C]"},
        {"[a]k=1\r[b]\nk=2\r\n\r\n[a]k=3\r\n", "[A]k=1;[B]k=2;[A]k=3;"},
        {"[s]my key = some value \t \n", "[S]mykey=some value;"},
        {"[s]k=a=b\nk==b\nk=\nk=\t= = x", "[S]k=a=b;k=b;k=;k=x;"},
        {"[s]k=a;b\n;k=c\n k2 ;x=y\n=d", "[S]k=a;k2=d;"},
        {"[s]k=[x]\n", "[S][X]k=;"},
        {"[s]k=[x]v\nb=1", "[S][X]k=v;b=1;"},
        {"[s]left\nover\nk=v\nab[t]cd=e", "[S]leftoverk=v;[T]abcd=e;"},
        {"k=v\n[s]\na=b\n", ""},
        {"word\n;comment\n\n[s]a=b", "[S]worda=b;"},
        {"[\t\";=\x80z]\x81\xFF=\xFE", "[\t\";=\x80Z]\x81\xFF=\xFE;"},
        {"[s]\"k\"=\"a b\"\nq=\" x \"\ns=\"a;b\"", "[S]k=a b;q=x;s=a;"},
        {std::string("[s]k=a\0b\n", 9), std::string("[S]k=a\0b;", 9)},
        {"[s]k=1\n[open\n]\nk=2", "-8306 [S]k=1;"},
        {"[", "-8306 "},
    };
    for (const auto &row : cases) EXPECT_EQ(LoadedSections(row.text).Shown(), row.shown) << row.text;
    EXPECT_EQ(LoadedSections("[s]\"k\"=\"a b\"\nk=\"\"", Keep).Shown(), "[S]\"k\"=\"a b\";k=\"\";");

    LoadedSections several("[a]x=1");
    several.Load("[b]y=2");
    EXPECT_EQ(several.Shown(), "[A]x=1;[B]y=2;");
    const long key = several.list.Lock(false);
    several.Load("[c]");
    EXPECT_EQ(several.result, E_UNEXPECTED) << "locked";
    EXPECT_EQ(Unload_Sections(&several.list), 0) << "ends, with nothing taken out";
    EXPECT_EQ(several.list.Entries(0), 2);
    several.list.Unlock(key);
}

TEST_F(Sections, KeepTheirLimits) {
    const auto name = [](std::size_t length) { return std::string(length, 'N'); };
    for (const std::size_t length : {255u, 256u, 257u}) {
        const std::string cut = "[" + name(255) + "]", item = name(length) + "=v;";
        EXPECT_EQ(LoadedSections("[" + name(length) + "]").Shown(), length <= 256 ? cut : "-8306 ");
        EXPECT_EQ(LoadedSections("[s]" + name(length) + "=v").Shown(),
                  length <= 255 ? "[S]" + item : "-8306 [S]");
        const std::string value = name(length - 2); // sizes 254, 255 and 256: the last has a block of its own
        EXPECT_EQ(LoadedSections("[s]k=" + value).Shown(), "[S]k=" + value + ";");
    }
    const std::string megabyte(1 << 20, 'x');
    EXPECT_EQ(LoadedSections("[s]k=" + megabyte + "\nb=c").Shown(), "[S]k=" + megabyte + ";b=c;");
    EXPECT_EQ(LoadedSections("[s]" + megabyte + "\n;" + megabyte + "\n").Shown(), "[S]");
    EXPECT_EQ(LoadedSections("[s]" + megabyte + "\n=").Shown(), "-8306 [S]");
    EXPECT_EQ(LoadedSections("[" + megabyte + "]").Shown(), "-8306 ");

    CDSList list;
    EXPECT_EQ(Load_Sections(nullptr, 0, &list, Keep), 0);
    for (const long size : {-1L, LONG_MIN}) EXPECT_EQ(Load_Sections("[a]", size, &list, Keep), -8306);
    EXPECT_EQ(Load_Sections("[a]", LONG_MAX, &list, Keep), E_OUTOFMEMORY);
    EXPECT_EQ(Unload_Sections(nullptr) + list.Entries(0), 0);

    for (long nth = 1; nth <= 7; ++nth) { // the accumulator, two sections, three records, a long value
        LoadedSections sections;
        const FailingMemory failing(nth);
        sections.Load("[a]k=v\nlong=" + name(300) + "\n[b]k=v");
        EXPECT_EQ(sections.result, E_OUTOFMEMORY) << nth;
    }
}

TEST_F(Sections, AreReadThroughTheirInterface) {
    CSectionEntry *const section = new CSectionEntry("Name");
    char name[] = "Key", second[] = "key", value[] = {'a', 0, 'b'}, empty[] = "";
    EXPECT_EQ(section->Add_Item(name, value, 3) | section->Add_Item(second, empty, 1), 0);
    EXPECT_EQ(section->Add_Item(empty, nullptr, 0), 0);
    std::string long_name(256, 'n');
    EXPECT_EQ(section->Add_Item(long_name.data(), value, 3), E_INVALIDARG);
    EXPECT_EQ(section->Add_Item(nullptr, value, 3) & section->Add_Item(name, nullptr, 1) &
                  section->Add_Item(name, value, -1),
              E_INVALIDARG);
    EXPECT_EQ(section->Add_Item(name, value, LONG_MAX), E_OUTOFMEMORY);
    EXPECT_EQ(section->Get_Item_Count(), 3);

    void *object = nullptr;
    const GUID unknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    EXPECT_EQ(section->QueryInterface(IID_IListInterface, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(section->QueryInterface(unknown, nullptr), E_INVALIDARG);
    EXPECT_EQ(section->QueryInterface(unknown, &object), 0);
    EXPECT_EQ(section->QueryInterface(IID_ISectionEntryInterface, &object), 0);
    auto *const seen = static_cast<ISectionEntryInterface *>(object);
    EXPECT_EQ(seen->AddRef(), 4ul);

    long size = -1;
    for (std::string asked : {"KEY", "Key", "kEY"}) {
        char *const found = seen->Get_Item_Data(asked.data(), &size);
        EXPECT_EQ(std::string(found, 4), std::string("a\0b\0", 4)) << "the first of that name";
        EXPECT_EQ(size, 3);
    }
    char missing[] = "Ke", longer[] = "Keys";
    size = -1;
    for (char *asked : {missing, longer, long_name.data(), static_cast<char *>(nullptr)})
        EXPECT_EQ(seen->Get_Item_Data(asked, &size), nullptr);
    char *item = name, *data = name;
    for (const int index : {3, -1, INT_MAX}) {
        seen->Get_Next_Item(index, &item, &data, &size);
        EXPECT_EQ(item, nullptr);
        EXPECT_EQ(data, nullptr);
    }
    EXPECT_EQ(size, -1);
    char buffer[256];
    seen->Get_Section_Name(buffer);
    EXPECT_STREQ(buffer, "Name") << "the parser folds names, not the section";
    for (const unsigned long left : {3ul, 2ul, 1ul, 0ul}) EXPECT_EQ(seen->Release(), left);

    LoadedSections sections("[a]k=v\n[b]");
    sections.At(0).AddRef(); // does not hold it
    sections.list.Add(static_cast<void *>(nullptr), 0);
    EXPECT_EQ(Unload_Sections(&sections.list) + sections.list.Entries(0), 0);
}

TEST_F(Sections, StandDamagedTexts) {
    const std::string good = "; phones\r\n[Main]\r\nName = \"a; b\"\nkey=x=[y]\r[Other] k=\r\nlast=1;c";
    For_Each_Damage(good, [](const std::string &text) {
        for (const bool strip_quotes : {Strip, Keep}) {
            LoadedSections sections(text, strip_quotes);
            EXPECT_TRUE(sections.result == 0 || sections.result == -8306) << text;
            sections.Shown();
        }
    });
}

TEST_F(Sections, ComeWithTwoHelpers) {
    const struct {
        const char *param, *text;
        int after; // -1: not found
    } cases[] = {
        {"baud", "Baud=9600", 4}, {"baud", "xbaud baud", 10}, {"baud", "_BAUDx", 5}, {"baud", "zbaud", -1},
        {"aa", "baaa", -1},       {"aa", "-aaa", 3},          {"", "text", 0},       {"a", "", -1},
        {"z", "\xE4z", 2},        {nullptr, "a", -1},
    };
    for (const auto &row : cases) {
        char *after = reinterpret_cast<char *>(1);
        EXPECT_EQ(Is_Param(row.param, row.text, &after), row.after >= 0);
        EXPECT_EQ(after, row.after >= 0 ? row.text + row.after : nullptr) << row.text;
    }
    EXPECT_TRUE(Is_Param("b", "a b", nullptr));
    EXPECT_EQ(Count_Lines(""), 1);
    EXPECT_EQ(Count_Lines("a\r\nb\n\n"), 4);
}

} // namespace
