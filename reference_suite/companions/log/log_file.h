#pragma once
// The HTML file that all processes of a machine write their entries to.
//
// Each entry is one line. Whoever writes has the machine-wide lock, and looks first where the last whole line
// ends: what a killed writer, or a full disk, left behind that is written over. The head stands on the first
// line, and is written with the first entry. The file is open only while an entry is written, so that a user
// can read, rename and delete it at any time. Any thread may write.

#include <reference_suite/companions/log/shared_objects.h>

#include <atomic>
#include <string>
#include <string_view>

class LogFile {
  public:
    /// The file need not be there yet. A code of platform/errors.h when it has no folder to lie in, or the
    /// lock is not to be had.
    static long Open(std::shared_ptr<LogFile> &file);

    /// An entry that cannot be written is counted, and the next one that can says how many they were.
    void Write(std::string_view text);

  private:
    std::string Lines_Of(std::string_view text, unsigned long lost) const;
    bool Append(const std::string &lines);

    OwnedHandle lock_;
    std::string path_;    // a Windows path
    std::string process_; // the program's name and the process's number
    std::atomic<unsigned long> lost_{0};
};
