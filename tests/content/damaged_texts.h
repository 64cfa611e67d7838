#pragma once
// What a parser must stand: a text in a block of exactly its size, and every way of damaging a good one a
// bit.

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

/// Calls `use(text)` for each of its beginnings, and for it with each single bit turned and each single byte
/// left out.
template <class Use>
void For_Each_Damage(const std::string &text, Use use) {
    for (std::size_t place = 0; place < text.size(); ++place) {
        use(text.substr(0, place));
        use(text.substr(0, place) + text.substr(place + 1));
        for (int bit = 0; bit < 8; ++bit) {
            std::string turned = text;
            turned[place] = static_cast<char>(turned[place] ^ 1 << bit);
            use(turned);
        }
    }
}
