#include <tools/tables/machine_view.h>

#include <tools/failure.h>
#include <tools/interruption.h>
#include <tools/output.h>

#include <algorithm>
#include <cstring>
#include <unistd.h>

namespace tools {

namespace {

constexpr int Looks = 50;

void Require(BOOL done, const char *what) {
    if (!done) throw Failure(Exit_Unusable, std::string("the machine's ") + what + " cannot be read");
}

template <class Seen>
bool Keep(const Seen *seen, void *context) {
    static_cast<std::vector<Seen> *>(context)->push_back(*seen);
    return true;
}

std::string Copy_Of(const char *name, unsigned long size) {
    std::string bytes(size, '\0');
    bytes.resize(Copy_Machine_Mapping(name, bytes.data(), size));
    return bytes;
}

} // namespace

std::vector<SharedBlockInUse> Shared_Blocks() {
    std::vector<MachineBlock> seen;
    Require(Visit_Machine_Blocks(Keep<MachineBlock>, &seen), "shared memory");
    std::vector<SharedBlockInUse> blocks;
    const auto own = static_cast<DWORD>(getpid());
    for (const MachineBlock &block : seen) {
        if (block.process_id == own) continue;
        if (blocks.empty() || std::strcmp(blocks.back().block.file, block.file) != 0)
            blocks.push_back({block, {}});
        if (block.process_id != 0) blocks.back().processes.push_back(block.process_id);
    }
    return blocks;
}

std::vector<MachineTopWindow> Top_Windows() {
    std::vector<MachineTopWindow> windows;
    Require(Visit_Machine_Windows(Keep<MachineTopWindow>, &windows), "windows");
    return windows;
}

std::vector<MachineClass> Offered_Classes() {
    std::vector<MachineClass> classes;
    Require(Visit_Machine_Classes(Keep<MachineClass>, &classes), "classes");
    return classes;
}

std::string Program_Of(unsigned long process) {
    char path[4096];
    const std::string link = "/proc/" + std::to_string(process) + "/exe";
    const ssize_t length = readlink(link.c_str(), path, sizeof path);
    if (length <= 0) return "?";
    std::string program(path, static_cast<std::size_t>(length));
    constexpr std::string_view deleted = " (deleted)";
    if (program.ends_with(deleted)) program.resize(program.size() - deleted.size());
    return program.substr(program.rfind('/') + 1);
}

std::string Programs_Of(const std::vector<unsigned long> &processes) {
    std::string text;
    for (const unsigned long process : processes)
        text += (text.empty() ? "" : ", ") + std::to_string(process) + " " + Program_Of(process);
    return text;
}

std::string Host_Text(const std::string &text) {
    try {
        return Json(text).dump(), text;
    } catch (const Json::exception &) {
        return Utf8_Of(text);
    }
}

std::optional<SeenMapping> See_Mapping(const char *name, unsigned long size,
                                       bool (*is_in_change)(const std::string &bytes)) {
    std::string before = Copy_Of(name, size);
    for (int look = 0; look < Looks && !before.empty(); ++look) {
        std::string after = Copy_Of(name, size);
        if (after == before && !is_in_change(after)) return SeenMapping{std::move(after), true};
        before.swap(after);
        Pause_Or_End(2);
    }
    if (before.empty()) return {};
    return SeenMapping{std::move(before), false};
}

} // namespace tools
