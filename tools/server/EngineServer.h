#pragma once

#include <sys/types.h>

#include <stdexcept>
#include <string>

namespace server {

/// The bus's server could not be started; `what` says why.
class ServerError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A server of the bus for this process alone: on a free port of the loopback, with its files in a directory
/// that goes with it. It ends with this object, and with this process however that ends.
class EngineServer {
public:
    struct Options {
        bool stores = false;        ///< keep streams on disk
        std::string configuration;  ///< further lines of the server's own file
        std::string address = "127.0.0.1";
        int port = 0;  ///< 0 for a free one
    };

    static bool IsInstalled();

    /// Raises `ServerError`.
    explicit EngineServer(const Options& options);
    EngineServer() : EngineServer(Options()) {}
    ~EngineServer();
    EngineServer(const EngineServer&) = delete;
    EngineServer& operator=(const EngineServer&) = delete;

    std::string Url() const { return "nats://" + options_.address + ":" + std::to_string(port_); }
    int Port() const { return port_; }
    pid_t Process() const { return process_; }
    const std::string& Directory() const { return directory_; }

    /// Ends it without a warning, as a power cut does.
    void Kill();
    /// Starts it again at its old port, with its old streams.
    void Restart();
    /// Stops and continues its execution.
    void Freeze();
    void Thaw();

private:
    void Start();
    void AwaitPort();

    const Options options_;
    std::string directory_;
    int port_ = 0;
    pid_t process_ = -1;
};

}  // namespace server
