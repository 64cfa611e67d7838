#pragma once
// A machine for one save: what a row prepares, and what a child sees of it. The test's own process never
// opens anything on it.

#include <tests/faults/save_paths.h>
#include <tests/faults/traced_run.h>
#include <tests/support/test_machine.h>

#include <algorithm>
#include <filesystem>

/// What a row's preparation leaves on a machine, kept aside.
class PreparedSave {
  public:
    explicit PreparedSave(const SavePath &path) : path_(path) {
        const TestMachine machine;
        Seen_By_Another([&] { return path.prepare(), std::string(); });
        std::filesystem::copy(machine.Folder(), kept_.Folder(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
    }
    const SavePath &Path() const { return path_; }
    const std::string &Folder() const { return kept_.Folder(); }

  private:
    const SavePath &path_;
    TestMachine kept_;
};

class SaveMachine {
  public:
    explicit SaveMachine(const PreparedSave &prepared) : path_(prepared.Path()) {
        std::filesystem::copy(prepared.Folder(), machine_.Folder(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
    }
    /// What a process that starts now finds.
    std::string Found() const { return Seen_By_Another(path_.look); }
    /// Whether that is what was there before, if under another name.
    bool Is_As_Before(const std::string &found) const {
        const std::string before = path_.before;
        return found == before || found == before + " aside";
    }
    /// A save by a process that starts now: what is found then, or "not saved".
    std::string Found_After_A_Save() const {
        const std::string saved =
            Seen_By_Another([this] { return std::string(path_.save() ? "saved" : ""); });
        return saved == "saved" ? Found() : "not saved";
    }

  private:
    TestMachine machine_;
    const SavePath &path_;
};

inline std::string Name_Of(const ::testing::TestParamInfo<SavePath> &path) {
    std::string name = path.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}
