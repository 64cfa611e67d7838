#include <platform/kernel.h>
#include <platform/kernel/shared_block.h>

#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char Name[] = "TEST BLOCK/1";
constexpr DWORD Size = 73740;

HANDLE Create(DWORD size = Size, const char *name = Name) {
    return CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name);
}

char *View(HANDLE mapping) {
    return static_cast<char *>(MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, 0));
}

class Mappings : public MachineTest {
  protected:
    /// The one file of the machine's shared memory.
    std::string Block_File() const {
        for (const auto &folder : std::filesystem::directory_iterator("/dev/shm")) {
            if (folder.path().string().find(Number()) == std::string::npos) continue;
            for (const auto &file : std::filesystem::directory_iterator(folder)) return file.path();
        }
        return {};
    }
    std::string Number() const { return machine.Read("machine.id"); }
    void Overwrite(std::size_t offset, const std::string &bytes) const {
        const int file = open(Block_File().c_str(), O_WRONLY);
        EXPECT_EQ(pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)),
                  static_cast<ssize_t>(bytes.size()));
        close(file);
    }
};

// Maps the block, says its last error and first bytes, writes its own, and stays until told.
SECOND_PROCESS(mapper) {
    const HANDLE mapping = Create();
    process.Tell(std::to_string(GetLastError()));
    char *view = View(mapping);
    process.Tell(std::string(view ? view : "?"));
    std::strcpy(view, "from the second");
    process.Tell("written");
    process.Hear();
    return 0;
}

TEST_F(Mappings, AreFreshOnceAndSharedFromThenOn) {
    const HANDLE first = Create();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(GetLastError(), 0u);
    char *view = View(first);
    for (DWORD i = 0; i < Size; ++i) ASSERT_EQ(view[i], 0) << i;
    std::strcpy(view, "from the first");
    {
        SecondProcess second("mapper");
        EXPECT_EQ(second.Hear(), "183");
        EXPECT_EQ(second.Hear(), "from the first");
        EXPECT_EQ(second.Hear(), "written");
        EXPECT_STREQ(view, "from the second");
    }
    const HANDLE again = Create(100);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    char *same = View(again);
    EXPECT_STREQ(same, view) << "at its own size, whatever is asked for";
    EXPECT_EQ(same[Size - 1], 0);
    for (const HANDLE handle : {first, again}) EXPECT_TRUE(CloseHandle(handle));
    EXPECT_TRUE(UnmapViewOfFile(same));

    const HANDLE third = Create();
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS)) << "a view keeps the name";
    CloseHandle(third);
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_FALSE(UnmapViewOfFile(view));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_ADDRESS));
    EXPECT_EQ(Block_File(), "") << "nothing is left of it";
}

TEST_F(Mappings, VanishWithTheLastProcessAlsoWhenItIsKilled) {
    SecondProcess second("mapper");
    EXPECT_EQ(second.Hear(), "0");
    EXPECT_EQ(second.Hear(), "");
    EXPECT_EQ(second.Hear(), "written");
    second.Kill();
    second.Wait();
    const HANDLE mapping = Create(200);
    EXPECT_EQ(GetLastError(), 0u);
    char *view = View(mapping);
    EXPECT_STREQ(view, "");
    UnmapViewOfFile(view);
    CloseHandle(mapping);
}

TEST_F(Mappings, KeepToTheirSizeAndAlignment) {
    const HANDLE mapping = Create(65536 + 10);
    EXPECT_EQ(MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 4096, 0), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MAPPED_ALIGNMENT));
    for (const auto &[offset, bytes] : {std::pair<DWORD, DWORD>{0, 65547}, {65536, 11}, {131072, 0}}) {
        EXPECT_EQ(MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, offset, bytes), nullptr) << offset;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    }
    auto *whole = static_cast<char *>(MapViewOfFile(mapping, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, 65546));
    auto *end = static_cast<char *>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 65536, 10));
    auto *copy = static_cast<char *>(MapViewOfFile(mapping, FILE_MAP_COPY, 0, 65536, 0));
    whole[65545] = 'x';
    EXPECT_EQ(end[9], 'x');
    copy[9] = 'y';
    EXPECT_EQ(end[9], 'x');
    for (const char *view : {whole, end, copy}) EXPECT_TRUE(UnmapViewOfFile(view));
    CloseHandle(mapping);

    EXPECT_EQ(Create(0), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(CreateFileMappingA(nullptr, nullptr, PAGE_READWRITE, 0, 10, Name), nullptr);
    EXPECT_EQ(MapViewOfFile(reinterpret_cast<HANDLE>(4000L), FILE_MAP_READ, 0, 0, 0), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    const HANDLE mutex = CreateMutexA(nullptr, FALSE, "M");
    EXPECT_EQ(Create(10, "M"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    CloseHandle(mutex);
}

TEST_F(Mappings, BelongToTheirOwnerAndTheirMachine) {
    const HANDLE mapping = Create();
    struct stat status;
    ASSERT_EQ(stat(Block_File().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    ASSERT_EQ(stat(std::filesystem::path(Block_File()).parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    ASSERT_EQ(stat(machine.Folder().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700u);
    {
        TestMachine other;
        const HANDLE elsewhere = Create();
        EXPECT_EQ(GetLastError(), 0u) << "another machine has names of its own";
        CloseHandle(elsewhere);
    }
    Enter_Machine(machine.Folder().c_str());
    CloseHandle(mapping);
}

TEST_F(Mappings, OfAnotherLayoutAreRefusedAndLeftAlone) {
    const HANDLE mapping = Create();
    const struct {
        std::size_t offset;
        std::string bytes;
        long error;
    } faults[] = {
        {offsetof(SharedBlockHeader, magic), "X", ERROR_FILE_CORRUPT},
        {offsetof(SharedBlockHeader, layout_version), "\x02", ERROR_REVISION_MISMATCH},
        {offsetof(SharedBlockHeader, word_size), "\x08", ERROR_REVISION_MISMATCH},
        {offsetof(SharedBlockHeader, size), std::string("\0\0\0\x40", 4), ERROR_FILE_CORRUPT},
        {offsetof(SharedBlockHeader, size), std::string(4, '\0'), ERROR_FILE_CORRUPT},
        {offsetof(SharedBlockHeader, name), "Y", ERROR_FILE_CORRUPT},
    };
    for (const auto &fault : faults) {
        std::string kept(fault.bytes.size(), '\0');
        const int file = open(Block_File().c_str(), O_RDONLY);
        pread(file, kept.data(), kept.size(), static_cast<off_t>(fault.offset));
        close(file);
        Overwrite(fault.offset, fault.bytes);
        // A second process looks the file up; this one knows the block already.
        SecondProcess second("mapper");
        EXPECT_EQ(second.Hear(), std::to_string(fault.error)) << fault.offset;
        second.Kill();
        second.Wait();
        Overwrite(fault.offset, kept);
    }
    SecondProcess second("mapper");
    EXPECT_EQ(second.Hear(), "183") << "put right, it is shared again";
    second.Kill();
    second.Wait();
    CloseHandle(mapping);
}

} // namespace
