#include <tools/command.h>
#include <tools/machine/machine_commands.h>

#include <tools/machine/settings_text.h>

#include <memory>

namespace tools {

namespace {

void Add_Init(CommandTree &tree, CLI::App *machine) {
    auto options = std::make_shared<InitOptions>();
    CLI::App *init = tree.Add("init", "makes a machine in a folder that is empty or not there yet", machine);
    init->add_option("FOLDER", options->folder,
                     "where; without it the folder of --machine, KELMARA_MACHINE, or the user's own");
    init->add_option("--windows", options->windows, "which Windows it is: 95, 98, me, nt4, 2000 or xp")
        ->type_name("NAME");
    init->add_option("--screen", options->screen, "size of its screen, with colour depth or without")
        ->type_name("WIDTHxHEIGHT[xDEPTH]");
    init->add_option("--drive", options->drives,
                     "a further drive, a to y, and its kind: fixed, removable, cdrom, remote or ramdisk")
        ->type_name("LETTER=KIND");
    tree.Does(init, [options] { return Make_Machine(*options); });
}

void Add_Check(CommandTree &tree, CLI::App *machine) {
    auto options = std::make_shared<CheckOptions>();
    CLI::App *check = tree.Add(
        "check", "looks for damage and for what ended programs left: a line for each, exit code 1", machine);
    check->add_flag("--repair", options->repair, "mends what can be mended without loss, and says what");
    check->add_flag("--json", options->json, "as JSON");
    tree.Does(check, [options] { return Check_Machine(*options); });
    tree.Tells(check, "WHAT IT LOOKS AT",
               "The lines of machine.conf; shared memory of another layout; classes of programs that have "
               "ended; the atom table and the records of running programs; working files of commands that "
               "were killed; the registry's file. With --repair damaged bytes leave the registry's file, and "
               "the old file stays beside it. Settings and damaged tables are left to the user.");
}

} // namespace

void Add_Machine(CommandTree &tree) {
    CLI::App *machine = tree.Add("machine", "makes, describes, copies and checks machines");
    Add_Init(tree, machine);

    auto json = std::make_shared<bool>(false);
    CLI::App *info =
        tree.Add("info", "describes the machine: its settings, drives, registry, and who is on it", machine);
    info->add_flag("--json", *json, "as JSON");
    tree.Does(info, [json] { return Describe_Machine(*json); });

    auto target = std::make_shared<std::string>();
    CLI::App *clone =
        tree.Add("clone", "copies the machine to a new folder, also while it is in use", machine);
    clone->add_option("FOLDER", *target, "the new machine's; nothing may be there yet")->required();
    tree.Does(clone, [target] { return Clone_Machine(*target); });
    tree.Tells(
        clone, "WHAT IS COPIED",
        "Drives, settings and the registry as it is at that moment. Each file is copied as it stood at "
        "one moment; one that goes on changing is named on standard error. Drives that are links to "
        "other folders stay links, to the same place. The copy has a number of its own, so that the two "
        "share nothing.");

    Add_Check(tree, machine);
}

} // namespace tools
