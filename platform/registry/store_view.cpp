// The registry's file looked at from outside, copied to another machine, and mended.

#include <platform/machine_contents.h>

#include <platform/errors.h>
#include <platform/files/ownership.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/outcome.h>
#include <platform/registry/store.h>

#include <cerrno>

namespace {

constexpr char Folder[] = "/registry";
constexpr char File[] = "/registry.log";
constexpr int Most_Kept = 1000; // with damage, of one generation

long Look(const std::string &path, MachineRegistry &registry) {
    Replica replica;
    if (const long error = replica.Open(path)) return error;
    if (!replica.file) return ERROR_FILE_NOT_FOUND;
    std::uint32_t size = 0;
    if (const long error = replica.file->Find_Size(size)) return error;
    KeyTree &tree = *replica.tree;
    const StoreFile::Scanned scanned =
        replica.file->Scan(Records_Offset, size, [&](const RegistryRecord &record) { tree.Apply(record); });
    if (scanned.error) return scanned.error;
    registry.file_size = size;
    registry.live_size = Records_Offset + tree.Live_Size();
    registry.damaged = scanned.damaged;
    registry.torn = size - scanned.end;
    registry.generation = replica.file->Header().generation;
    const KeyTree::Counts counts = tree.Count();
    registry.keys = counts.keys;
    registry.values = counts.values;
    struct stat status;
    registry.left_aside = lstat(Path_Aside(path).c_str(), &status) == 0;
    return NO_ERROR;
}

long Copy(const std::string &machine) {
    const RegistryStore::Reading reading;
    if (reading.Error()) return reading.Error();
    if (const long error = Make_Private_Folder(machine + Folder)) return error;
    const std::string path = machine + Folder + File;
    try {
        const WrittenAside written = Write_Aside(path, reading.Tree(), 1);
        return written.error ? written.error : Put_In_Place(path, *written.file);
    } catch (...) {
        unlink(Path_Aside(path).c_str());
        throw;
    }
}

bool Are_One_File(const std::string &left, const std::string &right) {
    struct stat one, other;
    return lstat(left.c_str(), &one) == 0 && lstat(right.c_str(), &other) == 0 &&
           one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Under a second name, or one with a further number where something else has it. An attempt that failed
// behind this has left the file its name.
long Keep(const std::string &path, const std::string &name) {
    for (int count = 1; count <= Most_Kept; ++count) {
        const std::string kept = count == 1 ? name : name + "-" + std::to_string(count);
        if (link(path.c_str(), kept.c_str()) == 0) return NO_ERROR;
        if (errno != EEXIST) return Registry_Error_Of_Errno(errno, ERROR_WRITE_FAULT);
        if (Are_One_File(path, kept)) return NO_ERROR;
    }
    return ERROR_WRITE_FAULT;
}

} // namespace

KeyTree::Counts KeyTree::Count() const {
    Counts counts = {static_cast<std::uint32_t>(keys_.size()), 0};
    for (const auto &[number, key] : keys_) counts.values += static_cast<std::uint32_t>(key->values.size());
    return counts;
}

// To write means to cut off what is torn, whatever is written.
long RegistryStore::Mend() {
    Writing writing;
    if (writing.Error()) return writing.Error();
    unlink(Path_Aside(path_).c_str());
    const StoreFile::Scanned scanned =
        replica_.file->Scan(Records_Offset, replica_.end, [](const RegistryRecord &) {});
    if (scanned.error || scanned.damaged == 0) return scanned.error;
    const std::string kept = path_ + ".damaged-" + std::to_string(replica_.file->Header().generation);
    if (const long error = Keep(path_, kept)) return error;
    return Rewrite(writing.hold_);
}

extern "C" {

LONG Look_At_Registry(MachineRegistry *registry) {
    if (!registry) return ERROR_INVALID_PARAMETER;
    return Code_Of([=] {
        const std::string machine = Machine_Folder_Path();
        return machine.empty() ? Why_No_Machine(ERROR_PATH_NOT_FOUND)
                               : Look(machine + Folder + File, *registry);
    });
}

LONG Copy_Registry(LPCSTR host_folder) {
    if (!host_folder || !*host_folder) return ERROR_INVALID_PARAMETER;
    return Code_Of([=] { return Copy(host_folder); });
}

LONG Mend_Registry() {
    return Code_Of([] { return RegistryStore::Of_This_Process().Mend(); });
}
}
