#include <tools/content/section_lines.h>
#include <tools/content/template_fields.h>
#include <tools/failure.h>
#include <tools/files.h>

#include <kelmara/foundation/conversions.h>

#include <platform/errors.h>

#include <algorithm>
#include <cstring>

namespace tools {

namespace {

constexpr std::size_t Code_Length = 4;

/// A field's name as it is kept: in capitals, without the blanks at its end.
std::string Kept_Name(std::string name) {
    name.erase(name.find_last_not_of(' ') + 1);
    return In_Capitals(name);
}

void Require_Code(const std::string &name, const std::string &file, unsigned long line) {
    if (name.size() > Code_Length)
        throw FaultInFile(file, line,
                          "\"" + On_One_Line(name) + "\" is longer than a code of four characters");
}

} // namespace

long FieldSection::QueryInterface(const GUID &, void **object) {
    *object = nullptr;
    return E_NOINTERFACE;
}

long FieldSection::Get_Field_Value(long field, char *buffer, long size) {
    char code[Code_Length + 1];
    Char_Code_To_String(field, code);
    const auto found = fields_.find(Kept_Name(code));
    if (found == fields_.end()) return ERROR_NOT_FOUND;
    if (found->second.size() >= static_cast<std::size_t>(size)) return ERROR_MORE_DATA;
    std::memcpy(buffer, found->second.c_str(), found->second.size() + 1);
    return 0;
}

void FieldSection::Add(const std::string &name, const std::string &value) {
    fields_.emplace(Kept_Name(name), value);
}

TemplateFields::TemplateFields(const std::string &file) {
    const std::string text = Read_File(file);
    SectionReader reader(text, true);
    for (SectionReader::Line line; reader.Next(line);) {
        if (line.look.is_fault) throw FaultInFile(file, line.look.number, line.look.reason);
        const auto add = [&](const std::vector<ParsedItem> &items) {
            for (const ParsedItem &item : items) {
                Require_Code(item.name, file, line.look.number);
                tables_.back().fields.Add(item.name, item.value);
            }
        };
        add(line.items);
        for (const ParsedSection &section : line.sections) {
            if (!tables_.empty()) Require_Code(section.name, file, line.look.number);
            tables_.emplace_back().name = section.name;
            add(section.items);
        }
    }
    if (tables_.empty()) throw Failure(Exit_Unusable, Shown_Name(file) + ": has no section");
}

void TemplateFields::Give_To(CTokenizer &tokenizer) {
    tokenizer.Use_Binding_Host(&tables_.front().fields);
    for (Table &table : tables_) {
        if (table.name.size() > Code_Length) continue;
        std::string code = table.name;
        code.resize(Code_Length, ' ');
        tokenizer.Add_Binding_Table(String_To_Char_Code(code.c_str()), &table.fields);
    }
}

} // namespace tools
