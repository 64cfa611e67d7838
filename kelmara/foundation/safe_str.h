#pragma once
// The library's string: a byte text with a terminator that lives in the object up to 511 characters and in
// one heap block beyond.
//
// A text of up to 511 characters needs no allocation, so strings are made freely as locals. Once a text has
// outgrown the object it stays in its heap block, whatever it shrinks to, until the destructor releases it.
// The block grows to exactly what is asked for. Pointers that the conversions give are valid until the next
// operation that may move the text.
//
// A null text counts as an empty one. Arguments may be the string itself or point into its own text. When
// there is no memory the constructors throw an `int` of -1 and everything else a `long`, E_OUTOFMEMORY, with
// the text as it was (a token that was to be filled may be empty then). The text does not count as part of a
// string's constant state: a const one can be assigned to. A string belongs to one thread at a time.

#include <kelmara/foundation/auto_deleteable_object.h>
#include <kelmara/foundation/memory.h>

#include <platform/errors.h>

#if defined(__SSE2__) // a program built without it makes its strings by calls
#include <emmintrin.h>
#endif

class CSafeStr;

/// Decides when and how a string's storage changes. Stateless.
class KELMARA_API CStrAlloc {
  public:
    KELMARA_CLASS_ALLOCATION

    constexpr CStrAlloc() = default;
    constexpr CStrAlloc(const CStrAlloc &) = default;
    CStrAlloc &operator=(const CStrAlloc &other);

    /// Makes room for a text of `length` characters and a terminator: 0, or E_OUTOFMEMORY with the string
    /// unchanged. Never throws. Room that is there stays as it is; otherwise the text moves to a heap block
    /// of exactly length + 1 bytes, and its Cursor with it.
    long Check_Buffer(int length, CSafeStr *string);
};

class KELMARA_API CSafeStr : public CAutoDeleteableObject {
  public:
    CSafeStr();
    CSafeStr(const char *text);
    CSafeStr(const unsigned char *text);
    /// The number's decimal text.
    CSafeStr(int number);
    /// A copy of the text; the Cursor starts anew.
    CSafeStr(const CSafeStr &other);
    ~CSafeStr() override;

    /// The Cursor stays where it is.
    void operator=(const char *text) const;
    void operator=(const unsigned char *text) const;
    void operator=(const CSafeStr &other) const;
    void operator=(int number) const;

    /// 1 when equal byte for byte, else 0. A number stands for its decimal text.
    int operator==(const char *text) const;
    int operator==(const unsigned char *text) const;
    int operator==(const CSafeStr &other) const;
    int operator==(int number) const;

    /// A three-way comparison: 0 when equal, else -1 or 1 by the first byte that differs, as unsigned values.
    int operator!=(const char *text) const;
    int operator!=(const unsigned char *text) const;
    int operator!=(const CSafeStr &other) const;
    int operator!=(int number) const;

    // The same with a buffer, which would be as near to the plain comparison of pointers otherwise.
    int operator==(char *text) const { return *this == static_cast<const char *>(text); }
    int operator==(unsigned char *text) const { return *this == static_cast<const unsigned char *>(text); }
    int operator!=(char *text) const { return *this != static_cast<const char *>(text); }
    int operator!=(unsigned char *text) const { return *this != static_cast<const unsigned char *>(text); }

    /// Appends. A number stands for its decimal text.
    void operator+=(const char *text) const;
    void operator+=(const unsigned char *text) const;
    void operator+=(const CSafeStr &other) const;
    void operator+=(int number) const;

    /// Writes one character at the Cursor and a terminator behind it; it does not look for the end. The first
    /// one of a string that was never primed primes it. After any other change of the text the Cursor is out
    /// of date, though never outside the storage: call Prime_Increment again.
    void operator+=(char character);

    // The same for a string that is not const, where the one above would be as near otherwise.
    void operator+=(const char *text) { static_cast<const CSafeStr &>(*this) += text; }
    void operator+=(const unsigned char *text) { static_cast<const CSafeStr &>(*this) += text; }
    void operator+=(const CSafeStr &other) { static_cast<const CSafeStr &>(*this) += other; }
    void operator+=(int number) { static_cast<const CSafeStr &>(*this) += number; }

    /// Sets the Cursor to the end of the text.
    void Prime_Increment();

    /// The byte at that index, which is not checked.
    char operator[](int index) const;

    /// Up to the first zero byte.
    int Length() const;
    /// 512, the size of the storage inside the object, whatever the text's.
    int Max_Len() const;

    /// The text itself. It may be written to, within its length and terminator.
    operator char *() const;
    operator unsigned char *() const;
    operator void *() const;
    operator long() const;

    /// Copies exactly `length` bytes, zero bytes too, and a terminator behind them. None for a length below 0
    /// or a null `data`.
    void Set_Data(const void *data, int length);

    /// Removes the first `count` characters. More than the text has, or less than 1, moves nothing.
    void Shift_Chars(int count);

    /// a to z become A to Z.
    void Upper();

    /// The first four bytes as one number, the first in the highest eight bits. Behind the end they are 0.
    long Get_Char_Code() const;

    /// Moves the text up to the first `delimiter` from the front of this string to `token`, and drops the
    /// delimiter. Two in a row have an empty token between them. A delimiter at index 512 exactly stays, in
    /// front of the rest, and yields an empty token then. Without a delimiter the token is the whole text and
    /// this string becomes empty, so a loop that waits for that ends; 0 is no delimiter. `token` is left
    /// primed, and a string is no token of itself: it becomes empty.
    void Next_Token(CSafeStr &token, char delimiter);

    /// Copies the word that begins at marker number `index`, from 0, to `token`, which is left primed: with
    /// the marker, up to a space, tab, line feed, carriage return or the end. False, with `token` empty, when
    /// the text has no such marker, or is `token` itself. An index below 0 counts as 0.
    bool Get_Next_Insert_Token(CSafeStr &token, int index, char marker);

    /// Replaces every `find`, searching again from the start after each. Works in the storage that the text
    /// has: a replacement whose result would not fit there (511 characters while the text is in the object)
    /// is not made and ends the operation. An empty `find` replaces nothing. Where `replacement` holds
    /// `find`, each place of the text as it was is replaced once. It ends after as many replacements as the
    /// text has characters and 65,536 more. Storage of up to 512 bytes is zero behind a changed text.
    void Replace_String(const CSafeStr &find, const CSafeStr &replacement);

    /// Wraps the text in double quotes, unless it begins with one.
    void Quote_Wrap();

  protected:
    /// An empty text inside the object.
    void Init();

  private:
    friend class CStrAlloc;
    friend struct WorldBeatLayout; // which knows where the signature is
    friend struct SafeStrLayout;

    static constexpr int Inline_Size = 512; // bytes
    static constexpr int Block_Size = 32;   // bytes that are copied at once

    void Begin();
    bool Copy_Block(const char *text, int at);
    bool Copy_Next_Blocks(const char *text);
    void Copy_Any_Text(const char *text);
    KELMARA_INTERNAL void Reserve(std::size_t length) const;
    KELMARA_INTERNAL const char *Reserve_Beside(const char *source, std::size_t length) const;
    KELMARA_INTERNAL std::size_t Capacity() const;
    KELMARA_INTERNAL void Take_Token(const char *start, std::size_t length);

    unsigned long Signature = 0xCAFEBABE;    // offset 4
    mutable char *Data;                      // offset 8, Inline_Buffer or Heap_Block
    mutable char Inline_Buffer[Inline_Size]; // offset 12
    mutable char *Heap_Block;                // offset 524, owned
    mutable long Heap_Size;                  // offset 528, bytes
    mutable char *Cursor;                    // offset 532, where the next character goes; null until primed
};
static_assert(sizeof(CSafeStr) == 536);

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof" // plain fields behind one table pointer
struct SafeStrLayout {
    static_assert(offsetof(CSafeStr, Signature) == 4 && offsetof(CSafeStr, Data) == 8);
    static_assert(offsetof(CSafeStr, Inline_Buffer) == 12 && offsetof(CSafeStr, Heap_Block) == 524);
    static_assert(offsetof(CSafeStr, Heap_Size) == 528 && offsetof(CSafeStr, Cursor) == 532);
};
#pragma GCC diagnostic pop

// --- making, copying and dropping, compiled into the caller -----------------------------------------------
//
// A string of a few characters costs some 20 instructions from start to end, so each store counts: the three
// fields at the end are cleared by one. A text is stored in blocks as it is read, whatever stands behind its
// terminator: so it is read once, and a copy of a string just made reads the blocks that were just written,
// each out of the store that wrote it.

/// Everything but the text. The one store begins in the last four bytes of Inline_Buffer.
[[gnu::always_inline]] inline void CSafeStr::Begin() {
    Data = Inline_Buffer;
#if defined(__SSE2__)
    char *const last_16_bytes = reinterpret_cast<char *>(this) + sizeof(CSafeStr) - 16;
    _mm_storeu_si128(reinterpret_cast<__m128i *>(last_16_bytes), _mm_setzero_si128());
#else
    Heap_Block = nullptr;
    Heap_Size = 0;
    Cursor = nullptr;
#endif
}

#if defined(__SSE2__)
/// Copies 32 bytes from `text` on, which must be readable; true when the text ends in them.
[[gnu::always_inline]] inline bool CSafeStr::Copy_Block(const char *text, int at) {
    __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + at));
    __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + at + 16));
    asm("" : "+x"(low), "+x"(high)); // or the compiler would load both twice
    _mm_storeu_si128(reinterpret_cast<__m128i *>(Inline_Buffer + at), low);
    _mm_storeu_si128(reinterpret_cast<__m128i *>(Inline_Buffer + at + 16), high);
    const __m128i zeroes = _mm_cmpeq_epi8(_mm_min_epu8(low, high), _mm_setzero_si128());
    return _mm_movemask_epi8(zeroes) != 0;
}

/// The same for the blocks behind the first one, up to 512 bytes.
[[gnu::always_inline]] inline bool CSafeStr::Copy_Next_Blocks(const char *text) {
    for (int at = Block_Size; at < Inline_Size; at += Block_Size) {
        if (Copy_Block(text, at)) return true;
    }
    return false;
}

#endif

KELMARA_INLINE void CSafeStr::Init() {
    Data = Inline_Buffer;
    Inline_Buffer[0] = '\0';
}

KELMARA_INLINE CSafeStr::CSafeStr() {
    Begin();
    Init();
}

KELMARA_INLINE CSafeStr::CSafeStr(const char *text) {
    Begin();
#if defined(__SSE2__) && !defined(__SANITIZE_ADDRESS__) // which sees what is read behind a terminator
    // Memory is readable or not by pages of 4096 bytes: what follows a byte up to the end of its page is. The
    // compiler must not know where the text comes from: it would hold a block to be no part of a short array,
    // and move what was written to that behind the reading.
    asm volatile("" : "+r"(text) : : "memory");
    const int readable = text ? 4096 - static_cast<int>(reinterpret_cast<unsigned long>(text) % 4096) : 0;
    if (readable >= Block_Size && Copy_Block(text, 0)) return;
    if (readable >= Inline_Size && Copy_Next_Blocks(text)) return;
#endif
    Copy_Any_Text(text);
}

KELMARA_INLINE CSafeStr::CSafeStr(const unsigned char *text)
    : CSafeStr(reinterpret_cast<const char *>(text)) {}

KELMARA_INLINE CSafeStr::CSafeStr(const CSafeStr &other) : CAutoDeleteableObject() {
    Begin();
#if defined(__SSE2__)
    const char *text = other.Inline_Buffer;
    asm volatile(""
                 : "+r"(text)
                 :
                 : "memory"); // or it would warn of bytes behind the terminator never written
    if (!other.Heap_Block && (Copy_Block(text, 0) || Copy_Next_Blocks(text))) return;
#endif
    Copy_Any_Text(other.Data);
}

KELMARA_INLINE CSafeStr::~CSafeStr() {
    if (Heap_Block) [[unlikely]]
        ds_free(Heap_Block);
    Data = Inline_Buffer;
}

KELMARA_INLINE char CSafeStr::operator[](int index) const {
    return Data[index];
}

KELMARA_INLINE CSafeStr::operator char *() const {
    return Data;
}

KELMARA_INLINE CSafeStr::operator unsigned char *() const {
    return reinterpret_cast<unsigned char *>(Data);
}

KELMARA_INLINE CSafeStr::operator void *() const {
    return Data;
}

KELMARA_INLINE CSafeStr::operator long() const {
    return reinterpret_cast<long>(Data);
}
