#pragma once
// Text that stands for parts of a registry, as a list of what it asks for. Nothing here touches a machine.
//
//     REGEDIT4
//
//     ; a comment: a line of its own, or behind a key or a value
//     [HKEY_CURRENT_USER\Software\Sample]     makes the key and what leads to it
//     @="the default value"                   \\ and \" stand for a backslash and a quote
//     "Number"=dword:0000002a
//     "Bytes"=hex:01,02,\                     a backslash at the end continues bytes on the next line
//       03
//     "Any type"=hex(2):25,41,25,00           the type's code in hexadecimal
//     "Old"=-                                 deletes the value
//     [-HKEY_CURRENT_USER\Software\Older]     deletes the key with all that it has
//
// Lines end with LF or CR LF. A key's name goes up to the last "]" of its line, so that it may have brackets.
// A file that is cut off is told by its last line: one that could be the beginning of a longer one (a key, a
// number, bytes) must have a line end.

#include <tools/reg/key_path.h>
#include <tools/reg/value.h>

#include <optional>

namespace tools::reg {

/// What is to be done to a value.
struct Item {
    unsigned long line;
    std::string name;
    std::optional<Value> value; // none: delete it
};

/// A key with its items, in the file's order.
struct Section {
    unsigned long line;
    KeyPath key;
    bool deleted; // with all that is below it; there are no items then
    std::vector<Item> items;
};

/// Fails with FaultInFile on the first line that cannot be understood or that no machine can take.
std::vector<Section> Read_Registry_Text(const std::string &text, const std::string &file);

} // namespace tools::reg
