#include <reference_suite/companions/log/entry_markup.h>

#include <algorithm>
#include <cctype>
#include <vector>

namespace {

constexpr std::string_view Tags[] = {"b", "i", "u", "tt", "font"}; // those that are closed
constexpr std::string_view Attributes[] = {"color", "size"};       // of "font"
constexpr std::string_view Entities[] = {"&nbsp", "&lt", "&gt", "&amp", "&quot"};

template <std::size_t Size>
bool Is_One_Of(std::string_view name, const std::string_view (&known)[Size]) {
    return std::ranges::find(known, name) != std::end(known);
}

bool Is_Letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool Is_Value_Character(char c) {
    return Is_Letter(c) || (c >= '0' && c <= '9') || c == '#' || c == '+' || c == '-';
}

/// Takes a text apart from the front.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : rest_(text) {}
    std::string_view Rest() const { return rest_; }

    bool Take(char c) {
        if (rest_.empty() || rest_.front() != c) return false;
        rest_.remove_prefix(1);
        return true;
    }
    template <class Accepted>
    std::string Take_While(Accepted accepted) {
        const auto end = std::ranges::find_if_not(rest_, accepted);
        std::string taken(rest_.begin(), end);
        rest_.remove_prefix(taken.size());
        return taken;
    }
    /// In small letters.
    std::string Take_Name() {
        std::string name = Take_While(Is_Letter);
        for (char &c : name) c = static_cast<char>(std::tolower(c));
        return name;
    }
    bool Skip_Blanks() {
        return !Take_While([](char c) { return c == ' '; }).empty();
    }

  private:
    std::string_view rest_;
};

struct Tag {
    bool closes = false;
    std::string name;
    std::string attributes; // as they are written out, with a blank in front of each
};

bool Take_Attribute(Scanner &scanner, std::string &attributes) {
    const std::string name = scanner.Take_Name();
    if (!Is_One_Of(name, Attributes) || !scanner.Take('=')) return false;
    const bool quoted = scanner.Take('"');
    const std::string value = scanner.Take_While(Is_Value_Character);
    if (value.empty() || (quoted && !scanner.Take('"'))) return false;
    attributes += " " + name + "=\"" + value + "\"";
    return true;
}

bool Take_Tag(Scanner &scanner, Tag &tag) {
    if (!scanner.Take('<')) return false;
    tag.closes = scanner.Take('/');
    tag.name = scanner.Take_Name();
    if (!Is_One_Of(tag.name, Tags) && (tag.name != "br" || tag.closes)) return false;
    while (scanner.Skip_Blanks() && !scanner.Rest().starts_with('>')) {
        if (tag.closes || tag.name != "font" || !Take_Attribute(scanner, tag.attributes)) return false;
    }
    return scanner.Take('>');
}

class Writer {
  public:
    std::string Write(std::string_view text) {
        Scanner scanner(text);
        while (!scanner.Rest().empty()) Write_Next(scanner);
        while (!open_.empty()) Close_Last();
        return std::move(out_);
    }

  private:
    void Write_Next(Scanner &scanner) {
        Scanner ahead = scanner;
        if (Tag tag; Take_Tag(ahead, tag) && Write_Tag(tag)) {
            scanner = ahead;
            return;
        }
        if (Write_Entity(scanner)) return;
        const char c = scanner.Rest().front();
        scanner.Take(c);
        if (c == '\r') scanner.Take('\n');
        Write_Character(c);
    }

    // False for an end without a beginning.
    bool Write_Tag(const Tag &tag) {
        if (tag.closes) {
            if (std::ranges::find(open_, tag.name) == open_.end()) return false;
            while (open_.back() != tag.name) Close_Last();
            Close_Last();
            return true;
        }
        out_ += "<" + tag.name + tag.attributes + ">";
        if (tag.name != "br") open_.push_back(tag.name);
        return true;
    }

    void Close_Last() {
        out_ += "</" + open_.back() + ">";
        open_.pop_back();
    }

    // With its semicolon, whatever stands behind it.
    bool Write_Entity(Scanner &scanner) {
        for (const std::string_view entity : Entities) {
            if (!scanner.Rest().starts_with(entity)) continue;
            for (const char c : entity) scanner.Take(c);
            scanner.Take(';');
            out_ += entity;
            out_ += ';';
            return true;
        }
        return false;
    }

    void Write_Character(char c) {
        if (c == '<')
            out_ += "&lt;";
        else if (c == '>')
            out_ += "&gt;";
        else if (c == '&')
            out_ += "&amp;";
        else if (c == '\r' || c == '\n')
            out_ += "<br>";
        else
            out_ += static_cast<unsigned char>(c) < ' ' || c == 0x7F ? ' ' : c;
    }

    std::string out_;
    std::vector<std::string> open_;
};

} // namespace

std::string Markup_Of(std::string_view text) {
    while (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
    return Writer().Write(text);
}
