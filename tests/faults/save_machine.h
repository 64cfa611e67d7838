#pragma once
// A machine for one save: what a row prepares, and what a child sees of it. The test's own process never
// opens anything on it.

#include <tests/faults/save_paths.h>
#include <tests/faults/traced_run.h>
#include <tests/support/test_machine.h>

#include <platform/machine.h>

#include <algorithm>
#include <filesystem>

/// By its number a machine finds what it has in shared memory, to take it away at its end.
inline void Copy_All_But_Its_Number(const std::string &from, const std::string &to) {
    for (const auto &entry : std::filesystem::directory_iterator(from)) {
        if (entry.path().filename() == "machine.id") continue;
        std::filesystem::copy(entry.path(), std::filesystem::path(to) / entry.path().filename(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::copy_symlinks |
                                  std::filesystem::copy_options::overwrite_existing);
    }
}

/// What a row's preparation leaves on a machine, kept aside.
class PreparedSave {
  public:
    explicit PreparedSave(const SavePath &path) : path_(path) {
        const TestMachine machine;
        Seen_By_Another([&] { return path.prepare(), std::string(); });
        Copy_All_But_Its_Number(machine.Folder(), kept_.Folder());
    }
    const SavePath &Path() const { return path_; }
    const std::string &Folder() const { return kept_.Folder(); }

  private:
    const SavePath &path_;
    TestMachine kept_;
};

class SaveMachine {
  public:
    explicit SaveMachine(const PreparedSave &prepared) : path_(prepared.Path()), kept_(prepared.Folder()) {
        Copy_All_But_Its_Number(prepared.Folder(), machine_.Folder());
    }
    ~SaveMachine() {
        const std::filesystem::path folder = machine_.Folder();
        for (const auto &entry : std::filesystem::directory_iterator(folder.parent_path())) {
            if (!entry.path().string().starts_with(folder.string() + Beside)) continue;
            if (!Remove_Machine(entry.path().c_str())) std::filesystem::remove_all(entry);
        }
    }
    SaveMachine(const SaveMachine &) = delete;
    SaveMachine &operator=(const SaveMachine &) = delete;
    /// What a process that starts now finds.
    std::string Found() const { return Seen_By_Another(path_.look); }
    /// Whether that is what was there before, if under another name.
    bool Is_As_Before(const std::string &found) const {
        const std::string before = path_.before;
        return found == before || found == before + " aside";
    }
    /// Whether that may be so: of a save that was `cut_off`, killed or with nothing that works any more.
    bool May_Leave(const std::string &found, bool cut_off) const {
        const bool partly = path_.way == SaveWay::In_Steps || (path_.way == SaveWay::Takes_Back && cut_off);
        return found == "new" || Is_As_Before(found) || (found == "partly" && partly);
    }
    /// The working files that are there.
    std::string Left_Over() const {
        namespace fs = std::filesystem;
        std::error_code none;
        const fs::path folder = machine_.Folder(), saved = folder / "drive_c";
        std::string left;
        for (const auto &entry : fs::recursive_directory_iterator(saved, none)) {
            const std::string name = fs::relative(entry.path(), saved);
            if (!fs::exists(kept_ / "drive_c" / name) && name != "target" && name != "backup")
                left += name + " ";
        }
        for (const auto &entry : fs::directory_iterator(folder / "registry", none)) {
            if (entry.path().extension() == ".new") left += entry.path().filename().string() + " ";
        }
        const std::string beside = folder.filename().string() + Beside;
        for (const auto &entry : fs::directory_iterator(folder.parent_path())) {
            const std::string name = entry.path().filename();
            if (name.starts_with(beside) && name != beside) left += name + " ";
        }
        return left;
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
    const std::filesystem::path kept_;
};

inline std::vector<SavePath> Save_Paths() {
    std::vector<SavePath> paths = Library_Save_Paths();
    for (const SavePath &path : Command_Save_Paths()) paths.emplace_back(path).is_command = true;
    return paths;
}

inline std::string Name_Of(const ::testing::TestParamInfo<SavePath> &path) {
    std::string name = path.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}
