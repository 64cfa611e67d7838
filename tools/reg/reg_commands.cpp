#include <tools/reg/reg_commands.h>

namespace tools {

void Add_Reg(CommandTree &tree) {
    CLI::App *reg =
        tree.Add("reg", "looks at the machine's registry, changes it, carries parts of it as text");
    reg->footer("A PATH begins with a root: HKLM, HKCU, HKCR, HKU or HKCC, or its long name\n"
                "(HKEY_LOCAL_MACHINE ...). Between names stands a backslash, which a shell wants in quotes:\n"
                "    kelmara reg query 'HKLM\\Software'");
    reg::Add_Query(tree, reg);
    reg::Add_Set(tree, reg);
    reg::Add_Delete(tree, reg);
    reg::Add_Import(tree, reg);
    reg::Add_Export(tree, reg);
}

} // namespace tools
