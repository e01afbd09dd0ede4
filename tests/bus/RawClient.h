#pragma once

#include <nats/nats.h>

#include <memory>
#include <string>
#include <vector>

namespace bus {

/// A client of the engine that knows nothing of the bus.
class RawClient {
public:
    explicit RawClient(const std::string& url) {
        natsConnection* made = nullptr;
        natsConnection_ConnectTo(&made, url.c_str());
        connection_.reset(made);
    }

    bool IsConnected() const { return connection_ != nullptr; }
    natsConnection* Get() const { return connection_.get(); }

    void Publish(const std::string& subject, const std::string& body, const std::string& reply = "",
                 const std::string& header = "", const std::string& value = "") {
        natsMsg* made = nullptr;
        natsMsg_Create(&made, subject.c_str(), reply.empty() ? nullptr : reply.c_str(), body.data(),
                       static_cast<int>(body.size()));
        const std::unique_ptr<natsMsg, void (*)(natsMsg*)> owner(made, natsMsg_Destroy);
        if (!header.empty()) natsMsgHeader_Set(made, header.c_str(), value.c_str());
        natsConnection_PublishMsg(connection_.get(), made);
    }
    void Flush() { natsConnection_FlushTimeout(connection_.get(), 5000); }

    /// All that comes for a subject from now on.
    void Listen(const std::string& subject) {
        natsSubscription* made = nullptr;
        natsConnection_SubscribeSync(&made, connection_.get(), subject.c_str());
        subscription_.reset(made);
        Flush();
    }
    /// The next message that was listened for; null if there is none for a second.
    std::shared_ptr<natsMsg> Next() {
        natsMsg* got = nullptr;
        natsSubscription_NextMsg(&got, subscription_.get(), 1000);
        return {got, natsMsg_Destroy};
    }

private:
    std::unique_ptr<natsConnection, void (*)(natsConnection*)> connection_{nullptr, natsConnection_Destroy};
    std::unique_ptr<natsSubscription, void (*)(natsSubscription*)> subscription_{nullptr, natsSubscription_Destroy};
};

}  // namespace bus
