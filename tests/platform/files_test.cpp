#include <tests/support/file_verbs.h>
#include <tests/support/host_permissions.h>

#include <sys/stat.h>

namespace {

using Files = FileTest;
using Finding = FileTest;

TEST_F(Files, FoldersComeAndGoOneLevelAtATime) {
    EXPECT_EQ(Create("c:\\One"), 0);
    EXPECT_EQ(Create("one\\\\TWO\\"), 0);
    EXPECT_TRUE(Is_There("drive_c/One/TWO")) << "in the folder that was there";
    machine.Write("drive_c/file", "x");
    for (const char *taken : {"ONE", "c:\\one\\two", "FILE", "file\\"}) {
        EXPECT_EQ(Create(taken), ERROR_ALREADY_EXISTS) << taken;
    }
    for (const char *none : {"", "no\\where", "file\\x", "q:\\x"}) {
        EXPECT_EQ(Create(none), ERROR_PATH_NOT_FOUND) << none;
    }
    EXPECT_EQ(Create("a*b"), ERROR_INVALID_NAME);
    EXPECT_EQ(Create("c:\\") + Remove("c:\\"), ERROR_ACCESS_DENIED * 2);

    EXPECT_EQ(Remove("ONE"), ERROR_DIR_NOT_EMPTY);
    EXPECT_EQ(Remove("file"), ERROR_DIRECTORY);
    EXPECT_EQ(Remove("nothing"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Remove("no\\where"), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(Go_To("one\\two"), 0);
    EXPECT_EQ(Remove("c:\\One\\two"), ERROR_SHARING_VIOLATION) << "the current directory";
    EXPECT_EQ(Go_To(".."), 0);
    EXPECT_EQ(Remove("Two"), 0);
    EXPECT_FALSE(Is_There("drive_c/One/TWO"));
}

TEST_F(Files, PathsHaveTheLengthsOfWindows) {
    const auto Name = [](std::size_t length) { return "c:\\" + std::string(length - 3, 'n'); };
    for (const auto &[length, error] : {std::pair{247u, 0L},
                                        {248u, ERROR_FILENAME_EXCED_RANGE},
                                        {255u, ERROR_FILENAME_EXCED_RANGE},
                                        {260u, ERROR_PATH_NOT_FOUND},
                                        {261u, ERROR_FILENAME_EXCED_RANGE}}) {
        EXPECT_EQ(Create(Name(length)), error) << length;
    }
    EXPECT_EQ(Create("c:\\sub"), 0);
    const auto In_Sub = [](std::size_t length) { return "sub\\" + std::string(length - 7, 'n'); };
    for (const std::size_t full : {255, 256, 259}) {
        const std::string path = In_Sub(full);
        FILE *stream = Machine_Open_Stream(path.c_str(), "wb");
        ASSERT_TRUE(stream) << full;
        fclose(stream);
        EXPECT_EQ(Attributes(path), 0x20) << full;
        EXPECT_EQ(Found(path), path.substr(4)) << full;
        EXPECT_EQ(Delete(path), 0) << full;
    }
    EXPECT_EQ(Attributes(In_Sub(260)), -ERROR_PATH_NOT_FOUND) << "full, though short enough as it stands";
    EXPECT_EQ(Attributes(In_Sub(300)), -ERROR_FILENAME_EXCED_RANGE);
    EXPECT_EQ(Attributes(Name(3 + 256)), -ERROR_INVALID_NAME) << "a name of 256";
}

TEST_F(Files, AreDeletedUnlessTheyAreProtected) {
    machine.Write("drive_c/Sub/file", "x");
    machine.Write("drive_c/Sub/kept", "x");
    std::filesystem::create_symlink(On("drive_c/Sub/kept"), On("drive_c/to_file"));
    std::filesystem::create_directory_symlink(On("drive_c/Sub"), On("drive_c/to_folder"));
    const ByOutcome<long> rows = {{ERROR_FILE_NOT_FOUND, {"sub\\none"}},
                                  {ERROR_PATH_NOT_FOUND, {"none\\file", "sub\\file\\x"}},
                                  {ERROR_INVALID_NAME, {"sub\\file\\", "sub\\*"}},
                                  {ERROR_ACCESS_DENIED, {"sub", "to_folder", "c:\\"}},
                                  {NO_ERROR, {"SUB\\\\FILE", "to_file"}}};
    for (const auto &[error, paths] : rows) {
        for (const auto &path : paths) EXPECT_EQ(Delete(path), error) << path;
    }
    EXPECT_EQ(Remove("to_folder"), 0);
    EXPECT_TRUE(Is_There("drive_c/Sub/kept") && !Is_There("drive_c/to_folder") &&
                !Is_There("drive_c/to_file"))
        << "links go, what they lead to stays";

    EXPECT_EQ(Error_Of(SetFileAttributesA("sub\\kept", FILE_ATTRIBUTE_READONLY)), 0);
    EXPECT_EQ(Delete("sub\\kept"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Error_Of(SetFileAttributesA("sub\\KEPT", FILE_ATTRIBUTE_NORMAL)), 0);
    FILE *open = Machine_Open_Stream("sub\\kept", "rb");
    EXPECT_EQ(Delete("sub\\kept"), ERROR_SHARING_VIOLATION);
    fclose(open);
    EXPECT_EQ(Delete("sub\\kept"), 0);
    EXPECT_EQ(Create("locked"), 0);
    EXPECT_EQ(Error_Of(SetFileAttributesA("locked", FILE_ATTRIBUTE_READONLY)), 0);
    EXPECT_EQ(Remove("locked"), ERROR_ACCESS_DENIED);
}

TEST_F(Files, HaveTheAttributesThatTheHostKeeps) {
    machine.Write("drive_c/File", "x");
    EXPECT_EQ(Attributes("c:\\FILE"), FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_EQ(Attributes("c:\\"), FILE_ATTRIBUTE_DIRECTORY);
    Write_Protect("drive_c/File");
    EXPECT_EQ(Attributes("file"), FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(Attributes("none"), -ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Attributes("none\\none"), -ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(Error_Of(SetFileAttributesA("none", FILE_ATTRIBUTE_NORMAL)), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Error_Of(SetFileAttributesA("file", 0x2)), ERROR_INVALID_PARAMETER) << "nothing is hidden here";
}

TEST_F(Files, ObeyTheHostsPermissions) {
    machine.Write("drive_c/closed/file", "x");
    machine.Write("drive_c/unreadable", "x");
    const std::filesystem::path folder = On("drive_c/closed");
    const HostPermissions permissions;
    chmod(On("drive_c/unreadable").c_str(), 0200);
    chmod(folder.c_str(), 0500);
    EXPECT_EQ(Delete("closed\\file"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Create("closed\\new"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Machine_Rename("closed\\file", "file"), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_FALSE(Machine_Open_Stream("unreadable", "rb"));
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(Delete("unreadable"), 0) << "the folder's affair";
    chmod(folder.c_str(), 0);
    EXPECT_EQ(Go_To("closed"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Found("closed\\*.*"), "error 5");
    EXPECT_EQ(Attributes("closed\\file"), -ERROR_ACCESS_DENIED);
    chmod(folder.c_str(), 0700);
    EXPECT_EQ(machine.Read("drive_c/closed/file"), "x");
}

TEST_F(Finding, TakesPatternsAsWindowsDoes) {
    for (const char *name : {"b.txt", "A.TXT", "a.b.txt", "none", "x.t", "x.tx", ".hidden"}) {
        machine.Write(std::string("drive_c/sub/") + name, "x");
    }
    const ByOutcome<std::string> rows = {{". .. .hidden a.b.txt A.TXT b.txt none x.t x.tx", {"*", "*.*"}},
                                         {"a.b.txt A.TXT b.txt", {"*.TXT"}},
                                         {"a.b.txt A.TXT", {"a*"}},
                                         {"A.TXT b.txt", {"?.txt"}},
                                         {"a.b.txt b.txt", {"*b*t"}},
                                         {"none", {"NONE", "none.*", "*.", "n???????.*"}},
                                         {"x.t x.tx", {"x.???", "x.??"}},
                                         {"x.tx", {"*.tx"}},
                                         {"error 2", {"*.q", "q", "", "?"}},
                                         {"error 123", {"<"}}};
    for (const auto &[names, patterns] : rows) {
        for (const auto &pattern : patterns) EXPECT_EQ(Found("c:\\\\SUB\\" + pattern), names) << pattern;
    }
    EXPECT_EQ(Found("*.*"), "sub") << "no dots in a root";
    EXPECT_EQ(Go_To("sub"), 0);
    EXPECT_EQ(Found("..\\s*") + Found("c:*e"), "subnone");
    for (const char *none : {"c:\\", "c:\\.", "..", "c:\\sub\\"}) EXPECT_EQ(Found(none), "error 2") << none;
    for (const char *none : {"c:\\no\\*", "no\\*.*", "no\\", "", "c:\\no\\x"}) {
        EXPECT_EQ(Found(none), "error 3") << none;
    }
    EXPECT_EQ(Found("none\\*"), "error 267");
    EXPECT_EQ(Found("s*\\x"), "error 123");
}

TEST_F(Finding, DescribesWhatItFinds) {
    machine.Write("drive_c/file", "12345");
    std::filesystem::resize_file(On("drive_c/file"), 5000000000);
    Write_Protect("drive_c/file");
    std::filesystem::create_directory(On("drive_c/folder"));
    std::filesystem::create_directory_symlink(On("drive_c/folder"), On("drive_c/link"));
    WIN32_FIND_DATAA data;
    const HANDLE find = FindFirstFileA("*", &data);
    EXPECT_STREQ(data.cFileName, "file");
    EXPECT_EQ(data.dwFileAttributes, FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(data.nFileSizeHigh, 1u);
    EXPECT_EQ(data.nFileSizeLow, 5000000000 - 0x100000000);
    const long long ticks = static_cast<long long>(data.ftLastWriteTime.dwHighDateTime) << 32 |
                            data.ftLastWriteTime.dwLowDateTime;
    EXPECT_NEAR(static_cast<double>(ticks / 10000000 - 11644473600), static_cast<double>(time(nullptr)), 60);
    ASSERT_TRUE(FindNextFileA(find, &data));
    EXPECT_EQ(data.dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY);
    ASSERT_TRUE(FindNextFileA(find, &data));
    EXPECT_EQ(data.dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT);
    EXPECT_FALSE(FindNextFileA(find, &data));
    EXPECT_STREQ(data.cFileName, "link") << "kept at the end";

    EXPECT_FALSE(CloseHandle(find));
    EXPECT_TRUE(FindClose(find));
}

TEST_F(Finding, StandsAFolderThatChanges) {
    for (char name = 'a'; name <= 'j'; ++name) machine.Write(std::string("drive_c/sub/") + name, "x");
    WIN32_FIND_DATAA data;
    const HANDLE find = FindFirstFileA("sub\\?", &data);
    std::string names;
    do {
        names += data.cFileName;
        EXPECT_EQ(Delete(std::string("sub\\") + data.cFileName), 0);
        std::filesystem::remove(On("drive_c/sub/e"));
    } while (FindNextFileA(find, &data));
    EXPECT_EQ(names, "abcdfghij");
    EXPECT_TRUE(FindClose(find));
}

TEST_F(Finding, ShowsBothSpellingsOfANameAndNamesThatWindowsLacks) {
    machine.Write("drive_c/same", "small");
    machine.Write("drive_c/SAME", "large");
    machine.Write("drive_c/a:b", "x");
    EXPECT_EQ(Found("*"), "a?b SAME same");
    EXPECT_EQ(Found("Same"), "SAME");
    EXPECT_EQ(Delete("SAME"), 0);
    EXPECT_EQ(Delete("SAME"), 0) << "the other one, now that it is alone";
    EXPECT_EQ(Found("s*"), "error 2");
    EXPECT_EQ(Delete("a?b"), ERROR_INVALID_NAME);
}

} // namespace
