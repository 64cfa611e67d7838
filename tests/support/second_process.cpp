#include <tests/support/second_process.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <map>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char *Role_Switch = "--second-process";

std::map<std::string, SecondProcessRole> &Roles() {
    static std::map<std::string, SecondProcessRole> roles;
    return roles;
}

void Write_All(int descriptor, const std::string &text) {
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t wrote = write(descriptor, text.data() + done, text.size() - done);
        if (wrote < 0 && errno != EINTR) return;
        if (wrote > 0) done += static_cast<std::size_t>(wrote);
    }
}

struct Pipe {
    int read_end = -1, write_end = -1;
    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) std::abort();
        read_end = ends[0];
        write_end = ends[1];
    }
};

} // namespace

SecondProcessRegistration::SecondProcessRegistration(const char *role, SecondProcessRole run) {
    Roles()[role] = run;
}

std::string FirstProcess::Hear() {
    std::string line;
    std::getline(std::cin, line);
    return line;
}

void FirstProcess::Tell(const std::string &line) {
    Write_All(STDOUT_FILENO, line + "\n");
}

SecondProcess::SecondProcess(const std::string &role, const std::vector<std::string> &arguments) {
    std::signal(SIGPIPE, SIG_IGN);
    Pipe to, from, errors;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, to.read_end, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, from.write_end, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.write_end, STDERR_FILENO);
    std::vector<std::string> words = {"/proc/self/exe", Role_Switch, role};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> argv;
    for (std::string &word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    if (posix_spawn(&id_, "/proc/self/exe", &actions, nullptr, argv.data(), environ) != 0) std::abort();
    posix_spawn_file_actions_destroy(&actions);
    close(to.read_end);
    close(from.write_end);
    close(errors.write_end);
    input_ = to.write_end;
    output_ = from.read_end;
    error_output_ = errors.read_end;
}

SecondProcess::~SecondProcess() {
    Kill();
    Wait();
    close(output_);
    close(error_output_);
}

void SecondProcess::Tell(const std::string &line) {
    Write_All(input_, line + "\n");
}

std::string SecondProcess::Hear() {
    for (;;) {
        if (const std::size_t end = heard_.find('\n'); end != std::string::npos) {
            std::string line = heard_.substr(0, end);
            heard_.erase(0, end + 1);
            return line;
        }
        pollfd waiting = {output_, POLLIN, 0};
        if (poll(&waiting, 1, 60000) <= 0) return {};
        char bytes[4096];
        const ssize_t got = read(output_, bytes, sizeof bytes);
        if (got <= 0) return {};
        heard_.append(bytes, static_cast<std::size_t>(got));
    }
}

void SecondProcess::Kill() {
    if (!ended_) kill(id_, SIGKILL);
}

void SecondProcess::Read_Errors() {
    char bytes[4096];
    for (ssize_t got; (got = read(error_output_, bytes, sizeof bytes)) > 0;) {
        errors_.append(bytes, static_cast<std::size_t>(got));
    }
}

int SecondProcess::Wait() {
    if (!ended_) {
        close(input_);
        Read_Errors();
        waitpid(id_, &status_, 0);
        ended_ = true;
    }
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -WTERMSIG(status_);
}

bool Ran_As_Second_Process(int argc, char **argv, int *exit_code) {
    if (argc < 3 || std::strcmp(argv[1], Role_Switch) != 0) return false;
    const auto role = Roles().find(argv[2]);
    if (role == Roles().end()) {
        std::fprintf(stderr, "no role '%s' in this program\n", argv[2]);
        *exit_code = 99;
        return true;
    }
    FirstProcess process({argv + 3, argv + argc});
    *exit_code = role->second(process);
    return true;
}
