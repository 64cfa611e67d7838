#pragma once
// A text that ends where readable memory ends: whoever reads a byte behind its terminator, and whoever writes
// one, dies of it.

#include <cstring>
#include <string>
#include <sys/mman.h>

class GuardedText {
  public:
    explicit GuardedText(const std::string &text) {
        memory_ = static_cast<char *>(
            mmap(nullptr, Size + Guard, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(memory_ + Size, Guard, PROT_NONE);
        text_ = memory_ + Size - (text.size() + 1);
        std::memcpy(text_, text.c_str(), text.size() + 1);
    }
    ~GuardedText() { munmap(memory_, Size + Guard); }
    GuardedText(const GuardedText &) = delete;
    GuardedText &operator=(const GuardedText &) = delete;

    operator char *() const { return text_; }

  private:
    static constexpr std::size_t Size = 8192, Guard = 4096;
    char *memory_, *text_;
};
