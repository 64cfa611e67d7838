#pragma once
// Comparing, searching, changing and splitting plain zero-terminated texts in place.
//
// Texts, sets and delimiters belong to the caller and are never null, unless a line says so. No function
// takes a buffer's size: what makes a text longer relies on the caller's room for it. A space is the byte
// 0x20 and the quote is the double quote. Folding letter case turns a to z into A to Z and touches no other
// byte. The texts that a function only reads may lie inside the one that it changes.
//
// Every function works on the caller's memory alone, so threads are the caller's affair; smartok is the one
// exception.

#include <kelmara/api.h>

// --- comparing and searching ------------------------------------------------------------------------------

/// 0 when equal but for letter case, else -1 or 1 by the first byte that differs after folding, as unsigned
/// values. Texts of up to 255 characters both are compared without an allocation; otherwise each is copied to
/// a block of its own, and 0 is the answer when there is no memory for them.
KELMARA_API int strcmp_ncs(const char *a, const char *b);

/// The first place in `text` where `sub` stands in any letter case, null when there is none. An empty `sub`
/// stands at the start. Allocates as strcmp_ncs, and then finds nothing when there is no memory; a `sub`
/// longer than `text` is not found without any allocation.
KELMARA_API char *strstr_ncs(const char *text, const char *sub);

/// Only 0 tells something: the texts are equal but for letter case. -1 for different lengths and for a text
/// of more than 1023 characters, otherwise -1 or 1. Never allocates.
KELMARA_API int wcscmp_ncs(const WCHAR *a, const WCHAR *b);

/// True if any character of `set` occurs in `text`; false if either is empty.
KELMARA_API bool Contains_Char(const char *text, const char *set);

/// `c` if it occurs in `set`, else 0; a zero occurs in no set.
KELMARA_API char Char_In_Set(char c, const char *set);

/// True if `c` does not occur in `set`: for an empty set, and for a zero in any.
KELMARA_API bool CharIsNotOneOf(char c, const char *set);

// --- changing a text --------------------------------------------------------------------------------------

/// Removes the first `sub` from `text`, letter case counting. False when there is none; an empty one is
/// there.
KELMARA_API bool Strip_String(char *text, const char *sub);

/// Replaces the first `find`, and that one only, letter case counting. False, with the text unchanged, when
/// there is none, when `find` is empty, and when there is no memory for the work block, which is as long as
/// `text` and the longer of the other two.
KELMARA_API bool Replace_String(char *text, const char *find, const char *replacement);
KELMARA_API bool Replace_String(WCHAR *text, const WCHAR *find, const WCHAR *replacement);

/// Removes every double quote, wherever it stands.
KELMARA_API void Strip_Quotes(char *text);

/// Removes every `c`.
KELMARA_API void Strip_Char(char *text, char c);

/// Puts a double quote in front and one behind, whatever the text holds already: it grows by 2 bytes.
KELMARA_API void Quote_String(char *text);

/// Outside double quotes each tab, carriage return and space becomes `c`, or goes when `c` is 0; line feeds
/// go everywhere. The first 255 characters are treated; what stands behind them is kept as it is and closes
/// up.
KELMARA_API void Tokenize_Whitespace(char *text, char c);

// --- splitting a text -------------------------------------------------------------------------------------

/// Cuts a text at its delimiters, one token a call: the first with the text, the following ones with null,
/// and null when there are no more. Each delimiter yields a token, so tokens may be empty, also the last one;
/// an empty text is one empty token. Delimiters between double quotes do not count, and the quotes stay in
/// the token; a double quote is never a delimiter. The text is written into and is scanned until the end is
/// met. The position is one word of the whole process: one scan at a time, on all threads.
KELMARA_API char *smartok(char *text, const char *delimiters);

/// What stands behind the last `c`, which is overwritten with a terminator unless `keep`. The whole `text`
/// when there is none; a `c` in the first position does not count, and a zero is not to be found.
KELMARA_API char *Tail_String(char *text, char c, bool keep);
