#include <tools/command.h>
#include <tools/tables/table_commands.h>

#include <tools/tables/views.h>

#include <memory>

namespace tools {

namespace {

struct Options {
    ViewOptions view;
    std::string name;
};

CLI::App *Add_View(CommandTree &tree, const char *command_name, const char *description,
                   const char *name_description, View (*look)(const std::string &name)) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tree.Add(command_name, description);
    if (name_description != nullptr) command->add_option("NAME", options->name, name_description);
    options->view.Add_To(*command);
    tree.Does(command, [options, look] { return Show(options->view, [&] { return look(options->name); }); });
    return command;
}

} // namespace

void Add_Tables(CommandTree &tree) {
    CLI::App *atoms =
        Add_View(tree, "atoms", "shows the atom table that the machine's programs share, and its atoms",
                 "the name under which programs use the table; a table has one, as a rule", Look_At_Atoms);
    tree.Tells(atoms, "OUTPUT",
               "Group and id are numbers; one that is made of four characters is shown as these. The table "
               "does not keep who made an atom, nor how long it is: its bytes are shown up to the last that "
               "is not zero, which an earlier atom may have left. The table is read without its lock, until "
               "two readings agree.");
    CLI::App *instances = Add_View(tree, "instances", "shows which programs have registered as running",
                                   "only the records with this first key", Look_At_Instances);
    tree.Tells(instances, "OUTPUT",
               "A record is \"running\" while its window is there and has the title that was registered, "
               "\"other title\" when the title has changed, \"gone\" when the window is: such a record goes "
               "when a program next asks for its keys.");
    Add_View(tree, "windows", "shows the windows of all programs of the machine", nullptr,
             [](const std::string &) { return Look_At_Windows(); });
}

} // namespace tools
