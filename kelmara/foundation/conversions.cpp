#include <kelmara/foundation/conversions.h>

#include <platform/kernel.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr unsigned char Scrambling_Key = 0x5A;
constexpr char Hex_Digits[] = "0123456789abcdef";

unsigned long Hex_Digit_Value(char digit) {
    if (digit >= 'a' && digit <= 'f') return static_cast<unsigned long>(digit - 'a') + 10;
    if (digit >= 'A' && digit <= 'F') return static_cast<unsigned long>(digit - 'A') + 10;
    return static_cast<unsigned long>(static_cast<unsigned char>(digit)) - '0';
}

unsigned long Hex_Value(const char *digits, int count) {
    unsigned long value = 0;
    for (int i = 0; i < count; ++i) value = value * 16 + Hex_Digit_Value(digits[i]);
    return value;
}

void Clear(char *out, int size) {
    if (size > 0) std::memset(out, 0, static_cast<std::size_t>(size));
}

int Length(const unsigned char *text) {
    return static_cast<int>(std::strlen(reinterpret_cast<const char *>(text)));
}

int Wide_Length(const unsigned short *wide) {
    const unsigned short *end = wide;
    while (*end) ++end;
    return static_cast<int>(end - wide);
}

long Result_Of_Last_Error() {
    const long error = static_cast<long>(GetLastError());
    return error > 0 ? static_cast<long>((static_cast<unsigned long>(error) & 0xFFFF) | 0x80070000u) : error;
}

long Does_Not_Fit() {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return Result_Of_Last_Error();
}

// Reads one field and leads `text` past it and the character behind it.
unsigned long Take_Address_Field(const char *&text) {
    char field[4] = {};
    for (int i = 0; i < 3 && *text && *text != '.'; ++i) field[i] = *text++;
    if (*text) ++text;
    return static_cast<unsigned long>(std::atoi(field)) & 0xFF;
}

unsigned char Rotated_Left(unsigned byte, int bits) {
    return static_cast<unsigned char>(byte << bits | byte >> (8 - bits));
}

} // namespace

char *itoa(long value, char *out) {
    std::snprintf(out, 12, "%ld", value);
    return out;
}

unsigned long HexStringToNum(const char *text) {
    return Hex_Value(text, static_cast<int>(std::strlen(text)));
}

void NumToHex(unsigned long value, int digits, char *out) {
    if (digits < 0) digits = 0;
    out[digits] = 0;
    for (int i = digits - 1; i >= 0; --i) {
        out[i] = Hex_Digits[value & 15];
        value >>= 4;
    }
}

void StringToGUID(const char *text, _GUID *guid) {
    *guid = {};
    if (std::strlen(text) != 36) return;
    guid->Data1 = Hex_Value(text, 8);
    guid->Data2 = static_cast<unsigned short>(Hex_Value(text + 9, 4));
    guid->Data3 = static_cast<unsigned short>(Hex_Value(text + 14, 4));
    for (int i = 0; i < 8; ++i) {
        const int position = i < 2 ? 19 + 2 * i : 20 + 2 * i;
        guid->Data4[i] = static_cast<unsigned char>(Hex_Value(text + position, 2));
    }
}

void GUIDToString(const _GUID *guid, char *out, bool plain) {
    const unsigned char *last = guid->Data4;
    char text[37];
    std::snprintf(text, sizeof text, "%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", guid->Data1,
                  guid->Data2, guid->Data3, last[0], last[1], last[2], last[3], last[4], last[5], last[6],
                  last[7]);
    std::snprintf(out, plain ? 37 : 39, plain ? "%s" : "{%s}", text);
}

long UnicodeToAnsi(const unsigned short *wide, char *out, int size) {
    if (size > 0) *out = 0;
    const int length = Wide_Length(wide);
    if (length > size) return E_OUTOFMEMORY;
    if (size == 0) return Does_Not_Fit(); // the machine would take it for a question
    const int written = WideCharToMultiByte(CP_ACP, 0, wide, length + 1, out, size, nullptr, nullptr);
    return written != 0 ? 0 : Result_Of_Last_Error();
}

long AnsiToUnicode(const char *text, unsigned short *wide, int size) {
    if (!wide) return static_cast<long>(2 * std::strlen(text));
    if (size == 0) return Does_Not_Fit();
    const int written = MultiByteToWideChar(CP_ACP, 0, text, -1, wide, size);
    return written != 0 ? 0 : Result_Of_Last_Error();
}

void Make_API_String(const unsigned short *wide, char *out, int size) {
    UnicodeToAnsi(wide, out, size);
}

void Make_API_String(const char *text, char *out, [[maybe_unused]] int size) {
    std::memmove(out, text, std::strlen(text) + 1);
}

void TCHARToUnicode(const char *text, unsigned short *wide, int size) {
    AnsiToUnicode(text, wide, size);
}

void Gererate_Hex_String(const unsigned char *data, char *out, int size) {
    Clear(out, size);
    if (size < 2) return;
    const int room = size / 2 - 1;
    for (int i = 0; i < room && data[i]; ++i) {
        out[2 * i] = Hex_Digits[data[i] >> 4];
        out[2 * i + 1] = Hex_Digits[data[i] & 15];
    }
}

void Generate_Ascii_String(const unsigned char *text, char *out, int size) {
    Clear(out, size);
    const char *digits = reinterpret_cast<const char *>(text);
    for (int i = 0; i < size && digits[0] && digits[1]; ++i, digits += 2) {
        out[i] = static_cast<char>(Hex_Value(digits, 2));
    }
}

unsigned long AddressToLong(const char *text) {
    unsigned long address = 0;
    for (int shift = 0; shift < 32; shift += 8) address |= Take_Address_Field(text) << shift;
    return address;
}

int AddressToInt(const char *text) {
    return static_cast<int>(AddressToLong(text));
}

char *AddressToStrInt(const char *text, char *out) {
    return itoa(AddressToInt(text), out);
}

char *AddressToString(unsigned long value, char *out) {
    std::snprintf(out, 16, "%lu.%lu.%lu.%lu", value >> 24, value >> 16 & 0xFF, value >> 8 & 0xFF,
                  value & 0xFF);
    return out;
}

void Char_Code_To_String(long value, char *out) {
    const auto code = static_cast<unsigned long>(value);
    for (int i = 0; i < 4; ++i) out[i] = static_cast<char>(code >> (24 - 8 * i));
    out[4] = 0;
}

long String_To_Char_Code(const char *text) {
    if (*text == '\'') ++text;
    unsigned long code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return static_cast<long>(code);
}

void Lock_String(unsigned char *text) {
    const int length = Length(text);
    for (int i = 0; i < length; ++i) text[i] = Rotated_Left(text[i] ^ Scrambling_Key, i % 8);
}

void Unlock_String(unsigned char *text) {
    const int length = Length(text);
    for (int i = 0; i < length; ++i) text[i] = Rotated_Left(text[i], 8 - i % 8) ^ Scrambling_Key;
}
