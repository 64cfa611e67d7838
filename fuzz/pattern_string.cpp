// Pattern scanners: a text, then patterns applied to it one after another, each up to a zero byte.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/foundation/pattern_string.h>

#include <cstring>

namespace {

class Scanner : public CPatternString {
  public:
    using CPatternString::Apply_Pattern;
    using CPatternString::CPatternString;
    using CPatternString::Scan_Past;
    using CPatternString::Scan_To;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const std::string whole = input.Text();
    const ExactBytes text(whole + '\0');
    const char *const end = text.Get() + whole.size();
    Scanner scanner(text.Get());
    while (input.More()) {
        const unsigned room = input.Byte() % 32;
        const std::string given = input.Text();
        const ExactBytes pattern(given + '\0'), out(std::string(room, 'x'));
        const char *const to = scanner.Apply_Pattern(pattern.Get());
        REQUIRE(!to || (to >= text.Get() && to <= end));
        const int length = scanner.Next(pattern.Get(), out.Get(), static_cast<int>(room));
        REQUIRE(length >= 0 && length <= end - text.Get());
        if (length > 0 && room > 0) REQUIRE(std::strlen(out.Get()) <= static_cast<unsigned>(length));
        scanner.Skip(pattern.Get());
        const char *const found = scanner.Scan_To(text.Get(), pattern.Get(), room % 2, room & 2);
        REQUIRE(!found || (found >= text.Get() && found <= end));
        scanner.Scan_Past(text.Get(), pattern.Get(), room & 2);
        if (!scanner.More()) scanner.Reset();
    }
    return 0;
}
