#include <tools/log/log_line.h>

#include <algorithm>
#include <charconv>

namespace tools {

namespace {

struct Entity {
    std::string_view name;
    char character;
};
constexpr Entity Entities[] = {
    {"&nbsp;", ' '}, {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}};

/// Takes a line apart from the front.
class Scanner {
  public:
    explicit Scanner(std::string_view rest) : rest_(rest) {}
    bool Take(std::string_view text) {
        if (!rest_.starts_with(text)) return false;
        rest_.remove_prefix(text.size());
        return true;
    }
    /// What is in front of `end`, which is taken too.
    bool Take_Up_To(std::string_view end, std::string &taken) {
        const std::size_t at = rest_.find(end);
        if (at == rest_.npos) return false;
        taken = rest_.substr(0, at);
        rest_.remove_prefix(at + end.size());
        return true;
    }
    std::string_view Rest() const { return rest_; }

  private:
    std::string_view rest_;
};

// "program.exe 123"
bool Take_Process(const std::string &who, LogEntry &entry) {
    const std::size_t blank = who.rfind(' ');
    if (blank == who.npos) return false;
    const char *begin = who.data() + blank + 1, *end = who.data() + who.size();
    const auto [stop, error] = std::from_chars(begin, end, entry.process);
    if (error != std::errc() || stop != end) return false;
    entry.program = who.substr(0, blank);
    return true;
}

} // namespace

std::optional<LogEntry> Read_Log_Line(std::string_view line) {
    LogEntry entry;
    std::string process;
    Scanner scanner(line);
    if (!scanner.Take("<p><time>") || !scanner.Take_Up_To("</time> <span class=\"process\">", entry.time) ||
        !scanner.Take_Up_To("</span> ", process) || !Take_Process(Text_Of_Markup(process), entry))
        return {};
    const std::size_t end = scanner.Rest().rfind("</p>");
    if (end == scanner.Rest().npos) return {};
    entry.markup = scanner.Rest().substr(0, end);
    entry.text = Text_Of_Markup(entry.markup);
    entry.text.erase(0, std::min(entry.text.find_first_not_of(' '), entry.text.size()));
    entry.text.erase(entry.text.find_last_not_of(' ') + 1);
    return entry;
}

std::string Text_Of_Markup(std::string_view markup) {
    std::string text;
    Scanner scanner(markup);
    while (!scanner.Rest().empty()) {
        bool taken = false;
        for (const Entity &entity : Entities) {
            if (taken || !scanner.Take(entity.name)) continue;
            text += entity.character;
            taken = true;
        }
        std::string tag;
        if (taken) continue;
        if (scanner.Rest().front() == '<' && scanner.Take_Up_To(">", tag)) {
            if (tag == "<br") text += '\n';
            continue;
        }
        text += scanner.Rest().front();
        scanner.Take(scanner.Rest().substr(0, 1));
    }
    return text;
}

} // namespace tools
