// `kelmara ltx compile` as its user waits for it, from the start of the process to its end, with a text of
// 5,000 lines: beside msgfmt with as many messages, where that is installed. Where there is no machine the
// command makes one for its own time, and removes it.

#include <benchmarks/growth.h>
#include <benchmarks/own_machine.h>

#include <tools/ltx/table_text.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr int Line_Count = 5000;

/// The text in both forms.
struct Texts {
    std::string ours, peers;
};

Texts Texts_Of(long lines) {
    std::mt19937 random(1);
    Texts texts = {"", "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=ASCII\\n\"\n\n"};
    for (long line = 0; line < lines; ++line) {
        std::string string;
        for (auto length = 20 + random() % 60; length > 0; --length)
            string += static_cast<char>(random() % 6 != 0 ? 'a' + random() % 26 : ' ');
        const std::string number = std::to_string(line);
        const std::string identifier = "KMSTR_" + std::to_string(random() % 1000) + "_" + number;
        texts.ours += string + "\t" + identifier + "\t0\tbutton " + number + "\n";
        texts.peers +=
            "#. button " + number + "\nmsgid \"" + identifier + "\"\nmsgstr \"" + string + "\"\n\n";
    }
    return texts;
}

/// A folder with the text in both forms.
class Folder {
  public:
    Folder() {
        const Texts texts = Texts_Of(Line_Count);
        std::ofstream(File("texts.txt")) << texts.ours;
        std::ofstream(File("texts.po")) << texts.peers;
    }
    ~Folder() { fs::remove_all(path_); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    std::string File(const char *name) const { return path_ + "/" + name; }

  private:
    const std::string path_ = measure::New_Folder();
};

void Run(std::initializer_list<std::string> arguments) {
    char *argv[8] = {};
    int count = 0;
    for (const std::string &argument : arguments) argv[count++] = const_cast<char *>(argument.c_str());
    pid_t child = 0;
    int status = -1;
    if (posix_spawnp(&child, argv[0], nullptr, nullptr, argv, environ) == 0) waitpid(child, &status, 0);
    if (status != 0) std::abort();
}

// The command's work, without the process around it and without the disk.
void Measure_Growth() {
    measure::Growth_Heading("texts of tables");
    measure::Growth compile("ltx compile of n lines", 1.15);
    for (const long lines : measure::Sizes(100000)) {
        const std::string text = Texts_Of(lines).ours;
        compile.At(lines, [&] { measure::Keep(tools::ltx::Compiled("text", text)); });
    }
}

} // namespace

int main() {
    const Folder folder;
    const std::string text = folder.File("texts.txt"), table = folder.File("texts.ltx");
    const std::string machine = folder.File("machine");
    const auto compile = [&] { Run({KELMARA_COMMAND, "ltx", "compile", text, table}); };
    unsetenv("KELMARA_MACHINE");
    setenv("XDG_DATA_HOME", folder.File("nothing").c_str(), 1);
    const bool has_peer = std::system("msgfmt --version > /dev/null 2>&1") == 0;
    const auto measure_compile = [&](const char *what) {
        if (!has_peer) {
            measure::Measure_Calls(
                what, [] {}, compile, 50e6, measure::Rounds);
            return;
        }
        const auto peer = [&] { Run({"msgfmt", "-o", folder.File("texts.mo"), folder.File("texts.po")}); };
        measure::Compare_Calls(what, compile, peer, 2.0, measure::Rounds);
    };
    measure::Heading("texts of tables", has_peer ? "msgfmt" : "none is installed");
    measure_compile("ltx compile of 5,000 lines, the whole process");
    fs::create_directory(machine);
    setenv("KELMARA_MACHINE", machine.c_str(), 1);
    if (!Enter_Machine(machine.c_str())) return 1;
    measure_compile("the same on a machine that is there");
    Measure_Growth();
    return 0;
}
