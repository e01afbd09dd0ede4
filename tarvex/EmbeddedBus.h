#pragma once

#include <mutex>
#include <vector>

#include "tarvex/Bus.h"
#include "tarvex/Identity.h"
#include "tarvex/Inbox.h"

namespace tarvex {

/// The bus inside one process: every subscription of the process is served, its own sends included. No
/// thread, no socket.
class EmbeddedBus : public Bus {
public:
    explicit EmbeddedBus(Identity identity) : identity_(std::move(identity)) {}

    int Subscribe(const Address& pattern, std::uint16_t value) override;
    int Unsubscribe(const Address& pattern) override;
    int Publish(std::string_view msgKey, std::string_view identifier, const msgfmt* format,
                std::uint16_t formatSize) override;
    int Unpublish(std::string_view msgKey, std::string_view identifier) override;
    int Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count) override;
    int Wait(std::uint32_t milliseconds) override;
    int Read(ReadBuffers& buffers) override;
    int QueryFormat(const Address& pattern, void* buffer, std::uint32_t bufferSize, std::uint32_t& needed) override;

private:
    struct Publication {
        std::string msgKey;
        std::string identifier;
        std::vector<char> format;
    };

    Address Own(std::string_view msgKey, std::string_view identifier) const {
        return {identity_.node, identity_.task, identity_.number, msgKey, identifier};
    }
    std::vector<Publication>::iterator FindPublication(std::string_view msgKey, std::string_view identifier);
    bool IsWanted(const Address& address) const;

    const Identity identity_;
    std::mutex mutex_;  // the two lists; also keeps a sender's messages in order
    std::vector<OwnedAddress> subscriptions_;
    std::vector<Publication> publications_;
    Inbox inbox_;
};

}  // namespace tarvex
