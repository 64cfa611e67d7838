#include <tests/support/file_verbs.h>
#include <tests/support/test_memory.h>

#include <kelmara/system/file.h>

#include <csignal>
#include <sys/resource.h>
#include <thread>

namespace {

/// Writing beyond so many bytes of a file fails while it lives, as on a full disk.
class FullDisk {
  public:
    explicit FullDisk(rlim_t size) : handler_(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {size, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        signal(SIGXFSZ, handler_);
    }

  private:
    rlimit before_;
    void (*handler_)(int);
};

class Files : public FileTest {
  protected:
    std::string On_C(const std::string &name) { return machine.Read("drive_c/" + name); }
    void Put(const std::string &name, const std::string &content) {
        machine.Write("drive_c/" + name, content);
    }
    static int Write(CKMFile &to, const std::string &text, bool flush = false) {
        return to.Write(text.data(), static_cast<long>(text.size()), flush);
    }
    static std::string Read(CKMFile &from, long size) {
        std::string text(static_cast<std::size_t>(size), '?');
        const int result = from.Read(text.data(), size);
        return result == 0 ? text : std::to_string(result);
    }
    std::string Temporary_Files() { return Found("c:\\windows\\temp\\*.tmp"); }
    static constexpr char Not_There[] = "error 2";

    CKMFile file;
};

TEST_F(Files, OpenAsTheyAreAsked) {
    Put("old", "12345");
    EXPECT_EQ(file.Open("none", false, false), 2);
    EXPECT_EQ(file.Open("no\\where", true, true), 2);
    EXPECT_EQ(file.Close(), 1006) << "a failed open leaves no stream";
    EXPECT_EQ(Found("*"), "old");

    ASSERT_EQ(file.Open("old", false, false), 0);
    EXPECT_EQ(Write(file, "x"), 1006);
    EXPECT_EQ(Read(file, 5), "12345");
    ASSERT_EQ(file.Open("old", true, false), 0);
    EXPECT_EQ(Write(file, "xy") + file.MoveTo(0, 0), 0);
    EXPECT_EQ(Read(file, 5), "xy345");
    ASSERT_EQ(file.Open("OLD", false, true), 0);
    EXPECT_EQ(file.GetLength(), 0);
    EXPECT_EQ(Write(file, "x"), 1006) << "cut to nothing, and opened for reading";
    ASSERT_EQ(file.Open_Append("old"), 0);
    EXPECT_EQ(Write(file, "ab") + file.MoveTo(0, 0) + Write(file, "cd") + file.MoveTo(0, 0), 0);
    EXPECT_EQ(Read(file, 4), "abcd");
    EXPECT_EQ(file.Rollback(), 0) << "which is a plain close";
    EXPECT_EQ(On_C("old"), "abcd");
}

TEST_F(Files, TransferWholeBlocks) {
    for (const int result : {file.Close(), file.Rollback(), file.Read(nullptr, 1), Write(file, "x"),
                             file.MoveTo(0, 0), file.Duplicate("copy")}) {
        EXPECT_EQ(result, 1006);
    }
    EXPECT_EQ(file.GetLength(), 0);
    ASSERT_EQ(file.Open("file", true, true), 0);
    EXPECT_EQ(Write(file, "0123456789", true), 0);
    EXPECT_EQ(On_C("file"), "0123456789") << "flushed";
    EXPECT_EQ(file.MoveTo(-4, 2), 0);
    EXPECT_EQ(file.GetLength(), 10);
    EXPECT_EQ(Read(file, 2), "67") << "GetLength leaves the position";
    EXPECT_EQ(Write(file, "x"), 0) << "right after a read";
    EXPECT_EQ(file.MoveTo(-2, 1), 0);
    EXPECT_EQ(Read(file, 2), "7x");
    EXPECT_EQ(Read(file, 2), "1392") << "more than remains";
    EXPECT_EQ(file.MoveTo(0, 3), 1006);
    EXPECT_EQ(file.MoveTo(-1, 0), -1);

    EXPECT_EQ(file.Open("z:\\dev\\full", true, false), 0);
    EXPECT_EQ(Write(file, std::string(100000, 'x')), 1392);
    EXPECT_EQ(Read(file, 0), "32") << "the stream has its error flag set";
    EXPECT_EQ(file.Close(), 0);
}

TEST_F(Files, AreTemporary) {
    CKMFile second;
    ASSERT_EQ(file.Open_Temp_File() + second.Open_Temp_File(), 0);
    EXPECT_EQ(Write(file, "first") + Write(second, "second") + file.MoveTo(0, 0), 0);
    EXPECT_EQ(Read(file, 5), "first");
    const std::string both = Temporary_Files();
    EXPECT_EQ(std::count(both.begin(), both.end(), '.'), 2) << both;
    EXPECT_EQ(file.Close() + second.Rollback(), 0);
    EXPECT_NE(Temporary_Files(), Not_There) << "Rollback leaves it";
    Put("other", "");
    EXPECT_EQ(second.Open("other", true, false) + second.Close(), 0);
    EXPECT_EQ(Temporary_Files(), Not_There) << "the next Close does not";
}

TEST_F(Files, TakeTheirNameAtCloseUnlessRolledBack) {
    ASSERT_EQ(file.Open_With_Rollback("c:\\new"), 0);
    EXPECT_EQ(Write(file, "whole"), 0);
    CKMFile rival;
    ASSERT_EQ(rival.Open_With_Rollback("c:\\new"), 0) << "under another working name";
    EXPECT_EQ(Write(rival, "rival"), 0);
    EXPECT_FALSE(Is_There("drive_c/new"));
    EXPECT_EQ(file.Close(), 0);
    EXPECT_EQ(rival.Close(), 52);
    EXPECT_EQ(On_C("new") + " " + Found("new*"), "whole new") << "and no working file is left";

    ASSERT_EQ(file.Open_With_Rollback("NEW"), 0);
    EXPECT_EQ(Write(file, "again") + file.Rollback(), 0);
    {
        CKMFile left;
        EXPECT_EQ(left.Open_With_Rollback("left") + Write(left, "left"), 0);
    }
    EXPECT_EQ(On_C("new") + On_C("left"), "wholeleft") << "the destructor commits";
}

// A rival who looks whether a working name is taken has it open for a moment.
TEST_F(Files, TakeTheirNameThoughSomebodyIsLookingAtIt) {
    ASSERT_EQ(file.Open_With_Rollback("c:\\new"), 0);
    EXPECT_EQ(Write(file, "whole"), 0);
    FILE *look = Machine_Open_Stream(Found("new-*").c_str(), "rb");
    ASSERT_TRUE(look);
    std::thread rival([&] {
        Sleep(100);
        Machine_Close_Stream(look);
    });
    EXPECT_EQ(file.Close(), 0);
    rival.join();
    EXPECT_EQ(On_C("new"), "whole");
}

TEST_F(Files, KeepTheirPlaceBeyondWhatALongCanTell) {
    Put("large", "x");
    std::filesystem::resize_file(On("drive_c/large"), 3ll << 30);
    ASSERT_EQ(file.Open("large", true, false), 0);
    EXPECT_EQ(file.MoveTo(2147483647, 0) + file.MoveTo(1000, 1) + Write(file, "ab") + file.MoveTo(-1, 1), 0);
    EXPECT_EQ(file.GetLength(), -1);
    EXPECT_EQ(Read(file, 1), "b");
}

TEST_F(Files, AreClosedBeforeTheNextIsOpened) {
    Put("other", "");
    const auto expect_commit = [&](int (*open)(CKMFile &)) {
        ASSERT_EQ(file.Open_With_Rollback("pending"), 0);
        EXPECT_EQ(Write(file, "pending"), 0);
        open(file);
        EXPECT_EQ(On_C("pending"), "pending");
        file.Close();
        EXPECT_EQ(Delete("pending"), 0);
    };
    expect_commit([](CKMFile &it) { return it.Open("other", false, false); });
    expect_commit([](CKMFile &it) { return it.Open_Append("other"); });
    expect_commit([](CKMFile &it) { return it.Open_With_Rollback("next"); });
    expect_commit([](CKMFile &it) { return it.Open_Temp_File(); });
    expect_commit([](CKMFile &it) { return (it = CKMFile()).Close(); });
    expect_commit([](CKMFile &it) { return (it = it).Close(); });
    expect_commit([](CKMFile &it) { return CKMFile(it).Close() == 1006 ? it.Close() : 1; });
    EXPECT_EQ(Temporary_Files(), Not_There);
    EXPECT_EQ(Found("*"), "next other WINDOWS");
}

// A working name has 11 characters more than its target's; a path of 260 is none.
TEST_F(Files, RefuseNamesThatDoNotFit) {
    std::filesystem::create_directory(On("drive_c/" + std::string(200, 'd')));
    ASSERT_EQ(Go_To(std::string(200, 'd')), 0);
    const std::string folder = "c:\\" + std::string(200, 'd') + "\\";
    for (const std::size_t length : {244u, 245u}) {
        const std::string path = folder + std::string(length - folder.size(), 'f');
        const bool fits = length + 11 <= 255;
        EXPECT_EQ(file.Open_With_Rollback(path.c_str()), fits ? 0 : 2) << length;
        EXPECT_EQ(file.Close(), fits ? 0 : 1006) << length;
        EXPECT_EQ(file.Open(path.c_str(), false, false), fits ? 0 : 2) << length;
    }
}

TEST_F(Files, LoseNothingOfTheTargetOnAFullDisk) {
    const std::string large(100000, 'n');
    Put("target", "old");
    {
        const FullDisk full(5000);
        ASSERT_EQ(file.Open_With_Rollback("target"), 0);
        EXPECT_EQ(Write(file, large), 1392);
        EXPECT_EQ(file.Close(), 52);
        ASSERT_EQ(file.Open("large", true, true), 0);
        EXPECT_EQ(Write(file, large), 1392);
        EXPECT_EQ(file.Close(), 0);
        ASSERT_EQ(file.Open("target", false, false), 0);
        EXPECT_EQ(file.Duplicate("copy"), 0);
    }
    EXPECT_EQ(Found("*"), "copy large target");
    EXPECT_EQ(On_C("target") + On_C("copy"), "oldold");
}

TEST_F(Files, AreDuplicated) {
    const NoLeak no_leak;
    Put("from", "0123456789");
    Put("empty", "");
    ASSERT_EQ(file.Open("from", true, false), 0);
    EXPECT_EQ(file.MoveTo(3, 0), 0);
    EXPECT_EQ(Write(file, "x"), 0);
    EXPECT_EQ(file.Duplicate("copy"), 0);
    EXPECT_EQ(On_C("copy"), "012x456789");
    EXPECT_EQ(file.Duplicate("no\\where"), 2);
    EXPECT_EQ(Read(file, 1), "4") << "the position stays";
    EXPECT_EQ(file.Duplicate("from"), 0) << "onto itself";
    EXPECT_EQ(On_C("from"), "012x456789");
    {
        const FailingMemory failing(1);
        EXPECT_EQ(file.Duplicate("copy"), static_cast<int>(0x8007000E));
        EXPECT_EQ(On_C("copy"), "");
    }
    ASSERT_EQ(file.Open("empty", false, false), 0);
    EXPECT_EQ(file.Duplicate("second"), 1392);
    EXPECT_TRUE(Is_There("drive_c/second"));
}

} // namespace
