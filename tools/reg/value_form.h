#pragma once
// A value as people and scripts write it: the name of its type, and its data in one or more texts.
//
//     sz, expand_sz    a text                         multi_sz    any number of texts
//     dword, qword     a number, decimal or 0x...     binary      bytes as pairs of hexadecimal digits
//     hex(N)           the same for the type with the code N, in hexadecimal
//
// Data that is not what its type promises has the form hex(N), so that a form always leads back to the same
// bytes.

#include <tools/reg/value.h>

#include <tools/output.h>

#include <vector>

namespace tools::reg {

struct Form {
    std::string type;
    std::vector<std::string> data;
};

Form Form_Of(const Value &value);
/// Fails with 2 for what is not of that form. Bytes may have blanks and commas between them, or nothing.
Value Value_Of(const Form &form);

/// The data as JSON: a text, a number, or a list of texts.
Json Json_Data(const Form &form);
/// On one line for people: control characters as \n, \x01; the numbers in both ways, bytes cut short.
std::string Shown_Data(const Form &form);
std::string Visible(const std::string &text);

} // namespace tools::reg
