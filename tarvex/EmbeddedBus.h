#pragma once

#include "tarvex/Bus.h"
#include "tarvex/Identity.h"
#include "tarvex/Publications.h"
#include "tarvex/ReaderSide.h"

namespace tarvex {

/// The bus inside one process: every subscription of the process is served, its own sends included. No
/// thread, no socket.
class EmbeddedBus : public Bus {
public:
    explicit EmbeddedBus(Identity identity) : identity_(std::move(identity)), publications_(identity_) {}

    int Subscribe(const Address& pattern, std::uint16_t value) override;
    int Unsubscribe(const Address& pattern) override;
    int Publish(std::string_view msgKey, std::string_view identifier, const msgfmt* format,
                std::uint16_t formatSize) override;
    int Unpublish(std::string_view msgKey, std::string_view identifier) override;
    int Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count) override;
    int Wait(std::uint32_t milliseconds) override { return reader_.Wait(milliseconds); }
    int Read(ReadBuffers& buffers) override { return reader_.Read(buffers); }
    int QueryFormat(const Address& pattern, void* buffer, std::uint32_t bufferSize, std::uint32_t& needed) override;

private:
    const Identity identity_;
    Publications publications_;
    ReaderSide reader_;
};

}  // namespace tarvex
