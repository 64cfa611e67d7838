#include <tests/support/file_verbs.h>
#include <tests/support/host_permissions.h>
#include <tests/support/replaced_import.h>

#include <kelmara/system/directories.h>

#include <fstream>

namespace {

class Directories : public FileTest {
  protected:
    static std::string Here() {
        char path[MAX_PATH] = {};
        GetCurrentDirectoryA(sizeof path, path);
        return path;
    }
    void Put(const std::string &name) { machine.Write("drive_c/" + name, "x"); }
    static std::string Tidied(std::string path) {
        MakeRealFilePath(path.data());
        return path.c_str();
    }
    /// So many levels named d below drive c.
    static std::string Levels(int count, const std::string &start = "c:") {
        std::string path = start;
        for (; count > 0; --count) path += "\\d";
        return path;
    }
    /// A folder below drive c of a full path that long, with a file in it, made by the host.
    std::string Make_Long(std::size_t length) {
        std::string path = "c:", host = On("drive_c");
        while (path.size() < length) {
            const std::size_t rest = length - path.size() - 1;
            const std::string name(rest > 101 ? 100 : rest, 'n');
            path += "\\" + name;
            host += "/" + name;
            std::filesystem::create_directory(host);
        }
        std::ofstream(host + "/f") << "x";
        return path;
    }
};

TEST_F(Directories, HaveTidyPaths) {
    const char *const rows[][2] = {{"", ""},
                                   {"c:\\\\a", "c:\\a"},
                                   {"a\\\\", "a\\"},
                                   {"a\\\\\\b", "a\\\\b"},
                                   {"\\\\a\\\\b\\", "\\a\\b\\"}};
    for (const auto &[path, tidy] : rows) EXPECT_EQ(Tidied(path), tidy) << path;
}

TEST_F(Directories, AreCreatedWithEveryMissingLevel) {
    Put("file");
    Create("there");
    Go_To("there");
    for (const char *path :
         {"c:\\a\\b\\c", "C:\\A\\b\\d\\", "\\e\\f", "g\\h", "..\\i", "c:\\there", "j\\\\k", "c:\\"})
        DirCreate(path);
    EXPECT_EQ(Here(), "C:\\there");
    for (const char *made : {"a/b/c", "a/b/d", "e/f", "there/g/h", "i", "there/j/k"})
        EXPECT_TRUE(Is_There(std::string("drive_c/") + made)) << made;

    const std::string before = Found("c:\\*") + Found("*");
    for (const char *path : {"", "\\", "q:\\x\\y", "q:", "c:\\file\\x", "c:\\a?b\\c"}) DirCreate(path);
    DirCreate(nullptr);
    for (const std::size_t length : {254u, 256u}) DirCreate(("c:\\" + std::string(length - 3, 'l')).c_str());
    EXPECT_EQ(Found("c:\\*") + Found("*"), before);
    EXPECT_EQ(Here(), "C:\\there");
    DirCreate(Levels(100).c_str());
    EXPECT_EQ(Go_To(Levels(100)), 0);
}

TEST_F(Directories, AreClearedAndStay) {
    for (const char *name : {"tree/a/b/c/file", "tree/a/file", "tree/file", "tree/.hidden", "beside/file"})
        Put(name);
    std::filesystem::create_directory_symlink(On("drive_c/beside"), On("drive_c/tree/a/link"));
    std::filesystem::create_symlink(On("drive_c/beside/file"), On("drive_c/tree/file link"));
    Create("empty");
    EXPECT_EQ(ClearDir("c:\\tree"), 0);
    EXPECT_EQ(Here(), "C:\\tree");
    EXPECT_EQ(Found("*"), ". ..");
    EXPECT_TRUE(Is_There("drive_c/beside/file")) << "what links lead to is not in the tree";
    EXPECT_EQ(ClearDir("..\\empty\\"), 0);

    for (const char *path : {"", "c:\\none", "c:\\beside\\file", "c:/beside"})
        EXPECT_EQ(ClearDir(path), -1) << path;
    EXPECT_TRUE(Is_There("drive_c/beside/file"));
    EXPECT_EQ(Here(), "C:\\empty");
}

TEST_F(Directories, AreDestroyedWithAllThatIsInThem) {
    DirCreate(Levels(60, "c:\\tree").c_str());
    Put("tree/d/d/d/file");
    Put("tree/file");
    EXPECT_EQ(DirDestroyAll("tree"), 0);
    EXPECT_EQ(Found("c:\\*"), "error 2");
    Put("other/file");
    for (const char *path : {"none", "", "other\\file", "q:\\"}) EXPECT_EQ(DirDestroyAll(path), -1) << path;
    EXPECT_EQ(Here(), "C:\\");
}

TEST_F(Directories, AreNotDestroyedBehindALinkNorUnderTheCurrentDirectory) {
    Put("beside/file");
    std::filesystem::create_directory_symlink(On("drive_c/beside"), On("drive_c/link"));
    for (const char *slashed : {"c:\\link/", "c:/link", "c:\\link\\/"}) EXPECT_EQ(DirDestroyAll(slashed), -1);
    EXPECT_TRUE(Is_There("drive_c/beside/file"));
    EXPECT_EQ(DirDestroyAll("c:\\link"), 0);
    EXPECT_FALSE(std::filesystem::is_symlink(On("drive_c/link")));
    EXPECT_TRUE(Is_There("drive_c/beside/file")) << "the link alone went";

    Put("tree/inner/file");
    Put("treeless/file");
    Go_To("c:\\tree\\inner");
    for (const char *path : {"c:\\tree", "C:\\TREE\\INNER\\", ".", "..", "c:\\"})
        EXPECT_EQ(DirDestroyAll(path), -1) << path;
    EXPECT_TRUE(Is_There("drive_c/tree/inner/file"));
    EXPECT_EQ(Here(), "C:\\tree\\inner");
    Go_To("c:\\treeless");
    EXPECT_EQ(DirDestroyAll("c:\\tree"), 0) << "a name that only begins like another";
}

TEST_F(Directories, AreLeftAloneWhereThereIsNoWayBack) {
    Put("tree/file");
    std::filesystem::create_directory(On("drive_c/a?b"));
    std::filesystem::current_path(On("drive_c/a?b"));
    EXPECT_EQ(DirDestroyAll("c:\\tree"), -1);
    DirCreate("c:\\made\\below");
    EXPECT_EQ(std::filesystem::current_path().filename(), "a?b");
    Go_To("c:\\");
    EXPECT_EQ(Found("c:\\*") + Found("tree\\*"), "a?b tree. .. file");
}

std::string swapped, swapped_for;
int Swap_And_Change_Directory(const char *path) {
    if (std::string_view(path).ends_with("\\sub")) {
        std::filesystem::rename(swapped, swapped + " aside");
        std::filesystem::create_directory_symlink(swapped_for, swapped);
    }
    return Machine_Change_Directory(path);
}

TEST_F(Directories, AreNotClearedBehindWhatBecomesALink) {
    Put("tree/sub/file");
    Put("victim/file");
    swapped = On("drive_c/tree/sub");
    swapped_for = On("drive_c/victim");
    const ReplacedImport swap("libkelmara.so", "Machine_Change_Directory",
                              reinterpret_cast<void *>(Swap_And_Change_Directory));
    EXPECT_EQ(DirDestroyAll("c:\\tree"), -1);
    EXPECT_TRUE(Is_There("drive_c/victim/file"));
    EXPECT_EQ(Here(), "C:\\");
}

TEST_F(Directories, AreNotClearedWhenTheSearchFails) {
    Put("tree/a");
    Put("tree/b");
    const ReplacedImport fail("libkelmara.so", "FindNextFileA", reinterpret_cast<void *>(+[] {
                                  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
                                  return FALSE;
                              }));
    EXPECT_EQ(ClearDir("c:\\tree"), -1);
}

TEST_F(Directories, StopAtTheFirstFailure) {
    for (const char *name : {"tree/a", "tree/b/inner", "tree/c"}) Put(name);
    Write_Protect("drive_c/tree/b/inner");
    EXPECT_EQ(DirDestroyAll("c:\\tree"), -1);
    EXPECT_EQ(Found("tree\\*") + Found("tree\\b\\*"), ". .. b c. .. inner");
    EXPECT_EQ(Here(), "C:\\");
    EXPECT_TRUE(SetFileAttributesA("tree\\b\\inner", FILE_ATTRIBUTE_NORMAL));

    const HostPermissions permissions;
    std::filesystem::permissions(On("drive_c/tree/b"), std::filesystem::perms::none);
    EXPECT_EQ(ClearDir("c:\\tree\\b"), -1) << "cannot be entered";
    EXPECT_EQ(DirDestroyAll("c:\\tree"), -1);
    EXPECT_EQ(Here(), "C:\\");
    std::filesystem::permissions(On("drive_c/tree/b"), std::filesystem::perms::owner_all);
    EXPECT_EQ(Found("tree\\*") + Found("tree\\b\\*"), ". .. b c. .. inner");
    EXPECT_EQ(DirDestroyAll("c:\\tree"), 0);
}

// The folder's path with its separator has room for 255 characters, and so has the path of what is in it.
TEST_F(Directories, RefuseWhatDoesNotFit) {
    for (const std::size_t length : {253u, 254u}) {
        const std::string path = Make_Long(length);
        const bool fits = length + 2 <= 255;
        EXPECT_EQ(DirDestroyAll(path.c_str()), fits ? 0 : -1) << length;
        EXPECT_EQ(Here(), "C:\\");
        Go_To(path.substr(0, 103));
        EXPECT_EQ(ClearDir(path.substr(104).c_str()), -1) << length << ", relative";
        Go_To("c:\\");
        EXPECT_EQ(DirDestroyAll(path.substr(0, 103).c_str()), fits ? 0 : -1) << length;
        std::filesystem::remove_all(On("drive_c"));
        std::filesystem::create_directory(On("drive_c"));
        std::filesystem::current_path(On("drive_c"));
    }
}

TEST_F(Directories, AreKnownByNumber) {
    const std::string windows = "C:\\WINDOWS", system = "C:\\WINDOWS\\system32";
    const std::tuple<long, std::string, long> rows[] = {
        {10, windows, 0},
        {25, windows, 0},
        {11, system, 0},
        {12, system, 0},
        {17, windows + "\\INF\\", 0},
        {18, windows + "\\HELP\\", 0},
        {20, windows + "\\FONTS\\", 0},
        {21, system + "\\Viewers\\", 0},
        {24, "c:\\", 0},
        {30, "c:\\", 0},
        {-1, "as it was", 0},
        {65535, "as it was", 0},
        {13, "as it was", 267},
        {-2, "as it was", 267},
    };
    for (const auto &[id, expected, result] : rows) {
        char path[270] = "as it was";
        EXPECT_EQ(Get_Path_From_Directory_ID(id, path), result) << id;
        EXPECT_EQ(path, expected) << id;
    }
}

TEST_F(Directories, AreOnDisksWithFreeSpaceAndKinds) {
    const auto free = [&](const char *bytes, unsigned long wanted) {
        Override_Machine_Setting("drive_c_free", bytes);
        return Check_Free_Disk_Space(wanted);
    };
    EXPECT_TRUE(free("5000", 5000) && free("0", 0) && free("4294967296", 0xFFFFFFFF));
    EXPECT_FALSE(free("5000", 5001) || free("4294967294", 0xFFFFFFFF));
    Override_Machine_Setting("windows", "95");
    EXPECT_TRUE(free("1048576", 1048576) && free("0", 0));
    EXPECT_FALSE(free("1048576", 1048577) || free("9000000000", 0xFFFFFFFF));
    Override_Machine_Setting("windows", nullptr);
    Override_Machine_Setting("drive_c_free", nullptr);

    char root[4] = "x";
    Find_CDROM(root);
    EXPECT_STREQ(root, "");
    machine.Set("drive_f", "cdrom");
    machine.Set("drive_e", "cdrom");
    Find_CDROM(root);
    EXPECT_EQ(std::string(root), "E:\\");
}

} // namespace
