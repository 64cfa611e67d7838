#include <tests/faults/operations/operation.h>

#include <kelmara/foundation/memory.h>
#include <kelmara/foundation/safe_str.h>
#include <kelmara/foundation/string_helpers.h>

#include <cstring>
#include <optional>

namespace {

const unsigned char *Pascal_Text() {
    static const std::string text = "\xFF" + Long_Text;
    return reinterpret_cast<const unsigned char *>(text.data());
}

struct String {
    CSafeStr text{"a text before"};
    std::string State() { return static_cast<char *>(text); }
};

struct Full {
    Full() { text.Prime_Increment(); }
    CSafeStr text{std::string(511, 'l').c_str()};
    std::string State() { return static_cast<char *>(text); }
};

struct Grown : Full {
    Grown() { text += "more", text.Prime_Increment(); }
};

struct Pair {
    CSafeStr line{Long_Text.c_str()}, token{""};
    std::string State() { return static_cast<char *>(line) + std::string("|") + static_cast<char *>(token); }
};

struct Text {
    std::optional<CSafeStr> text;
    std::string State() { return text ? static_cast<char *>(*text) : "none"; }
};

struct Block {
    ~Block() {
        if (place) ds_free(place);
    }
    std::string State() { return place; }
    char *place = static_cast<char *>(ds_malloc_clear(8));
};

struct New {
    ~New() {
        if (place) ds_free(place);
    }
    void *place = nullptr;
};

struct Buffer {
    char text[1300] = "find it";
    std::string State() { return text; }
};

} // namespace

Operations Text_Operations() {
    static const CSafeStr long_string(Long_Text.c_str());
    static const WCHAR wide[] = {'f', 'i', 'n', 'd', 0};
    return {
        Row<New>("ds_malloc", 1, {Nothing}, [](auto &of) { return (of.place = ds_malloc(9)) != nullptr; }),
        Row<New>("ds_malloc_clear", 1, {Nothing},
                 [](auto &of) { return (of.place = ds_malloc_clear(9)) != nullptr; }),
        Row<New>("ds_malloc_procptr", 1, {Nothing},
                 [](auto &of) { return (of.place = ds_malloc_procptr(9)) != nullptr; }),
        Row<New>("Allocate_Object", 1, {Nothing},
                 [](auto &of) { return (of.place = Allocate_Object(9)) != nullptr; }),
        Row<Block>("ds_realloc", 1, {Nothing},
                   [](auto &of) {
                       void *const grown = ds_realloc(of.place, 100);
                       if (grown) of.place = static_cast<char *>(grown);
                       return grown != nullptr;
                   }),
        Row<Text>("string", 1, {Minus_One}, [](auto &of) { return of.text.emplace(Long_Text.c_str()), 1; }),
        Row<Text>("string of Pascal's", 1, {Minus_One},
                  [](auto &of) { return of.text.emplace(Pascal_Text()), 1; }),
        Row<Text>("copy of a string", 1, {Minus_One},
                  [](auto &of) { return of.text.emplace(long_string), 1; }),
        Row<String>("=", 0, {Thrown}, [](auto &of) { of.text = Long_Text.c_str(); }),
        Row<String>("= string", 0, {Thrown}, [](auto &of) { of.text = long_string; }),
        Row<String>("+=", 0, {Thrown}, [](auto &of) { of.text += Long_Text.c_str(); }),
        Row<String>("+= string", 0, {Thrown}, [](auto &of) { of.text += long_string; }),
        Row<Grown>("+= Pascal's", 0, {Thrown}, [](auto &of) { of.text += Pascal_Text(); }),
        Row<Full>("+= number", 0, {Thrown}, [](auto &of) { of.text += 1000000000; }),
        Row<Full>("+= character", 0, {Thrown}, [](auto &of) { of.text += 'x'; }),
        Row<Grown>("+= character to a block", 0, {Thrown}, [](auto &of) { of.text += 'x'; }),
        Row<String>("Set_Data", 0, {Thrown}, [](auto &of) { of.text.Set_Data(Long_Text.c_str(), 600); }),
        Row<String>("Shift_Chars", 0, {Thrown}, [](auto &of) { of.text.Shift_Chars(600); }),
        Row<String>("Replace_String", 0, {Thrown},
                    [](auto &of) { of.text.Replace_String("text", long_string); }),
        Row<String>("Check_Buffer", 0, {No_Memory},
                    [](auto &of) { return CStrAlloc().Check_Buffer(700, &of.text); }),
        Row<Pair>("Quote_Wrap", 0, {Thrown}, [](auto &of) { of.line.Quote_Wrap(); }),
        Row<Pair>("Next_Token", 1, {Thrown}, [](auto &of) { return of.line.Next_Token(of.token, ','), 1; }),
        Row<Pair>("Get_Next_Insert_Token", 1, {Thrown},
                  [](auto &of) { return of.line.Get_Next_Insert_Token(of.token, 0, 'l'); }),
        Row<Buffer>("strcmp_ncs", -1, {Nothing},
                    [](auto &) { return strcmp_ncs(Long_Text.c_str(), Long_Text.c_str() + 1) ? -1 : 0; }),
        Row<Buffer>("strstr_ncs", 1, {Nothing},
                    [](auto &) { return strstr_ncs(Long_Text.c_str(), Long_Text.c_str() + 200) != nullptr; }),
        Row<Buffer>("Strip_String", 1, {Nothing}, [](auto &of) { return Strip_String(of.text, "it"); }),
        Row<Buffer>("Replace_String of texts", 1, {Nothing},
                    [](auto &of) { return Replace_String(of.text, "find", "replace"); }),
        Row<Buffer>("Replace_String of wide texts", 0, {Nothing},
                    [](auto &of) {
                        return Replace_String(reinterpret_cast<WCHAR *>(of.text + 700), wide, wide + 1);
                    }),
        Row<Buffer>("Quote_String", 0, {}, Either, [](auto &of) { Quote_String(of.text); }),
    };
}
