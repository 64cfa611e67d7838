#include <tools/failure.h>
#include <tools/progress.h>
#include <tools/reg/text_reader.h>
#include <tools/reg/text_scanner.h>

#include <algorithm>

namespace tools::reg {

namespace {

constexpr char Heading[] = "REGEDIT4";

class Reader {
  public:
    Reader(const std::string &text, const std::string &file)
        : scan_(text, file),
          progress_("reading " + Shown_Name(file),
                    static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'))) {}

    std::vector<Section> Read() {
        Read_Heading();
        while (scan_.Next_Line()) Read_Line();
        return std::move(sections_);
    }

  private:
    void Read_Heading() {
        if (!scan_.Next_Line()) scan_.Fail("nothing there; the first line must be REGEDIT4");
        if (scan_.Rest().starts_with("\xEF\xBB\xBF"))
            scan_.Fail("a byte order mark; the text must be in code page 1252");
        if (!scan_.Take(Heading)) scan_.Fail("no registry text: the first line must be REGEDIT4");
        scan_.Skip_Blanks();
        if (!scan_.At_End()) scan_.Fail("the first line must be REGEDIT4 and nothing else");
    }

    void Read_Line() {
        progress_.Step();
        scan_.Skip_Blanks();
        if (scan_.At_End() || scan_.Rest()[0] == ';') return;
        if (scan_.Take("[")) return Read_Key();
        if (scan_.Rest()[0] != '"' && scan_.Rest()[0] != '@')
            scan_.Fail("neither a key, a value nor a comment");
        Read_Item();
    }

    void Read_Key() {
        Section section{scan_.Line(), {}, scan_.Take("-"), {}};
        const std::string wrong = Read_Key_Path(Bracketed(), section.key);
        if (!wrong.empty()) scan_.Fail(wrong);
        if (section.deleted && section.key.names.empty()) scan_.Fail("a root cannot be deleted");
        Require_Line_End();
        sections_.push_back(std::move(section));
    }

    // A "]" and ";" in a row could end the name or stand in it; nobody is to guess when a key is deleted.
    std::string Bracketed() {
        const std::string_view rest = scan_.Rest();
        const std::size_t end = rest.rfind(']');
        if (end == std::string_view::npos) scan_.Fail("the key's ']' is missing");
        for (std::size_t at = rest.find(']'); at < end; at = rest.find(']', at + 1)) {
            const std::size_t next = rest.find_first_not_of(" \t", at + 1);
            if (rest[next] == ';') scan_.Fail("a comment behind a key cannot have a ']'");
        }
        scan_.Skip(end + 1);
        scan_.Require_Only_Comment("the key");
        return std::string(rest.substr(0, end));
    }

    void Read_Item() {
        if (sections_.empty()) scan_.Fail("a value before the first key");
        if (sections_.back().deleted) scan_.Fail("a value below a key that is deleted");
        Item item{scan_.Line(), {}, {}};
        if (!scan_.Take("@")) item.name = scan_.Quoted();
        if (item.name.size() > Longest_Value_Name)
            scan_.Fail("a value's name is longer than 16383 characters");
        scan_.Skip_Blanks();
        if (!scan_.Take("=")) scan_.Fail("a '=' is missing behind the value's name");
        scan_.Skip_Blanks();
        item.value = Data();
        scan_.Require_Only_Comment("the value");
        sections_.back().items.push_back(std::move(item));
    }

    std::optional<Value> Data() {
        if (scan_.Take("-")) return {};
        if (scan_.Rest().starts_with('"')) return Value{REG_SZ, scan_.Quoted() + '\0'};
        if (scan_.Take("dword:")) return Number();
        if (scan_.Take("hex:")) return Bytes(REG_BINARY);
        if (!scan_.Take("hex(")) scan_.Fail("neither a text in quotes, dword:, hex:, hex(type): nor -");
        const unsigned long type = scan_.Hexadecimal();
        if (!scan_.Take("):")) scan_.Fail("'):' is missing behind the type");
        return Bytes(type);
    }

    Value Number() {
        scan_.Skip_Blanks();
        const unsigned long number = scan_.Hexadecimal();
        Require_Line_End();
        Value value{REG_DWORD, {}};
        for (unsigned shift = 0; shift < 32; shift += 8)
            value.data += static_cast<char>(number >> shift & 0xFF);
        return value;
    }

    Value Bytes(unsigned long type) {
        Value value{type, scan_.Bytes()};
        if (value.data.size() > Largest_Data) scan_.Fail("more than 64 megabytes of data");
        Require_Line_End();
        return value;
    }

    void Require_Line_End() {
        if (!scan_.Line_Is_Ended()) scan_.Fail("the last line has no end: the file may have been cut off");
    }

    Scanner scan_;
    Progress progress_;
    std::vector<Section> sections_;
};

} // namespace

std::vector<Section> Read_Registry_Text(const std::string &text, const std::string &file) {
    return Reader(text, file).Read();
}

} // namespace tools::reg
