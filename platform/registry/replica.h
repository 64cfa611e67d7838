#pragma once
// A file of the registry together with the tree that its records make, as far as they were read.

#include <platform/registry/key_tree.h>
#include <platform/registry/store_file.h>

struct Replica {
    std::shared_ptr<StoreFile> file; // null: nothing is stored
    std::unique_ptr<KeyTree> tree;   // null: not read yet, or given up
    std::uint32_t end = 0;           // records before it are in the tree; a multiple of 8

    /// Opens the file and makes the tree that a registry without records has. `file` stays null when there
    /// is none. A code of errors.h.
    long Open(const std::string &path);

    /// Reads on up to `to`. The end comes to lie behind the last whole record, or at `settled` if that is
    /// further: up to there the file is known to have been whole. What is damaged before the end is passed
    /// over, and reported under `name`.
    long Read(std::uint32_t to, std::uint32_t settled, const std::string &name);
};

/// Where a file stands while it is written.
std::string Path_Aside(const std::string &path);

/// What is in the tree, written to a file of its own beside `path`, to be put in its place;
/// `end` is behind its last record. Nobody else does the same at this time.
struct WrittenAside {
    std::shared_ptr<StoreFile> file; // null on failure
    std::uint32_t end = 0;
    long error = 0;
};
WrittenAside Write_Aside(const std::string &path, const KeyTree &tree, std::uint32_t generation);

/// Flushes the file that was written aside and lets it take the place of what is at `path`. Killed at any
/// moment, the one or the other is there.
long Put_In_Place(const std::string &path, const StoreFile &file);
