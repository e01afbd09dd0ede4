#include "bus/RawClient.h"

#include <cstdlib>
#include <stdexcept>

namespace busbench {

void Check(natsStatus status, const char* what) {
    if (status != NATS_OK) throw std::runtime_error(std::string(what) + ": " + natsStatus_GetText(status));
}

RawClient::RawClient(bool isDriven) {
    natsOptions* made = nullptr;
    Check(natsOptions_Create(&made), "options");
    const std::unique_ptr<natsOptions, void (*)(natsOptions*)> options(made, natsOptions_Destroy);
    const char* const url = std::getenv("TARVEX_URL");
    Check(natsOptions_SetURL(made, url ? url : ""), "url");
    if (isDriven) {
        loop_ = std::make_unique<tarvex::EventLoop>([] { return false; });
        Check(loop_->Serve(made), "loop");
        Check(natsOptions_SetSendAsap(made, true), "option");
        Check(natsOptions_UseGlobalMessageDelivery(made, true), "option");
    }
    Check(natsConnection_Connect(&connection_, made), "connect");
}

RawClient::~RawClient() {
    if (loop_)
        loop_->Close(connection_);
    else
        natsConnection_Close(connection_);
    natsConnection_Destroy(connection_);
}

void RawClient::AwaitRoom() {
    while (loop_ && natsConnection_Buffered(connection_) > 1 << 20) loop_->AwaitWrite();
}

// Messages that come before there is a taker wait in the client's own queue.
void RawClient::OnMessage(natsConnection*, natsSubscription*, natsMsg* message, void* client) {
    auto* self = static_cast<RawClient*>(client);
    std::unique_lock lock(self->mutex_);
    self->changed_.wait(lock, [&] { return self->taker_ || self->isDone_; });
    if (!self->isDone_ &&
        !(*self->taker_)(natsMsg_GetData(message), static_cast<std::size_t>(natsMsg_GetDataLength(message)))) {
        self->isDone_ = true;
        self->changed_.notify_all();
    }
    lock.unlock();
    natsMsg_Destroy(message);
}

void RawClient::Receive(const Channel::Taker& taker) {
    std::unique_lock lock(mutex_);
    taker_ = &taker;
    changed_.notify_all();
    changed_.wait(lock, [this] { return isDone_; });
    taker_ = nullptr;
}

}  // namespace busbench
