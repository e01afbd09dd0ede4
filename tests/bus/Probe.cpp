#include "bus/Probe.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace bus {

Probe::Probe(const std::vector<std::string>& words, const Settings& settings, const std::vector<std::string>& before) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    std::vector<std::string> all = before;
    all.push_back(BUS_PROBE);
    all.insert(all.end(), words.begin(), words.end());
    std::vector<char*> arguments;
    for (std::string& word : all) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    process_ = fork();
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (const auto& [name, value] : settings) setenv(name.c_str(), value.c_str(), 1);
        dup2(ends[1], STDOUT_FILENO);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
    output_ = ends[0];
}

Probe::~Probe() {
    if (process_ > 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    close(output_);
}

bool Probe::ReadUntil(const std::string& mark) {
    while (mark.empty() || said_.find(mark) == std::string::npos) {
        char some[512];
        const ssize_t got = read(output_, some, sizeof some);
        if (got <= 0) return false;
        said_.append(some, static_cast<std::size_t>(got));
    }
    return true;
}

bool Probe::IsReady() { return ReadUntil("ready\n"); }

std::int64_t Probe::Get(const std::string& name) {
    if (process_ > 0) {
        ReadUntil("");
        waitpid(process_, nullptr, 0);
        process_ = -1;
    }
    const std::size_t at = said_.find(name + "=");
    return at == std::string::npos ? -1 : std::atoll(said_.c_str() + at + name.size() + 1);
}

}  // namespace bus
