#pragma once
// Folders copied while programs use them: each file as it stood at one moment.
//
// A file that changes while it is copied is copied again, a few times; one that goes on changing is kept as
// it was read last, and told of. Links stay links, and lead to the copy of what is copied with them and to
// the same place otherwise; permissions and times are kept, owners are not. What is no file, folder or link
// is left out, and told of.

#include <tools/progress.h>

#include <string>
#include <sys/stat.h>
#include <vector>

namespace tools {

/// Entries at and below `path`, links not followed. What cannot be read counts as one.
std::size_t Entries_Below(const std::string &path);

class TreeCopy {
  public:
    /// A relative link that leads out of `whole`, a folder of the host without links in its path, is written
    /// as an absolute one, and one that leads into it by way of outside as a relative one.
    TreeCopy(std::string whole, Progress &progress) : whole_(std::move(whole)), progress_(progress) {}

    /// `to` must not be there. What is gone by its turn is left out. Fails, with 2, for what cannot be read
    /// or written; what was copied so far stays, in folders that can be emptied.
    void Copy(const std::string &from, const std::string &to);
    /// Gives the copied folders their permissions and times.
    void Finish();
    /// A line for each thing that is not as its original.
    const std::vector<std::string> &Remarks() const { return remarks_; }

  private:
    struct Folder {
        std::string path;
        struct stat original;
    };
    void Copy_Entry(const std::string &from, const std::string &to, const struct stat &original);
    void Copy_Folder(const std::string &from, const std::string &to, const struct stat &original);
    bool Stays_Within(const std::string &folder, const std::string &target) const;
    std::string Target_For_Copy(const std::string &link, const std::string &target) const;
    void Copy_Link(const std::string &from, const std::string &to);
    void Copy_File(const std::string &from, const std::string &to);

    const std::string whole_;
    Progress &progress_;
    std::vector<Folder> folders_;
    std::vector<std::string> remarks_;
};

} // namespace tools
