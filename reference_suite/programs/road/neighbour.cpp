#include <reference_suite/programs/road/neighbour.h>

#include <reference_suite/programs/road/narrator.h>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

Neighbour::Neighbour(const std::string &role) {
    int ends[2];
    Require(pipe2(ends, O_CLOEXEC) == 0, "a pipe to the second process can be had");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::string words[] = {"road", "--neighbour", role};
    char *arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    const int result = posix_spawn(&id_, "/proc/self/exe", &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
    Require(result == 0, "a second process can be started");
}

Neighbour::~Neighbour() {
    Kill();
    Wait();
    close(output_);
}

std::string Neighbour::Hear() {
    std::string line;
    for (char c; read(output_, &c, 1) == 1 && c != '\n';) line += c;
    return line;
}

void Neighbour::Kill() {
    if (!ended_) kill(id_, SIGKILL);
}

int Neighbour::Wait() {
    if (!ended_) waitpid(id_, &status_, 0);
    ended_ = true;
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -WTERMSIG(status_);
}
