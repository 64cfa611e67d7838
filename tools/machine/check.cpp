#include <tools/failure.h>
#include <tools/machine/findings.h>
#include <tools/machine/machine_commands.h>

#include <tools/json.h>
#include <tools/machine_choice.h>
#include <tools/output.h>
#include <tools/tables/columns.h>
#include <tools/tables/machine_view.h>

#include <algorithm>

namespace tools {

namespace {

Json Json_Of(const Findings &findings) {
    Json json = Json::array();
    for (const Finding &each : findings.All()) {
        json.push_back({{"finding", each.is_machine_text ? Utf8_Of(each.text) : Host_Text(each.text)},
                        {"mended", each.mended.empty() ? Json() : Json(each.mended)}});
    }
    return json;
}

void Print_Findings(const Findings &findings) {
    for (const Finding &each : findings.All())
        Print_Line(Shown(each.text + (each.mended.empty() ? "" : " - " + each.mended)));
    if (findings.All().empty()) Print_Line("nothing is wrong");
}

} // namespace

ExitCode Check_Machine(const CheckOptions &options) {
    Require_Machine();
    Findings findings;
    // What only looks comes first: taking part clears some things away.
    Check_Settings(findings);
    Check_Blocks(findings);
    Check_Classes(findings, options.repair);
    Check_Atoms(findings, options.repair);
    Check_Instances(findings, options.repair);
    Check_Working_Files(findings, options.repair);
    Check_Registry(findings, options.repair);
    if (options.json)
        Print_Json(Json_Of(findings));
    else
        Print_Findings(findings);
    const bool well = std::all_of(findings.All().begin(), findings.All().end(),
                                  [](const Finding &each) { return !each.mended.empty(); });
    return well ? Exit_Success : Exit_Negative;
}

} // namespace tools
