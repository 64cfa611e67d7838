#include <tools/content/template_tokens.h>
#include <tools/content/text_lines.h>
#include <tools/failure.h>

#include <platform/kernel.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace tools {

namespace {

constexpr std::string_view Sigils = "$%&<^";
constexpr std::size_t Longest_Name = 255;
constexpr std::size_t First_Room = 65536;

bool Tokenize_To(CTokenizer &tokenizer, const std::string &text, std::string &result) {
    return tokenizer.Tokenize(text.c_str(), result.data(), static_cast<int>(result.size()));
}

std::string Reason_For(const TemplateToken &token, DWORD error) {
    const std::string name = "\"" + On_One_Line(token.name) + "\"";
    if (error == static_cast<DWORD>(E_OUTOFMEMORY)) return "not enough memory";
    if (error == ERROR_MORE_DATA) return "the field is longer than 1023 characters";
    switch (token.Sigil()) {
    case '^':
        return "no variable " + name + "; --var NAME=VALUE gives one";
    case '<':
        return "no component; --descriptor NAME,CODE,VERSION gives one";
    case '&':
        if (error == ERROR_NOT_FOUND) return "no define " + name + ", or no field of its code";
        return "& tokens need --define-file and --fields, and a define of a quote and four characters";
    default:
        if (error == ERROR_NOT_FOUND) return "no such field in that section of the fields";
        if (error == static_cast<DWORD>(Unknown_Binding_Table)) return "no section of that name in --fields";
        return "a $ token is written $'TTTT','FFFF'$, with codes of four characters";
    }
}

std::string Fault_Of(const TemplateToken &token) {
    const std::string sigil(1, token.Sigil());
    if (token.end == TemplateToken::Cut) return "a token's name has at most 255 characters";
    return "\"" + sigil + "\" begins a token that has no end; the character itself is written \"" + sigil +
           sigil + "\"";
}

void Require_Whole(const std::string &text, const std::vector<TemplateToken> &tokens,
                   const std::string &file) {
    if (const std::size_t zero = text.find('\0'); zero != text.npos)
        throw FaultInFile(file, Line_Of(text, zero), "a zero byte, at which a template ends");
    const auto odd = std::find_if(tokens.begin(), tokens.end(), [](const TemplateToken &token) {
        return token.end != TemplateToken::Closed;
    });
    if (odd != tokens.end()) throw FaultInFile(file, Line_Of(text, odd->place), Fault_Of(*odd));
}

/// Where the text cannot be expanded, one of its tokens alone cannot be.
[[noreturn]] void Fail_On_Token(CTokenizer &tokenizer, const std::string &text,
                                const std::vector<TemplateToken> &tokens, const std::string &file,
                                DWORD error) {
    std::string value(2048, '\0');
    for (const TemplateToken &token : tokens) {
        if (Tokenize_To(tokenizer, std::string(token.text), value)) continue;
        throw FaultInFile(file, Line_Of(text, token.place),
                          On_One_Line(token.text) + ": " + Reason_For(token, GetLastError()));
    }
    throw Failure(Exit_Unusable, Shown_Name(file) + ": cannot be expanded: error " + std::to_string(error));
}

} // namespace

std::vector<TemplateToken> Find_Tokens(std::string_view text) {
    std::vector<TemplateToken> tokens;
    for (std::size_t at = text.find_first_of(Sigils); at < text.size(); at = text.find_first_of(Sigils, at)) {
        const std::string_view name = text.substr(at + 1, Longest_Name);
        if (name.starts_with(text[at])) {
            at += 2;
            continue;
        }
        const std::size_t closing = name.find(text[at] == '<' ? '>' : text[at]);
        const std::size_t length = std::min(closing, name.size());
        const std::size_t behind = at + 1 + length + 1;
        const bool ends = behind <= text.size();
        tokens.push_back({at, text.substr(at, behind - at), name.substr(0, length),
                          !ends                  ? TemplateToken::Missing
                          : closing == name.npos ? TemplateToken::Cut
                                                 : TemplateToken::Closed});
        at = behind;
    }
    return tokens;
}

std::string Expand_Template(CTokenizer &tokenizer, const std::string &text, const std::string &file) {
    const std::vector<TemplateToken> tokens = Find_Tokens(text);
    Require_Whole(text, tokens, file);
    std::string result;
    for (std::size_t room = text.size() + First_Room; room < INT_MAX; room *= 2) {
        result.assign(room, '\0');
        if (!Tokenize_To(tokenizer, text, result))
            Fail_On_Token(tokenizer, text, tokens, file, GetLastError());
        if (result.back() != 0) continue; // it may have been cut
        result.resize(std::strlen(result.c_str()));
        return result;
    }
    throw Failure(Exit_Unusable, Shown_Name(file) + ": the expanded text is too long");
}

} // namespace tools
