#include <tests/platform/started.h>
#include <tests/support/file_verbs.h>
#include <tests/support/second_process.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <future>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Streams = FileTest;
using Renaming = FileTest;

// What the call set errno to, 0 when it gave a stream, which is closed again.
int Errno_Of_Opening(const char *path, const char *mode) {
    errno = 0;
    FILE *stream = Machine_Open_Stream(path, mode);
    if (stream) fclose(stream);
    return stream ? 0 : errno;
}

int Errno_Of(int result) {
    return result == 0 ? 0 : errno;
}

TEST_F(Streams, AreRefusedWithTheirReasonAndNothingIsTouched) {
    machine.Write("drive_c/file", "12345");
    machine.Write("drive_c/protected", "12345");
    Write_Protect("drive_c/protected");
    std::filesystem::create_directory(On("drive_c/folder"));
    ASSERT_EQ(mkfifo(On("drive_c/pipe").c_str(), 0600), 0);
    struct Refused {
        int error;
        long last_error;
        std::vector<const char *> modes, paths;
    };
    const std::vector<const char *> writing = {"wb", "ab", "r+b"}, all = {"rb", "wb", "ab"};
    for (const auto &[error, last_error, modes, paths] : std::vector<Refused>{
             {ENOENT, ERROR_FILE_NOT_FOUND, {"rb", "r+b"}, {"none"}},
             {ENOENT, ERROR_FILE_NOT_FOUND, all, {"new\\"}},
             {ENOENT, ERROR_PATH_NOT_FOUND, all, {"no\\where", "file\\x", "", nullptr}},
             {EINVAL, ERROR_INVALID_NAME, all, {"file\\", "a?b"}},
             {EACCES, ERROR_ACCESS_DENIED, all, {"folder", "c:\\", "pipe"}},
             {EACCES, ERROR_ACCESS_DENIED, writing, {"protected"}},
             {EEXIST, ERROR_FILE_EXISTS, {"wbx", "w+bx"}, {"FILE", "folder", "protected"}},
             {EINVAL, ERROR_INVALID_PARAMETER, {"w", "xb", "", nullptr}, {"file", "none"}}}) {
        for (const char *path : paths) {
            for (const char *mode : modes) {
                EXPECT_EQ(Errno_Of_Opening(path, mode), error)
                    << (path ? path : "null") << " " << (mode ? mode : "null");
                EXPECT_EQ(GetLastError(), static_cast<DWORD>(last_error))
                    << (path ? path : "null") << " " << (mode ? mode : "null");
            }
        }
    }
    EXPECT_EQ(machine.Read("drive_c/file") + machine.Read("drive_c/protected"), "1234512345");
    EXPECT_EQ(Found("*"), "file folder pipe protected");
}

SECOND_PROCESS(file_holder) {
    FILE *stream = Machine_Open_Stream("c:\\file", "rb");
    process.Tell(stream ? "open" : "not open");
    while (!process.Hear().empty()) {
    }
    return 0;
}

TEST_F(Streams, KeepTheirFileFromBeingDeletedByAnyProcess) {
    machine.Write("drive_c/file", "x");
    SecondProcess holder("file_holder");
    ASSERT_EQ(holder.Hear(), "open");
    EXPECT_EQ(Errno_Of(Machine_Remove("file")), EACCES);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(Errno_Of(Machine_Rename("file", "other")), EACCES);
    EXPECT_EQ(Errno_Of_Opening("FILE", "r+b"), 0) << "others may open it";
    holder.Kill();
    holder.Wait();
    EXPECT_EQ(Errno_Of(Machine_Remove("file")), 0);
}

// Children that have what this process had open, and never become another program.
class IdleChildren {
  public:
    ~IdleChildren() {
        for (const pid_t id : ids_) {
            kill(id, SIGKILL);
            waitpid(id, nullptr, 0);
        }
    }
    void Fork() {
        const pid_t id = fork();
        while (id == 0) pause();
        ids_.push_back(id);
    }

  private:
    std::vector<pid_t> ids_;
};

TEST_F(Streams, AndTheMakingOfNamesAreNotHeldUpByForkedChildren) {
    FILE *stream = Machine_Open_Stream("file", "wb");
    ASSERT_NE(stream, nullptr);
    const auto Make_Names = [](std::string name) {
        for (int i = 0; i < 1000; ++i) Create(name + std::to_string(i)), Remove(name + std::to_string(i));
    };
    auto making = std::async(std::launch::async, Make_Names, "name");
    bool done = false;
    {
        IdleChildren children;
        for (int i = 0; i < 50; ++i, usleep(1000)) children.Fork();
        done = making.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
        EXPECT_EQ(Errno_Of(Machine_Close_Stream(stream)), 0);
        EXPECT_EQ(Errno_Of(Machine_Remove("file")), 0);
    }
    EXPECT_TRUE(done) << "a child had the lock";
}

// A process that is stopped while it makes a name.
TEST_F(Streams, AndTheMakingOfNamesFailInTimeWhereALockIsHeld) {
    EXPECT_TRUE(CreateDirectoryA("c:\\first", nullptr));
    const int lock = open(On("names.lock").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    auto mutex = std::async(std::launch::async,
                            [] { return Error_Of(CreateMutexA(nullptr, FALSE, "second") != nullptr); });
    EXPECT_EQ(Error_Of(CreateDirectoryA("c:\\second", nullptr)), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(mutex.get(), ERROR_SHARING_VIOLATION);
    flock(lock, LOCK_UN);
    close(lock);
    EXPECT_TRUE(CreateDirectoryA("c:\\second", nullptr));
}

TEST_F(Renaming, SucceedsRightAfterClosingWhateverIsStarted) {
    std::atomic<bool> enough{false};
    std::thread starting([&] {
        while (!enough) {
            PROCESS_INFORMATION started = {};
            char line[] = "z:\\bin\\true";
            if (!Start(started, line)) break;
            CloseHandle(started.hThread);
            CloseHandle(started.hProcess);
        }
    });
    for (int i = 0; i < 500; ++i) {
        FILE *stream = Machine_Open_Stream("new", "wb");
        EXPECT_TRUE(stream);
        if (!stream) break;
        fputs("saved", stream);
        EXPECT_EQ(Errno_Of(Machine_Close_Stream(stream)), 0);
        EXPECT_EQ(Errno_Of(Machine_Rename("new", "saved")), 0) << i;
        EXPECT_EQ(machine.Read("drive_c/saved"), "saved");
        EXPECT_EQ(Errno_Of(Machine_Remove("saved")), 0) << i;
    }
    EXPECT_FALSE(enough.exchange(true));
    starting.join();
    FILE *full = Machine_Open_Stream("z:\\dev\\full", "wb");
    fputs("lost", full);
    EXPECT_EQ(Errno_Of(Machine_Close_Stream(full)), ENOSPC);
    EXPECT_EQ(Errno_Of(Machine_Close_Stream(nullptr)), EINVAL);
}

TEST_F(Renaming, FailsWhenTheTargetIsThere) {
    machine.Write("drive_c/from", "from");
    machine.Write("drive_c/To", "to");
    std::filesystem::create_directory(On("drive_c/folder"));
    std::filesystem::create_symlink("nowhere", On("drive_c/link"));
    for (const char *taken : {"To", "c:\\TO", "folder", "link", "FOLDER"}) {
        EXPECT_EQ(Errno_Of(Machine_Rename("from", taken)), EEXIST) << taken;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
        EXPECT_EQ(Errno_Of(Machine_Rename("folder", "to")), EEXIST);
    }
    EXPECT_EQ(Errno_Of(Machine_Rename("none", "new")), ENOENT);
    EXPECT_EQ(Errno_Of(Machine_Rename("from", "no\\where")), ENOENT);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(Errno_Of(Machine_Rename("from", "new\\")), EINVAL);
    EXPECT_EQ(Errno_Of(Machine_Rename("c:\\", "new")), EACCES);
    EXPECT_EQ(Errno_Of(Machine_Rename("folder", "folder\\inside")), EACCES);
    EXPECT_EQ(Found("*"), "folder from link To");
    EXPECT_EQ(machine.Read("drive_c/from") + machine.Read("drive_c/To"), "fromto");
}

TEST_F(Renaming, MovesFilesFoldersAndLetterCase) {
    machine.Write("drive_c/from", "from");
    machine.Write("drive_c/folder/x", "x");
    Write_Protect("drive_c/from");
    EXPECT_EQ(Errno_Of(Machine_Rename("FROM", "folder\\To")), 0);
    EXPECT_EQ(machine.Read("drive_c/folder/To"), "from");
    EXPECT_EQ(Errno_Of(Machine_Rename("folder", "Other")), 0);
    EXPECT_EQ(Errno_Of(Machine_Rename("OTHER\\to", "other\\TO")), 0);
    EXPECT_EQ(Errno_Of(Machine_Rename("other\\TO", "other\\TO")), 0);
    EXPECT_EQ(Found("Other\\*"), ". .. TO x");
    EXPECT_EQ(Found("*"), "Other");
    machine.Write("drive_d/x", "x");
    EXPECT_EQ(Errno_Of(Machine_Rename("other\\x", "d:\\X")), EEXIST);
    EXPECT_EQ(Errno_Of(Machine_Rename("other\\x", "d:\\y")), 0) << "both drives are one disk of the host";
    EXPECT_EQ(Found("other\\*") + Found("d:\\*"), ". .. TOx y");
    machine.Write("drive_c/apart", "x");
    if (access("/dev/shm", W_OK) != 0) return;
    EXPECT_EQ(Errno_Of(Machine_Rename("apart", "z:\\dev\\shm\\kelmara-test-apart")), EXDEV);
    EXPECT_EQ(machine.Read("drive_c/apart"), "x");
}

// Makes names in three letter cases as fast as it can, and says how often it was the one who did.
SECOND_PROCESS(name_maker) {
    const std::string spelling = process.Arguments().at(0);
    int made = 0;
    for (int i = 0; i < 200; ++i) {
        const std::string number = std::to_string(i);
        made += CreateDirectoryA(("c:\\" + spelling + number).c_str(), nullptr);
        if (FILE *stream = Machine_Open_Stream(("c:\\x" + spelling + number).c_str(), "ab")) fclose(stream);
        const std::string mine = "c:\\work " + spelling + number;
        if (FILE *stream = Machine_Open_Stream(mine.c_str(), "wb")) fclose(stream);
        made += Machine_Rename(mine.c_str(), ("c:\\y" + spelling + number).c_str()) == 0;
    }
    process.Tell(std::to_string(made));
    return 0;
}

TEST_F(Renaming, AndMakingNeverLeaveASecondSpelling) {
    std::vector<std::unique_ptr<SecondProcess>> makers;
    for (const char *spelling : {"name", "NAME", "Name"}) {
        makers.push_back(std::make_unique<SecondProcess>("name_maker", std::vector<std::string>{spelling}));
    }
    int made = 0;
    for (const auto &maker : makers) made += std::stoi(maker->Hear());
    EXPECT_EQ(made, 400) << "each name was made once";
    for (const char *pattern : {"name*", "xname*", "yname*"}) {
        const std::string names = Found(pattern);
        EXPECT_EQ(std::count(names.begin(), names.end(), ' '), 199) << pattern;
    }
}

} // namespace
