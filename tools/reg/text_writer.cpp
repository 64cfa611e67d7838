#include <tools/failure.h>
#include <tools/reg/text_writer.h>

#include <platform/registry.h>

#include <cstdio>

namespace tools::reg {

namespace {

constexpr std::size_t Widest_Line = 80;
constexpr char Digits[] = "0123456789abcdef";

std::string In_Quotes(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

bool Has_Line_End(std::string_view text) {
    return text.find_first_of("\r\n") != std::string_view::npos;
}

bool Stands_In_Quotes(const Value &value) {
    return value.type == REG_SZ && !value.data.empty() && value.data.find('\0') == value.data.size() - 1 &&
           !Has_Line_End(value.data);
}

// Null: it is written as bytes.
std::string Plain_Data(const Value &value) {
    if (Stands_In_Quotes(value))
        return In_Quotes(std::string_view(value.data).substr(0, value.data.size() - 1));
    if (value.type != REG_DWORD || value.data.size() != 4) return "";
    std::string number = "dword:";
    for (std::size_t at = 4; at-- > 0;) {
        const auto byte = static_cast<unsigned char>(value.data[at]);
        number += {Digits[byte >> 4], Digits[byte & 0xF]};
    }
    return number;
}

std::string Bytes_Mark(unsigned long type) {
    if (type == REG_BINARY) return "hex:";
    char mark[20];
    std::snprintf(mark, sizeof mark, "hex(%lx):", type);
    return mark;
}

// Wraps before `widest` columns, the first of which the line has used up to `column`.
void Add_Bytes(std::string &out, const std::string &data, std::size_t column, std::size_t widest) {
    for (std::size_t at = 0; at < data.size(); ++at) {
        if (at > 0) out += ',', ++column;
        if (at > 0 && column + 4 > widest) out += "\\\r\n  ", column = 2;
        const auto byte = static_cast<unsigned char>(data[at]);
        out += {Digits[byte >> 4], Digits[byte & 0xF]};
        column += 2;
    }
}

[[noreturn]] void Refuse(const std::string &path, const char *what) {
    throw Failure(Exit_Unusable, path + ": " + what + " cannot be carried by a registry text");
}

bool Could_End_Early(std::string_view path) {
    for (std::size_t at = path.find(']'); at != std::string_view::npos; at = path.find(']', at + 1)) {
        const std::size_t next = path.find_first_not_of(" \t", at + 1);
        if (next != std::string_view::npos && path[next] == ';') return true;
    }
    return false;
}

} // namespace

std::string Written_Name(const std::string &name) {
    return name.empty() ? "@" : In_Quotes(name);
}

std::string Written_Data(const Value &value) {
    std::string written = Plain_Data(value);
    if (!written.empty()) return written;
    written = Bytes_Mark(value.type);
    Add_Bytes(written, value.data, 0, std::string::npos);
    return written;
}

void Write_Heading(std::string &out) {
    out += "REGEDIT4\r\n";
}

void Write_Key(std::string &out, const std::string &path) {
    if (Has_Line_End(path)) Refuse(path, "a line end in a key's name");
    if (Could_End_Early(path)) Refuse(path, "']' and ';' in a row in a key's name");
    out.append("\r\n[").append(path).append("]\r\n");
}

void Write_Value(std::string &out, const std::string &path, const NamedValue &value) {
    if (Has_Line_End(value.name)) Refuse(path, "a line end in a value's name");
    const std::string left = Written_Name(value.name) + '=';
    std::string right = Plain_Data(value.value);
    if (right.empty()) {
        right = Bytes_Mark(value.value.type);
        Add_Bytes(right, value.value.data, left.size() + right.size(), Widest_Line);
    }
    out.append(left).append(right).append("\r\n");
}

} // namespace tools::reg
