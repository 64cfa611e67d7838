#include <tools/failure.h>
#include <tools/json.h>
#include <tools/output.h>
#include <tools/reg/value_form.h>

#include <platform/registry.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace tools::reg {

namespace {

constexpr std::size_t Bytes_Shown = 32;

struct NamedType {
    const char *name;
    unsigned long type;
    std::size_t number_size; // 0: no number
};

constexpr std::array<NamedType, 6> Named_Types = {{
    {"sz", REG_SZ, 0},
    {"expand_sz", REG_EXPAND_SZ, 0},
    {"dword", REG_DWORD, 4},
    {"binary", REG_BINARY, 0},
    {"multi_sz", REG_MULTI_SZ, 0},
    {"qword", REG_QWORD, 8},
}};

[[noreturn]] void Refuse(const std::string &text, const char *why) {
    throw Failure(Exit_Unusable, "'" + text + "' " + why);
}

const NamedType *Type_Of_Code(unsigned long code) {
    for (const NamedType &type : Named_Types) {
        if (type.type == code) return &type;
    }
    return nullptr;
}

std::optional<unsigned long> Code_In_Brackets(const std::string &name) {
    if (!name.starts_with("hex(") || !name.ends_with(")")) return {};
    unsigned long code = 0;
    const char *const end = name.data() + name.size() - 1;
    const auto [stop, error] = std::from_chars(name.data() + 4, end, code, 16);
    return error == std::errc() && stop == end ? std::optional(code) : std::nullopt;
}

std::uint64_t Number_Of(const std::string &data) {
    std::uint64_t number = 0;
    for (std::size_t at = data.size(); at-- > 0;) number = number << 8 | static_cast<unsigned char>(data[at]);
    return number;
}

std::string Hexadecimal(const std::string &data) {
    std::string text;
    char digits[4];
    for (const char byte : data) {
        std::snprintf(digits, sizeof digits, ",%02x", static_cast<unsigned char>(byte));
        text.append(text.empty() ? digits + 1 : digits);
    }
    return text;
}

std::optional<std::vector<std::string>> Texts_Of(const std::string &data) {
    std::vector<std::string> texts;
    for (std::size_t start = 0; start < data.size();) {
        const std::size_t end = data.find('\0', start);
        if (end == std::string::npos) return {};
        if (end == start) return end + 1 == data.size() ? std::optional(texts) : std::nullopt;
        texts.push_back(data.substr(start, end - start));
        start = end + 1;
    }
    return {};
}

std::string Number_Bytes(const std::string &text, std::size_t size) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    std::uint64_t number = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] =
        std::from_chars(text.data() + (hexadecimal ? 2 : 0), end, number, hexadecimal ? 16 : 10);
    if (error == std::errc::result_out_of_range || (size == 4 && number > UINT32_MAX))
        Refuse(text, "is too large for that type");
    if (error != std::errc() || stop != end) Refuse(text, "is no number");
    std::string bytes;
    for (std::size_t at = 0; at < size; ++at) bytes += static_cast<char>(number >> 8 * at & 0xFF);
    return bytes;
}

std::string Bytes_Of(const std::string &text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == ',' || text[at] == ' ') {
            ++at;
            continue;
        }
        unsigned byte = 0;
        const char *const pair = text.data() + at;
        const auto [stop, error] =
            std::from_chars(pair, std::min(pair + 2, text.data() + text.size()), byte, 16);
        if (error != std::errc() || stop != pair + 2) Refuse(text, "is not pairs of hexadecimal digits");
        bytes += static_cast<char>(byte);
        at += 2;
    }
    return bytes;
}

std::string List_Bytes(const std::vector<std::string> &texts) {
    std::string bytes;
    for (const std::string &text : texts) {
        if (text.empty()) Refuse(text, "cannot stand in a list: an empty text ends it");
        bytes += text + '\0';
    }
    return bytes + '\0';
}

std::string All_Bytes(const std::vector<std::string> &texts) {
    std::string bytes;
    for (const std::string &text : texts) bytes += Bytes_Of(text);
    return bytes;
}

const std::string &One(const Form &form) {
    if (form.data.size() != 1) throw Failure(Exit_Unusable, form.type + " wants data");
    return form.data[0];
}

} // namespace

Form Form_Of(const Value &value) {
    const NamedType *const type = Type_Of_Code(value.type);
    const std::string &data = value.data;
    if (type != nullptr && type->number_size > 0 && data.size() == type->number_size)
        return {type->name, {std::to_string(Number_Of(data))}};
    const bool text = value.type == REG_SZ || value.type == REG_EXPAND_SZ;
    if (text && !data.empty() && data.find('\0') == data.size() - 1)
        return {type->name, {data.substr(0, data.size() - 1)}};
    if (value.type == REG_BINARY) return {type->name, {Hexadecimal(data)}};
    if (value.type == REG_MULTI_SZ) {
        if (const auto texts = Texts_Of(data)) return {type->name, *texts};
    }
    char code[20];
    std::snprintf(code, sizeof code, "hex(%lx)", value.type);
    return {code, {Hexadecimal(data)}};
}

Value Value_Of(const Form &form) {
    if (const auto code = Code_In_Brackets(form.type)) return {*code, All_Bytes(form.data)};
    for (const NamedType &type : Named_Types) {
        if (form.type != type.name) continue;
        if (type.number_size > 0) return {type.type, Number_Bytes(One(form), type.number_size)};
        if (type.type == REG_BINARY) return {type.type, All_Bytes(form.data)};
        if (type.type == REG_MULTI_SZ) return {type.type, List_Bytes(form.data)};
        return {type.type, One(form) + '\0'};
    }
    Refuse(form.type, "is no type: sz, expand_sz, dword, qword, binary, multi_sz or hex(N)");
}

Json Json_Data(const Form &form) {
    if (form.type == "dword" || form.type == "qword") return std::stoull(form.data[0]);
    if (form.type != "multi_sz") return Utf8_Of(form.data[0]);
    Json texts = Json::array();
    for (const std::string &text : form.data) texts.push_back(Utf8_Of(text));
    return texts;
}

std::string Visible(const std::string &text) {
    std::string visible;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            visible += c;
            continue;
        }
        char code[8];
        std::snprintf(code, sizeof code, "\\x%02x", byte);
        visible += c == '\n' ? "\\n" : c == '\r' ? "\\r" : c == '\t' ? "\\t" : code;
    }
    return visible;
}

std::string Shown_Data(const Form &form) {
    if (form.type == "dword" || form.type == "qword") {
        char hexadecimal[24];
        std::snprintf(hexadecimal, sizeof hexadecimal, " (0x%0*llx)", form.type == "dword" ? 8 : 16,
                      std::stoull(form.data[0]));
        return form.data[0] + hexadecimal;
    }
    if (form.type == "multi_sz") {
        std::string texts;
        for (const std::string &text : form.data)
            texts += (texts.empty() ? "\"" : " \"") + Visible(text) + '"';
        return texts;
    }
    const std::string &data = form.data[0];
    if (form.type == "sz" || form.type == "expand_sz") return Visible(data);
    if (data.size() <= 3 * Bytes_Shown) return data;
    return data.substr(0, 3 * Bytes_Shown) + "... (" + std::to_string((data.size() + 1) / 3) + " bytes)";
}

} // namespace tools::reg
