#include "server/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace server {

ChildProcess::ChildProcess(std::vector<std::string> command, const Settings& settings) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& word : command) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(127);
        for (const auto& [name, value] : settings) setenv(name.c_str(), value.c_str(), 1);
        dup2(ends[1], STDOUT_FILENO);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
    output_ = ends[0];
}

ChildProcess::~ChildProcess() {
    if (!ended_ && process_ > 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    if (output_ >= 0) close(output_);
}

bool ChildProcess::ReadSome() {
    char some[4096];
    const ssize_t got = read(output_, some, sizeof some);
    if (got > 0) written_.append(some, static_cast<std::size_t>(got));
    return got > 0;
}

bool ChildProcess::Await(const std::string& text) {
    while (written_.find(text) == std::string::npos)
        if (!ReadSome()) return false;
    return true;
}

const std::string& ChildProcess::Output() {
    while (!ended_ && ReadSome()) {
    }
    if (!ended_ && process_ > 0) {
        int status = 0;
        waitpid(process_, &status, 0);
        if (WIFEXITED(status)) exitCode_ = WEXITSTATUS(status);
    }
    ended_ = true;
    return written_;
}

int ChildProcess::ExitCode() {
    Output();
    return exitCode_;
}

}  // namespace server
