#pragma once
// Which file of the host a module's name means, and whether it can be loaded at all.

#include <string>
#include <string_view>
#include <vector>

/// A module's name as Windows takes it apart. Without an ending it gets ".dll"; a dot at its end says that it
/// has none. `files` are the names that serve, best first: its own, `stem.so`, `libstem.so`.
struct ModuleName {
    std::string folder; // with its last separator or colon; empty for a bare name
    std::vector<std::string> files;

    explicit ModuleName(std::string_view path);
    bool Is_Bare() const { return folder.empty(); }
    /// True for a name that the machine's own module goes by.
    bool Is_Built_In() const;
};

/// The first file that is there, as a host path; a bare name is sought in the folders of the search order.
/// Empty when there is none.
std::string Find_Module_File(const ModuleName &name);

/// A code of errors.h: NO_ERROR, ERROR_BAD_EXE_FORMAT for what is no shared object of this word size or is
/// cut short, ERROR_ACCESS_DENIED for what cannot be read or may not give code
/// (May_Give_Code), ERROR_MOD_NOT_FOUND. Nothing of the file runs.
long Check_Module_File(const std::string &host_path);
