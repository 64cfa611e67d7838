#pragma once
// What a check of a machine finds.

#include <string>
#include <vector>

namespace tools {

struct Finding {
    std::string text;
    bool is_machine_text; // in the machine's code page; otherwise bytes of the host, as its paths are
    std::string mended;   // what was done about it; empty: nothing
};

class Findings {
  public:
    void Add(const std::string &text) { all_.push_back({text, false, ""}); }
    void Add_Machine_Text(const std::string &text) { all_.push_back({text, true, ""}); }
    /// Beside the last one.
    void Mended(const std::string &how) { all_.back().mended = how; }
    const std::vector<Finding> &All() const { return all_; }

  private:
    std::vector<Finding> all_;
};

/// Each looks at one thing on the machine, and mends what it can with `repair`.
void Check_Settings(Findings &findings);
void Check_Registry(Findings &findings, bool repair);
void Check_Blocks(Findings &findings);
void Check_Classes(Findings &findings, bool repair);
void Check_Atoms(Findings &findings, bool repair);
void Check_Instances(Findings &findings, bool repair);
void Check_Working_Files(Findings &findings, bool repair);

} // namespace tools
