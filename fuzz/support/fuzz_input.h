#pragma once
// What a fuzz target is given: bytes that decide what it does, taken from the front one after another, and
// the failure that it answers a broken rule with.
//
// A target is one function, LLVMFuzzerTestOneInput. libFuzzer calls it with what it makes up, and in every
// other build a plain main with the files of its corpus. Nothing of one input may be left for the next.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

extern "C" {
int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
/// What is done before the first input, for all targets (fuzz_machine.cpp).
int LLVMFuzzerInitialize(int *count, char ***arguments);
}

class FuzzInput {
  public:
    FuzzInput(const std::uint8_t *data, std::size_t size)
        : rest_(reinterpret_cast<const char *>(data), size) {}

    bool More() const { return !rest_.empty(); }
    std::string_view Take(std::size_t size) {
        const std::string_view taken = rest_.substr(0, size);
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view Rest() { return Take(rest_.size()); }
    /// 0 behind the end, as all numbers.
    unsigned Byte() {
        const std::string_view taken = Take(1);
        return taken.empty() ? 0 : static_cast<unsigned char>(taken[0]);
    }
    long Short() { return static_cast<std::int16_t>(Byte() | Byte() << 8); }
    std::uint32_t Word() {
        const std::uint32_t low = Byte() | Byte() << 8;
        return low | Byte() << 16 | Byte() << 24;
    }
    /// Up to the next `end`, which is taken too, or all that is left; no zero byte is in it.
    std::string Text(char end = '\0') {
        std::string text(Take(rest_.find(end)));
        Take(1);
        return text.substr(0, text.find('\0'));
    }

  private:
    std::string_view rest_;
};

/// A copy in a block of exactly its size, so that the sanitizer sees what is read or written behind it.
class ExactBytes {
  public:
    explicit ExactBytes(std::string_view bytes) : bytes_(new char[bytes.size()]), size_(bytes.size()) {
        bytes.copy(bytes_.get(), bytes.size());
    }
    char *Get() const { return bytes_.get(); }
    long Size() const { return static_cast<long>(size_); }

  private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_;
};

[[noreturn]] inline void Fail(const char *file, int line, const char *condition) {
    std::fprintf(stderr, "%s:%d: not so: %s\n", file, line, condition);
    std::abort();
}

#define REQUIRE(condition) ((condition) ? void() : Fail(__FILE__, __LINE__, #condition))
