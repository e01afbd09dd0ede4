#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace busbench {

/// One way to bring bodies from one process to others. Settings come from the environment, as the bus's do.
class Channel {
public:
    /// Takes a body; false when it has had enough. May be called on another thread.
    using Taker = std::function<bool(const char* body, std::size_t size)>;

    virtual ~Channel() = default;
    virtual void Subscribe() = 0;
    /// Returns when `taker` has had enough. After `Subscribe`, which may have queued some.
    virtual void Receive(const Taker& taker) = 0;
    virtual void Publish(const char* body, std::size_t size) = 0;
    /// Everything has left this process.
    virtual void Finish() = 0;
};

/// "bus" (live or stored, as the environment says), "loop" (the engine's client, driven by an event loop),
/// "default" (its own threads and options), "js" (its store). Raises `std::runtime_error`.
std::unique_ptr<Channel> MakeChannel(const std::string& name);

std::unique_ptr<Channel> MakeBusChannel();
std::unique_ptr<Channel> MakeRawChannel(bool isDriven);
std::unique_ptr<Channel> MakeStoreChannel();

}  // namespace busbench
