#pragma once
// The machine's code page, 1252: the bytes that Windows texts are made of, and what they are in UTF-16 and in
// the host's UTF-8.
//
// Both directions are whole. The five bytes that the page leaves open stand for the control characters of the
// same number. What the page cannot carry becomes '?', and so does each byte that is no UTF-8.

#include <platform/types.h>

#include <string>
#include <string_view>

WCHAR Wide_Of_Ansi(unsigned char byte);

/// '?' for what the page does not have; `replaced` is set to true then and left alone otherwise.
unsigned char Ansi_Of_Wide(WCHAR unit, bool *replaced = nullptr);

std::string Utf8_Of_Ansi(std::string_view text);
std::string Ansi_Of_Utf8(std::string_view text);

/// Capital letters of the whole page, accented ones too.
unsigned char Upper_Ansi(unsigned char byte);
/// Small letters of the same; what has no other case stays.
unsigned char Lower_Ansi(unsigned char byte);
bool Equal_Without_Case(std::string_view left, std::string_view right);
