#include <tests/tools/command_run.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class ScratchFolder {
  public:
    ScratchFolder() {
        char name[] = "/tmp/kelmara-test-command-XXXXXX";
        path_ = mkdtemp(name);
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }
    std::string File(const char *name) const { return path_ + "/" + name; }
    void Write(const char *name, const std::string &content) const {
        std::ofstream(File(name), std::ios::binary) << content;
    }

  private:
    std::string path_;
};

std::string Read(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void Direct(int descriptor, const std::string &file, int flags) {
    const int opened = open(file.c_str(), flags | O_CLOEXEC, 0600);
    if (opened < 0 || dup2(opened, descriptor) < 0) _exit(126);
}

} // namespace

RunningCommand::RunningCommand(const std::vector<std::string> &arguments, const std::string &input_file,
                               const std::string &output_file, const std::string &error_file, int ignored) {
    std::vector<char *> argv = {const_cast<char *>(KELMARA_COMMAND)};
    for (const std::string &argument : arguments) argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    id_ = fork();
    if (id_ != 0) return;
    for (const int ending : {SIGHUP, SIGINT, SIGTERM}) signal(ending, ending == ignored ? SIG_IGN : SIG_DFL);
    Direct(STDIN_FILENO, input_file, O_RDONLY);
    Direct(STDOUT_FILENO, output_file, O_WRONLY | O_CREAT | O_TRUNC);
    Direct(STDERR_FILENO, error_file, O_WRONLY | O_CREAT | O_TRUNC);
    execv(argv[0], argv.data());
    _exit(127);
}

RunningCommand::~RunningCommand() {
    if (id_ <= 0) return;
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
}

void RunningCommand::Signal(int signal) {
    kill(id_, signal);
}

int RunningCommand::Wait() {
    int status = 0;
    for (int tenths = 0; waitpid(id_, &status, WNOHANG) == 0; tenths++) {
        if (tenths == 6000) kill(id_, SIGKILL);
        poll(nullptr, 0, 10);
    }
    id_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

CommandRun::CommandRun(const std::vector<std::string> &arguments, const std::string &input) {
    const ScratchFolder scratch;
    scratch.Write("input", input);
    RunningCommand command(arguments, scratch.File("input"), scratch.File("output"), scratch.File("errors"));
    exit_code = command.Wait();
    output = Read(scratch.File("output"));
    errors = Read(scratch.File("errors"));
}

bool Comes_To_Hold(const std::string &file, const std::string &text) {
    for (int tries = 0; tries < 1000; ++tries) {
        if (Read(file).find(text) != std::string::npos) return true;
        poll(nullptr, 0, 10);
    }
    return false;
}
