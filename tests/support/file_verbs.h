#pragma once
// A machine to try file calls on, with the current directory on its c:, and what the calls answer as numbers.

#include <platform/files.h>
#include <platform/kernel.h>
#include <platform/runtime.h>

#include <tests/support/test_machine.h>

#include <filesystem>
#include <vector>

/// Inputs by what they should give, several in a row.
template <class Outcome>
using ByOutcome = std::vector<std::pair<Outcome, std::vector<std::string>>>;

class FileTest : public MachineTest {
  protected:
    void SetUp() override {
        MachineTest::SetUp();
        before_ = std::filesystem::current_path();
        std::filesystem::create_directories(On("drive_c"));
        std::filesystem::current_path(On("drive_c"));
    }
    void TearDown() override {
        std::filesystem::current_path(before_);
        MachineTest::TearDown();
    }

    std::string On(const std::string &relative) const { return machine.Path(relative); }
    bool Is_There(const std::string &relative) const {
        return std::filesystem::exists(std::filesystem::symlink_status(On(relative)));
    }
    void Write_Protect(const std::string &relative) const {
        std::filesystem::permissions(On(relative), std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::remove);
    }

    /// 0 for TRUE, else the last error.
    static long Error_Of(BOOL done) { return done ? 0 : static_cast<long>(GetLastError()); }
    static long Create(const std::string &path) { return Error_Of(CreateDirectoryA(path.c_str(), nullptr)); }
    static long Remove(const std::string &path) { return Error_Of(RemoveDirectoryA(path.c_str())); }
    static long Delete(const std::string &path) { return Error_Of(DeleteFileA(path.c_str())); }
    static long Go_To(const std::string &path) { return Error_Of(SetCurrentDirectoryA(path.c_str())); }
    /// The attributes, or minus the last error.
    static long Attributes(const std::string &path) {
        const DWORD attributes = GetFileAttributesA(path.c_str());
        return attributes == INVALID_FILE_ATTRIBUTES ? -static_cast<long>(GetLastError())
                                                     : static_cast<long>(attributes);
    }
    /// "name name ..." of all that is found, or "error N"; the last error at the end must be 18.
    static std::string Found(const std::string &pattern) {
        WIN32_FIND_DATAA data;
        const HANDLE find = FindFirstFileA(pattern.c_str(), &data);
        if (find == INVALID_HANDLE_VALUE) return "error " + std::to_string(GetLastError());
        std::string names = data.cFileName;
        while (FindNextFileA(find, &data)) names += std::string(" ") + data.cFileName;
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_FILES));
        EXPECT_TRUE(FindClose(find));
        return names;
    }

  private:
    std::filesystem::path before_;
};
