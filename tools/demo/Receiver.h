#pragma once

#include <surveymsg/surveymsg.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace demo {

/// The program that listens: it has subscribed to fixes, computed positions and raw records, whoever sends
/// them under whatever name, and makes the right object for each from its key alone; for a record from the
/// format that the bus has for it. A call that the library refuses raises `LibraryFailure`; the library's
/// exceptions pass through.
class Receiver {
public:
    /// What is done with each computed position, or record. The object is released afterwards.
    using OnMessage = std::function<void(CMsg& message)>;

    /// A computed position that came.
    struct Arrival {
        std::string sender;  ///< "node/task/number"
        std::string identifier;
        std::uint64_t bytes;
        std::uint64_t observations;
    };

    Receiver(OnMessage onPosition, OnMessage onRecord);  ///< subscribes

    /// Takes the next message, waiting up to `wait` milliseconds for it; false if none came.
    bool ReceiveOne(std::uint32_t wait);

    std::size_t FixCount() const { return fixCount_; }
    std::uint64_t FixBytes() const { return fixBytes_; }
    const std::vector<Arrival>& Positions() const { return positions_; }
    std::size_t RecordCount() const { return recordCount_; }
    /// Whether the producer has said that this was all.
    bool IsAtEnd() const { return isAtEnd_; }

private:
    OnMessage onPosition_;
    OnMessage onRecord_;
    CMsg received_;  // kept, so that its storage is
    std::size_t fixCount_ = 0;
    std::uint64_t fixBytes_ = 0;
    std::vector<Arrival> positions_;
    std::size_t recordCount_ = 0;
    bool isAtEnd_ = false;
};

}  // namespace demo
