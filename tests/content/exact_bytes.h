#pragma once
// What a parser is given: a text in a block of exactly its size.

#include <memory>
#include <string>

/// The bytes of a text without a terminator: under the sanitizers, whoever reads beside them is found out.
class ExactBytes {
  public:
    explicit ExactBytes(const std::string &text)
        : bytes_(new char[text.size()]), size_(static_cast<long>(text.size())) {
        text.copy(bytes_.get(), text.size());
    }
    char *Get() const { return bytes_.get(); }
    long Size() const { return size_; }

  private:
    std::unique_ptr<char[]> bytes_;
    long size_;
};
