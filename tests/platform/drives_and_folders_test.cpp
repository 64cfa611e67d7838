#include <tests/support/file_verbs.h>

#include <cerrno>
#include <cstring>

namespace {

using SystemFolders = FileTest;
using CurrentDirectory = FileTest;
using Drives = FileTest;
using Profile = FileTest;

TEST_F(SystemFolders, AreMadeWhereTheyBelong) {
    std::filesystem::create_directory(On("drive_c/windows"));
    char out[MAX_PATH];
    EXPECT_EQ(GetWindowsDirectoryA(out, sizeof out), 10u);
    EXPECT_STREQ(out, "C:\\WINDOWS");
    EXPECT_EQ(GetTempPathA(sizeof out, out), 16u);
    EXPECT_STREQ(out, "C:\\WINDOWS\\TEMP\\");
    EXPECT_EQ(GetSystemDirectoryA(out, sizeof out), 19u);
    EXPECT_STREQ(out, "C:\\WINDOWS\\system32");
    machine.Set("windows", "98");
    EXPECT_EQ(GetSystemDirectoryA(out, sizeof out), 17u);
    EXPECT_STREQ(out, "C:\\WINDOWS\\SYSTEM");
    EXPECT_EQ(Found("c:\\windows\\*"), ". .. SYSTEM system32 TEMP");
    EXPECT_EQ(Found("c:\\*"), "windows") << "the folder that was there";

    std::strcpy(out, "#");
    for (const DWORD size : {0u, 16u}) EXPECT_EQ(GetTempPathA(size, out), 17u) << size;
    EXPECT_EQ(GetWindowsDirectoryA(nullptr, 10) + GetSystemDirectoryA(out, 17), 11u + 18u);
    EXPECT_EQ(GetCurrentDirectoryA(3, out), 4u);
    EXPECT_STREQ(out, "#") << "untouched when it is too small";
    EXPECT_EQ(GetTempPathA(17, out), 16u);
}

TEST_F(CurrentDirectory, IsTheProcesssAndReadsAsAWindowsPath) {
    machine.Write("drive_c/Sub/Deep/file", "x");
    machine.Write("drive_d/x", "x");
    char out[MAX_PATH];
    for (const auto &[path, expected] :
         {std::pair{"SUB\\\\deep\\", "C:\\Sub\\Deep"}, {"..", "C:\\Sub"}, {"d:", "D:\\"}, {"c:\\", "C:\\"}}) {
        EXPECT_EQ(Go_To(path), 0) << path;
        EXPECT_EQ(GetCurrentDirectoryA(sizeof out, out), std::string(expected).size());
        EXPECT_STREQ(out, expected) << path;
    }
    for (const auto &[path, error] : {std::pair{"none", ERROR_FILE_NOT_FOUND},
                                      {"no\\where", ERROR_PATH_NOT_FOUND},
                                      {"sub\\deep\\file", ERROR_DIRECTORY},
                                      {"", ERROR_PATH_NOT_FOUND}}) {
        EXPECT_EQ(Go_To(path), error) << path;
        EXPECT_EQ(Machine_Change_Directory(path), -1) << path;
    }
    EXPECT_EQ(Machine_Change_Directory("Sub"), 0);
    EXPECT_EQ(Machine_Get_Directory(out, 6), nullptr);
    EXPECT_EQ(errno, ERANGE);
    EXPECT_STREQ(Machine_Get_Directory(out, 7), "C:\\Sub");
    std::filesystem::remove_all(On("drive_c/Sub"));
    EXPECT_EQ(GetCurrentDirectoryA(sizeof out, out), 0u);
    EXPECT_EQ(Go_To("c:\\"), 0);
}

TEST_F(Drives, HaveTheKindsThatTheSettingsSay) {
    machine.Set("drive_d", "CDROM");
    machine.Set("drive_e", "removable");
    machine.Set("drive_f", "nonsense");
    machine.Set("drive_c", "cdrom");
    std::filesystem::create_directory(On("drive_g"));
    char out[64];
    EXPECT_EQ(GetLogicalDriveStringsA(sizeof out, out), 24u);
    EXPECT_EQ(std::string(out, 25), std::string("C:\\\0D:\\\0E:\\\0F:\\\0G:\\\0Z:\\\0", 25));
    out[0] = '#';
    EXPECT_EQ(GetLogicalDriveStringsA(24, out), 25u);
    EXPECT_EQ(out[0], '#');
    const ByOutcome<UINT> rows = {{DRIVE_CDROM, {"d:\\"}},
                                  {DRIVE_REMOVABLE, {"E:\\"}},
                                  {DRIVE_UNKNOWN, {"f:\\"}},
                                  {DRIVE_FIXED, {"c:\\", "g:", "z:\\"}},
                                  {DRIVE_NO_ROOT_DIR, {"h:\\", "z:\\tmp\\", ""}}};
    for (const auto &[kind, roots] : rows) {
        for (const auto &root : roots) EXPECT_EQ(GetDriveTypeA(root.c_str()), kind) << root;
    }
    EXPECT_EQ(Go_To("d:\\"), 0);
    EXPECT_EQ(GetDriveTypeA(nullptr), DRIVE_CDROM);
}

TEST_F(Drives, HaveStatedSpaceOfNoMoreThan2GBForOldCalls) {
    machine.Set("drive_c_free", "5000000000");
    machine.Set("drive_c_size", "80000000000");
    ULARGE_INTEGER mine, size;
    ASSERT_TRUE(GetDiskFreeSpaceExA("c:\\", &mine, &size, nullptr));
    EXPECT_EQ(mine.QuadPart, 5000000000u);
    EXPECT_EQ(size.QuadPart, 80000000000u);
    DWORD sectors, bytes, free_clusters;
    machine.Set("windows", "98");
    ASSERT_TRUE(GetDiskFreeSpaceA(nullptr, &sectors, &bytes, &free_clusters, nullptr));
    EXPECT_EQ(sectors * bytes * free_clusters, 0x7FFF8000u);
}

std::string Value(const char *section, const char *key, const char *file = "telephon.ini", DWORD size = 255) {
    char out[512];
    const DWORD length = GetPrivateProfileStringA(section, key, "none  ", out, size, file);
    return std::string(out, length);
}

TEST_F(Profile, ValuesAreFoundInTheWindowsFolder) {
    machine.Write(
        "drive_c/windows/Telephon.ini",
        "; remark = 1\r\nlost = 1\r\n[locations]\r\nCurrentLocation = 0,1\r\nLocation1=1,\"Home\",\"\"\r\n"
        " quoted\t= \"a b \" \r\nsingle='x'\r\nhalf=\"x\r\ntwice=first\r\nTWICE=second\r\n"
        "empty=\r\nno value\r\n;off=1\r\n\r\n[ Other ]\r\nlost=2\nend=last");
    const ByOutcome<std::string> rows = {{"0,1", {"currentlocation"}},
                                         {"1,\"Home\",\"\"", {"LOCATION1"}},
                                         {"a b ", {" quoted "}},
                                         {"x", {"single"}},
                                         {"\"x", {"half"}},
                                         {"first", {"twice"}},
                                         {"", {"empty"}},
                                         {"none", {"lost", "no value", "off", ""}}};
    for (const auto &[value, keys] : rows) {
        for (const auto &key : keys) EXPECT_EQ(Value("Locations", key.c_str()), value) << key;
    }
    EXPECT_EQ(Value("other", "END"), "last");
    EXPECT_EQ(Value("nowhere", "end"), "none");
    EXPECT_EQ(Value(nullptr, "x"), std::string("locations\0Other\0", 16));
    EXPECT_EQ(Value("other", nullptr), std::string("lost\0end\0", 9));
    EXPECT_EQ(Value("other", "end", "c:\\WINDOWS\\telephon.ini"), "last");
    EXPECT_EQ(Value("other", "end", "none.ini"), "none");
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(Value("other", "end", "c:\\"), "none");
    EXPECT_EQ(Value("other", "end", nullptr), "none") << "there is no win.ini";
}

TEST_F(Profile, ValuesAreCutToTheirRoom) {
    machine.Write("drive_c/windows/x.ini", "[one]\nkey=12345\n[two]\n");
    for (const auto &[size, value] : {std::pair{6u, "12345"}, {5u, "1234"}, {1u, ""}, {0u, ""}}) {
        EXPECT_EQ(Value("one", "key", "x.ini", size), value) << size;
    }
    char out[16];
    for (const auto &[size, list] : {std::pair<DWORD, std::string>{9, {"one\0two\0\0", 9}},
                                     {8, {"one\0tw\0\0", 8}},
                                     {2, {"\0\0", 2}},
                                     {1, {"\0", 1}}}) {
        std::memset(out, '#', sizeof out);
        EXPECT_EQ(GetPrivateProfileStringA(nullptr, nullptr, nullptr, out, size, "x.ini"),
                  size == 9 ? 8u : std::max<DWORD>(size, 2) - 2);
        EXPECT_EQ(std::string(out, size + 1), list + "#") << size;
    }
}

TEST_F(Profile, ValuesOfAFileThatIsNone) {
    std::string bytes = "[one]\nkey=1\n";
    for (int i = 0; i < 300000; ++i) bytes += static_cast<char>(i * 7 + i / 256);
    machine.Write("drive_c/windows/x.ini", bytes + "\n[one]\nother=2\n");
    EXPECT_EQ(Value("one", "key", "x.ini"), "1");
    Value("one", nullptr, "x.ini");
    Value(nullptr, nullptr, "x.ini");
    machine.Write("drive_c/windows/x.ini", std::string(2 << 20, '\n') + "[one]\nkey=1\n");
    EXPECT_EQ(Value("one", "key", "x.ini"), "none") << "beyond the first megabyte";
}

} // namespace
