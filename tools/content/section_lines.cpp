#include <tools/content/section_lines.h>
#include <tools/failure.h>
#include <tools/interruption.h>

#include <kelmara/content/sections.h>

#include <new>

namespace tools {

namespace {

class SectionList {
  public:
    SectionList() = default;
    ~SectionList() { Unload_Sections(&list_); }
    SectionList(const SectionList &) = delete;
    SectionList &operator=(const SectionList &) = delete;

    CDSList *Get() { return &list_; }
    CSectionEntry &At(long index) { return *static_cast<CSectionEntry *>(list_.GetEntry(index, 0)); }

  private:
    CDSList list_;
};

ParsedSection Copy_Of(CSectionEntry &section) {
    char name[256];
    section.Get_Section_Name(name);
    ParsedSection copy{name, {}};
    for (long index = 0; index < section.Get_Item_Count(); ++index) {
        char *item = nullptr, *value = nullptr;
        long size = 0;
        section.Get_Next_Item(static_cast<int>(index), &item, &value, &size);
        copy.items.push_back({item, std::string(value, static_cast<std::size_t>(size - 1))});
    }
    return copy;
}

/// Hands what a piece gave to its lines, in order. False when they are not for it.
bool Hand_Out(std::vector<ParsedSection> given, bool goes_on, std::vector<SectionReader::Line> &piece) {
    std::size_t next = goes_on ? 1 : 0, items_left = 0;
    for (const ParsedSection &section : given) items_left += section.items.size();
    for (SectionReader::Line &line : piece) {
        for (long i = 0; i < line.look.sections; ++i) {
            if (next == given.size()) return false;
            line.sections.push_back({given[next++].name, {}});
        }
        if (!line.look.has_item) continue;
        if (next == 0 || given[next - 1].items.empty()) return false;
        auto &target = line.sections.empty() ? line.items : line.sections.back().items;
        target.push_back(given[next - 1].items.back());
        --items_left;
    }
    return next == given.size() && items_left == 0;
}

} // namespace

long Parse_Sections(std::string_view text, bool strip_quotes, std::vector<ParsedSection> &sections) {
    const auto parse = [&] {
        SectionList list;
        const long result =
            Load_Sections(text.data(), static_cast<long>(text.size()), list.Get(), strip_quotes);
        for (long index = 0; index < list.Get()->Entries(0); ++index)
            sections.push_back(Copy_Of(list.At(index)));
        return result;
    };
    const auto parse_with_memory = [&]() -> long {
        try {
            return parse();
        } catch (const std::bad_alloc &) {
            throw;
        } catch (int) {
            return E_OUTOFMEMORY; // of a list
        } catch (long) {
            return E_OUTOFMEMORY;
        }
    };
    const long result = parse_with_memory();
    if (result == 0 || result == Malformed_Sections) return result;
    throw Failure(Exit_Unusable, "not enough memory");
}

SectionReader::SectionReader(std::string_view text, bool strip_quotes)
    : text_(text), strip_quotes_(strip_quotes), lines_(text), look_(strip_quotes) {}

bool SectionReader::Next(Line &line) {
    if (place_ == piece_.size() && !Read_Piece()) return false;
    line = std::move(piece_[place_++]);
    return true;
}

bool SectionReader::Read_Piece() {
    piece_.clear();
    place_ = 0;
    const std::size_t start = lines_.Behind();
    bool is_whole = false;
    for (std::string_view text; !is_whole && lines_.Next(text);) {
        End_If_Interrupted(); // a piece may be the whole text
        Line line;
        if (at_fault_) {
            line.look.number = lines_.Number();
            line.look.reason = "not read: the parser stopped in front of it";
        } else
            line.look = look_.Look_At(text, lines_.Number());
        is_whole = line.look.is_whole || line.look.is_fault;
        piece_.push_back(std::move(line));
    }
    if (piece_.empty() || at_fault_) return !piece_.empty();

    const std::string piece = section_ + std::string(text_.substr(start, lines_.Behind() - start));
    std::vector<ParsedSection> given;
    at_fault_ = Parse_Sections(piece, strip_quotes_, given) != 0;
    const bool goes_on = !section_.empty();
    if (!given.empty()) section_ = "[" + given.back().name + "]\n";
    if (at_fault_ != piece_.back().look.is_fault || !Hand_Out(std::move(given), goes_on, piece_))
        throw Failure(Exit_Unusable, "line " + std::to_string(lines_.Number()) +
                                         ": the explanation does not fit what the parser gives");
    return true;
}

} // namespace tools
