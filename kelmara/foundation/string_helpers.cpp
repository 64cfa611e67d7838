#include <kelmara/foundation/string_helpers.h>

#include <kelmara/foundation/case_folding.h>
#include <kelmara/foundation/memory.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

namespace {

using case_folding::Fold;
using case_folding::Fold_Block;
using case_folding::Fold_Copy;
using case_folding::Fold_Wide;
using case_folding::Load;

constexpr std::size_t Short_Length = 255;       // characters, without the terminator
constexpr std::size_t Longest_Wide_Text = 1023; // likewise
constexpr char Quote = '"';

constinit char *Scan_Position = nullptr; // of smartok, null when there is no scan

class WorkBlock {
  public:
    explicit WorkBlock(std::uint64_t size)
        : m_Block(size <= LONG_MAX ? ds_malloc(static_cast<long>(size)) : nullptr) {}
    ~WorkBlock() {
        if (m_Block) ds_free(m_Block);
    }
    WorkBlock(const WorkBlock &) = delete;
    WorkBlock &operator=(const WorkBlock &) = delete;

    explicit operator bool() const { return m_Block != nullptr; }
    template <class Char = char>
    Char *As() const {
        return static_cast<Char *>(m_Block);
    }

  private:
    void *m_Block;
};

int Sign(int difference) {
    return (difference > 0) - (difference < 0);
}

int Compare_Folded_Bytes(const char *a, const char *b, std::size_t size) {
    for (std::size_t at = 0; at < size; ++at) {
        const int difference =
            Fold(static_cast<unsigned char>(a[at])) - Fold(static_cast<unsigned char>(b[at]));
        if (difference != 0) return Sign(difference);
    }
    return 0;
}

// One bit for each of the 16 bytes that differ.
unsigned Differences(__m128i a, __m128i b) {
    const __m128i equal = _mm_cmpeq_epi8(Fold_Block(a), Fold_Block(b));
    return static_cast<unsigned>(_mm_movemask_epi8(equal)) ^ 0xFFFFu;
}

int Compare_Folded_At(const char *a, const char *b, std::size_t at) {
    return Compare_Folded_Bytes(a + at, b + at, 1);
}

__m128i First_And_Last_8(const char *text, std::size_t size) {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(text));
    const __m128i last = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(text + size - 8));
    return _mm_unpacklo_epi64(first, last);
}

__m128i First_And_Last_4(const char *text, std::size_t size) {
    int first, last;
    std::memcpy(&first, text, 4);
    std::memcpy(&last, text + size - 4, 4);
    return _mm_unpacklo_epi32(_mm_cvtsi32_si128(first), _mm_cvtsi32_si128(last));
}

// Less than a block: the first `half` bytes and the last, which may overlap, make up one.
int Compare_Folded_Short(const char *a, const char *b, std::size_t size) {
    if (size < 4) return Compare_Folded_Bytes(a, b, size);
    const std::size_t half = size < 8 ? 4 : 8;
    const unsigned differences = half == 8
                                     ? Differences(First_And_Last_8(a, size), First_And_Last_8(b, size))
                                     : Differences(First_And_Last_4(a, size), First_And_Last_4(b, size));
    if (differences == 0) return 0;
    const auto lane = static_cast<std::size_t>(__builtin_ctz(differences));
    return Compare_Folded_At(a, b, lane < half ? lane : size - 2 * half + lane);
}

int Compare_Folded(const char *a, const char *b, std::size_t size) {
    constexpr std::size_t block = case_folding::Block_Size;
    if (size < block) return Compare_Folded_Short(a, b, size);
    for (std::size_t at = 0;;) {
        const unsigned differences = Differences(Load(a + at), Load(b + at));
        if (differences != 0) {
            return Compare_Folded_At(a, b, at + static_cast<std::size_t>(__builtin_ctz(differences)));
        }
        if (at + block == size) return 0;
        at = std::min(at + block, size - block); // the last block overlaps the one before it
    }
}

bool Are_Short(std::size_t length, std::size_t other_length) {
    return length <= Short_Length && other_length <= Short_Length;
}

// Where the folded `sub` stands in the folded `text`, counted from its start; -1 when nowhere. Both buffers
// hold a text and its terminator.
long Find_Folded(char *text_copy, const char *text, std::size_t length, char *sub_copy, const char *sub,
                 std::size_t sub_length) {
    Fold_Copy(text_copy, text, length + 1);
    Fold_Copy(sub_copy, sub, sub_length + 1);
    const char *place = std::strstr(text_copy, sub_copy);
    return place ? place - text_copy : -1;
}

std::size_t Length(const char *text) {
    return std::strlen(text);
}

std::size_t Length(const WCHAR *text) {
    std::size_t length = 0;
    while (text[length] != 0) ++length;
    return length;
}

char *Find(char *text, const char *sub, std::size_t) {
    return std::strstr(text, sub);
}

WCHAR *Find(WCHAR *text, const WCHAR *sub, std::size_t sub_length) {
    WCHAR *const end = text + Length(text);
    WCHAR *const place = std::search(text, end, sub, sub + sub_length);
    return place == end ? nullptr : place;
}

template <class Char>
bool Replace_First(Char *text, const Char *find, const Char *replacement) {
    const std::size_t find_length = Length(find);
    if (find_length == 0) return false;
    Char *const place = Find(text, find, find_length);
    if (!place) return false;

    const std::size_t text_length = Length(text);
    const std::size_t length = Length(replacement);
    const WorkBlock block((std::uint64_t{text_length} + std::max(find_length, length)) * sizeof(Char));
    if (!block) return false;

    Char *end = std::copy(text, place, block.As<Char>());
    end = std::copy_n(replacement, length, end);
    end = std::copy(place + find_length, text + text_length + 1, end);
    std::copy(block.As<Char>(), end, text);
    return true;
}

bool Is_White(char c) {
    return c == '\t' || c == '\r' || c == ' ';
}

} // namespace

int strcmp_ncs(const char *a, const char *b) {
    const std::size_t a_length = std::strlen(a);
    const std::size_t b_length = std::strlen(b);
    const std::size_t size = std::min(a_length, b_length) + 1;
    if (Are_Short(a_length, b_length)) return Compare_Folded(a, b, size);

    const WorkBlock a_copy(a_length + 1);
    if (!a_copy) return 0;
    const WorkBlock b_copy(b_length + 1);
    if (!b_copy) return 0;
    Fold_Copy(a_copy.As(), a, a_length + 1);
    Fold_Copy(b_copy.As(), b, b_length + 1);
    return Sign(std::memcmp(a_copy.As(), b_copy.As(), size));
}

char *strstr_ncs(const char *text, const char *sub) {
    const std::size_t length = std::strlen(text);
    const std::size_t sub_length = std::strlen(sub);
    if (sub_length > length) return nullptr;
    long place = -1;
    if (Are_Short(length, sub_length)) {
        char text_copy[Short_Length + 1], sub_copy[Short_Length + 1];
        place = Find_Folded(text_copy, text, length, sub_copy, sub, sub_length);
    } else {
        const WorkBlock text_copy(length + 1);
        if (!text_copy) return nullptr;
        const WorkBlock sub_copy(sub_length + 1);
        if (!sub_copy) return nullptr;
        place = Find_Folded(text_copy.As(), text, length, sub_copy.As(), sub, sub_length);
    }
    return place < 0 ? nullptr : const_cast<char *>(text) + place;
}

int wcscmp_ncs(const WCHAR *a, const WCHAR *b) {
    const std::size_t length = Length(a);
    if (length != Length(b) || length > Longest_Wide_Text) return -1;
    for (std::size_t at = 0; at < length; ++at) {
        const int difference = Fold_Wide(a[at]) - Fold_Wide(b[at]);
        if (difference != 0) return Sign(difference);
    }
    return 0;
}

bool Contains_Char(const char *text, const char *set) {
    return std::strpbrk(text, set) != nullptr;
}

char Char_In_Set(char c, const char *set) {
    return c != 0 && std::strchr(set, c) ? c : '\0';
}

bool CharIsNotOneOf(char c, const char *set) {
    return Char_In_Set(c, set) == 0;
}

bool Strip_String(char *text, const char *sub) {
    const std::size_t sub_length = std::strlen(sub);
    char *const place = std::strstr(text, sub);
    if (!place) return false;
    std::memmove(place, place + sub_length, std::strlen(place + sub_length) + 1);
    return true;
}

bool Replace_String(char *text, const char *find, const char *replacement) {
    return Replace_First(text, find, replacement);
}

bool Replace_String(WCHAR *text, const WCHAR *find, const WCHAR *replacement) {
    return Replace_First(text, find, replacement);
}

void Strip_Quotes(char *text) {
    Strip_Char(text, Quote);
}

void Strip_Char(char *text, char c) {
    *std::remove(text, text + std::strlen(text), c) = '\0';
}

void Quote_String(char *text) {
    const std::size_t length = std::strlen(text);
    std::memmove(text + 1, text, length);
    text[0] = text[length + 1] = Quote;
    text[length + 2] = '\0';
}

void Tokenize_Whitespace(char *text, char c) {
    const std::size_t length = std::strlen(text);
    const char *const treated_end = text + std::min(length, Short_Length);
    char *target = text;
    bool in_quotes = false;
    for (const char *source = text; source < treated_end; ++source) {
        if (*source == '\n') continue;
        if (*source == Quote) in_quotes = !in_quotes;
        const char written = Is_White(*source) && !in_quotes ? c : *source;
        if (written != 0) *target++ = written;
    }
    std::memmove(target, treated_end, static_cast<std::size_t>(text + length - treated_end) + 1);
}

char *smartok(char *text, const char *delimiters) {
    char *const token = text ? text : Scan_Position;
    Scan_Position = nullptr;
    if (!token) return nullptr;
    bool in_quotes = false;
    for (char *at = token; *at != 0; ++at) {
        if (*at == Quote) {
            in_quotes = !in_quotes;
        } else if (!in_quotes && Char_In_Set(*at, delimiters)) {
            *at = '\0';
            Scan_Position = at + 1;
            break;
        }
    }
    return token;
}

char *Tail_String(char *text, char c, bool keep) {
    for (std::size_t at = std::strlen(text); at-- > 1;) {
        if (text[at] != c) continue;
        if (!keep) text[at] = '\0';
        return text + at + 1;
    }
    return text;
}
