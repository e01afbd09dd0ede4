#include "tarvex/nats/NatsBus.h"

#include <chrono>
#include <cinttypes>
#include <string_view>

#include "tarvex/LastError.h"
#include "tarvex/nats/Secrets.h"

namespace tarvex {
namespace {

constexpr std::chrono::milliseconds kEndWait(2000);

// What the server's own listings show.
std::string NameFor(const Identity& identity) {
    std::string name;
    AppendKeyText(name, identity.Sends("-", "-"));
    return name.substr(0, name.size() - 4).substr(0, 200);
}

}  // namespace

NatsBus::NatsBus(Identity identity, EngineSettings settings)
    : identity_(std::move(identity)),
      settings_(std::move(settings)),
      run_(SecretWord(kRunSize)),
      subjects_(settings_.domain, identity_),
      senders_(subjects_),
      journal_(NameFor(identity_)),
      publications_(identity_),
      link_(settings_, NameFor(identity_), subjects_.InboxOfNode(), journal_, *this),
      sender_(settings_, subjects_, run_, denials_, journal_, link_),
      formats_(subjects_, identity_, publications_, wishes_, journal_),
      waker_(reader_),
      feed_(settings_, subjects_, senders_, reader_, waker_, journal_) {
    if (IsStored()) wishes_.AddForLater(sender_.AckSubject(), {OnAck, this});
}

// ---- what the link tells

bool NatsBus::Renew(Connection& connection, bool isFirst) {
    denials_.Clear();
    if (!isFirst && !IsStored()) reader_.NoteLoss();
    return wishes_.Renew(connection) && (!IsStored() || feed_.Renew(connection));
}

void NatsBus::OnUp(const Link::Current& connection) { sender_.Resume(connection); }

void NatsBus::OnDown(const natsConnection* connection) {
    sender_.Suspend(connection);
    waker_.EndRun();
}

void NatsBus::Tend(Connection& connection) {
    reader_.Wake();  // what a run that ended early has left
    sender_.Tend(connection);
    if (IsStored()) feed_.Tend(connection);
}

void NatsBus::OnDenied(const std::string& text) {
    if (!denials_.Add(text)) return;
    journal_.AddAndTell(Count::Denied, "%s", text.c_str());
    sender_.GiveUpDenied();
}

bool NatsBus::IsBehind() {
    Backlog backlog;
    wishes_.AddTo(backlog);
    feed_.AddTo(backlog);
    return backlog.IsLarge();
}

// ---- sending

int NatsBus::Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count) {
    return link_.Start() ? sender_.Send(msgKey, identifier, bytes, count) : Fail(TvxErrorNotConnected);
}

// ---- receiving

bool NatsBus::SubscribeLive(Connection& connection, const Address& pattern) {
    const std::string subject = subjects_.Pattern({"*", "*", 0, pattern.msgKey, pattern.identifier});
    TvxError reason = TvxErrorTimeout;
    try {
        if (wishes_.Add(connection, subject, {OnMessage, this}) && connection.RoundTrip()) {
            OnDenied(connection.LastError());
            if (!denials_.Has(subject)) {
                reader_.Add(pattern);
                return true;
            }
            reason = TvxErrorDenied;
        }
    } catch (const std::bad_alloc&) {
        reason = TvxErrorNoMemory;
    }
    if (!reader_.Names(pattern.msgKey, pattern.identifier)) wishes_.Remove(subject);
    return Fail(reason) != 0;
}

int NatsBus::Subscribe(const Address& pattern, std::uint16_t value) {
    const Link::Current connection = link_.Await();
    if (!connection) return Fail(link_.Start() ? TvxErrorTimeout : TvxErrorNotConnected);
    const std::lock_guard lock(subscribing_);
    return IsStored() ? feed_.Add(*connection, pattern, value) : SubscribeLive(*connection, pattern);
}

int NatsBus::Unsubscribe(const Address& pattern) {
    const std::lock_guard lock(subscribing_);
    const std::string subject = subjects_.Pattern({"*", "*", 0, pattern.msgKey, pattern.identifier});
    if (!reader_.Remove(pattern)) return Fail(TvxErrorNothing);
    if (IsStored()) {
        feed_.Narrow();
    } else if (!reader_.Names(pattern.msgKey, pattern.identifier)) {
        wishes_.Remove(subject);
        waker_.EndRun();
    }
    return 1;
}

void NatsBus::OnMessage(natsConnection*, natsSubscription* subscription, natsMsg* message, void* closure) {
    const MessageOwner owner(message);
    auto* self = static_cast<NatsBus*>(closure);
    try {
        self->TakeLive(message);
    } catch (const std::bad_alloc&) {
        self->journal_.AddAndTell(Count::Overflown, "memory is at its end");
        self->reader_.NoteLoss();
    }
    self->waker_.After(subscription);
}

void NatsBus::TakeLive(natsMsg* message) {
    const std::string_view subject = natsMsg_GetSubject(message);
    const char* keys = nullptr;
    if (Subjects::IsDigest(subject)) natsMsgHeader_Get(message, Subjects::kKeysHeader, &keys);
    const Senders::Known* const sender = senders_.Find(subject, keys);
    const auto length = static_cast<std::uint32_t>(natsMsg_GetDataLength(message));
    if (length > kLargestBody || !sender) {
        journal_.AddAndTell(Count::Foreign, "no message of the bus");
        return;
    }
    const char* const reply = natsMsg_GetReply(message);
    Number number;
    if (reply && ReadNumber(reply, number) && !repeats_.IsNew(sender->sender, number)) {
        journal_.Add(Count::Repeated);
        return;
    }
    switch (reader_.Take(sender->address, natsMsg_GetData(message), length)) {
        case ReaderSide::Taken::Queued:
            journal_.Add(Count::Received);
            break;
        case ReaderSide::Taken::Full:
            journal_.AddAndTell(Count::Overflown, "the program is behind and its queue full");
            reader_.NoteLoss();
            break;
        case ReaderSide::Taken::Unwanted:
            break;
    }
}

void NatsBus::OnAck(natsConnection*, natsSubscription*, natsMsg* message, void* closure) {
    const MessageOwner owner(message);
    try {
        static_cast<NatsBus*>(closure)->sender_.TakeAck(message);
    } catch (const std::bad_alloc&) {  // the next one confirms this as well
    }
}

// ---- formats

int NatsBus::Publish(std::string_view msgKey, std::string_view identifier, const msgfmt* format,
                     std::uint16_t formatSize) {
    if (!link_.Start()) return Fail(TvxErrorNotConnected);
    const std::lock_guard lock(subscribing_);
    if (!format || publications_.HasFormat(msgKey, identifier)) {
        publications_.Add(msgKey, identifier, format, formatSize);
        return 1;
    }
    const Link::Current connection = link_.Await();
    if (!connection) return Fail(TvxErrorTimeout);
    const Formats::Offering offering = formats_.OfferingOf(msgKey, identifier);
    TvxError reason = TvxErrorTimeout;
    try {
        if (formats_.Offer(*connection, offering)) {
            publications_.Add(msgKey, identifier, format, formatSize);
            return 1;
        }
    } catch (const std::bad_alloc&) {
        reason = TvxErrorNoMemory;
    }
    formats_.Withdraw(offering);
    return Fail(reason);
}

int NatsBus::Unpublish(std::string_view msgKey, std::string_view identifier) {
    const std::lock_guard lock(subscribing_);
    const bool hadFormat = publications_.HasFormat(msgKey, identifier);
    const Formats::Offering offering = formats_.OfferingOf(msgKey, identifier);
    if (!publications_.Remove(msgKey, identifier)) return Fail(TvxErrorNothing);
    if (hadFormat) formats_.Withdraw(offering);
    return 1;
}

int NatsBus::QueryFormat(const Address& pattern, void* buffer, std::uint32_t bufferSize, std::uint32_t& needed) {
    std::vector<char> format = publications_.FindFormat(pattern);
    if (!format.empty()) return AnswerFormat(format, buffer, bufferSize, needed);
    const Link::Current connection = link_.Await();
    if (!connection) return Fail(link_.Start() ? TvxErrorTimeout : TvxErrorNotConnected);
    if (formats_.Ask(*connection, pattern, format) == Formats::Found::NoAnswer) return Fail(TvxErrorTimeout);
    return AnswerFormat(format, buffer, bufferSize, needed);
}

// ---- the end

void NatsBus::End() {
    if (!link_.IsStarted()) return;
    std::uint64_t left = 0;
    if (!sender_.Drain(kEndWait, left)) journal_.Tell("ended before the server had all: %" PRIu64 " left", left);
    link_.End();
    sender_.Suspend(nullptr);
    journal_.TellCounts();
}

}  // namespace tarvex
