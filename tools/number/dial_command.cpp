#include <tools/failure.h>
#include <tools/machine_choice.h>
#include <tools/number/copied_telephony.h>
#include <tools/number/dialled_steps.h>
#include <tools/number/number_commands.h>
#include <tools/output.h>

#include <kelmara/connectivity/phone_numbers.h>
#include <kelmara/connectivity/tapi.h>

#include <platform/kernel.h>

#include <algorithm>
#include <optional>

namespace tools {

namespace {

constexpr DWORD Room_For_Translation = 256; // that the library gives a service

struct DialOptions {
    std::string number, from;
    bool has_from = false, explain = false, json = false;
};

struct Dialled {
    DialLocation from;
    Translation translation;
};

std::string Names_Of(const DialLocations &locations) {
    std::string names;
    for (const DialLocation &each : locations.all) names += (names.empty() ? "" : ", ") + each.name;
    return names.empty() ? "there are none" : "there are " + names;
}

const DialLocation &Choose(const DialLocations &locations, const DialOptions &options) {
    const DialLocation *const chosen = options.has_from ? locations.Named(options.from) : locations.Current();
    if (chosen == nullptr)
        throw Failure(Exit_Negative, (options.has_from ? options.from + ": no such dialling location; "
                                                       : "no dialling location is the current one; ") +
                                         Names_Of(locations));
    return *chosen;
}

/// The strings of the library, from the location that is the current one now.
void Ask_The_Library(const std::string &number, Dialled &dialled) {
    if (dialled.translation.error != 0)
        throw Failure(Exit_Negative, number + ": " + Telephony_Error(dialled.translation.error));
    if (dialled.translation.size > Room_For_Translation)
        throw Failure(Exit_Negative, number + ": what is dialled is longer than the library takes");
    char dialable[256], displayable[256];
    Create_Dial_Number(number.c_str(), "", dialable, displayable);
    dialled.translation.dialable = dialable;
    dialled.translation.displayable = displayable;
}

Dialled Dial(const DialOptions &options) {
    const TelephonyService here;
    const DialLocation from = Choose(here.Locations(), options);
    std::optional<CopiedTelephony> copy;
    if (here.Locations().current != from.id) copy.emplace();
    Setup_TAPI(GetModuleHandleA(nullptr));
    if (Get_Current_Device_ID() != 0)
        throw Failure(Exit_Negative, "no line device of this machine has a name: nothing can be dialled");
    if (copy) Set_Current_Dial_Location(from.name.c_str());
    const TelephonyService service;
    if (service.Locations().current != from.id)
        throw Failure(Exit_Unusable, from.name + ": the telephony service does not take it");
    Dialled dialled{from, service.Translate(options.number)};
    Ask_The_Library(options.number, dialled);
    return dialled;
}

ExitCode Show(const DialOptions &options) {
    Require_Machine();
    const Dialled dialled = Dial(options);
    const std::string road = Road_Of(dialled.translation);
    const std::vector<DialledStep> steps = Steps_Of(dialled.translation, dialled.from, options.number);
    if (options.json) {
        Json list = Json::array();
        for (const DialledStep &step : steps)
            list.push_back({{"part", Utf8_Of(step.part)}, {"rule", Utf8_Of(step.rule)}});
        Print_Json({{"number", Utf8_Of(options.number)},
                    {"from", Utf8_Of(dialled.from.name)},
                    {"dialable", Utf8_Of(dialled.translation.dialable)},
                    {"displayable", Utf8_Of(dialled.translation.displayable)},
                    {"call", road},
                    {"steps", list}});
        return Exit_Success;
    }
    Print_Line("from   " + dialled.from.name);
    Print_Line("dials  " + dialled.translation.dialable);
    Print_Line("shows  " + dialled.translation.displayable);
    if (!options.explain) return Exit_Success;
    Print_Line("call   " + road);
    std::size_t width = 0;
    for (const DialledStep &step : steps) width = std::max(width, step.part.size());
    for (const DialledStep &step : steps)
        Print_Line("       " + step.part + std::string(width - step.part.size() + 2, ' ') + step.rule);
    return Exit_Success;
}

} // namespace

void Add_Number_Dial(CommandTree &tree, CLI::App *number) {
    auto options = std::make_shared<DialOptions>();
    CLI::App *dial = tree.Add("dial", "tells what is dialled for a number, and what is shown for it", number);
    dial->add_option("NUMBER", options->number, "a canonical number, or one to be dialled as it is")
        ->required();
    CLI::Option *const from = dial->add_option(
        "--from", options->from, "dial from this location, instead of the machine's current one");
    from->type_name("LOCATION");
    dial->add_flag("--explain", options->explain, "tell which rule gave which part");
    dial->add_flag("--json", options->json, "as JSON, with the rules");
    tree.Does(dial, [options, from] {
        options->has_from = from->count() > 0;
        return Show(*options);
    });
}

} // namespace tools
