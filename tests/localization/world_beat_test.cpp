#include <kelmara/localization/world_beat.h>

#include <kelmara/foundation/safe_str.h>
#include <kelmara/system/file.h>

#include <tests/support/companion_test.h>
#include <tests/support/control_verbs.h>
#include <tests/support/test_memory.h>

#include <cstring>

namespace {

using Strings = std::vector<std::pair<std::string, std::string>>; // identifiers and what they stand for

const std::string Longest_Inside(511, 'i'), Outside(512, 'o'), Very_Long(3000, 'v');

const Strings The_Strings = {
    {"NAME", "Name"},
    {"KEY", "&Open\\tCtrl+O\\t"},
    {"511", Longest_Inside},
    {"512", Outside},
    {"3000", Very_Long},
    {"EMPTY", ""},
    {"TURN", "<^NAME >"},
    {"OWN", "a ^OWN b"},
    {"LONGER", "^LONGER_STILL too"},
    {"LONGER_STILL", "long"},
    {"PING", "^PONG"},
    {"PONG", "^PING"},
    {"TWICE", "^TWICE_2 ^TWICE_2"},
    {"TWICE_2", "^TWICE ^TWICE"},
    {std::string(63, 'N'), "a long name"},
    {"", "of no name"},
};

void Write_Table(const std::string &path, const Strings &strings) {
    CStringTable table(true);
    CKMFile file;
    ASSERT_EQ(table.New_Table() + file.Open(path.c_str(), true, true), 0);
    for (const auto &[identifier, text] : strings) {
        CSafeStr name(identifier.c_str());
        const long index = table.Set_String(table.Count_Entries(), text.c_str());
        table.Set_Identifier(index, name);
    }
    ASSERT_EQ(table.Save_Changes(&file), 0);
}

std::string Text(const CSafeStr &text) {
    return static_cast<const char *>(static_cast<char *>(text));
}

class WorldBeat : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        std::filesystem::create_directories(machine.Path("drive_c"));
        Write_Table("c:\\texts.ltx", The_Strings);
        ASSERT_EQ(beat.Load_Localization("c:\\texts.ltx", true), 0);
    }
    std::string Localized(const std::string &text) {
        CSafeStr string(text.c_str());
        beat.Localize_String(string);
        return Text(string);
    }

    CWorldBeat beat;
};

TEST_F(WorldBeat, Strings_Are_Found_Or_Empty) {
    const struct {
        const char *identifier;
        const std::string &string;
    } rows[] = {{"KEY", The_Strings[1].second},
                {"512", Outside},
                {"3000", Very_Long},
                {"EMPTY", ""},
                {"key", ""},
                {"", "of no name"},
                {nullptr, ""}};
    for (const auto &[identifier, string] : rows) {
        CSafeStr out("before");
        beat.Get_String(identifier, out);
        EXPECT_EQ(Text(out), string);
        EXPECT_EQ(Text(beat.Get_Temp_String(identifier)), string);
        for (const int size : {-1, 0, 4, 5, 512, 513, 3001}) {
            std::string buffer(3001, '#');
            const bool fits = static_cast<int>(string.size()) < size;
            EXPECT_EQ(beat.Get_String(identifier, buffer.data(), size), fits ? 0 : 122);
            EXPECT_EQ(buffer,
                      fits ? string + '\0' + std::string(3000 - string.size(), '#') : std::string(3001, '#'));
        }
    }
    CWorldBeat other;
    EXPECT_EQ(&other.Get_Temp_String("NAME"), &beat.Get_Temp_String("NAME")) << "one for the process";
}

TEST_F(WorldBeat, Dialogs_Are_Translated_With_All_That_They_Hold) {
    const struct {
        std::string before, after;
    } rows[] = {
        {"^NAME", "Name"},
        {"^" + std::string(63, 'N'), "a long name"},
        {"^" + std::string(64, 'N'), ""},
        {"^UNKNOWN", ""},
        {"^", ""},
        {"^511", Longest_Inside},
        {"^512", Outside},
        {"^3000", Very_Long},
        {std::string(511, 'x'), std::string(511, 'x')},
        {std::string(512, 'x'), std::string(512, 'x')},
    };
    TestDialog dialog({0, 0, 300, 200}, "^NAME");
    const TestWindow bystander(WS_POPUP, {0, 0, 9, 9}, nullptr, 0, {}, "^NAME");
    std::vector<HWND> controls;
    for (const auto &row : rows) {
        const HWND outer = dialog.Add("Static", row.before.c_str(), {0, 0, 9, 9}, 0);
        controls.push_back(CreateWindowExA(0, "Edit", row.before.c_str(), WS_CHILD | ES_AUTOHSCROLL, 0, 0, 9,
                                           9, outer, nullptr, nullptr, nullptr));
        controls.push_back(outer);
    }
    beat.Localize_Dialog(nullptr);
    EXPECT_EQ(Title_Of(bystander), "^NAME");
    beat.Localize_Dialog(dialog);
    EXPECT_EQ(Title_Of(dialog), "Name");
    for (std::size_t i = 0; i < controls.size(); ++i)
        EXPECT_EQ(Title_Of(controls[i]), rows[i / 2].after) << rows[i / 2].before;
}

TEST_F(WorldBeat, Windows_May_Go_While_They_Are_Translated) {
    for (int victim = 0; victim < 3; ++victim) {
        const TestWindow dialog(WS_POPUP, {0, 0, 99, 99});
        HWND windows[3] = {dialog, nullptr, nullptr};
        const TestWindow first(
            WS_CHILD, {0, 0, 9, 9}, dialog, 0,
            [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
                if (message == WM_SETTEXT) DestroyWindow(windows[victim]);
                return std::nullopt;
            },
            "^NAME");
        const TestWindow second(WS_CHILD, {0, 0, 9, 9}, dialog, 0, {}, "^NAME");
        windows[1] = first, windows[2] = second;
        beat.Localize_Dialog(dialog);
        EXPECT_EQ(Title_Of(second), victim == 1 ? "Name" : "");
    }
}

TEST_F(WorldBeat, Menus_Are_Translated_From_The_Inside_Out) {
    const HMENU bar = CreateMenu(), file = CreatePopupMenu();
    const char *const items[] = {"^KEY", "", "^UNKNOWN", "plain\\t^", "^511", "^512", "^3000"};
    const std::string translated[] = {"&Open\tCtrl+O\t", "",      "",       "plain\\t^",
                                      Longest_Inside,    Outside, Very_Long};
    for (UINT i = 0; i < 7; ++i) AppendMenuA(file, *items[i] ? MF_STRING : MF_SEPARATOR, i + 10, items[i]);
    AppendMenuA(bar, MF_POPUP, static_cast<UINT>(reinterpret_cast<std::uintptr_t>(file)), "^NAME");
    beat.Localize_Menu(bar);
    beat.Localize_Menu(nullptr);
    for (UINT i = 0; i < 7; ++i) {
        std::string text(4000, '\0');
        text.resize(static_cast<std::size_t>(GetMenuStringA(file, i, text.data(), 4000, MF_BYPOSITION)));
        EXPECT_EQ(text, translated[i]) << items[i];
        EXPECT_EQ(GetMenuItemID(file, static_cast<int>(i)), i + 10);
    }
    char name[9];
    EXPECT_EQ(GetMenuStringA(bar, 0, name, sizeof name, MF_BYPOSITION), 4);
    EXPECT_EQ(GetSubMenu(bar, 0), file);

    HMENU deep = CreatePopupMenu();
    for (int i = 0; i < 1000; ++i) {
        const HMENU above = CreatePopupMenu();
        AppendMenuA(above, MF_POPUP, static_cast<UINT>(reinterpret_cast<std::uintptr_t>(deep)), "^NAME");
        deep = above;
    }
    beat.Localize_Menu(deep);
    EXPECT_EQ(GetMenuStringA(deep, 0, name, sizeof name, MF_BYPOSITION), 4);
    DestroyMenu(deep);
    DestroyMenu(bar);
}

TEST_F(WorldBeat, References_In_A_Text_Are_Substituted_And_It_Always_Ends) {
    const struct {
        std::string before, after;
    } rows[] = {
        {"", ""},
        {"^NAME^", "^NAME^"}, // no such identifier: a caret ends no reference
        {"^UNKNOWN and ^NAME", "^UNKNOWN and Name"},
        {"^NAME\t^NAME\r\n^", "Name\tName\r\n^"},
        {"^EMPTY ^ ^NAME", "^EMPTY ^ Name"},
        {"^ ^NAME", "^ Name"}, // nor does a lone caret find the entry without a name
        {"^TURN", "<Name >"},
        {"^OWN ^NAME", "^OWN Name"},
        {"^LONGER ^NAME", "long too Name"},
        {"^511", Longest_Inside},
        {"^512 ^NAME", "^512 Name"},
        {"^3000 ^NAME" + std::string(512, ' '), "^3000 Name" + std::string(512, ' ')},
        {"^512 " + std::string(600, '.'), "^512 " + std::string(600, '.')}, // a block of just that size
    };
    for (const auto &row : rows) EXPECT_EQ(Localized(row.before), row.after) << row.before;
    for (const char *endless : {"^PING", "^PONG ^NAME", "^TWICE", "^TWICE ^PING ^OWN ^UNKNOWN"})
        EXPECT_LT(Localized(endless).size(), 512u);
    struct {
        long words[134];
        operator CSafeStr &() { return reinterpret_cast<CSafeStr &>(*this); }
    } no_string = {}, before = no_string;
    beat.Localize_String(no_string);
    EXPECT_EQ(std::memcmp(&no_string, &before, sizeof before), 0);
}

TEST_F(WorldBeat, Lack_Of_Memory_Takes_Nothing_Away) {
    TestDialog dialog({0, 0, 300, 200}, "^512");
    const HMENU menu = CreateMenu();
    AppendMenuA(menu, MF_STRING, 1, "^512");
    Set_Message_Box_Handler([](HWND, const char *text, const char *, UINT,
                               void *) { return std::strcmp(text, "512") == 0 ? 7 : 0; },
                            nullptr);
    {
        const FailingMemory failing(1, true);
        beat.Localize_Dialog(dialog);
        beat.Localize_Menu(menu);
        EXPECT_EQ(Localized("^512 ^NAME"), "^512 ^NAME");
        EXPECT_EQ(beat.MessageBoxA(dialog, "512", "512", MB_OK), 7) << "the text itself";
    }
    Set_Message_Box_Handler(nullptr, nullptr);
    EXPECT_EQ(Title_Of(dialog), "^512");
    EXPECT_EQ(GetMenuStringA(menu, 0, nullptr, 0, MF_BYPOSITION), 4);
    DestroyMenu(menu);
}

TEST_F(WorldBeat, Message_Boxes_Show_Strings_Or_What_They_Were_Given) {
    std::string shown;
    Set_Message_Box_Handler(
        [](HWND, const char *text, const char *caption, UINT style, void *context) {
            *static_cast<std::string *>(context) = std::string(text) + "/" + caption;
            return static_cast<int>(style);
        },
        &shown);
    const struct {
        const char *text, *title, *shown;
    } rows[] = {{"NAME", "LONGER_STILL", "Name/long"},
                {"NAME", "a title", "Name/a title"},
                {"^NAME", "EMPTY", "^NAME/EMPTY"},
                {nullptr, nullptr, "/Error"}};
    for (const auto &row : rows) {
        EXPECT_EQ(beat.MessageBoxA(nullptr, row.text, row.title, MB_YESNO), static_cast<int>(MB_YESNO));
        EXPECT_EQ(shown, row.shown);
    }
    Set_Message_Box_Handler(nullptr, nullptr);
}

// --- loading and logging, each in a process of its own whose log tells what it is given -------------------

struct Logged {
    const char *format, *entry;
    void (*write)(CWorldBeat &, const char *);
};

void *const Nowhere = reinterpret_cast<void *>(16);

const Logged entries[] = {
    {"%s wird gew\xE4hlt...", "5 wird gew\xE4hlt...",
     [](CWorldBeat &b, const char *id) { b.Std_Log_Entry(id, "5"); }},
    {"100%% of %d, %-4u| %05ld %x %hd %hhu %lld %c %.2f %5.1s|%*d",
     "100% of -1, 7   | 00042 ff -1 255 8 c 1.50     s|    3",
     [](CWorldBeat &b, const char *id) {
         b.Std_Log_Entry(id, -1, 7u, 42L, 255, 0xFFFF, 0x1FF, 8LL, 'c', 1.5, "sss", 5, 3);
     }},
    {"%s", "%s %n stands", [](CWorldBeat &b, const char *id) { b.Std_Log_Entry(id, "%s %n stands"); }},
    {"%s %s.", "(null) (unreadable).",
     [](CWorldBeat &b, const char *id) { b.Std_Log_Entry(id, nullptr, Nowhere); }},
    {"%d %n %d %s", "1 %n %d %s", [](CWorldBeat &b, const char *id) { b.Std_Log_Entry(id, 1, Nowhere, 2); }},
    {"%ls %s", "%ls %s", [](CWorldBeat &b, const char *id) { b.Std_Log_Entry(id, L"x", "y"); }},
    {"end %", "end %", [](CWorldBeat &b, const char *id) { b.Std_Log_Entry(id, 1); }},
    {"", nullptr, [](CWorldBeat &b, const char *id) { b.Std_Log_Entry(id, "x"); }},
};

// A companion takes 1,024 characters of an entry; how they are cut is not our affair here.
const std::string Wide = "%999999999d%.999999999f%999999s";

SECOND_PROCESS(localizer) {
    Install_Test_Memory();
    Set_Debug_Output_Sink([](const char *text, void *) { std::fputs(text, stderr); }, nullptr);
    CWorldBeat beat;
    for (const std::string &path : process.Arguments()) {
        const bool whole = path.find(':') != std::string::npos;
        std::fprintf(stderr, "%ld\n", beat.Load_Localization(path.c_str(), whole));
    }
    for (const Logged &entry : entries) entry.write(beat, entry.format);
    beat.Std_Log_Entry("UNKNOWN", "x");
    beat.Std_Log_Entry(nullptr, "x");
    beat.Std_Log_Entry("WIDE", 1, 1.0, "x");
#define EIGHT nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr
    beat.Std_Log_Entry("HUNGRY", EIGHT, EIGHT, EIGHT, EIGHT, EIGHT, EIGHT, EIGHT, EIGHT);
#undef EIGHT
    return beat.Get_Temp_String("LONG").Length() / 100; // on the heap when the process ends
}

TEST_F(CompanionTest, Files_Are_Found_And_Entries_Written_By_Strings_That_Are_Not_Trusted) {
    const std::string looking = "Looking for localization files in: ",
                      missing = "Missing localization file: ";
    std::filesystem::create_directories(machine.Path("drive_c/suite"));
    Write_Value("Localization", "c:\\suite\\");
    Write_Value("Root", "c:\\suite\\");
    machine.Write("drive_c/suite/logVars.txt", "");
    Install("log_companion_whole", "Log", "c:\\suite\\log.dll");
    std::string hungry; // asks for more than the 64 words that it is given
    for (int i = 0; i < 8000; ++i) hungry += "%.0s";
    Strings strings = {{"WIDE", Wide}, {"LONG", std::string(700, 'l')}, {"HUNGRY", hungry}};
    std::string expected;
    for (const Logged &entry : entries) {
        strings.emplace_back(entry.format, entry.format);
        if (entry.entry) expected += std::string("Queue_Entry ... ") + entry.entry + "\n";
    }
    Write_Table("c:\\suite\\a.ltx", strings);
    const std::string too_long = "c:\\" + std::string(253, 'x');
    const auto [code, said] = Run("localizer", {"b.ltx", "c:\\a.ltx", too_long, "a.ltx"});
    EXPECT_EQ(code, 7) << said;
    // What the debugger has heard and what entries there were, in order.
    std::string heard, written;
    for (std::size_t from = 0, end; (end = said.find('\n', from)) != std::string::npos; from = end + 1) {
        const std::string line = said.substr(from, end - from);
        const std::size_t text = line.find(": ");
        if (line.starts_with(looking) || line.starts_with(missing) || line.size() < 3) heard += line + "\n";
        if (line.starts_with("Queue_Entry") && line.find("DEBUG") == std::string::npos)
            written += "Queue_Entry ... " + line.substr(text + 2) + "\n";
    }
    EXPECT_EQ(heard, looking + "c:\\suite\\b.ltx\n" + missing + "b.ltx\n2\n" + looking + "c:\\a.ltx\n" +
                         missing + "c:\\a.ltx\n2\n" + looking + too_long.substr(0, 255) + "\n" + missing +
                         too_long + "\n2\n" + looking + "c:\\suite\\a.ltx\n0\n");
    EXPECT_EQ(written.substr(0, expected.size()), expected) << said;
    EXPECT_EQ(written.substr(expected.size()), "Queue_Entry ... " + std::string(1024, ' ') +
                                                   "\nQueue_Entry ... " + hungry.substr(0, 1024) + "\n");
}

} // namespace
