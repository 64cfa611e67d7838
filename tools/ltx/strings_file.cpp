#include <tools/failure.h>
#include <tools/files.h>
#include <tools/interruption.h>
#include <tools/ltx/strings_file.h>
#include <tools/ltx/table_image.h>
#include <tools/ltx/text_reader.h>
#include <tools/output.h>
#include <tools/progress.h>

#include <algorithm>

namespace tools::ltx {

namespace {

constexpr std::string_view Byte_Order_Mark = "\xEF\xBB\xBF";

/// Line by line, for the number of one that cannot be had.
std::string Text_From_Utf8(const std::string &name, std::string_view utf8) {
    std::string text;
    for (unsigned long number = 1; !utf8.empty(); ++number) {
        End_If_Interrupted();
        const std::string line(utf8.substr(0, std::min(utf8.find('\n'), utf8.size() - 1) + 1));
        utf8.remove_prefix(line.size());
        try {
            text += Machine_Text_Of(line);
        } catch (const Failure &failure) {
            throw FaultInFile(name, number, failure.what());
        }
    }
    return text;
}

std::string In_Machine_Text(const std::string &name, std::string bytes, bool utf8) {
    const bool marked = bytes.starts_with(Byte_Order_Mark);
    if (!marked && !utf8) return bytes;
    return Text_From_Utf8(name, std::string_view(bytes).substr(marked ? Byte_Order_Mark.size() : 0));
}

bool Ends_In_Ltx(const std::string &name) {
    if (name.size() < 4) return false;
    std::string ending = name.substr(name.size() - 4);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == ".ltx";
}

void Require(const StringsFile &file, bool faultless) {
    for (const Finding &fault : file.faults) {
        if (!fault.in_table)
            throw FaultInFile(file.name, static_cast<unsigned long>(fault.number), fault.text);
        if (fault.damage || faultless) throw Failure(Exit_Unusable, Shown(fault));
    }
}

} // namespace

StringsFile Text_Of(const std::string &name, std::string bytes) {
    StringsFile file = {name, std::move(bytes), false, {}, {}};
    Progress progress("reading " + Shown_Name(name),
                      static_cast<std::size_t>(std::count(file.bytes.begin(), file.bytes.end(), '\n')));
    TextReader reader(file.bytes);
    for (TextLine line; reader.Next(line); progress.Step()) {
        const auto number = static_cast<long>(line.number);
        if (line.kind == TextLine::Faulty) file.faults.push_back({name, false, number, {}, line.fault, true});
        if (line.kind == TextLine::String) file.strings.push_back({std::move(line.string), number});
    }
    return file;
}

StringsFile Table_Of(const std::string &name, std::string bytes) {
    StringsFile file = {name, std::move(bytes), true, {}, {}};
    ImageReader reader(file.bytes);
    Progress progress("reading " + Shown_Name(name), static_cast<std::size_t>(reader.Count()));
    for (; reader.Next(); progress.Step()) file.strings.push_back({reader.String(), reader.Index()});
    for (const ImageFault &fault : reader.Faults())
        file.faults.push_back({name, true, fault.index, fault.identifier, fault.text, fault.damage});
    return file;
}

std::string Read_Text(const std::string &name, bool utf8) {
    return In_Machine_Text(name, Read_File(name), utf8);
}

StringsFile Load_Text(const std::string &name, bool utf8) {
    return Text_Of(name, Read_Text(name, utf8));
}

StringsFile Load_Table(const std::string &name) {
    return Table_Of(name, Read_File(name));
}

StringsFile Load_Strings(const std::string &name, bool utf8) {
    std::string bytes = Read_File(name);
    const bool is_table = Ends_In_Ltx(name) || bytes.find('\0') != std::string::npos;
    if (is_table) return Table_Of(name, std::move(bytes));
    return Text_Of(name, In_Machine_Text(name, std::move(bytes), utf8));
}

void Require_Readable(const StringsFile &file) {
    Require(file, false);
}

void Require_Faultless(const StringsFile &file) {
    Require(file, true);
}

std::string Encoded(const std::string &text, bool utf8) {
    return utf8 ? Utf8_Of(text) : text;
}

} // namespace tools::ltx
