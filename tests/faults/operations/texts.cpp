#include <tests/faults/operations/operation.h>

#include <kelmara/foundation/memory.h>
#include <kelmara/foundation/safe_str.h>
#include <kelmara/foundation/string_helpers.h>

#include <cstring>
#include <optional>

namespace {

using Made = std::optional<CSafeStr>;

std::string Text_Of(CSafeStr &string) {
    return static_cast<char *>(string);
}

template <class Operate>
Operation On_String(const char *name, Operate operate) {
    const auto prepare = [] { return std::make_shared<CSafeStr>("a text before"); };
    const auto done = [operate](CSafeStr &string) { return operate(string), 0L; };
    return Row(name, 0, {Throws_No_Memory}, prepare, done, Text_Of);
}

template <class Operate>
Operation Making(const char *name, Operate operate) {
    const auto prepare = [] { return std::make_shared<Made>(); };
    return Row(name, 1, {Throws_Minus_One}, prepare, operate,
               [](Made &made) { return made ? Text_Of(*made) : "none"; });
}

struct Block {
    ~Block() {
        if (place) ds_free(place);
    }
    char *place = static_cast<char *>(ds_malloc_clear(8));
};

struct Buffer {
    char text[700] = "find it";
};

} // namespace

Operations Text_Operations() {
    static const CSafeStr long_string(Long_Text.c_str());
    const auto buffer = [] { return std::make_shared<Buffer>(); };
    const auto written = [](Buffer &subject) { return std::string(subject.text); };
    return {
        Row(
            "ds_realloc", 1, {Gives_Nothing}, [] { return std::make_shared<Block>(); },
            [](Block &block) {
                void *const grown = ds_realloc(block.place, 100);
                if (grown) block.place = static_cast<char *>(grown);
                return grown != nullptr;
            },
            [](Block &block) { return block.place; }),
        Making("string", [](Made &made) { return made.emplace(Long_Text.c_str()), 1; }),
        Making("copy of a string", [](Made &made) { return made.emplace(long_string), 1; }),
        On_String("=", [](CSafeStr &string) { string = Long_Text.c_str(); }),
        On_String("= string", [](CSafeStr &string) { string = long_string; }),
        On_String("+=", [](CSafeStr &string) { string += Long_Text.c_str(); }),
        On_String("+= itself and more", [](CSafeStr &string) { string += long_string; }),
        On_String("Set_Data", [](CSafeStr &string) { string.Set_Data(Long_Text.c_str(), 600); }),
        On_String("Shift_Chars", [](CSafeStr &string) { string.Shift_Chars(600); }),
        On_String("Replace_String",
                  [](CSafeStr &string) {
                      string.Replace_String("text", static_cast<const CSafeStr &>(long_string));
                  }),
        Row(
            "Check_Buffer", 0, {Gives_No_Memory}, [] { return std::make_shared<CSafeStr>("before"); },
            [](CSafeStr &string) { return CStrAlloc().Check_Buffer(700, &string); }, Text_Of),
        Row(
            "Next_Token", 1, {Throws_No_Memory},
            [] { return std::make_shared<std::pair<CSafeStr, CSafeStr>>(Long_Text.c_str(), ""); },
            [](std::pair<CSafeStr, CSafeStr> &both) { return both.first.Next_Token(both.second, ','), 1; },
            [](std::pair<CSafeStr, CSafeStr> &both) {
                return Text_Of(both.first) + "|" + Text_Of(both.second);
            }),
        Row(
            "strcmp_ncs", -1, {Gives_Nothing}, buffer,
            [](Buffer &) { return strcmp_ncs(Long_Text.c_str(), (Long_Text.c_str() + 1)) != 0 ? -1 : 0; },
            written),
        Row(
            "strstr_ncs", 1, {Gives_Nothing}, buffer,
            [](Buffer &) { return strstr_ncs(Long_Text.c_str(), Long_Text.c_str() + 200) != nullptr; },
            written),
        Row(
            "Replace_String of texts", 1, {Gives_Nothing}, buffer,
            [](Buffer &subject) { return Replace_String(subject.text, "find", "replace"); }, written),
    };
}
