#include <fuzz/support/fuzz_input.h>
#include <fuzz/support/fuzz_machine.h>

#include <kelmara/foundation/memory.h>

#include <platform/machine.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

pid_t Maker = 0;

void Remove_Fuzz_Machine() {
    if (getpid() == Maker) Remove_Machine(Fuzz_Machine().c_str());
}

std::string Make_Fuzz_Machine() {
    std::string pattern = std::filesystem::temp_directory_path() / "kelmara-fuzz-XXXXXX";
    if (!mkdtemp(pattern.data())) std::abort();
    if (!Enter_Machine(pattern.c_str())) std::abort();
    mkdir((pattern + "/drive_c").c_str(), 0700);
    Maker = getpid();
    (void)std::atexit(Remove_Fuzz_Machine);
    return pattern;
}

// The host's heap, which the sanitizer watches.
std::size_t At_Least_One(long size) {
    return size > 0 ? static_cast<std::size_t>(size) : 1;
}

void *Allocate(long size) {
    return size < 0 ? nullptr : std::malloc(At_Least_One(size));
}

void *Allocate_Clear(long size) {
    return size < 0 ? nullptr : std::calloc(1, At_Least_One(size));
}

void *Reallocate(void *block, long size) {
    return size < 0 ? nullptr : std::realloc(block, At_Least_One(size));
}

} // namespace

int LLVMFuzzerInitialize(int *, char ***) {
    Fuzz_Machine();
    Set_Local_Memory_Procs(Allocate, Allocate_Clear, Reallocate, std::free);
    return 0;
}

const std::string &Fuzz_Machine() {
    static const std::string *const folder = new std::string(Make_Fuzz_Machine());
    return *folder;
}

void Write_On_Machine(const std::string &relative, std::string_view content) {
    const std::string path = Fuzz_Machine() + "/" + relative;
    mkdir(path.substr(0, path.rfind('/')).c_str(), 0700);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0 || write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size()))
        std::abort();
    close(file);
}

char *Map_Shared_File(const std::string &name, std::size_t size) {
    char number[33] = {};
    if (FILE *const file = std::fopen((Fuzz_Machine() + "/machine.id").c_str(), "rb")) {
        if (std::fread(number, 1, 32, file) != 32) std::abort();
        std::fclose(file);
    }
    for (const auto &entry : std::filesystem::directory_iterator("/dev/shm")) {
        if (!entry.path().native().ends_with(number)) continue;
        const int file = open((entry.path() / name).c_str(), O_RDWR | O_CLOEXEC);
        if (file < 0) return nullptr;
        void *const mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        close(file);
        return mapped == MAP_FAILED ? nullptr : static_cast<char *>(mapped);
    }
    return nullptr;
}
