#include <platform/registry/names.h>

#include <platform/kernel/capital_letters.h>

#include <array>
#include <cstdint>

namespace {

// 0x80 to 0x9F; those that the code page leaves open stand for themselves.
constexpr std::uint16_t Upper_Controls[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                              0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                              0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                              0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr std::array<std::uint16_t, 256> Make_Folded() {
    std::array<std::uint16_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        const unsigned capital = Capital_Of(byte);
        const bool moved = capital >= 0x80 && capital <= 0x9F;
        table[byte] = moved ? Upper_Controls[capital - 0x80] : static_cast<std::uint16_t>(capital);
    }
    return table;
}

constexpr std::array<std::uint16_t, 256> Folded = Make_Folded();
static_assert(Folded['a'] == Folded['A'] && Folded[0xFF] == Folded[0x9F] && Folded[0x9A] == Folded[0x8A]);
static_assert(Folded[0xF7] != Folded[0xD7] && Folded[0xDF] == 0xDF);

std::uint16_t Fold(char character) {
    return Folded[static_cast<unsigned char>(character)];
}

} // namespace

int Compare_Names(std::string_view left, std::string_view right) {
    const std::size_t shared = left.size() < right.size() ? left.size() : right.size();
    for (std::size_t i = 0; i < shared; ++i) {
        const int difference = Fold(left[i]) - Fold(right[i]);
        if (difference != 0) return difference;
    }
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

std::size_t Hash_Of_Name(std::string_view name) {
    std::uint32_t hash = 2166136261u;
    for (const char character : name) hash = (hash ^ Fold(character)) * 16777619u;
    return hash ^ hash >> 15;
}
