#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace server {

/// A program that runs beside this one, and what it writes to its standard output. It is killed with this
/// object if it has not ended, and with this process however that ends.
class ChildProcess {
public:
    using Settings = std::map<std::string, std::string>;

    /// The program and its words; environment variables beside those of this process.
    explicit ChildProcess(std::vector<std::string> command, const Settings& settings = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t Id() const { return process_; }
    /// Waits until it has written this. False if it ended before.
    bool Await(const std::string& text);
    /// Waits for its end: all that it has written.
    const std::string& Output();
    /// Waits for its end: its exit code, -1 if it was killed.
    int ExitCode();

private:
    bool ReadSome();

    pid_t process_ = -1;
    int output_ = -1;
    std::string written_;
    bool ended_ = false;
    int exitCode_ = -1;
};

}  // namespace server
