#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "surveymsg/outside/Tarvex.h"
#include "tarvex/Keys.h"

namespace tarvex {

/// Where a read puts a message.
struct ReadBuffers {
    struct Text {
        char* storage;
        std::uint32_t size;  ///< terminator included
    };
    Text node, task, msgKey, identifier;
    std::uint32_t* number;
    void* body;
    std::uint32_t bodySize;
    std::uint32_t* bodyLength;
};

/// What a way to run the bus does. Arguments have been checked. Results are those of the contract: on 0
/// the thread's last error value is set.
class Bus {
public:
    virtual ~Bus() = default;

    virtual int Subscribe(const Address& pattern, std::uint16_t value) = 0;
    virtual int Unsubscribe(const Address& pattern) = 0;
    virtual int Publish(std::string_view msgKey, std::string_view identifier, const msgfmt* format,
                        std::uint16_t formatSize) = 0;
    virtual int Unpublish(std::string_view msgKey, std::string_view identifier) = 0;
    virtual int Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count) = 0;
    virtual int Wait(std::uint32_t milliseconds) = 0;
    virtual int Read(ReadBuffers& buffers) = 0;
    virtual int QueryFormat(const Address& pattern, void* buffer, std::uint32_t bufferSize, std::uint32_t& needed) = 0;

    /// Whether threads of its own have started, which a forked child does not have.
    virtual bool HasThreads() const { return false; }
    /// The process ends: what was accepted leaves it.
    virtual void End() {}
};

/// Answers a query with the format that was found, empty for none, as the contract says.
int AnswerFormat(const std::vector<char>& format, void* buffer, std::uint32_t bufferSize, std::uint32_t& needed);

/// The bus of this process, chosen at the first call by `TARVEX_URL`. Null, with the last error value
/// set, if the environment names one that there is not.
Bus* TheBus();

}  // namespace tarvex
