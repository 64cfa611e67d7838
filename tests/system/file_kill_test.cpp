// A process killed at any call of the host in the middle of a save leaves the old file or the new one.

#include <tests/support/file_verbs.h>

#include <kelmara/system/file.h>

#include <csignal>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const std::string Old = "old content", New(20000, 'n');

// What is at the target stays under another name until the new file has the target's.
bool Save() {
    CKMFile file;
    if (file.Open_With_Rollback("c:\\target") != 0) return false;
    if (file.Write(New.data(), static_cast<long>(New.size()), false) != 0) return false;
    Machine_Rename("c:\\target", "c:\\backup");
    if (file.Close() != 0) return false;
    Machine_Remove("c:\\backup");
    return true;
}

/// Saves in a child that stops before and behind each call of the host.
class StoppedSave {
  public:
    StoppedSave() {
        id_ = fork();
        if (id_ == 0) {
            ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            raise(SIGSTOP);
            _exit(Save() ? 0 : 1);
        }
        waitpid(id_, &status_, 0);
    }
    /// False when it has ended before.
    bool Go_To_Stop(int number) {
        for (int stop = 0; stop < number; ++stop) {
            ptrace(PTRACE_SYSCALL, id_, nullptr, nullptr);
            waitpid(id_, &status_, 0);
            if (!WIFSTOPPED(status_)) return false;
        }
        return true;
    }
    void Kill() {
        kill(id_, SIGKILL);
        waitpid(id_, &status_, 0);
    }
    bool Ended_Well() const { return WIFEXITED(status_) && WEXITSTATUS(status_) == 0; }

  private:
    pid_t id_ = -1;
    int status_ = 0;
};

class KilledSaves : public FileTest {
  protected:
    void Put_Back(bool with_old) {
        std::filesystem::remove_all(On("drive_c"));
        std::filesystem::create_directory(On("drive_c"));
        std::filesystem::current_path(On("drive_c"));
        if (with_old) machine.Write("drive_c/target", Old);
    }
    bool Has(const std::string &name, const std::string &content) {
        return Is_There("drive_c/" + name) && machine.Read("drive_c/" + name) == content;
    }
    /// What stands where after each kill, in words.
    std::set<std::string> Outcomes(bool with_old) {
        std::set<std::string> outcomes;
        for (int stop = 1;; ++stop) {
            Put_Back(with_old);
            StoppedSave save;
            const bool stopped = save.Go_To_Stop(stop);
            if (stopped) save.Kill();
            std::string outcome = Has("target", New)           ? "new"
                                  : Has("target", Old)         ? "old"
                                  : Is_There("drive_c/target") ? "damaged"
                                                               : "none";
            if (outcome == "none" && with_old && Has("backup", Old)) outcome = "old aside";
            outcomes.insert(outcome);
            if (stopped) continue;
            EXPECT_TRUE(save.Ended_Well());
            EXPECT_EQ(Found("*"), "target");
            EXPECT_GT(stop, 20) << "a save takes many calls";
            return outcomes;
        }
    }
};

TEST_F(KilledSaves, LeaveTheOldFileOrTheNewOneAtEveryCall) {
    EXPECT_EQ(Outcomes(false), (std::set<std::string>{"none", "new"}));
    EXPECT_EQ(Outcomes(true), (std::set<std::string>{"old", "old aside", "new"}));
}

} // namespace
