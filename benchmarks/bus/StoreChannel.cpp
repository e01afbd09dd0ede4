#include "bus/RawClient.h"

namespace busbench {
namespace {

// The engine's store by its own client: asynchronous publishing, an ordered consumer.
class StoreChannel : public Channel {
public:
    StoreChannel() : client_(true) {
        Check(natsConnection_JetStream(&store_, client_.Get(), nullptr), "store");
        const char* subjects[] = {"raw.m.>"};
        jsStreamConfig config;
        jsStreamConfig_Init(&config);
        config.Name = "RAW";
        config.Subjects = subjects;
        config.SubjectsLen = 1;
        Check(js_AddStream(nullptr, store_, &config, nullptr, nullptr), "stream");
    }
    ~StoreChannel() override { jsCtx_Destroy(store_); }

private:
    void Subscribe() override {
        jsSubOptions options;
        jsSubOptions_Init(&options);
        options.Stream = "RAW";
        options.Ordered = true;
        options.Config.DeliverPolicy = js_DeliverNew;
        natsSubscription* made = nullptr;
        Check(js_Subscribe(&made, store_, kSubject, RawClient::OnMessage, &client_, nullptr, &options, nullptr),
              "subscribe");
        Check(natsSubscription_SetPendingLimits(made, -1, -1), "limits");
    }
    void Receive(const Taker& taker) override { client_.Receive(taker); }
    void Publish(const char* body, std::size_t size) override {
        client_.AwaitRoom();
        Check(js_PublishAsync(store_, kSubject, body, static_cast<int>(size), nullptr), "publish");
    }
    void Finish() override {
        jsPubOptions options;
        jsPubOptions_Init(&options);
        options.MaxWait = 30000;
        Check(js_PublishAsyncComplete(store_, &options), "acknowledgements");
    }

    RawClient client_;
    jsCtx* store_ = nullptr;
};

}  // namespace

std::unique_ptr<Channel> MakeStoreChannel() { return std::make_unique<StoreChannel>(); }

}  // namespace busbench
