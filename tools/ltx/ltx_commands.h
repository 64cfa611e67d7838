#pragma once
// `kelmara ltx`: string tables from and to text, looked at, edited, checked, and carried to a new source.

#include <tools/command.h>

namespace tools {

void Add_Ltx(CommandTree &tree);

namespace ltx {

void Add_Compile_And_Dump(CommandTree &tree, CLI::App *ltx);
void Add_Get_Set_And_Delete(CommandTree &tree, CLI::App *ltx);
void Add_Check(CommandTree &tree, CLI::App *ltx);
void Add_Merge(CommandTree &tree, CLI::App *ltx);
void Add_Stats(CommandTree &tree, CLI::App *ltx);

/// An argument that has its place, and in the help only its name.
template <class Target>
CLI::Option *Add_Place(CLI::App *command, const char *name, Target &target, const char *description) {
    return command->add_option(name, target, description)->required()->type_name("");
}

/// --utf8, for every command that works on texts.
void Add_Utf8(CLI::App *command, bool &utf8);

} // namespace ltx

} // namespace tools
