#include <tools/arguments.h>
#include <tools/command.h>
#include <tools/json.h>
#include <tools/machine_choice.h>
#include <tools/number/canonical_number.h>
#include <tools/number/number_commands.h>
#include <tools/output.h>

namespace tools {

namespace {

struct ParseOptions {
    std::vector<std::string> numbers;
    bool json = false;
};

void List(const std::string &text, const CanonicalNumber &number) {
    Print_Line(text);
    const auto field = [](const char *name, const std::string &value) {
        if (!value.empty()) Print_Line(std::string("  ") + name + value);
    };
    field("country   ", number.country);
    field("area      ", number.area);
    field("exchange  ", number.exchange);
    field("line      ", number.line);
    field("ignored   ", number.rest);
    field("not canonical: ", number.reason);
}

Json Json_Of(const std::string &text, const CanonicalNumber &number) {
    const auto field = [](const std::string &value) { return value.empty() ? Json() : Json(Utf8_Of(value)); };
    return {{"number", Utf8_Of(text)},
            {"canonical", number.is_canonical},
            {"country", field(number.country)},
            {"area", field(number.area)},
            {"exchange", field(number.exchange)},
            {"line", field(number.line)},
            {"ignored", field(number.rest)},
            {"reason", field(number.reason)}};
}

ExitCode Parse(const ParseOptions &options) {
    const BorrowedMachine machine;
    bool all = true;
    Json list = Json::array();
    for (const std::string &text : options.numbers) {
        const CanonicalNumber number = Parse_Number(text);
        all = all && number.is_canonical;
        if (options.json)
            list.push_back(Json_Of(text, number));
        else
            List(text, number);
    }
    if (options.json) Print_Json(list);
    return all ? Exit_Success : Exit_Negative;
}

} // namespace

void Add_Number_Parse(CommandTree &tree, CLI::App *number) {
    auto options = std::make_shared<ParseOptions>();
    CLI::App *parse = tree.Add("parse", "takes canonical numbers apart into their four fields", number);
    Each_Whole(parse->add_option("TEXT", options->numbers, "a number such as \"+1 (206) 555-1212\""))
        ->required();
    parse->add_flag("--json", options->json, "as JSON");
    tree.Does(parse, [options] { return Parse(*options); });
}

} // namespace tools
