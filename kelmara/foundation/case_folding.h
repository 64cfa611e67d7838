#pragma once
// Inside the library: how letter case is folded, a to z to A to Z and no other byte, in blocks of 16.

#include <platform/types.h>

#include <emmintrin.h>

#include <cstddef>

namespace case_folding {

inline constexpr std::size_t Block_Size = 16;

inline unsigned char Fold(unsigned char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<unsigned char>(byte - 'a' + 'A') : byte;
}

inline WCHAR Fold_Wide(WCHAR character) {
    return character >= 'a' && character <= 'z' ? static_cast<WCHAR>(character - 'a' + 'A') : character;
}

inline __m128i Load(const char *block) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(block));
}

inline __m128i Fold_Block(__m128i bytes) {
    // Shifted so that 'z' is the greatest signed byte, the letters are all above one limit.
    const __m128i shifted = _mm_add_epi8(bytes, _mm_set1_epi8(127 - 'z'));
    const __m128i letters = _mm_cmpgt_epi8(shifted, _mm_set1_epi8(127 - 26));
    return _mm_sub_epi8(bytes, _mm_and_si128(letters, _mm_set1_epi8('a' - 'A')));
}

/// Copies `size` bytes folded, reading and writing no others. The two do not overlap, unless they are the
/// same.
inline void Fold_Copy(char *target, const char *source, std::size_t size) {
    std::size_t at = 0;
    for (; at + Block_Size <= size; at += Block_Size) {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(target + at), Fold_Block(Load(source + at)));
    }
    for (; at < size; ++at) {
        target[at] = static_cast<char>(Fold(static_cast<unsigned char>(source[at])));
    }
}

} // namespace case_folding
