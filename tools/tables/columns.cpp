#include <tools/tables/columns.h>

#include <algorithm>
#include <cstdio>

namespace tools {

std::string Shown(const std::string &text) {
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
        if (byte < ' ' || byte == 0x7F)
            shown += escaped;
        else
            shown += c;
    }
    return shown;
}

Columns::Columns(std::vector<std::string> headings) : headings_(std::move(headings)) {
    for (std::string &heading : headings_) {
        to_the_right_.push_back(heading.starts_with('>'));
        if (heading.starts_with('>')) heading.erase(0, 1);
    }
}

void Columns::Add(std::vector<std::string> row) {
    row.resize(headings_.size());
    for (std::string &cell : row) cell = Shown(cell);
    rows_.push_back(std::move(row));
}

std::string Columns::Line_Of(const std::vector<std::string> &row,
                             const std::vector<std::size_t> &widths) const {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string space(widths[i] - row[i].size(), ' ');
        line += (i == 0 ? "" : "  ") + (to_the_right_[i] ? space + row[i] : row[i] + space);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

std::string Columns::Text() const {
    std::vector<std::size_t> widths;
    for (const std::string &heading : headings_) widths.push_back(heading.size());
    for (const auto &row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text = Line_Of(headings_, widths);
    for (const auto &row : rows_) text += Line_Of(row, widths);
    return text;
}

} // namespace tools
