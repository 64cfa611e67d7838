#include <reference_suite/programs/road/pictures.h>

#include <reference_suite/programs/road/narrator.h>

#include <platform/machine.h>

#include <filesystem>

void Take_Picture(HWND window, const std::string &name) {
    const std::string folder = std::string(Machine_Folder()) + "/pictures";
    std::filesystem::create_directories(folder);
    const std::string path = folder + "/" + name + ".svg";
    Require(Snapshot_Window(window, path.c_str()), "a picture can be taken");
    Tell("  %s", path.c_str());
}
