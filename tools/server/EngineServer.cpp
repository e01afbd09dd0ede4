#include "server/EngineServer.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

namespace server {
namespace {

constexpr const char* kProgram = "nats-server";
constexpr std::chrono::seconds kStartWait(20);

std::string MakeDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "tarvex-server-XXXXXX").string();
    if (!mkdtemp(name.data())) throw ServerError("no directory for the bus's server: " + name);
    return name;
}

std::string ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

bool EngineServer::IsInstalled() {
    const char* const folders = std::getenv("PATH");
    std::string_view path = folders ? folders : "";
    while (!path.empty()) {
        const std::string_view folder = path.substr(0, path.find(':'));
        path.remove_prefix(std::min(path.size(), folder.size() + 1));
        if (access((std::string(folder) + "/" + kProgram).c_str(), X_OK) == 0) return true;
    }
    // Debian keeps it where daemons are, which is not on every user's path.
    return access("/usr/sbin/nats-server", X_OK) == 0;
}

EngineServer::EngineServer(const Options& options)
    : options_(options), directory_(MakeDirectory()), port_(options.port) {
    // The server's own limits are below what a message may have, and what a frozen reader may have waiting.
    std::ofstream(directory_ + "/server.conf") << "max_payload: 8MB\nmax_pending: 256MB\n" << options_.configuration;
    try {
        Start();
    } catch (...) {
        Kill();
        std::filesystem::remove_all(directory_);
        throw;
    }
}

EngineServer::~EngineServer() {
    Kill();
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

void EngineServer::Start() {
    std::vector<std::string> words = {kProgram,
                                      "-a",
                                      options_.address,
                                      "-p",
                                      port_ == 0 ? "-1" : std::to_string(port_),
                                      "--ports_file_dir",
                                      directory_,
                                      "-c",
                                      directory_ + "/server.conf"};
    if (options_.stores) words.insert(words.end(), {"-js", "-sd", directory_ + "/streams"});
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const std::string log = directory_ + "/log";
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ < 0) throw ServerError("no process for the bus's server");
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(127);
        const int output = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
        if (output >= 0) {
            dup2(output, STDOUT_FILENO);
            dup2(output, STDERR_FILENO);
        }
        execvp(kProgram, arguments.data());
        execv("/usr/sbin/nats-server", arguments.data());
        _exit(127);
    }
    AwaitPort();
}

// The server writes the ports that it has taken when it is ready.
void EngineServer::AwaitPort() {
    const std::string path = directory_ + "/nats-server_" + std::to_string(process_) + ".ports";
    const std::string mark = "//" + options_.address + ":";  // the first is for programs, nats: or tls:
    const auto deadline = std::chrono::steady_clock::now() + kStartWait;
    while (std::chrono::steady_clock::now() < deadline) {
        const std::string ports = ReadAll(path);
        const std::size_t at = ports.find(mark);
        if (at != std::string::npos && ports.find('}') != std::string::npos) {
            port_ = std::atoi(ports.c_str() + at + mark.size());
            return;
        }
        if (waitpid(process_, nullptr, WNOHANG) == process_) {
            process_ = -1;
            throw ServerError("the bus's server does not run:\n" + ReadAll(directory_ + "/log"));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    throw ServerError("the bus's server is not ready:\n" + ReadAll(directory_ + "/log"));
}

void EngineServer::Kill() {
    if (process_ < 0) return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    std::error_code ignored;
    std::filesystem::remove(directory_ + "/nats-server_" + std::to_string(process_) + ".ports", ignored);
    process_ = -1;
}

void EngineServer::Restart() {
    Kill();
    Start();
}

void EngineServer::Freeze() { kill(process_, SIGSTOP); }

void EngineServer::Thaw() { kill(process_, SIGCONT); }

}  // namespace server
