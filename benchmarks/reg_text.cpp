// What it costs to carry 10,000 values as text: an export into memory, an import that makes them all, one
// that finds them all as they should be, and their deletion.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <tools/reg/export.h>
#include <tools/reg/plan.h>

#include <cstdlib>
#include <string>

namespace {

using namespace tools::reg;

constexpr long All_Values = 10000, Values_Of_A_Key = 100;
constexpr double Wanted = 5e8; // nanoseconds

std::string Text_Of(long values) {
    std::string text = "REGEDIT4\n";
    for (long value = 0; value < values; ++value) {
        if (value % Values_Of_A_Key == 0)
            text += "[HKEY_CURRENT_USER\\Measured\\Key " + std::to_string(value / Values_Of_A_Key) + "]\n";
        text += "\"Value " + std::to_string(value % Values_Of_A_Key) + "\"=";
        text += value % 2 ? "\"a text of some forty characters, or so\"\n" : "dword:0000002a\n";
    }
    return text;
}

void Import(const std::string &text) {
    Plan plan;
    plan.Do(Read_Registry_Text(text, "text"), "text");
    Make_Changes(plan.Take_Changes());
}

void Delete_All() {
    Import("REGEDIT4\n[-HKCU\\Measured]\n");
}

void Export_All() {
    measure::Keep(Export_Key(Key_Path_Of("HKCU\\Measured")));
}

void Measure_Growth() {
    measure::Growth_Heading("registry text");
    measure::Growth anew("import n values, delete them", 1.15), again("import n values, nothing new", 1.15);
    measure::Growth out("export n values", 1.15);
    for (const long values : measure::Sizes(All_Values)) {
        const std::string text = Text_Of(values);
        anew.At(values, [&] {
            Import(text);
            Delete_All();
        });
        Import(text);
        again.At(values, [&] { Import(text); });
        out.At(values, Export_All);
        Delete_All();
    }
}

template <class Before, class Work>
void Measure(const char *what, Before before, Work work) {
    measure::Measure_Calls(what, before, work, Wanted, measure::Few_Rounds);
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    measure::Heading("registry text", "none: 500 ms are allowed");
    const std::string text = Text_Of(All_Values);
    const auto nothing = [] {};
    const auto delete_all = Delete_All;
    const auto import_all = [&] { Import(text); };
    Measure("import 10,000 values, all new", delete_all, import_all);
    Measure("import 10,000 values, nothing new", nothing, import_all);
    Measure("export 10,000 values", nothing, Export_All);
    Measure("delete 10,000 values", import_all, delete_all);
    Measure_Growth();
}
