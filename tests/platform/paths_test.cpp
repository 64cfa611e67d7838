#include <tests/support/handles.h>
#include <tests/support/test_machine.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;

class Paths : public MachineTest {
  protected:
    Paths() { Go_To("drive_c"); }
    ~Paths() override { fs::current_path(before_); }

    // Makes a folder below the machine's the current directory.
    void Go_To(const std::string &folder) const {
        fs::create_directories(On(folder));
        fs::current_path(On(folder));
    }
    std::string On(const std::string &relative) const { return machine.Path(relative); }

    // "error N" when there is none.
    static std::string Host(const std::string &windows_path) { return Mapped(Host_Path, windows_path); }
    static std::string Windows(const std::string &host_path) { return Mapped(Windows_Path, host_path); }

  private:
    static std::string Mapped(bool (*map)(const char *, char *, unsigned long), const std::string &path) {
        char result[4096];
        const long error = Error_Of(map(path.c_str(), result, sizeof result));
        return error ? "error " + std::to_string(error) : result;
    }

    const fs::path before_ = fs::current_path();
};

TEST_F(Paths, LeadToTheHost) {
    machine.Write("drive_c/Program Files/Suite/readme.txt", "x");
    machine.Write("drive_c/same", "x");
    machine.Write("drive_c/SAME", "x");
    Go_To("drive_c/Program Files");
    for (const auto &[windows, host] : {
             std::pair{"c:\\", "drive_c"},
             {"c:\\\\PROGRAM files\\/suite\\\\README.TXT", "drive_c/Program Files/Suite/readme.txt"},
             {"C:/Program Files\\.\\nowhere\\..\\suite\\", "drive_c/Program Files/Suite"},
             {"c:\\..\\..\\..\\program files", "drive_c/Program Files"},
             {"suite\\readme.txt", "drive_c/Program Files/Suite/readme.txt"},
             {"..\\..\\..\\x", "drive_c/x"},
             {"c:", "drive_c/Program Files"},
             {"\\program files", "drive_c/Program Files"},
             {"c:\\program files. \\...\\suite.\\readme.txt. .", "drive_c/Program Files/Suite/readme.txt"},
             {"c:\\PROGRAM FILES\\New Folder\\SUITE", "drive_c/Program Files/New Folder/SUITE"},
             {"c:\\.hidden\\a.b.c", "drive_c/.hidden/a.b.c"},
             {"c:\\same", "drive_c/same"},
             {"c:\\Same", "drive_c/SAME"}, // the first in order of bytes
         }) {
        EXPECT_EQ(Host(windows), On(host)) << windows;
    }
}

TEST_F(Paths, ThatAreNoneAreRefusedWithTheirReason) {
    const std::vector<std::pair<long, std::vector<std::string>>> rows = {
        {ERROR_PATH_NOT_FOUND, {"", "q:\\x", "1:\\x"}},
        {ERROR_INVALID_NAME, {"c:\\a*b", "a?", "c:\\a:b", "<a>", "a\x1f", "\"a\"", "a|b"}},
        {ERROR_BAD_NETPATH, {"\\\\server\\share", "//server/share", "\\\\?\\c:\\x"}},
    };
    for (const auto &[error, paths] : rows) {
        for (const auto &path : paths) EXPECT_EQ(Host(path), "error " + std::to_string(error)) << path;
    }
    Go_To("drive_c/gone");
    fs::remove(On("drive_c/gone"));
    EXPECT_EQ(Host("x") + Windows("x") + Windows(""), "error 3error 3error 3");
    EXPECT_EQ(Host("c:x"), On("drive_c/x"));
}

TEST_F(Paths, KnowTheDrives) {
    Go_To("outside/Sub");
    fs::remove(On("drive_c"));
    EXPECT_EQ(Host("c:x"), On("drive_c/x")) << "from the root, as the current directory is elsewhere";
    EXPECT_TRUE(fs::is_directory(On("drive_c")));
    machine.Write("drive_d/X", "");
    EXPECT_EQ(Host("d:\\x"), On("drive_d/X"));
    machine.Set("Drive_E", "cdrom");
    EXPECT_EQ(Host("e:"), On("drive_e"));
    EXPECT_TRUE(fs::is_directory(On("drive_e")));
    machine.Write("drive_f", "a file");
    EXPECT_EQ(Host("f:"), "error 3");

    EXPECT_EQ(Host("\\") + Host("z:/.."), "//");
    EXPECT_EQ(Windows("/"), "Z:\\");
    EXPECT_EQ(Host("Z:" + On("OUTSIDE/sub")) + Host("z:..\\sub"), On("outside/Sub") + On("outside/Sub"));
    EXPECT_EQ(Host(Windows("..")), On("outside"));
}

TEST_F(Paths, FollowLinksAsTheHostDoes) {
    machine.Write("elsewhere/inner/file", "x");
    fs::create_directory_symlink(On("elsewhere"), On("drive_d"));
    fs::create_directory_symlink(On("elsewhere/inner"), On("drive_c/Link"));
    EXPECT_EQ(Host("d:\\INNER\\file"), On("drive_d/inner/file"));
    EXPECT_EQ(Host("c:\\link\\file"), On("drive_c/Link/file"));
    EXPECT_EQ(Host("c:\\link\\..\\x"), On("drive_c/x"));
    EXPECT_EQ(Windows(On("drive_c/Link/file")), "C:\\Link\\file");
    EXPECT_EQ(Windows(On("drive_c/Link/../x")), "D:\\x") << "where the host's path really leads";
    Go_To("drive_d/inner"); // the host tells the link's target as current
    EXPECT_EQ(Host("file"), On("drive_d/inner/file"));
}

TEST_F(Paths, CarryCodePage1252AndNoMore) {
    // e acute, euro, s caron, and a byte that the page leaves open
    machine.Write("drive_c/caf\xC3\xA9/\xE2\x82\xAC \xC5\xA1\xC2\x81", "x");
    EXPECT_EQ(Host("c:\\CAF\xC9\\\x80 \x8A\x81"), On("drive_c/caf\xC3\xA9/\xE2\x82\xAC \xC5\xA1\xC2\x81"));
    for (int byte = 0x80; byte < 0x100; ++byte) {
        const std::string name = std::string("C:\\new\\") + static_cast<char>(byte);
        EXPECT_EQ(Windows(Host(name)), name) << byte;
    }
    // Greek, beyond the first plane, no UTF-8, overlong and half a pair, cut, and what no Windows name has
    for (const auto &[host, seen_as] : {
             std::pair{"\xCE\xB1\xCE\xB2", "??"},
             {"\xF0\x9F\x98\x80!", "?!"},
             {"\xC0\xAF\xED\xA0\x80", "?????"},
             {"cut\xE2\x82", "cut??"},
             {"a\\b:c", "a?b?c"},
             {"dot.", "dot?"},
         }) {
        machine.Write(std::string("drive_c/") + host, "x");
        EXPECT_EQ(Windows(On(std::string("drive_c/") + host)), std::string("C:\\") + seen_as);
    }
    EXPECT_EQ(Host("c:\\dot."), On("drive_c/dot")) << "not found back";
}

TEST_F(Paths, KeepWithinTheBuffer) {
    const std::string expected = On("drive_c/file");
    std::vector<char> out(expected.size() + 2, '#');
    for (const std::size_t size : {expected.size(), std::size_t{1}, std::size_t{0}}) {
        EXPECT_EQ(Error_Of(Host_Path("c:\\file", out.data(), size)), ERROR_FILENAME_EXCED_RANGE);
    }
    EXPECT_EQ(out, std::vector<char>(out.size(), '#'));
    EXPECT_TRUE(Host_Path("c:\\file", out.data(), expected.size() + 1));
    EXPECT_EQ(out.data() + std::string(1, out.back()), expected + "#");
    EXPECT_EQ(Host("c:\\" + std::string(5000, 'N')), "error 206");
}

} // namespace
