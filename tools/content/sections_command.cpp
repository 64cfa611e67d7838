#include <tools/command.h>
#include <tools/content/content_commands.h>
#include <tools/content/json_list.h>
#include <tools/content/line_listing.h>
#include <tools/content/section_lines.h>
#include <tools/files.h>
#include <tools/json.h>
#include <tools/machine_choice.h>
#include <tools/output.h>
#include <tools/progress.h>
#include <tools/tables/machine_view.h>

#include <map>
#include <optional>

namespace tools {

namespace {

struct SectionOptions {
    std::string file;
    bool keep_quotes = false, json = false;
};

/// Which items of a section cannot be found by their name, because of earlier ones.
class HiddenItems {
  public:
    void Begin_Section() { lines_.clear(); }
    void Look_At(const ParsedItem &item, SectionLine &line) {
        const auto [first, is_new] = lines_.emplace(In_Capitals(item.name), line.number);
        if (!is_new)
            line.remarks.push_back("hidden by the item of that name on line " +
                                   std::to_string(first->second));
    }

  private:
    std::map<std::string, unsigned long> lines_;
};

class SectionReport {
  public:
    virtual ~SectionReport() = default;
    virtual void Tell(const SectionReader::Line &line) = 0;
    virtual void End() = 0;
};

class SectionListing final : public SectionReport {
  public:
    explicit SectionListing(unsigned long lines) : listing_(lines) {}

    void Tell(const SectionReader::Line &line) override {
        if (!line.look.reason.empty() && !line.look.is_fault) Tell_Line(line, "- " + line.look.reason);
        for (const ParsedItem &item : line.items) Tell_Item(line, item);
        for (const ParsedSection &section : line.sections) {
            ++sections_;
            Tell_Line(line, "[" + On_One_Line(section.name) + "]");
            for (const ParsedItem &item : section.items) Tell_Item(line, item);
        }
        if (line.look.is_fault) Tell_Line(line, "! " + line.look.reason);
        listing_.Tell_Remarks(line.look.number, line.look.remarks);
    }
    void End() override { Print_Line(Counted(sections_, "section") + ", " + Counted(items_, "item")); }

  private:
    void Tell_Line(const SectionReader::Line &line, const std::string &text) {
        listing_.Tell(line.look.number, text);
    }
    void Tell_Item(const SectionReader::Line &line, const ParsedItem &item) {
        ++items_;
        Tell_Line(line, "  " + On_One_Line(item.name) + " = " + On_One_Line(item.value));
    }

    LineListing listing_;
    unsigned long sections_ = 0, items_ = 0;
};

class SectionJson final : public SectionReport {
  public:
    explicit SectionJson(const std::string &file) {
        Print("{\n  \"file\": " + Json(Host_Text(file)).dump() + ",\n  \"sections\": ");
        sections_.emplace(4);
    }

    void Tell(const SectionReader::Line &line) override {
        const unsigned long number = line.look.number;
        for (const ParsedItem &item : line.items) Tell_Item(item, number);
        for (const ParsedSection &section : line.sections) {
            End_Section();
            sections_->Add_Written("{\"name\":" + Json(Utf8_Of(section.name)).dump() +
                                   ",\"line\":" + std::to_string(number) + ",\"items\":");
            items_.emplace(6);
            for (const ParsedItem &item : section.items) Tell_Item(item, number);
        }
        if (line.look.is_fault)
            fault_ = Json{{"line", number}, {"text", line.look.reason}}.dump();
        else if (!line.look.reason.empty())
            nothing_.emplace_back(number, line.look.reason);
        for (const std::string &remark : line.look.remarks) remarks_.emplace_back(number, remark);
    }
    void End() override {
        End_Section();
        sections_->Close();
        Print(",\n  \"fault\": " + fault_ + ",\n  \"remarks\": ");
        Print_Texts(remarks_, "text");
        Print(",\n  \"without_effect\": ");
        Print_Texts(nothing_, "reason");
        Print_Line("\n}");
    }

  private:
    using Texts = std::vector<std::pair<unsigned long, std::string>>;

    void Tell_Item(const ParsedItem &item, unsigned long number) {
        items_->Add({{"name", Utf8_Of(item.name)}, {"value", Utf8_Of(item.value)}, {"line", number}});
    }
    void End_Section() {
        if (!items_) return;
        items_->Close();
        items_.reset();
        Print("}");
    }
    static void Print_Texts(const Texts &texts, const char *name) {
        JsonList list(4);
        for (const auto &[number, text] : texts) list.Add({{"line", number}, {name, text}});
        list.Close();
    }

    std::optional<JsonList> sections_, items_;
    Texts remarks_, nothing_;
    std::string fault_ = "null";
};

ExitCode Show_Sections(const SectionOptions &options) {
    const BorrowedMachine machine;
    const std::string text = Read_File(options.file);
    const unsigned long lines = Count_Text_Lines(text);
    const std::unique_ptr<SectionReport> report =
        options.json ? std::unique_ptr<SectionReport>(new SectionJson(options.file))
                     : std::make_unique<SectionListing>(lines);
    std::optional<FaultInFile> fault;
    HiddenItems hidden;
    Progress progress("reading lines", lines);
    SectionReader reader(text, !options.keep_quotes);
    for (SectionReader::Line line; reader.Next(line); progress.Step()) {
        for (const ParsedItem &item : line.items) hidden.Look_At(item, line.look);
        for (const ParsedSection &section : line.sections) {
            hidden.Begin_Section();
            for (const ParsedItem &item : section.items) hidden.Look_At(item, line.look);
        }
        if (line.look.is_fault) fault.emplace(options.file, line.look.number, line.look.reason);
        report->Tell(line);
    }
    report->End();
    if (!fault) return Exit_Success;
    Flush_Output();
    throw *fault;
}

} // namespace

void Add_Sections(CommandTree &tree) {
    auto options = std::make_shared<SectionOptions>();
    CLI::App *sections = tree.Add("sections", "shows what the library's parser sees in a section file");
    sections->add_option("FILE", options->file, "the section file, or - for standard input")->required();
    sections->add_flag("--keep-quotes", options->keep_quotes, "leave double quotes in names and values");
    sections->add_flag("--json", options->json, "as JSON");
    tree.Does(sections, [options] { return Show_Sections(*options); });
    tree.Tells(
        sections, "OUTPUT",
        "Each line of the file stands with its number and what it gives: a section in brackets, an item "
        "as NAME = VALUE, or a dash and the reason why it gives nothing. Remarks in brackets tell what "
        "is not as it looks: a value that a semicolon cuts, a name that begins on an earlier line, an "
        "item that one of the same name hides.\n\n"
        "A text that the parser refuses is shown up to the fault, which stands on standard error as "
        "FILE:LINE: TEXT; the exit code is then 2.");
    tree.Tells(sections, "EXAMPLES",
               "    kelmara sections services.sct\n"
               "    kelmara sections --json services.sct | jq '.sections[].name'");
}

} // namespace tools
