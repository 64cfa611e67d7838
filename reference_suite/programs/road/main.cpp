// The road: what the library does for a program, from a machine without anything on, told step by step. Ends
// with 0; where something is not as it should be it says so and ends with 1.

#include <reference_suite/programs/road/bound_dialog.h>
#include <reference_suite/programs/road/component_in_the_shell.h>
#include <reference_suite/programs/road/dialogs.h>
#include <reference_suite/programs/road/help_and_icons.h>
#include <reference_suite/programs/road/log_and_messages.h>
#include <reference_suite/programs/road/memory_and_atoms.h>
#include <reference_suite/programs/road/narrator.h>
#include <reference_suite/programs/road/neighbour.h>
#include <reference_suite/programs/road/registry_and_files.h>
#include <reference_suite/programs/road/road_options.h>
#include <reference_suite/programs/road/running_twice.h>
#include <reference_suite/programs/road/sections_and_templates.h>
#include <reference_suite/programs/road/start_of_the_suite.h>
#include <reference_suite/programs/road/strings.h>
#include <reference_suite/programs/road/the_call.h>

#include <reference_suite/installer/install_suite.h>

#include <platform/machine.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/prctl.h>

namespace {

void Make_A_Machine(const std::string &folder) {
    Begin_Chapter("A machine");
    std::error_code error;
    Require(!std::filesystem::exists(folder) || std::filesystem::is_empty(folder, error),
            "the folder is new or empty (it is left as it is: remove it, or name another)");
    setenv("KELMARA_MACHINE", folder.c_str(), 1);
    Require(Enter_Machine(folder.c_str()), "a machine can be made");
    Tell("It lives in %s, made afresh.", Machine_Folder());
    const auto program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string problem = Install_Suite(program.parent_path().parent_path() / "suite");
    Require(problem.empty(), problem.c_str());
    Tell("The suite is installed on it: folders below %s,", Suite_Root);
    Tell("values in the registry below HKEY_LOCAL_MACHINE\\%s.", Suite_Key);
}

} // namespace

int Run_As_Neighbour(const std::string &role) {
    prctl(PR_SET_PDEATHSIG, SIGKILL); // it does not outlive the road
    if (role == "answer") return Add_An_Answer();
    if (role == "hold") return Hold_The_Lock();
    if (role == "setting") return Change_A_Setting();
    if (role == "save") return Save_And_Stay();
    if (role == "log") return Log_And_Answer();
    if (role == "icon") return Make_The_Icon_Again();
    if (role == "second copy") return Be_The_Second_Copy();
    return 2;
}

int main(int argc, char **argv) {
    if (argc == 3 && std::strcmp(argv[1], "--neighbour") == 0) return Run_As_Neighbour(argv[2]);
    RoadOptions options;
    if (!Read_Options(argc, argv, options)) return 2;
    Make_A_Machine(options.folder);
    Make_First_Allocation();
    Share_Atoms();
    Find_Folders();
    Share_Settings();
    Save_Files();
    Write_A_Log();
    Start_Twice();
    Show_A_Wait_Window();
    Write_A_Welcome();
    Find_Strings();
    Translate_A_Dialog();
    Fill_In_A_Dialog();
    Refit_A_Dialog();
    Point_At_Fields();
    Hand_On_An_Icon();
    Start_The_Suite(options);
    Register_A_Component();
    Make_A_Call(options);
    End_The_Suite();
    std::printf("\nAll as it should be.\n");
    return 0;
}
