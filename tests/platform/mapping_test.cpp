#include <tests/support/handles.h>
#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <platform/kernel/shared_block.h>

#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr DWORD Size = 73740;

HANDLE Create(DWORD size = Size, const char *name = "TEST BLOCK/1") {
    return CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name);
}

char *View(HANDLE mapping, DWORD offset = 0, DWORD bytes = 0, DWORD access = FILE_MAP_ALL_ACCESS) {
    return static_cast<char *>(MapViewOfFile(mapping, access, 0, offset, bytes));
}

class Mappings : public MachineTest {
  protected:
    /// The files that the machine has in the host's shared memory, but for those of the library, which each
    /// program of these tests loads.
    std::vector<fs::path> Files() const {
        std::vector<fs::path> files;
        std::error_code none;
        for (const auto &file : fs::directory_iterator(machine.Shared_Folder(), none)) {
            const std::string name = file.path().filename();
            if (name != "block-INSTANCESHARE" && name != "block-InstanceMasterMutex") files.push_back(file);
        }
        return files;
    }
    /// Writes into the file and gives what stood there.
    std::string Exchange(off_t offset, const std::string &bytes) const {
        std::string before(bytes.size(), '\0');
        const int file = open(Files().at(0).c_str(), O_RDWR);
        const auto size = static_cast<ssize_t>(bytes.size());
        EXPECT_EQ(pread(file, before.data(), bytes.size(), offset), size);
        EXPECT_EQ(pwrite(file, bytes.data(), bytes.size(), offset), size);
        close(file);
        return before;
    }
};

// Maps the block, says its last error and first bytes, writes its own, and stays until told; it closes
// nothing.
SECOND_PROCESS(mapper) {
    const HANDLE mapping = Create();
    process.Tell(std::to_string(GetLastError()));
    char *view = View(mapping);
    if (!view) return 1;
    process.Tell(view);
    std::strcpy(view, "from the second");
    CreateMutexA(nullptr, TRUE, "MUTEX");
    process.Tell("written");
    process.Hear();
    return 0;
}

TEST_F(Mappings, AreFreshOnceAndSharedFromThenOn) {
    const HANDLE first = Create();
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(fs::status(Files().at(0)).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(Files().at(0).parent_path()).permissions(), fs::perms(0700));
    char *view = View(first);
    EXPECT_EQ(std::string(view, Size), std::string(Size, '\0'));
    std::strcpy(view, "from the first");
    {
        SecondProcess second("mapper");
        for (const char *line : {"183", "from the first", "written"}) EXPECT_EQ(second.Hear(), line);
        EXPECT_STREQ(view, "from the second");
        EXPECT_EQ(second.Wait(), 0);
    }
    const HANDLE again = Create(100);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    char *same = View(again);
    EXPECT_STREQ(same, view) << "at its own size, whatever is asked for";
    EXPECT_EQ(same[Size - 1], 0);
    for (const HANDLE handle : {first, again}) EXPECT_TRUE(CloseHandle(handle));
    EXPECT_TRUE(UnmapViewOfFile(same));
    EXPECT_EQ(TestHandle(Create()).error, ERROR_ALREADY_EXISTS) << "a view keeps the name";
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_EQ(Error_Of(UnmapViewOfFile(view)), ERROR_INVALID_ADDRESS);
    EXPECT_THAT(Files(), IsEmpty()) << "nothing is left of it";
}

TEST_F(Mappings, VanishWithTheLastProcessAlsoWhenItIsKilled) {
    for (const bool killed : {false, true}) {
        SecondProcess second("mapper");
        for (const char *line : {"0", "", "written"}) EXPECT_EQ(second.Hear(), line);
        EXPECT_THAT(Files(), SizeIs(2)) << "the mapping and the mutex";
        if (killed) second.Kill();
        second.Wait();
        EXPECT_THAT(Files(), SizeIs(killed ? 2 : 0)) << "an ending process lets go";
    }
    const TestHandle mapping(Create(200));
    EXPECT_EQ(mapping.error, 0);
    char *view = View(mapping);
    EXPECT_STREQ(view, "");
    UnmapViewOfFile(view);
    SecondProcess next("mapper");
    for (const char *line : {"183", "", "written"}) EXPECT_EQ(next.Hear(), line);
    EXPECT_THAT(Files(), SizeIs(2)) << "a starting process throws away what the killed one left";
}

TEST_F(Mappings, KeepToTheirSizeAndAlignment) {
    const TestHandle mapping(Create(65536 + 10)), mutex(CreateMutexA(nullptr, FALSE, "M"));
    EXPECT_EQ(Error_Of(View(mapping, 4096)), ERROR_MAPPED_ALIGNMENT);
    for (const auto &[offset, bytes] : {std::pair<DWORD, DWORD>{0, 65547}, {65536, 11}, {131072, 0}}) {
        EXPECT_EQ(Error_Of(View(mapping, offset, bytes)), ERROR_ACCESS_DENIED) << offset;
    }
    char *whole = View(mapping, 0, 65546, FILE_MAP_READ | FILE_MAP_WRITE);
    char *end = View(mapping, 65536, 10, FILE_MAP_READ), *copy = View(mapping, 65536, 0, FILE_MAP_COPY);
    whole[65545] = 'x';
    EXPECT_EQ(end[9], 'x');
    copy[9] = 'y';
    EXPECT_EQ(end[9], 'x');
    for (const char *view : {whole, end, copy}) EXPECT_TRUE(UnmapViewOfFile(view));

    EXPECT_EQ(Error_Of(Create(0)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(CreateFileMappingA(nullptr, nullptr, PAGE_READWRITE, 0, 10, "N"), nullptr);
    EXPECT_EQ(Error_Of(View(reinterpret_cast<HANDLE>(4000L))), ERROR_INVALID_HANDLE);
    EXPECT_EQ(Error_Of(Create(10, "M")), ERROR_INVALID_HANDLE) << "a mutex's name";
}

TEST_F(Mappings, OfAnotherLayoutAreRefusedAndLeftAlone) {
    const TestHandle mapping(Create());
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
    // A second process looks the file up; this one knows the block already.
    for (const auto &[offset, bytes, error] : faults) {
        const std::string kept = Exchange(static_cast<off_t>(offset), bytes);
        EXPECT_EQ(SecondProcess("mapper").Hear(), std::to_string(error)) << offset;
        EXPECT_EQ(Exchange(static_cast<off_t>(offset), kept), bytes) << offset;
    }
    EXPECT_EQ(SecondProcess("mapper").Hear(), "183") << "put right, it is shared again";
}

} // namespace
