#pragma once
// An empty folder for a passing machine: of this user alone, and where nothing waits for a disk. TMPDIR names
// the place; without it that is the host's shared memory (/dev/shm) where there is room, else /tmp.
//
// In shared memory nobody clears up what a killed command leaves: the next one takes it away. A folder that
// is in use is known by its lock.

#include <string>
#include <vector>

namespace tools {

/// Where a folder may be made, the best place first; each ends without a slash.
std::vector<std::string> Passing_Places();

class PassingFolder {
  public:
    /// Not made, with errno set, where it cannot be.
    explicit PassingFolder(const std::string &place);
    /// The folder is left to whoever filled it.
    ~PassingFolder();
    PassingFolder(const PassingFolder &) = delete;
    PassingFolder &operator=(const PassingFolder &) = delete;

    bool Is_Made() const { return is_made_; }
    const std::string &Path() const { return path_; }
    /// To be called once the machine is made, which locks the folder itself for a moment.
    void Hold();

  private:
    std::string path_;
    bool is_made_ = false;
    int lock_ = -1;
};

/// Takes away the machines that killed commands of this user left in that place a minute ago or earlier.
void Remove_Left_Machines(const std::string &place);

} // namespace tools
