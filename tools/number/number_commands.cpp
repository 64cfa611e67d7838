#include <tools/command.h>
#include <tools/number/number_commands.h>

namespace tools {

void Add_Number(CommandTree &tree) {
    CLI::App *number = tree.Add("number", "takes telephone numbers apart and tells how they are dialled");
    Add_Number_Parse(tree, number);
    Add_Number_Dial(tree, number);
    tree.Tells(
        number, "LOCATIONS",
        "What is dialled depends on the location: its country and area, its prefixes for an outside line "
        "and for long distance, its code against call waiting, tones or pulses. With --from the "
        "translation is done on a copy of the machine's telephony settings: its current location stays "
        "what it is, also for programs that dial at the same time.\n\n"
        "The exit code is 1 for a number that is not canonical, one that cannot be dialled, an unknown "
        "location, and a machine without a telephony service or line device.");
    tree.Tells(number, "EXAMPLES",
               "    kelmara number parse '+1 (206) 555-1212'\n"
               "    kelmara number dial '+44 (0171) 555 1212' --from Office --explain");
}

} // namespace tools
