#include <tools/failure.h>
#include <tools/ltx/string_line.h>
#include <tools/ltx/table_image.h>
#include <tools/ltx/table_text.h>
#include <tools/ltx/text_reader.h>
#include <tools/progress.h>

#include <algorithm>

namespace tools::ltx {

std::string Compiled(const std::string &name, const std::string &text) {
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    Progress progress("compiling " + Shown_Name(name), lines);
    ImageBuilder builder(lines, text.size());
    TextReader reader(text);
    for (TextLine line; reader.Next(line); progress.Step()) {
        if (line.kind == TextLine::Faulty) throw FaultInFile(name, line.number, line.fault);
        if (line.kind == TextLine::String) builder.Append(line.string);
    }
    return builder.Finish();
}

std::string Dumped(const StringsFile &table) {
    Progress progress("dumping " + Shown_Name(table.name), table.strings.size());
    std::string text;
    for (const LocatedString &each : table.strings) {
        text += Lines_Of(each.string);
        progress.Step();
    }
    return text;
}

} // namespace tools::ltx
