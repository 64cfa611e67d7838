// Runs a fuzz target over files and the files in folders: its corpus as a test, under any compiler.
//   fuzz_<target> FILE_OR_FOLDER ...

#include <fuzz/support/fuzz_input.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>
#include <vector>

namespace {

constexpr unsigned Patience = 20; // seconds for one input

void Run(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    const ExactBytes bytes(content);
    alarm(Patience);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.Get()), content.size());
    alarm(0);
}

std::vector<std::filesystem::path> Inputs(const char *name) {
    if (!std::filesystem::is_directory(name)) return {name};
    std::vector<std::filesystem::path> inputs;
    for (const auto &entry : std::filesystem::directory_iterator(name)) inputs.push_back(entry.path());
    return inputs;
}

} // namespace

int main(int count, char **arguments) {
    LLVMFuzzerInitialize(&count, &arguments);
    int runs = 0;
    for (int i = 1; i < count; ++i) {
        for (const auto &path : Inputs(arguments[i])) {
            std::printf("%s\n", path.c_str());
            std::fflush(stdout);
            Run(path);
            ++runs;
        }
    }
    std::printf("%d inputs\n", runs);
    return runs > 0 ? 0 : 1;
}
