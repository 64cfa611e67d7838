// A call of the host that fails in the middle of a save: who saves is told or the save is whole, what was
// there stands, and the next save works.

#include <tests/faults/save_machine.h>
#include <tests/support/fault_points.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int Short = -1;

struct HostFault {
    const char *name;
    std::vector<long> calls;
    int error; // or Short
};

const std::vector<HostFault> Host_Faults = {
    {"open, EMFILE", {SYS_open, SYS_openat}, EMFILE},
    {"open, EIO", {SYS_open, SYS_openat}, EIO},
    {"open, ENOSPC", {SYS_open, SYS_openat}, ENOSPC},
    {"read, EIO", {SYS_read, SYS_pread64}, EIO},
    {"read, EINTR", {SYS_read, SYS_pread64}, EINTR},
    {"short read", {SYS_read, SYS_pread64}, Short},
    {"write, ENOSPC", {SYS_write, SYS_pwrite64}, ENOSPC},
    {"write, EIO", {SYS_write, SYS_pwrite64}, EIO},
    {"write, EINTR", {SYS_write, SYS_pwrite64}, EINTR},
    {"short write", {SYS_write, SYS_pwrite64}, Short},
    {"flush, EIO", {SYS_fsync, SYS_fdatasync, SYS_syncfs}, EIO},
    {"flush, ENOSPC", {SYS_fsync, SYS_fdatasync, SYS_syncfs}, ENOSPC},
    {"flush, EINTR", {SYS_fsync, SYS_fdatasync}, EINTR},
    {"rename, EIO", {SYS_rename, SYS_renameat2, SYS_link}, EIO},
    {"rename, ENOSPC", {SYS_rename, SYS_renameat2, SYS_link}, ENOSPC},
    {"cut, EIO", {SYS_ftruncate64}, EIO},
    {"cut, EINTR", {SYS_ftruncate64}, EINTR},
    {"map, ENOMEM", {SYS_mmap2}, ENOMEM},
    {"copy, EIO", {SYS_copy_file_range}, EIO},
    {"copy, ENOSPC", {SYS_copy_file_range}, ENOSPC},
    {"folder, ENOSPC", {SYS_mkdir}, ENOSPC},
    {"link, EIO", {SYS_symlink}, EIO},
    {"mode or time, EIO", {SYS_chmod, SYS_fchmod, SYS_fchmodat, SYS_utimensat}, EIO},
    {"room, ENOSPC", {SYS_fallocate}, ENOSPC},
    {"list, EIO", {SYS_getdents64}, EIO},
    {"lock, EINTR", {SYS_flock}, EINTR},
};

// The child's word that its first save is over, by a call that nobody else makes; how it went is the
// argument.
constexpr long Word_Of_The_End = SYS_getpgid;
constexpr int Saved = 4000001, Told = 4000002;

int Save_Twice(const SavePath &path) {
    const bool first = path.save();
    syscall(Word_Of_The_End, first ? Saved : Told);
    return path.save() ? 0 : 1;
}

struct FaultPoint {
    const HostFault *fault;
    unsigned long at;
    bool for_ever;

    bool Is_Meant(const TracedRun &run) const {
        return std::count(fault->calls.begin(), fault->calls.end(), run.Call()) > 0 &&
               !(run.Call() == SYS_write && run.Goes_To_A_Pipe()) &&
               !(run.Call() == SYS_mmap2 && !run.Maps_A_File()); // that would be memory
    }
    /// Nobody can look through a folder then, to remove it.
    bool Sees_No_Folder() const {
        return for_ever && (fault->calls == Host_Faults[0].calls || fault->calls[0] == SYS_getdents64);
    }
    std::string Text() const {
        return std::string(fault->name) + " at " + std::to_string(at) + (for_ever ? " and on" : "");
    }
};

/// A process that saves, up to its word, while some of its calls fail.
class FaultyRun {
  public:
    explicit FaultyRun(const SavePath &path) : run_([&path] { return Save_Twice(path); }) {}
    void Go_On_With(const FaultPoint &point) {
        // Who is interrupted tries again, so that for ever would be just that.
        const unsigned long last = !point.for_ever               ? point.at
                                   : point.fault->error == EINTR ? point.at + 2
                                                                 : ULONG_MAX;
        unsigned long seen = 0;
        while (Goes_On()) {
            if (!point.Is_Meant(run_) || ++seen < point.at || seen > last) continue;
            if (point.fault->error == Short)
                run_.Cut_Short();
            else
                run_.Fail(point.fault->error);
        }
    }
    /// False for one that came to its end, or crashed, before it gave its word.
    bool Gave_Its_Word() const { return gave_its_word_; }
    bool Was_Told() const { return run_.First_Argument() == Told; }
    int Exit_Code() {
        while (run_.Next_Call()) {
        }
        return run_.Exit_Code();
    }
    /// What can fail up to the word, each alone and with all that follows.
    std::vector<FaultPoint> Points() {
        std::vector<FaultPoint> points, last;
        for (const HostFault &fault : Host_Faults) last.push_back({&fault, 0, false});
        while (Goes_On()) {
            for (FaultPoint &point : last) {
                if (!point.Is_Meant(run_)) continue;
                ++point.at;
                points.push_back(point);
                points.push_back({point.fault, point.at, true});
            }
        }
        return points;
    }

  private:
    bool Goes_On() {
        if (!run_.Next_Call()) return false;
        gave_its_word_ = run_.Call() == Word_Of_The_End;
        return !gave_its_word_;
    }

    TracedRun run_;
    bool gave_its_word_ = false;
};

class HostFaults : public ::testing::TestWithParam<SavePath> {
  protected:
    HostFaults() : prepared(GetParam()) {}

    /// For each call of a save that nothing happens to, each way in which it can fail.
    std::vector<FaultPoint> Points() const {
        const SaveMachine machine(prepared);
        return FaultyRun(prepared.Path()).Points();
    }
    /// Whether it was told.
    bool Try(const FaultPoint &point) const {
        const SaveMachine machine(prepared);
        FaultyRun run(prepared.Path());
        run.Go_On_With(point);
        EXPECT_TRUE(run.Gave_Its_Word()) << point.Text() << ": ends with " << run.Exit_Code();
        const bool told = run.Was_Told();
        const std::string found = machine.Found();
        EXPECT_TRUE(found == "new" || (told && machine.May_Leave(found, point.for_ever)))
            << point.Text() << ": " << found;
        const std::string left = machine.Left_Over();
        const bool is_folder = left.find(Beside) != left.npos;
        EXPECT_TRUE(left.empty() || (is_folder && point.Sees_No_Folder())) << point.Text() << ": " << left;
        const bool is_command = GetParam().is_command;
        const int code = run.Exit_Code();
        EXPECT_TRUE(code == 0 || (is_command && code == 1)) << point.Text() << ": ends with " << code;
        EXPECT_EQ(is_command ? machine.Found_After_A_Save() : machine.Found(), "new")
            << point.Text() << ", saved again";
        return told;
    }

    const PreparedSave prepared;
};

TEST_P(HostFaults, AreToldOrDoNoHarm) {
    const std::vector<FaultPoint> points = Points();
    const unsigned long stride = Stride(points.size(), 24, GetParam().Calls_To_Try());
    unsigned long tried = 0, told = 0;
    for (std::size_t i = 0; i < points.size(); i += stride, ++tried) told += Try(points[i]);
    EXPECT_GT(tried, 10u);
    EXPECT_GT(told, tried / 10) << "many faults cannot be made good";
    Print_Figure((std::string("fault points of the host in a save: ") + GetParam().name).c_str(), tried);
}

INSTANTIATE_TEST_SUITE_P(Paths, HostFaults, ::testing::ValuesIn(Save_Paths()), Name_Of);

} // namespace
