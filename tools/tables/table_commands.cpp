#include <tools/tables/table_commands.h>

#include <tools/tables/views.h>

#include <memory>

namespace tools {

namespace {

struct Options {
    ViewOptions view;
    std::string name;
};

void Add_View(CommandTree &tree, const char *command_name, const char *description,
              const char *name_description, View (*look)(const std::string &name)) {
    auto options = std::make_shared<Options>();
    CLI::App *command = tree.Add(command_name, description);
    if (name_description != nullptr) command->add_option("NAME", options->name, name_description);
    options->view.Add_To(*command);
    tree.Does(command, [options, look] { return Show(options->view, [&] { return look(options->name); }); });
}

} // namespace

void Add_Tables(CommandTree &tree) {
    Add_View(tree, "atoms", "shows the atom table that the machine's programs share, and its atoms",
             "the name under which programs use the table; a table has one, as a rule", Look_At_Atoms);
    Add_View(tree, "instances", "shows which programs have registered as running",
             "only the records with this first key", Look_At_Instances);
    Add_View(tree, "windows", "shows the windows of all programs of the machine", nullptr,
             [](const std::string &) { return Look_At_Windows(); });
}

} // namespace tools
