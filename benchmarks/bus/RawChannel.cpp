#include "bus/RawClient.h"

namespace busbench {
namespace {

class RawChannel : public Channel {
public:
    explicit RawChannel(bool isDriven) : client_(isDriven) {}

private:
    void Subscribe() override {
        natsSubscription* made = nullptr;
        Check(natsConnection_Subscribe(&made, client_.Get(), kSubject, RawClient::OnMessage, &client_), "subscribe");
        Check(natsSubscription_SetPendingLimits(made, -1, -1), "limits");
        Check(natsConnection_Flush(client_.Get()), "flush");
    }
    void Receive(const Taker& taker) override { client_.Receive(taker); }
    void Publish(const char* body, std::size_t size) override {
        client_.AwaitRoom();
        Check(natsConnection_Publish(client_.Get(), kSubject, body, static_cast<int>(size)), "publish");
    }
    void Finish() override { Check(natsConnection_FlushTimeout(client_.Get(), 30000), "flush"); }

    RawClient client_;
};

}  // namespace

std::unique_ptr<Channel> MakeRawChannel(bool isDriven) { return std::make_unique<RawChannel>(isDriven); }

}  // namespace busbench
