#include <tools/ltx/ltx_commands.h>

namespace tools {

namespace ltx {

constexpr char The_Text[] =
    "A text has a line for each string: text, identifier, type and comments, with a tab between\n"
    "them. In comments \\r, \\n and \\t stand for the characters; in a text they are just that,\n"
    "two characters each, and menus turn their \\t into tabs. Lines that are empty or begin with\n"
    "\"#\" are comments. Below a line \"#escaped\" a string may have any bytes, as \\r \\n \\t \\\\ and\n"
    "\\x00 to \\xFF, and fields may be empty.";

void Add_Utf8(CLI::App *command, bool &utf8) {
    command->add_flag("--utf8", utf8, "texts are UTF-8, not the machine's code page 1252");
}

} // namespace ltx

void Add_Ltx(CommandTree &tree) {
    CLI::App *command = tree.Add("ltx", "string tables (.ltx) from and to text");
    ltx::Add_Compile_And_Dump(tree, command);
    ltx::Add_Get_Set_And_Delete(tree, command);
    ltx::Add_Check(tree, command);
    ltx::Add_Merge(tree, command);
    ltx::Add_Stats(tree, command);
    command->footer(ltx::The_Text); // now, for subcommands begin with the footer that their parent has
    command->get_subcommand("compile")->footer(ltx::The_Text);
}

} // namespace tools
