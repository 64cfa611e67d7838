#pragma once
// Conversions between forms of a value: numbers, hexadecimal text, GUIDs, wide and narrow text, dotted
// addresses, four-character codes, and scrambled text.
//
// The functions keep nothing, allocate nothing and may run on any thread. Pointers are not null except where
// it says so; input and output do not overlap except where it says so. Most outputs have no size: the caller
// gives a buffer of the size named here, in bytes with the terminator. Nothing is validated: bad input gives
// a wrong value and no error. Hexadecimal values are taken modulo 2^32, decimal ones as `atoi` reads them.

#include <kelmara/api.h>

// --- numbers and hexadecimal text -------------------------------------------------------------------------

/// Decimal, with a minus if need be: up to 12 bytes. Gives back `out`.
KELMARA_API char *itoa(long value, char *out);

/// 0 for an empty text. Letters of either case count 10 to 15, any other character its code (0 to 255) less
/// that of the digit 0, whatever it is.
KELMARA_API unsigned long HexStringToNum(const char *text);

/// The lowest `digits` digits in lower case, with leading zeroes: `digits` + 1 bytes. 0 digits and fewer give
/// an empty text.
KELMARA_API void NumToHex(unsigned long value, int digits, char *out);

// --- GUIDs ------------------------------------------------------------------------------------------------

/// From the plain form of 36 characters; what stands in place of its hyphens is not looked at. A text of any
/// other length, one in braces too, gives all zeroes.
KELMARA_API void StringToGUID(const char *text, _GUID *guid);

/// "6b29fc40-ca47-1067-b31d-00dd010662da" in lower case, 37 bytes; in braces, 39 bytes, unless `plain`.
KELMARA_API void GUIDToString(const _GUID *guid, char *out, bool plain);

// --- wide and narrow text, by the default code page --------------------------------------------------------

/// 0 on success. 0x8007000E when `wide` has more than `size` characters; otherwise 0x80070000 with the code
/// of the machine, 122 when the terminator does not fit. After a failure `out` is an empty text; a `size`
/// below 1 always fails and leaves it alone.
KELMARA_API long UnicodeToAnsi(const unsigned short *wide, char *out, int size);

/// `size` in wide characters with the terminator. 0 on success; otherwise 0x80070000 with the code of the
/// machine, 122 when it does not fit (into a `size` of 0 neither), and `wide` is left alone. With a null
/// `wide`: the bytes that it takes, without a terminator.
KELMARA_API long AnsiToUnicode(const char *text, unsigned short *wide, int size);

/// Narrow text for a call of the machine, from text of either width. The wide one is UnicodeToAnsi and does
/// not say whether it succeeded; the narrow one copies the whole text, whatever `size` is, and may overlap.
KELMARA_API void Make_API_String(const unsigned short *wide, char *out, int size);
KELMARA_API void Make_API_String(const char *text, char *out, int size);

/// AnsiToUnicode that does not say whether it succeeded.
KELMARA_API void TCHARToUnicode(const char *text, unsigned short *wide, int size);

// --- bytes and hexadecimal text ---------------------------------------------------------------------------

/// Two lower-case digits for each byte of the terminated `data`, as many bytes as fit: at most `size` / 2
/// less 1. The rest of `out` is zeroed. A `size` of 1 gives an empty text, one below 1 leaves `out` alone.
KELMARA_API void Gererate_Hex_String(const unsigned char *data, char *out, int size);

/// A byte for each two digits of `text`, at most `size`; a last lone digit is dropped. The rest of `out` is
/// zeroed: when `text` fills it there is no terminator. A `size` below 1 leaves it alone.
KELMARA_API void Generate_Ascii_String(const unsigned char *text, char *out, int size);

// --- dotted addresses -------------------------------------------------------------------------------------

/// The first of four fields is the lowest byte: "1.2.3.4" gives 0x04030201, so this and AddressToString are
/// no inverses. A field is at most three characters, and the character behind it is taken for its point, so a
/// longer one goes wrong from there on. Missing fields count 0; of each value the lowest 8 bits count.
KELMARA_API unsigned long AddressToLong(const char *text);
KELMARA_API int AddressToInt(const char *text);

/// The AddressToInt value in decimal: up to 12 bytes. Gives back `out`, which may be `text`.
KELMARA_API char *AddressToStrInt(const char *text, char *out);

/// The highest byte comes first: 0x01020304 gives "1.2.3.4", up to 16 bytes. Gives back `out`.
KELMARA_API char *AddressToString(unsigned long value, char *out);

// --- four-character codes: the first character is the highest byte -----------------------------------------

/// Four characters, zero bytes among them like any others, and a terminator: 5 bytes.
KELMARA_API void Char_Code_To_String(long value, char *out);

/// Reads four bytes, whatever they are, so that many the text must have; an apostrophe in front of them is
/// passed over.
KELMARA_API long String_To_Char_Code(const char *text);

// --- scrambled text ---------------------------------------------------------------------------------------

/// Makes text unreadable at a glance, in place and in its length; no encryption. A "Z" becomes a terminator:
/// text that holds one does not survive the way there and back.
KELMARA_API void Lock_String(unsigned char *text);
/// The reverse, up to the first terminator.
KELMARA_API void Unlock_String(unsigned char *text);
