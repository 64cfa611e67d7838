// A CSafeStr and a std::string, told to do the same, hold the same.

#include <fuzz/support/fuzz_input.h>

#include <kelmara/foundation/safe_str.h>

#include <algorithm>
#include <cstring>

namespace {

int Sign(int number) {
    return number == 0 ? 0 : number < 0 ? -1 : 1;
}

// Up to the delimiter, which goes too.
std::string Cut_Token(std::string &model, char delimiter) {
    const std::size_t at = delimiter ? model.find(delimiter) : std::string::npos;
    const std::string token = model.substr(0, at);
    model.erase(0, at == std::string::npos ? at : at + 1);
    return token;
}

void Replace(CSafeStr &text, std::string &model, const std::string &find, const std::string &replacement) {
    // What has no room, or grows out of itself, goes by rules of its own: it has to end, and that is all.
    const bool plain =
        !find.empty() && replacement.find(find) == std::string::npos && replacement.size() <= find.size();
    text.Replace_String(find.c_str(), replacement.c_str());
    for (std::size_t at; plain && (at = model.find(find)) != std::string::npos;)
        model.replace(at, find.size(), replacement);
    if (!plain) model = static_cast<char *>(text);
}

void Append_Characters(CSafeStr &text, std::string &model, const std::string &given) {
    text.Prime_Increment();
    for (const char character : given) text += character;
    model += given;
}

void Do_Both(CSafeStr &text, std::string &model, FuzzInput &input) {
    const unsigned what = input.Byte();
    const int number = static_cast<signed char>(input.Byte());
    std::string given = input.Text();
    if (what & 0x80) given.append(200, 'g');
    CSafeStr token;
    switch (what % 12) {
    case 0:
        text = given.c_str();
        model = given;
        return;
    case 1:
        text += given.c_str();
        model += given;
        return;
    case 2:
        text += CSafeStr(given.c_str());
        model += given;
        return;
    case 3:
        text += number;
        model += std::to_string(number);
        return;
    case 4:
        return Append_Characters(text, model, given);
    case 5:
        text += text;
        model += std::string(model);
        return;
    case 6:
        text.Shift_Chars(number);
        if (number > 0 && number <= static_cast<int>(model.size()))
            model.erase(0, static_cast<std::size_t>(number));
        return;
    case 7:
        text.Upper();
        std::for_each(model.begin(), model.end(),
                      [](char &c) { c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
        return;
    case 8: {
        if (model.size() > 511) return; // a delimiter there stays
        const std::string cut = Cut_Token(model, static_cast<char>(number));
        text.Next_Token(token, static_cast<char>(number));
        return REQUIRE(cut == static_cast<char *>(token));
    }
    case 9:
        return Replace(text, model, given.substr(0, given.find('|')),
                       given.substr(std::min(given.size(), given.find('|'))));
    case 10:
        text.Get_Next_Insert_Token(token, number, given.empty() ? '%' : given[0]);
        return;
    default:
        text.Quote_Wrap();
        if (!model.starts_with('"')) model = '"' + model + '"';
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    CSafeStr text;
    std::string model;
    while (input.More() && model.size() < 8192) {
        Do_Both(text, model, input);
        REQUIRE(model == static_cast<char *>(text) && text.Length() == static_cast<int>(model.size()));
        const CSafeStr copy(text), again(model.c_str());
        const std::string other = input.Text();
        REQUIRE((copy == again) == 1 && (copy != other.c_str()) == Sign(model.compare(other)));
    }
    return 0;
}
