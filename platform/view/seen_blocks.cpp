#include <platform/view/seen_blocks.h>

#include <platform/errors.h>
#include <platform/files/ownership.h>
#include <platform/kernel.h>
#include <platform/kernel/file_descriptor.h>
#include <platform/kernel/machine_state.h>
#include <platform/kernel/open_folder.h>
#include <platform/kernel/outcome.h>
#include <platform/machine_contents.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {

using HostStream = std::unique_ptr<FILE, decltype([](FILE *stream) { std::fclose(stream); })>;

FileDescriptor Open_To_See(const std::string &path) {
    return Open_Own_File(path, O_RDONLY, Open_To_Anybody_Else);
}

std::vector<std::string> Files_In(const std::string &folder) {
    std::vector<std::string> files;
    const OpenFolder opened = Open_Folder(folder);
    while (const dirent *entry = opened ? readdir(opened.get()) : nullptr) {
        if (entry->d_type != DT_DIR) files.emplace_back(entry->d_name);
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool Is_Whole(int descriptor, const SharedBlockHeader &header) {
    struct stat status;
    return header.size > 0 && fstat(descriptor, &status) == 0 &&
           status.st_size >= static_cast<off_t>(Shared_Block_Contents_Offset) + header.size;
}

template <std::size_t Size>
void Put(char (&out)[Size], const std::string &text) {
    std::snprintf(out, Size, "%s", text.c_str());
}

// False when the visitor has seen enough.
bool Visit_File(const std::string &path, const LockHolders &holders, MachineBlockVisitor visit,
                void *context) {
    const FileDescriptor file = Open_To_See(path);
    if (!file) return true;
    MachineBlock block = {};
    SharedBlockHeader header = {};
    Put(block.file, path);
    if (Read_Block_Header(file.Get(), header)) {
        block.kind = header.kind <= MACHINE_BLOCK_EVENT ? header.kind : MACHINE_BLOCK_UNKNOWN;
        block.size = header.size;
        Put(block.name, header.name);
    }
    const std::vector<std::uint32_t> processes = holders.Of(file.Get());
    if (processes.empty()) return visit(&block, context);
    return std::all_of(processes.begin(), processes.end(), [&](std::uint32_t process) {
        block.process_id = process;
        return visit(&block, context);
    });
}

} // namespace

LockHolders::LockHolders() {
    const HostStream locks(std::fopen("/proc/locks", "re"));
    char line[256];
    while (locks && std::fgets(line, sizeof line, locks.get())) {
        File file = {};
        unsigned process = 0;
        if (std::sscanf(line, "%*s FLOCK %*s %*s %u %x:%x:%llu", &process, &file.major_number,
                        &file.minor_number, &file.number) == 4)
            holders_.emplace(file, process);
    }
}

std::vector<std::uint32_t> LockHolders::Of(int descriptor) const {
    std::vector<std::uint32_t> processes;
    struct stat status;
    if (fstat(descriptor, &status) != 0) return processes;
    const auto [from, to] = holders_.equal_range({major(status.st_dev), minor(status.st_dev), status.st_ino});
    for (auto each = from; each != to; ++each) processes.push_back(each->second);
    std::sort(processes.begin(), processes.end());
    processes.erase(std::unique(processes.begin(), processes.end()), processes.end());
    return processes;
}

long Find_Shared_Folder(std::string &folder, long without_machine) {
    folder = Shared_Memory_Folder_Path();
    return folder.empty() ? Why_No_Machine(without_machine) : Refusal_Of_Folder(folder);
}

SeenBlock::SeenBlock(SharedBlockKind kind, const std::string &name) {
    std::string folder;
    if (!Succeed_Or_Tell(Find_Shared_Folder(folder, ERROR_FILE_NOT_FOUND))) return;
    const FileDescriptor file = Open_To_See(folder + "/" + Block_File_Name(name));
    if (!file || LockHolders().Of(file.Get()).empty()) {
        SetLastError(!file && errno == Not_This_Users_Own ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
        return;
    }
    SharedBlockHeader header = {};
    if (!Read_Block_Header(file.Get(), header) || header.kind != static_cast<std::uint32_t>(kind) ||
        name != header.name || !Is_Whole(file.Get(), header)) {
        SetLastError(static_cast<DWORD>(ERROR_FILE_CORRUPT));
        return;
    }
    void *contents =
        mmap(nullptr, header.size, PROT_READ, MAP_SHARED, file.Get(), Shared_Block_Contents_Offset);
    if (contents == MAP_FAILED) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return;
    }
    contents_ = contents;
    size_ = header.size;
}

SeenBlock::~SeenBlock() {
    if (contents_) munmap(contents_, size_);
}

extern "C" {

BOOL Visit_Machine_Blocks(MachineBlockVisitor visit, void *context) {
    return Within_Memory(FALSE, [=] {
        std::string folder;
        const long error = visit ? Find_Shared_Folder(folder, ERROR_PATH_NOT_FOUND) : ERROR_INVALID_PARAMETER;
        if (error != NO_ERROR) return Succeed_Or_Tell(error);
        const LockHolders holders;
        for (const std::string &file : Files_In(folder)) {
            if (!Visit_File(folder + "/" + file, holders, visit, context)) break;
        }
        return TRUE;
    });
}

DWORD Copy_Machine_Mapping(LPCSTR name, void *out, DWORD size) {
    return Within_Memory(DWORD{0}, [=] {
        const SeenBlock block(SharedBlockKind::Mapping, name ? name : "");
        if (!block || !out) return DWORD{0};
        const DWORD bytes = std::min<DWORD>(size, block.Size());
        std::memcpy(out, block.Contents(), bytes);
        return bytes;
    });
}
}
