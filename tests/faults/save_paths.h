#pragma once
// The ways in which something comes to the disk, each as a row: what is there before, how it is saved, and
// what a process that starts afterwards finds.

#include <string>
#include <vector>

struct SavePath {
    const char *name, *before; // "old", or "none" for what is not there yet
    void (*prepare)();         // a fresh machine, once
    bool (*save)();            // may be called again after it has failed
    std::string (*look)();     // "old", "new", "old aside", or what there is instead
};

const std::vector<SavePath> &Save_Paths();
