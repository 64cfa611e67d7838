// What it costs to carry 10,000 values as text: an export into memory, an import that makes them all, one
// that finds them all as they should be, and their deletion.

#include <benchmarks/measure.h>
#include <benchmarks/own_machine.h>

#include <tools/reg/export.h>
#include <tools/reg/plan.h>

#include <cstdlib>
#include <string>

namespace {

using namespace tools::reg;

constexpr int Keys = 100, Values = 100;
constexpr double Wanted = 5e8; // nanoseconds

std::string Text_Of_All() {
    std::string text = "REGEDIT4\n";
    for (int key = 0; key < Keys; ++key) {
        text += "[HKEY_CURRENT_USER\\Measured\\Key " + std::to_string(key) + "]\n";
        for (int value = 0; value < Values; ++value) {
            text += "\"Value " + std::to_string(value) + "\"=";
            text += value % 2 ? "\"a text of some forty characters, or so\"\n" : "dword:0000002a\n";
        }
    }
    return text;
}

void Import(const std::string &text) {
    Plan plan;
    plan.Do(Read_Registry_Text(text, "text"), "text");
    Make_Changes(plan.Take_Changes());
}

template <class Before, class Work>
void Measure(const char *what, Before before, Work work) {
    measure::Measure_Calls(what, before, work, Wanted, measure::Few_Rounds);
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Heading("registry text", "none: 500 ms are allowed");
    const std::string text = Text_Of_All();
    const auto nothing = [] {};
    const auto delete_all = [] { Import("REGEDIT4\n[-HKCU\\Measured]\n"); };
    const auto import_all = [&] { Import(text); };
    Measure("import 10,000 values, all new", delete_all, import_all);
    Measure("import 10,000 values, nothing new", nothing, import_all);
    Measure("export 10,000 values", nothing,
            [] { measure::Keep(Export_Key(Key_Path_Of("HKCU\\Measured"))); });
    Measure("delete 10,000 values", import_all, delete_all);
}
