// Formats out of a string table: any format, given words that are numbers or texts, whatever it takes them
// for.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/localization/table_format.h>

#include <cstring>
#include <utility>

namespace {

constexpr std::size_t Most_Words = 64;

void Format(char *out, std::size_t size, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Format_By_Table(out, size, format, arguments);
    va_end(arguments);
}

template <std::size_t... Index>
void Format_Words(const ExactBytes &out, const ExactBytes &format, const std::uint32_t (&words)[Most_Words],
                  std::index_sequence<Index...>) {
    Format(out.Get(), static_cast<std::size_t>(out.Size()), format.Get(), words[Index]...);
}

} // namespace

// First the room, then which words are a text and what the others are, the text, and the format. Numbers are
// no places that can be read.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const unsigned room = 1 + input.Byte();
    const unsigned texts = input.Byte();
    const std::uint32_t number = input.Byte() - 128;
    const ExactBytes text(input.Text() + '\0'), format(input.Text() + '\0'), out(std::string(room, 'x'));
    const auto place = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(text.Get()));
    std::uint32_t words[Most_Words];
    for (std::size_t i = 0; i < Most_Words; ++i) words[i] = texts >> i % 8 & 1 ? place : number;
    Format_Words(out, format, words, std::make_index_sequence<Most_Words>());
    REQUIRE(std::memchr(out.Get(), 0, room));
    return 0;
}
