#include <tools/command.h>

int main(int argc, char **argv) {
    tools::CommandTree tree;
    tools::Add_All(tree);
    return tree.Run(argc, argv);
}
