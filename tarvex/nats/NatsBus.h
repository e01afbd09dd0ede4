#pragma once

#include <atomic>
#include <memory>

#include "tarvex/Bus.h"
#include "tarvex/Publications.h"
#include "tarvex/ReaderSide.h"
#include "tarvex/nats/Denials.h"
#include "tarvex/nats/EngineSettings.h"
#include "tarvex/nats/Feed.h"
#include "tarvex/nats/Formats.h"
#include "tarvex/nats/Journal.h"
#include "tarvex/nats/Link.h"
#include "tarvex/nats/Repeats.h"
#include "tarvex/nats/Sender.h"
#include "tarvex/nats/Senders.h"
#include "tarvex/nats/Subjects.h"
#include "tarvex/nats/Waker.h"
#include "tarvex/nats/Wishes.h"

namespace tarvex {

/// The bus across processes and machines. Nothing is started before the first call that needs the engine.
class NatsBus : public Bus, private Link::User {
public:
    NatsBus(Identity identity, EngineSettings settings);

    int Subscribe(const Address& pattern, std::uint16_t value) override;
    int Unsubscribe(const Address& pattern) override;
    int Publish(std::string_view msgKey, std::string_view identifier, const msgfmt* format,
                std::uint16_t formatSize) override;
    int Unpublish(std::string_view msgKey, std::string_view identifier) override;
    int Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count) override;
    int Wait(std::uint32_t milliseconds) override { return reader_.Wait(milliseconds); }
    int Read(ReadBuffers& buffers) override { return reader_.Read(buffers); }
    int QueryFormat(const Address& pattern, void* buffer, std::uint32_t bufferSize, std::uint32_t& needed) override;
    bool HasThreads() const override { return link_.HasThreads(); }
    void End() override;

private:
    bool IsStored() const { return !settings_.stream.empty(); }
    bool SubscribeLive(Connection& connection, const Address& pattern);

    bool Renew(Connection& connection, bool isFirst) override;
    void OnUp(const Link::Current& connection) override;
    void OnDown(const natsConnection* connection) override;
    void Tend(Connection& connection) override;
    void OnDenied(const std::string& text) override;
    bool IsBehind() override;

    static void OnMessage(natsConnection*, natsSubscription*, natsMsg* message, void* closure);
    static void OnAck(natsConnection*, natsSubscription*, natsMsg* message, void* closure);
    void TakeLive(natsMsg* message);

    const Identity identity_;
    const EngineSettings settings_;
    const std::string run_;  // tells this run of the program from all others
    const Subjects subjects_;
    Senders senders_;  // the delivery thread's own, as are the repeats
    Journal journal_;
    Publications publications_;
    ReaderSide reader_;
    Wishes wishes_;
    Denials denials_;
    Link link_;
    Sender sender_;
    Formats formats_;
    Waker waker_;
    Feed feed_;
    Repeats repeats_;
    std::mutex subscribing_;
};

}  // namespace tarvex
