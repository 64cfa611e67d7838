#include <platform/kernel.h>
#include <platform/machine.h>

#include <tests/support/test_machine.h>

#include <filesystem>
#include <fstream>

namespace {

class Paths : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        before_ = std::filesystem::current_path();
        Go_To("");
    }
    void TearDown() override {
        std::filesystem::current_path(before_);
        MachineTest::TearDown();
    }

    // The current directory becomes a folder below the machine's c:, made if need be.
    void Go_To(const std::string &below_c) {
        std::filesystem::create_directories(On("drive_c/" + below_c));
        std::filesystem::current_path(On("drive_c/" + below_c));
    }
    std::string On(const std::string &relative) const { return machine.Path(relative); }

    // "error N" when there is none.
    static std::string Host(const std::string &windows_path) { return Mapped(Host_Path, windows_path); }
    static std::string Windows(const std::string &host_path) { return Mapped(Windows_Path, host_path); }

  private:
    static std::string Mapped(bool (*map)(const char *, char *, unsigned long), const std::string &path) {
        char result[4096];
        SetLastError(0);
        if (map(path.c_str(), result, sizeof result)) return result;
        return "error " + std::to_string(GetLastError());
    }

    std::filesystem::path before_;
};

struct Row {
    const char *windows;
    const char *host; // below the machine's folder
};

TEST_F(Paths, LeadToTheHost) {
    machine.Write("drive_c/Program Files/Suite/readme.txt", "x");
    Go_To("Program Files");
    for (const Row &row : {
             Row{"c:\\", "drive_c"},
             Row{"C:/Program Files/Suite", "drive_c/Program Files/Suite"},
             Row{"c:\\\\PROGRAM files\\/suite\\\\README.TXT", "drive_c/Program Files/Suite/readme.txt"},
             Row{"c:\\Program Files\\.\\nowhere\\..\\suite\\", "drive_c/Program Files/Suite"},
             Row{"c:\\..\\..\\..\\program files", "drive_c/Program Files"},
             Row{"suite\\readme.txt", "drive_c/Program Files/Suite/readme.txt"},
             Row{"..\\program files\\suite", "drive_c/Program Files/Suite"},
             Row{"..\\..\\..\\x", "drive_c/x"},
             Row{".", "drive_c/Program Files"},
             Row{"c:", "drive_c/Program Files"},
             Row{"c:suite", "drive_c/Program Files/Suite"},
             Row{"c:..", "drive_c"},
             Row{"\\program files", "drive_c/Program Files"},
             Row{"\\", "drive_c"},
             Row{"/program files/Suite", "drive_c/Program Files/Suite"},
             Row{"c:\\program files. \\suite.\\readme.txt. .", "drive_c/Program Files/Suite/readme.txt"},
             Row{"c:\\program files\\...\\suite", "drive_c/Program Files/Suite"},
             Row{"c:\\PROGRAM FILES\\New Folder\\SUITE", "drive_c/Program Files/New Folder/SUITE"},
             Row{"c:\\.hidden\\a.b.c", "drive_c/.hidden/a.b.c"},
         }) {
        EXPECT_EQ(Host(row.windows), On(row.host)) << row.windows;
    }
}

TEST_F(Paths, ThatAreNoneAreRefusedWithTheirReason) {
    struct {
        const char *path;
        long error;
    } const rows[] = {
        {"", ERROR_PATH_NOT_FOUND},
        {"q:\\x", ERROR_PATH_NOT_FOUND},
        {"1:\\x", ERROR_PATH_NOT_FOUND},
        {"c:\\a*b", ERROR_INVALID_NAME},
        {"a?", ERROR_INVALID_NAME},
        {"c:\\a:b", ERROR_INVALID_NAME},
        {"<a>", ERROR_INVALID_NAME},
        {"a\x1f", ERROR_INVALID_NAME},
        {"c:\\\"a\"", ERROR_INVALID_NAME},
        {"\\\\server\\share", ERROR_BAD_NETPATH},
        {"//server/share", ERROR_BAD_NETPATH},
        {"\\\\?\\c:\\x", ERROR_BAD_NETPATH},
    };
    for (const auto &row : rows) EXPECT_EQ(Host(row.path), "error " + std::to_string(row.error)) << row.path;
    char out[16];
    EXPECT_FALSE(Host_Path(nullptr, out, sizeof out));
    EXPECT_FALSE(Windows_Path("", out, sizeof out));
}

TEST_F(Paths, PreferTheExactSpelling) {
    machine.Write("drive_c/readme", "1");
    machine.Write("drive_c/README", "2");
    EXPECT_EQ(Host("c:\\readme"), On("drive_c/readme"));
    EXPECT_EQ(Host("c:\\README"), On("drive_c/README"));
    EXPECT_EQ(Host("c:\\ReadMe"), On("drive_c/README")) << "the first in order of bytes";
}

TEST_F(Paths, KnowTheMachinesDrives) {
    std::filesystem::current_path("/");
    std::filesystem::remove(On("drive_c"));
    EXPECT_EQ(Host("c:x"), On("drive_c/x")) << "the root, as the current directory is elsewhere";
    EXPECT_TRUE(std::filesystem::is_directory(On("drive_c")));
    EXPECT_EQ(Host("d:\\x"), "error 3");
    machine.Write("drive_d/X", "");
    EXPECT_EQ(Host("d:\\x"), On("drive_d/X"));
    machine.Set("Drive_E", "cdrom");
    EXPECT_EQ(Host("e:"), On("drive_e"));
    EXPECT_TRUE(std::filesystem::is_directory(On("drive_e")));
    machine.Write("drive_f", "a file");
    EXPECT_EQ(Host("f:"), "error 3");
}

TEST_F(Paths, ReachTheHostsRootAsZ) {
    machine.Write("outside/Sub/file", "x");
    EXPECT_EQ(Host("z:\\"), "/");
    EXPECT_EQ(Host("Z:" + On("OUTSIDE/sub/FILE")), On("outside/Sub/file"));
    EXPECT_EQ(Windows("/"), "Z:\\");
    std::filesystem::current_path(On("outside"));
    EXPECT_EQ(Host("sub"), On("outside/Sub"));
    EXPECT_EQ(Host("z:sub"), On("outside/Sub"));
    EXPECT_EQ(Host("\\"), "/");
    std::string windows = "Z:" + On("outside/Sub");
    for (char &c : windows) c = c == '/' ? '\\' : c;
    EXPECT_EQ(Windows("Sub"), windows);
    EXPECT_EQ(Host(windows), On("outside/Sub"));
}

TEST_F(Paths, LeadBackToWindows) {
    Go_To("Sub");
    for (const Row &row : {
             Row{"C:\\", "drive_c"},
             Row{"C:\\", "drive_c/"},
             Row{"C:\\Sub\\New", "drive_c//Sub/./New/"},
             Row{"C:\\New", "drive_c/Sub/../New"},
             Row{"D:\\a b\\c", "drive_d/a b/c"},
         }) {
        EXPECT_EQ(Windows(On(row.host)), row.windows) << row.host;
    }
    EXPECT_EQ(Windows("."), "C:\\Sub");
    EXPECT_EQ(Windows("../file"), "C:\\file");
    EXPECT_EQ(Windows(On("drive_z/x")).substr(0, 3), "Z:\\");
    EXPECT_EQ(Windows(On("drive_cc/x")).substr(0, 3), "Z:\\");
}

TEST_F(Paths, FollowLinksAsTheHostDoes) {
    machine.Write("elsewhere/inner/file", "x");
    std::filesystem::create_directory_symlink(On("elsewhere"), On("drive_d"));
    std::filesystem::create_directory_symlink(On("elsewhere/inner"), On("drive_c/Link"));
    EXPECT_EQ(Host("d:\\INNER\\file"), On("drive_d/inner/file"));
    EXPECT_EQ(Host("c:\\link\\file"), On("drive_c/Link/file"));
    EXPECT_EQ(Host("c:\\link\\..\\x"), On("drive_c/x"));
    EXPECT_EQ(Windows(On("drive_c/Link/file")), "C:\\Link\\file");
    EXPECT_EQ(Windows(On("drive_c/Link/../x")), "D:\\x") << "where the host's path really leads";
    std::filesystem::current_path(On("drive_d/inner"));
    EXPECT_EQ(Host("file"), On("drive_d/inner/file")) << "the host tells the link's target as current";
    EXPECT_EQ(Host("d:.."), On("drive_d"));
}

TEST_F(Paths, CarryCodePage1252) {
    // e with acute, euro, s with caron, and the byte that the page leaves open
    machine.Write("drive_c/caf\xC3\xA9/\xE2\x82\xAC \xC5\xA1/\xC2\x81", "x");
    const std::string host = On("drive_c/caf\xC3\xA9/\xE2\x82\xAC \xC5\xA1/\xC2\x81");
    EXPECT_EQ(Host("c:\\caf\xE9\\\x80 \x9A\\\x81"), host);
    EXPECT_EQ(Host("c:\\CAF\xC9\\\x80 \x8A\\\x81"), host) << "accented letters have two cases too";
    EXPECT_EQ(Windows(host), "C:\\caf\xE9\\\x80 \x9A\\\x81");
    for (int byte = 0x80; byte < 0x100; ++byte) {
        const std::string name = std::string("c:\\new\\") + static_cast<char>(byte);
        EXPECT_EQ(Windows(Host(name)).substr(7), name.substr(7)) << byte;
    }
}

TEST_F(Paths, NamesThatWindowsCannotHaveAreSeenAndNotFound) {
    struct {
        const char *host, *windows;
    } const rows[] = {
        {"\xCE\xB1\xCE\xB2", "??"},            // Greek
        {"\xF0\x9F\x98\x80!", "?!"},           // beyond the first plane
        {"caf\xE9", "caf?"},                   // no UTF-8
        {"\xC0\xAF\xED\xA0\x80", "?????"},     // overlong, and half a pair
        {"cut\xE2\x82", "cut??"},              // an end that is missing
        {"a\\b", "a?b"},         {"a:b", "a?b"},
        {"dot.", "dot?"},        {"blank ", "blank?"},
    };
    for (const auto &row : rows) {
        machine.Write(std::string("drive_c/") + row.host, "x");
        EXPECT_EQ(Windows(On(std::string("drive_c/") + row.host)), std::string("C:\\") + row.windows);
    }
    EXPECT_EQ(Host("c:\\??"), "error 123");
    EXPECT_EQ(Host("c:\\dot."), On("drive_c/dot"));
    EXPECT_EQ(Host("c:\\a\\b"), On("drive_c/a/b"));
}

TEST_F(Paths, KeepWithinTheBuffer) {
    const std::string expected = On("drive_c/file");
    std::vector<char> out(expected.size() + 2, '#');
    EXPECT_TRUE(Host_Path("c:\\file", out.data(), expected.size() + 1));
    EXPECT_EQ(out.data(), expected);
    EXPECT_EQ(out.back(), '#');
    std::fill(out.begin(), out.end(), '#');
    for (const unsigned long size : {static_cast<unsigned long>(expected.size()), 1ul, 0ul}) {
        SetLastError(0);
        EXPECT_FALSE(Host_Path("c:\\file", out.data(), size));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE));
    }
    EXPECT_EQ(out, std::vector<char>(out.size(), '#'));
    const std::string longest(255, 'n');
    machine.Write("drive_c/" + longest, "x");
    EXPECT_EQ(Host("c:\\" + std::string(255, 'N')), On("drive_c/" + longest));
    EXPECT_EQ(Host("c:\\" + std::string(5000, 'N')), "error 206");
}

TEST_F(Paths, FailWhenTheCurrentDirectoryIsGone) {
    Go_To("gone");
    std::filesystem::remove(On("drive_c/gone"));
    EXPECT_EQ(Host("x"), "error 3");
    EXPECT_EQ(Host("c:x"), On("drive_c/x"));
    EXPECT_EQ(Windows("x"), "error 3");
}

} // namespace
