#include <kelmara/content/define_file.h>

#include <kelmara/containers/hash_table.h>
#include <kelmara/containers/iterator.h>

#include <tests/content/damaged_texts.h>
#include <tests/support/file_verbs.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/test_memory.h>

namespace {

class DefineFile : public FileTest {
  protected:
    DefineFile() { CDSList().Add(0, 0); } // from here on there is a pool
    void SetUp() override {
        FileTest::SetUp();
        Name_Folder("Scripts", "C:\\Scripts");
        Name_Folder("ScriptIncludes", "c:\\scripts\\includes");
        machine.Write("drive_c/Scripts/Includes/second.def", "#define WHERE includes\r\n");
        machine.Write("drive_c/elsewhere/here.def", "#define WHERE elsewhere\r\n");
        ASSERT_EQ(Go_To("c:\\elsewhere"), 0);
    }
    static void Name_Folder(const char *value, const std::string &path) {
        TestKey("Software\\Dunmerit Software\\KelMara", HKEY_LOCAL_MACHINE).Set(value, path + '\0');
    }
    static std::string Directory() {
        char path[MAX_PATH] = {};
        GetCurrentDirectoryA(sizeof path, path);
        return path;
    }

    /// The entries as "name=value;" in the order of the file.
    static std::string Shown(CHashTable &table) {
        std::string shown;
        CIterator walk;
        for (void *at = walk.Iterate(&static_cast<Walked &>(table).Entry_List); walk.More();
             at = walk.Next()) {
            const auto &entry = *static_cast<HashTableEntry *>(at);
            EXPECT_GE(entry.Size, 0);
            shown += std::string(entry.Key) + "=" +
                     std::string(entry.Data, static_cast<std::size_t>(entry.Size)) + ";";
        }
        return shown;
    }
    /// What `name` gives, or the code.
    std::string Read(const char *name) {
        CHashTable table;
        const long result = Tokenize_Define_File(name, &table);
        EXPECT_EQ(Directory(), "C:\\elsewhere");
        return result == 0 ? Shown(table) : std::to_string(result);
    }
    std::string Defines(const std::string &text) {
        machine.Write("drive_c/Scripts/text.def", text);
        return Read("text.def");
    }

  private:
    struct Walked : CHashTable {
        using CHashTable::Entry_List;
    };
    NoLeak no_leak_;
};

TEST_F(DefineFile, IsReadByItsDefines) {
    const auto times = [](std::size_t count, char c) { return std::string(count, c); };
    const struct {
        std::string text, shown;
    } cases[] = {
        {"", ""},
        {"#define A 'ABCD'\r\n#define B 'EFGH'\r\n", "A='ABCD';B='EFGH';"},
        {"#define A 'ABCD'\n#define B 'EFGH'", "A='ABCD;B='EFGH';"},
        {"// #define A one #define B\ttwo\r\n", "A=one #define B\ttwo;B=two;"},
        {"#define 'two words' x\r\n#define' a'b c\r\n", "'two words'=x;' a'b=c;"},
        {"#define 'open x\r\n", "'open x\r\n=;"},
        {"#define LINE\r\nEND x\r\n", "LINE\r\nEND=x;"},
        {"#define A \t \r\n#define B \n#define C \r\n", "A=;B=;C=;"},
        {"#define", "=;"},
        {"#define A", "A=;"},
        {"#defin A x", ""},
        {std::string("#define A x\r\n\0#define B y\r\n", 27), "A=x;"},
    };
    for (const auto &row : cases) EXPECT_EQ(Defines(row.text), row.shown) << row.text;

    for (const std::size_t length : {255u, 256u}) {
        const std::string name = times(length, 'n');
        EXPECT_EQ(Defines("#define " + name + " v\r\n"), length <= 255 ? name + "=v;" : "") << length;
    }
    for (const std::size_t length : {62u, 63u, 64u, 65u}) {
        const std::string value = times(length, 'v'), cut = value.substr(0, 63);
        EXPECT_EQ(Defines("#define A " + value + "\r\n"), "A=" + cut + ";") << length;
        EXPECT_EQ(Defines("#define A " + value), "A=" + cut + ";") << length;
        EXPECT_EQ(Defines("#define A " + value + "\n"),
                  "A=" + value.substr(0, std::min(length - 1, 63u)) + ";")
            << length;
    }
}

TEST_F(DefineFile, IsFoundInTheSuitesFolders) {
    EXPECT_EQ(Read("second.def"), "WHERE=includes;");
    machine.Write("drive_c/Scripts/second.def", "#define WHERE scripts\r\n");
    EXPECT_EQ(Read("second.def"), "WHERE=scripts;");
    EXPECT_EQ(Read("here.def"), "2");
    EXPECT_EQ(Read("C:\\elsewhere\\here.def"), "WHERE=elsewhere;");
    for (const char *name : {"missing.def", "", "Includes", static_cast<const char *>(nullptr)})
        EXPECT_EQ(Read(name), "2");
    EXPECT_EQ(Tokenize_Define_File("second.def", nullptr), E_INVALIDARG);
    Name_Folder("Scripts", "C:\\missing");
    EXPECT_EQ(Read("second.def"), "WHERE=includes;");
    EXPECT_EQ(Read("here.def"), "WHERE=elsewhere;") << "in place of a folder that is not there";
    std::filesystem::remove_all(On("drive_c/elsewhere"));
    CHashTable table;
    EXPECT_EQ(Tokenize_Define_File("second.def", &table), 2) << "no way back";
    ASSERT_EQ(Go_To("c:\\"), 0);
}

TEST_F(DefineFile, StandsDamage) {
    const std::string good = "#define A 'AB\r\n#define 'b c' x\n#define C\t'ABCD'";
    For_Each_Damage(good, [&](const std::string &text) { Defines(text); });
}

TEST_F(DefineFile, ReleasesEverythingWhereMemoryEnds) {
    machine.Write("drive_c/Scripts/text.def", "#define A a\r\n#define B b\r\n");
    long nth = 1;
    for (bool failed = true; failed; ++nth) {
        const NoLeak no_leak;
        CHashTable table;
        const FailingMemory failing(nth);
        const long result = Tokenize_Define_File("text.def", &table);
        failed = failing.Refused() > 0;
        EXPECT_TRUE(result == 0 || result == E_OUTOFMEMORY || result == 2) << result;
        if (result != 0) {
            EXPECT_THROW(table.Find("A", nullptr, nullptr), int);
        }
        EXPECT_EQ(Directory(), "C:\\elsewhere");
    }
    EXPECT_GT(nth, 6);
}

} // namespace
