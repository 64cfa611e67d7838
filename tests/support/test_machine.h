#pragma once
// A fresh machine for a test: a folder of its own, entered by this process and by the second processes it
// starts, and removed with everything that the machine had.

#include <platform/machine.h>

#include <gtest/gtest.h>

#include <string>

class TestMachine {
  public:
    TestMachine();
    ~TestMachine();
    TestMachine(const TestMachine &) = delete;
    TestMachine &operator=(const TestMachine &) = delete;

    const std::string &Folder() const { return folder_; }
    /// `relative` below the folder, as a host path.
    std::string Path(const std::string &relative) const { return folder_ + "/" + relative; }
    /// Where the host's shared memory has what the machine shares; it need not be there.
    std::string Shared_Folder() const;
    /// Writes a file below the folder, with the folders that lead to it.
    void Write(const std::string &relative, const std::string &content) const;
    std::string Read(const std::string &relative) const;
    /// Stands in machine.conf from now on, beside what stands there.
    void Set(const std::string &setting, const std::string &value) const;

  private:
    std::string folder_;
};

/// The fixture of most tests: a fresh machine, and no handle left open at the end.
class MachineTest : public ::testing::Test {
  protected:
    void SetUp() override { handles_before_ = Open_Handle_Count(); }
    void TearDown() override { EXPECT_EQ(Open_Handle_Count(), handles_before_) << "handles left open"; }

    TestMachine machine;

  private:
    unsigned long handles_before_ = 0;
};
