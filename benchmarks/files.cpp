// Files beside the host's own calls: opening, writing and reading one, as it grows as well; and clearing
// directories.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <kelmara/system/directories.h>
#include <kelmara/system/file.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

void Must(bool done) {
    if (!done) std::abort();
}

void Measure_Files(const std::string &drive) {
    std::vector<char> block(64 << 10, 'x');
    const long size = static_cast<long>(block.size());
    const std::string path = drive + "/peer";
    measure::Heading("files", "the C library's streams");
    measure::Compare_Calls(
        "make a file, write 64 KB, close it",
        [&] {
            CKMFile file;
            Must(file.Open("c:\\ours", true, true) == 0 && file.Write(block.data(), size, false) == 0);
        },
        [&] {
            // Emptied and closed before it is opened again: a host that sees new content in an emptied file
            // puts it on the disk at the close.
            if (std::FILE *const emptied = std::fopen(path.c_str(), "w")) std::fclose(emptied);
            std::FILE *const file = std::fopen(path.c_str(), "r+");
            Must(file && std::fwrite(block.data(), block.size(), 1, file) == 1);
            std::fclose(file);
        },
        1.5);
    measure::Compare_Calls(
        "open a file, read 64 KB, close it",
        [&] {
            CKMFile file;
            Must(file.Open("c:\\ours", false, false) == 0 && file.Read(block.data(), size) == 0);
        },
        [&] {
            std::FILE *const file = std::fopen(path.c_str(), "r");
            Must(file && std::fread(block.data(), block.size(), 1, file) == 1);
            std::fclose(file);
        },
        1.5);
}

void Measure_Sizes() {
    measure::Growth_Heading("files");
    measure::Growth write("make a file of n bytes, close it", 1.1),
        read("open a file of n bytes, read it", 1.1);
    measure::Growth copy("copy a file of n bytes", 1.1);
    for (const long size : measure::Sizes(10000000)) {
        std::vector<char> block(static_cast<std::size_t>(size), 'x');
        write.At(size, [&] {
            CKMFile file;
            Must(file.Open("c:\\sized", true, true) == 0 && file.Write(block.data(), size, false) == 0);
        });
        read.At(size, [&] {
            CKMFile file;
            Must(file.Open("c:\\sized", false, false) == 0 && file.Read(block.data(), size) == 0);
        });
        copy.At(size, [&] {
            CKMFile file;
            Must(file.Open("c:\\sized", false, false) == 0 && file.Duplicate("c:\\copy") == 0);
        });
    }
}

void Fill(const std::string &folder, long count) {
    fs::create_directories(folder);
    for (long i = 0; i < count; ++i) std::ofstream(folder + "/file" + std::to_string(i));
}

void Measure_Directories(const std::string &drive) {
    const std::string folder = drive + "/full";
    measure::Growth_Heading("directories");
    measure::Growth growth("make n files and clear their directory", 1.15);
    for (const long size : {10L, 30L, 100L, 300L}) {
        growth.At(size, [&] {
            Fill(folder, size);
            Must(DirDestroyAll("c:\\full") == 0);
        });
    }
}

} // namespace

int main() {
    const measure::OwnMachine machine;
    const std::string drive = machine.Folder() + "/drive_c";
    measure::Use_Plain_Memory();
    Measure_Files(drive);
    Measure_Sizes();
    Measure_Directories(drive);
    return 0;
}
