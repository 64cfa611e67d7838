// The command's way with string tables: any lines made a table, which holds what they say and gives it back,
// and any bytes read as a table, edited, and read again.

#include <fuzz/support/fuzz_input.h>

#include <tools/failure.h>
#include <tools/ltx/string_line.h>
#include <tools/ltx/table_image.h>
#include <tools/ltx/text_reader.h>

namespace {

using namespace tools::ltx;
using Strings = std::vector<TableString>;

Strings Read_Text(const std::string &text) {
    Strings strings;
    TextReader reader(text);
    for (TextLine line; reader.Next(line);) {
        if (line.kind == TextLine::String) strings.push_back(line.string);
        REQUIRE((line.kind == TextLine::Faulty) == !line.fault.empty());
    }
    return strings;
}

Strings Read_Table(const std::string &image) {
    Strings strings;
    ImageReader reader(image);
    while (reader.Next()) strings.push_back(reader.String());
    return strings;
}

void There_And_Back(const Strings &strings) {
    ImageBuilder builder(strings.size(), 0);
    std::string text;
    for (const TableString &string : strings) {
        builder.Append(string);
        text += Lines_Of(string);
    }
    REQUIRE(Read_Table(builder.Finish()) == strings);
    REQUIRE(Read_Text(text) == strings);
}

// Each entry replaced or deleted in turn, as long as the table has no damage.
void Edit(std::string image) {
    std::size_t left = Read_Table(image).size();
    for (std::size_t i = 0; i < left; ++i) {
        ImageReader reader(image);
        for (std::size_t j = 0; j <= i; ++j) REQUIRE(reader.Next());
        if (i % 2)
            Delete_Entry(image, reader), --left;
        else
            Replace_Entry(image, reader, {std::string(i, 't'), "IDENTIFIER", "", 1});
        REQUIRE(Read_Table(image).size() == left);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzInput input(data, size);
    const bool is_text = input.Byte() % 2;
    const std::string bytes(input.Rest());
    if (is_text) {
        There_And_Back(Read_Text(bytes));
        return 0;
    }
    ImageReader reader(bytes);
    while (reader.Next()) REQUIRE(reader.Place() < bytes.size());
    if (reader.Faults().empty()) Edit(bytes);
    return 0;
}
