#pragma once
// A shared block whose bytes are damaged under its users' hands, and put back behind each input.

#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <algorithm>
#include <string>

class DamagedBlock {
  public:
    /// Somebody has it open, with what is to stand in it at the beginning of every input.
    DamagedBlock(const std::string &name, std::size_t contents)
        : size_(Shared_File_Header + contents), file_(Map_Shared_File("block-" + name, size_)) {
        REQUIRE(file_);
        whole_.assign(file_, size_);
    }

    /// Up to eight bytes of the input, at a word of the file that is not in front of `first`.
    void Damage(FuzzInput &input, std::size_t first) {
        const std::size_t word = static_cast<std::uint16_t>(input.Short());
        const std::string_view bytes = input.Take(1 + input.Byte() % 8);
        std::copy(bytes.begin(), bytes.end(), file_ + first + word * 4 % (size_ - first - 8));
    }
    void Put_Back() { std::copy(whole_.begin(), whole_.end(), file_); }

  private:
    const std::size_t size_;
    char *const file_;
    std::string whole_;
};
