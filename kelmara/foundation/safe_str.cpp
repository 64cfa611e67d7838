#include <kelmara/foundation/auto_deleteable_object.h>
#include <kelmara/foundation/case_folding.h>
#include <kelmara/foundation/string_helpers.h>

#undef KELMARA_INLINE
#define KELMARA_INLINE
#include <kelmara/foundation/safe_str.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

namespace {

constinit CStrAlloc Storage;

constexpr int Constructor_Failure = -1;        // what constructors throw
constexpr std::size_t Most_Steps_Back = 65536; // of one Replace_String
constexpr int Number_Size = 12;                // bytes of a number's text at most
constexpr std::size_t Longest_Removal = 512;   // characters that Next_Token takes out at once
constexpr char Token_Ends[] = " \t\n\r";

const char *Or_Empty(const char *text) {
    return text ? text : "";
}

const char *As_Chars(const unsigned char *text) {
    return reinterpret_cast<const char *>(text);
}

int Sign(int difference) {
    return (difference > 0) - (difference < 0);
}

// The first `c` of a text, null when there is none; the terminator is no character of it.
const char *Find_Char(const char *text, char c) {
    return c != 0 ? std::strchr(text, c) : nullptr;
}

} // namespace

// --- storage ----------------------------------------------------------------------------------------------

CStrAlloc &CStrAlloc::operator=(const CStrAlloc &) {
    return *this;
}

long CStrAlloc::Check_Buffer(int length, CSafeStr *string) {
    if (length < static_cast<long>(string->Capacity())) return 0;
    if (length == INT_MAX) return E_OUTOFMEMORY;
    const long needed = length + 1;
    void *const block = string->Heap_Block ? ds_realloc(string->Heap_Block, needed) : ds_malloc(needed);
    if (!block) return E_OUTOFMEMORY;

    // All of it: what stands behind a zero byte moves as well.
    if (!string->Heap_Block) std::memcpy(block, string->Inline_Buffer, CSafeStr::Inline_Size);
    if (string->Cursor) string->Cursor = static_cast<char *>(block) + (string->Cursor - string->Data);
    string->Heap_Block = string->Data = static_cast<char *>(block);
    string->Heap_Size = needed;
    return 0;
}

std::size_t CSafeStr::Capacity() const {
    return static_cast<std::size_t>(Heap_Block ? Heap_Size : Inline_Size);
}

void CSafeStr::Reserve(std::size_t length) const {
    if (length >= INT_MAX) throw E_OUTOFMEMORY;
    const long result = Storage.Check_Buffer(static_cast<int>(length), const_cast<CSafeStr *>(this));
    if (result != 0) throw result;
}

// Where `source` stands once there is room: a part of this very text moves with it.
const char *CSafeStr::Reserve_Beside(const char *source, std::size_t length) const {
    const auto offset = reinterpret_cast<unsigned long>(source) - reinterpret_cast<unsigned long>(Data);
    const bool is_own = offset < Capacity();
    Reserve(length);
    return is_own ? Data + offset : source;
}

void CSafeStr::Copy_Any_Text(const char *text) {
    text = Or_Empty(text);
    const std::size_t length = strnlen(text, INT_MAX); // of strlen the compiler believes that it is smaller
    if (length == INT_MAX || Storage.Check_Buffer(static_cast<int>(length), this) != 0) {
        throw Constructor_Failure;
    }
    std::memcpy(Data, text, length + 1);
}

// --- assigning, comparing, appending ----------------------------------------------------------------------

CSafeStr::CSafeStr(int number) {
    Begin();
    Init();
    *this = number;
}

void CSafeStr::operator=(const char *text) const {
    text = Or_Empty(text);
    const std::size_t length = std::strlen(text);
    text = Reserve_Beside(text, length);
    std::memmove(Data, text, length + 1);
}

void CSafeStr::operator=(const unsigned char *text) const {
    *this = As_Chars(text);
}

void CSafeStr::operator=(const CSafeStr &other) const {
    *this = other.Data;
}

void CSafeStr::operator=(int number) const {
    std::snprintf(Data, Number_Size, "%d", number);
}

int CSafeStr::operator==(const char *text) const {
    return std::strcmp(Data, Or_Empty(text)) == 0;
}

int CSafeStr::operator==(const unsigned char *text) const {
    return *this == As_Chars(text);
}

int CSafeStr::operator==(const CSafeStr &other) const {
    return *this == other.Data;
}

int CSafeStr::operator==(int number) const {
    return *this == CSafeStr(number);
}

int CSafeStr::operator!=(const char *text) const {
    return Sign(std::strcmp(Data, Or_Empty(text)));
}

int CSafeStr::operator!=(const unsigned char *text) const {
    return *this != As_Chars(text);
}

int CSafeStr::operator!=(const CSafeStr &other) const {
    return *this != other.Data;
}

int CSafeStr::operator!=(int number) const {
    return *this != CSafeStr(number);
}

void CSafeStr::operator+=(const char *text) const {
    text = Or_Empty(text);
    const std::size_t length = std::strlen(Data);
    const std::size_t added = std::strlen(text);
    text = Reserve_Beside(text, length + added);
    std::memmove(Data + length, text, added);
    Data[length + added] = '\0';
}

void CSafeStr::operator+=(const unsigned char *text) const {
    *this += As_Chars(text);
}

void CSafeStr::operator+=(const CSafeStr &other) const {
    *this += other.Data;
}

void CSafeStr::operator+=(int number) const {
    const CSafeStr text(number);
    *this += text.Data;
}

void CSafeStr::operator+=(char character) {
    if (!Cursor) Prime_Increment();
    Reserve(static_cast<std::size_t>(Cursor - Data) + 1);
    *Cursor++ = character;
    *Cursor = '\0';
}

void CSafeStr::Prime_Increment() {
    Cursor = Data + std::strlen(Data);
}

// --- the text as a whole ----------------------------------------------------------------------------------

int CSafeStr::Length() const {
    return static_cast<int>(std::strlen(Data));
}

int CSafeStr::Max_Len() const {
    return Inline_Size;
}

void CSafeStr::Set_Data(const void *data, int length) {
    const std::size_t size = data && length > 0 ? static_cast<std::size_t>(length) : 0;
    const char *const source = Reserve_Beside(static_cast<const char *>(data), size);
    if (size != 0) std::memmove(Data, source, size);
    Data[size] = '\0';
}

void CSafeStr::Shift_Chars(int count) {
    const int length = Length();
    if (count < 1 || count > length) return;
    std::memmove(Data, Data + count, static_cast<std::size_t>(length - count) + 1);
}

void CSafeStr::Upper() {
    case_folding::Fold_Copy(Data, Data, std::strlen(Data));
}

long CSafeStr::Get_Char_Code() const {
    unsigned char bytes[4] = {};
    std::memcpy(bytes, Data, strnlen(Data, sizeof(bytes)));
    return static_cast<long>(static_cast<unsigned long>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 |
                             bytes[3]);
}

void CSafeStr::Quote_Wrap() {
    Reserve(std::strlen(Data) + 2);
    if (Data[0] != '"') Quote_String(Data);
}

// --- tokens and replacing ---------------------------------------------------------------------------------

void CSafeStr::Take_Token(const char *start, std::size_t length) {
    Set_Data(start, static_cast<int>(length));
    Cursor = Data + length;
}

void CSafeStr::Next_Token(CSafeStr &token, char delimiter) {
    token.Take_Token(nullptr, 0);
    const char *const end = Find_Char(Data, delimiter);
    if (!end) {
        token.Take_Token(Data, std::strlen(Data));
        Data[0] = '\0';
        return;
    }
    const auto length = static_cast<std::size_t>(end - Data);
    token.Take_Token(Data, length);
    Shift_Chars(static_cast<int>(length == Longest_Removal ? length : length + 1));
}

bool CSafeStr::Get_Next_Insert_Token(CSafeStr &token, int index, char marker) {
    token.Take_Token(nullptr, 0);
    const char *place = Find_Char(Data, marker);
    for (; place && index > 0; --index) place = Find_Char(place + 1, marker);
    if (!place) return false;
    token.Take_Token(place, std::strcspn(place, Token_Ends));
    return true;
}

namespace {

// A text with all the storage that it does not need in the middle of it: what is done stands in front, what
// is to be searched behind, up to the end of the storage. So a replacement moves what lies between two places
// alone.
class OpenText {
  public:
    OpenText(char *text, std::size_t at, std::size_t length, std::size_t capacity)
        : Start(text), End(text + capacity), Done(text + at), Rest(End - (length - at) - 1) {
        std::memmove(Rest, Done, length - at + 1);
    }
    const char *Find(const char *text) const { return std::strstr(Rest, text); }
    bool Has_Room(std::size_t removed, std::size_t inserted) const {
        return inserted <= static_cast<std::size_t>(Rest - Done) + removed;
    }
    void Go_To(const char *place) {
        const auto length = static_cast<std::size_t>(place - Rest);
        std::memmove(Done, Rest, length);
        Done += length;
        Rest += length;
    }
    void Replace(std::size_t removed, const char *inserted, std::size_t length) {
        Rest += removed;
        std::memcpy(Done, inserted, length);
        Done += length;
    }
    void Go_Back(std::size_t length) {
        length = std::min(length, static_cast<std::size_t>(Done - Start));
        Done -= length;
        Rest -= length;
        std::memmove(Rest, Done, length);
    }
    // The text's length.
    std::size_t Close() {
        std::memmove(Done, Rest, static_cast<std::size_t>(End - Rest));
        return static_cast<std::size_t>(Done - Start + (End - Rest)) - 1;
    }

  private:
    char *const Start;
    char *const End;
    char *Done;
    char *Rest;
};

} // namespace

void CSafeStr::Replace_String(const CSafeStr &find, const CSafeStr &replacement) {
    if (&find == this || &replacement == this) {
        CSafeStr find_text, replacement_text;
        find_text = find;
        replacement_text = replacement;
        return Replace_String(find_text, replacement_text);
    }
    const std::size_t find_length = std::strlen(find.Data);
    const std::size_t replacement_length = std::strlen(replacement.Data);
    const char *place = find_length != 0 ? std::strstr(Data, find.Data) : nullptr;
    const std::size_t old_length = std::strlen(Data);
    if (!place || old_length - find_length + replacement_length >= Capacity()) return;
    // Such a text is searched on behind each replacement, or there would be no end of it. All others end:
    // each replacement makes the text shorter, longer up to its storage, or turns it in one direction of the
    // alphabet. What ends only after very many steps is ended before.
    const bool brings_it_back = std::strstr(replacement.Data, find.Data) != nullptr;
    // In front of a replacement there was none, so the next one is not found earlier by going back to the
    // start.
    const std::size_t back = brings_it_back ? 0 : replacement_length + find_length - 1;
    // Those that go forward through the text are no more than it has characters.
    std::size_t left = old_length + Most_Steps_Back;
    const bool grows = replacement_length > find_length; // or nothing behind the text is touched
    OpenText text(Data, static_cast<std::size_t>(place - Data), old_length,
                  grows ? Capacity() : old_length + 1);
    while (left-- > 0 && (place = text.Find(find.Data)) && text.Has_Room(find_length, replacement_length)) {
        text.Go_To(place);
        text.Replace(find_length, replacement.Data, replacement_length);
        text.Go_Back(back);
    }
    const std::size_t length = text.Close();
    if (length < Inline_Size) std::memset(Data + length, 0, Inline_Size - length);
}
