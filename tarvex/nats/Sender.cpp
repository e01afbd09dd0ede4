#include "tarvex/nats/Sender.h"

#include <charconv>
#include <functional>

#include "tarvex/LastError.h"
#include "tarvex/nats/Replies.h"

namespace tarvex {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::int64_t kPassOn = 1000;  // milliseconds for the server to pass a message on
constexpr std::int64_t kAckWait = 5000;
constexpr milliseconds kRoomWait(10000);
constexpr std::uint64_t kHurryCount = 32768;
constexpr std::size_t kHurryBytes = 2u << 20;  // what waits stays in the processor's cache
constexpr std::size_t kLookAfter = 64u << 10;  // bytes, before the client's queue is looked at again
constexpr std::size_t kHeaderRoom = 128;       // names and ends of a message's headers
constexpr std::size_t kKeysRoom = 20u << 10;   // for the longest subject and key text
constexpr int kLongestNumber = 20;

std::int64_t Now() { return std::chrono::duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count(); }

}  // namespace

Sender::Sender(const EngineSettings& settings, const Subjects& subjects, const std::string& run, Journal& journal,
               Link& link)
    : stores_(!settings.stream.empty()),
      subjects_(subjects),
      run_(run),
      ackHead_("_INBOX." + run + ".k."),
      journal_(journal),
      link_(link) {}

int Sender::Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count) {
    Lock lock(mutex_);
    if (unlooked_ >= kLookAfter) AwaitWritten(lock);
    if (!AwaitRoom(lock, count + kKeysRoom)) return Fail(TvxErrorQueueFull);
    if (refused_ != 0) return Fail(TvxErrorRefused);
    const Subjects::Subject& subject = SubjectOf(msgKey, identifier);
    if (anyDenied_.load(std::memory_order_relaxed) && IsDenied(subject.text)) return Fail(TvxErrorDenied);
    if (connection_ &&
        static_cast<std::int64_t>(count + subject.keys.size() + kHeaderRoom) > connection_->LargestPayload())
        return Fail(TvxErrorTooLong);
    unlooked_ += count + kHeaderRoom;
    const Outbox::Entry entry = outbox_.Add(subject.text, subject.keys, bytes, count);
    if (connection_ && next_ == entry.number) {
        const natsStatus status = Put(entry);
        if (status == NATS_OK)
            highest_ = next_++;
        else if (status != NATS_NO_MEMORY)  // else the keeper puts it soon
            connection_.reset();            // what was accepted waits for the next one
    }
    journal_.Add(Count::Sent);
    if (!hurried_ && (outbox_.Unconfirmed() > kHurryCount || outbox_.UnconfirmedBytes() > kHurryBytes)) {
        hurried_ = true;
        link_.Hurry();
    }
    return 1;
}

// A program mostly sends to pairs that it has sent to before. Wants the mutex, as long as the result is used.
const Subjects::Subject& Sender::SubjectOf(std::string_view msgKey, std::string_view identifier) {
    const auto isIt = [&](const Pair& pair) {
        return pair.msgKey == msgKey && pair.identifier == identifier && !pair.subject.text.empty();
    };
    if (isIt(*latest_)) return latest_->subject;
    const std::hash<std::string_view> hash;
    Pair& pair = *(latest_ = &pairs_[(hash(msgKey) ^ 31 * hash(identifier)) % pairs_.size()]);
    if (!isIt(pair)) {
        pair.subject.text.clear();  // in case memory ends half-way
        pair.msgKey = msgKey;
        pair.identifier = identifier;
        Subjects::Subject subject;
        subjects_.Message(msgKey, identifier, subject);
        pair.subject = std::move(subject);
    }
    return pair.subject;
}

bool Sender::AwaitRoom(Lock& lock, std::size_t bytes) {
    if (outbox_.MakeRoomFor(bytes)) return true;
    const auto deadline = steady_clock::now() + kRoomWait;
    while (!outbox_.MakeRoomFor(bytes)) {
        if (!connection_) return false;
        link_.Hurry();
        if (room_.wait_until(lock, deadline) == std::cv_status::timeout) return false;
    }
    return true;
}

// Holds back a sender that is faster than the socket. Not while older messages wait: these go first.
void Sender::AwaitWritten(Lock& lock) {
    unlooked_ = 0;
    while (connection_ && next_ > outbox_.LastNumber() && connection_->IsCrowded()) {
        const Link::Current connection = connection_;
        lock.unlock();
        connection->AwaitWrite();
        lock.lock();
    }
}

natsStatus Sender::Put(const Outbox::Entry& entry) {
    natsConnection* const connection = connection_->Get();
    if (stores_) return PutStored(entry);
    char reply[kLongestNumberText + 1];
    *WriteNumber(reply, {run_, entry.number, entry.number <= highest_}) = '\0';
    const int length = static_cast<int>(entry.bodyLength);
    if (!*entry.keys) return natsConnection_PublishRequest(connection, entry.subject, reply, entry.body, length);
    natsMsg* made = nullptr;
    natsStatus status = natsMsg_Create(&made, entry.subject, reply, entry.body, length);
    const MessageOwner owner(made);
    if (status == NATS_OK) status = natsMsgHeader_Set(made, Subjects::kKeysHeader, entry.keys);
    return status == NATS_OK ? natsConnection_PublishMsg(connection, made) : status;
}

// The number in a header lets the stream drop what comes twice.
natsStatus Sender::PutStored(const Outbox::Entry& entry) {
    char id[kLongestNumberText + 1], reply[64];
    *WriteNumber(id, {run_, entry.number}) = '\0';
    char* const end = reply + ackHead_.copy(reply, sizeof reply - kLongestNumber - 1);
    *std::to_chars(end, end + kLongestNumber, entry.number).ptr = '\0';
    natsMsg* made = nullptr;
    natsStatus status = natsMsg_Create(&made, entry.subject, reply, entry.body, static_cast<int>(entry.bodyLength));
    const MessageOwner owner(made);
    if (status == NATS_OK) status = natsMsgHeader_Set(made, "Nats-Msg-Id", id);
    if (status == NATS_OK && *entry.keys) status = natsMsgHeader_Set(made, Subjects::kKeysHeader, entry.keys);
    return status == NATS_OK ? natsConnection_PublishMsg(connection_->Get(), made) : status;
}

void Sender::Resume(const Link::Current& connection) {
    Lock lock(mutex_);
    connection_ = connection;
    refused_ = 0;
    SendAgainFrom(lock, 0);
}

void Sender::SendAgainFrom(Lock& lock, std::uint64_t number) {
    next_ = number;
    progress_ = Now();
    Pump(lock);
}

void Sender::Pump(Lock& lock) {
    Outbox::Cursor cursor = outbox_.From(next_);
    while (connection_) {
        if (connection_->IsCrowded()) {
            const Link::Current connection = connection_;
            lock.unlock();
            connection->AwaitWrite();
            lock.lock();
            cursor = outbox_.From(next_);
            continue;
        }
        if (cursor.AtEnd()) {
            next_ = outbox_.LastNumber() + 1;
            break;
        }
        const Outbox::Entry entry = cursor.Get();
        next_ = entry.number;
        const natsStatus status = Put(entry);
        if (status == NATS_MAX_PAYLOAD) {
            journal_.AddAndTell(Count::Lost, "too long for this server: %s", entry.subject);
        } else if (status == NATS_NO_MEMORY) {
            break;
        } else if (status != NATS_OK) {
            connection_.reset();
            break;
        }
        if (entry.number <= highest_) journal_.Add(Count::Resent);
        highest_ = std::max(highest_, entry.number);
        next_ = entry.number + 1;
        cursor.Next();
    }
    room_.notify_all();
}

void Sender::Suspend() {
    Link::Current ended;
    const std::lock_guard lock(mutex_);
    ended = std::move(connection_);
    connection_ = nullptr;
    room_.notify_all();
}

void Sender::Tend(Connection& connection) {
    Lock lock(mutex_);
    hurried_ = false;
    const std::uint64_t sent = next_ - 1;
    lock.unlock();
    if (!connection.RoundTrip()) return;
    lock.lock();
    if (!connection_ || connection_->Get() != connection.Get()) return;
    if (next_ <= outbox_.LastNumber()) Pump(lock);
    const std::int64_t now = Now();
    if (!stores_) {
        outbox_.Confirm(sent, now);
        outbox_.Release(now, kPassOn);
        room_.notify_all();
        return;
    }
    if (outbox_.Confirmed() != seen_ || outbox_.Unconfirmed() == 0) {
        seen_ = outbox_.Confirmed();
        progress_ = now;
    }
    const bool isOverdue = now - progress_ > kAckWait;
    if (refused_ == 0 && !isOverdue) return;
    const std::uint64_t from = isOverdue ? outbox_.Confirmed() + 1 : refused_;
    refused_ = 0;
    SendAgainFrom(lock, from);
}

void Sender::TakeAck(natsMsg* message) {
    const std::string_view subject = natsMsg_GetSubject(message);
    const std::string_view body(natsMsg_GetData(message), static_cast<std::size_t>(natsMsg_GetDataLength(message)));
    std::uint64_t number = 0;
    if (!subject.starts_with(ackHead_)) return;
    const char* const end = subject.data() + subject.size();
    const auto [parsed, error] = std::from_chars(subject.data() + ackHead_.size(), end, number);
    const Lock lock(mutex_);
    if (error != std::errc{} || parsed != end || number == 0 || number > highest_) {
        journal_.AddAndTell(Count::Foreign, "an acknowledgement of nothing");
        return;
    }
    if (natsMsg_IsNoResponders(message) || !body.starts_with("{\"stream\"")) {
        const bool isFirst = refused_ == 0;
        if (isFirst || number < refused_) refused_ = number;
        journal_.AddAndTell(Count::Refused, "the stream refuses: %.*s", static_cast<int>(body.size()), body.data());
        if (isFirst) room_.notify_all();
        return;
    }
    if (refused_ != 0 && number >= refused_) return;  // it is sent again, with those before it
    outbox_.Confirm(number, 0);
    outbox_.Release(0, 0);
    room_.notify_all();
}

bool Sender::Drain(milliseconds limit, std::uint64_t& left) {
    const auto deadline = steady_clock::now() + limit;
    Lock lock(mutex_);
    while (outbox_.Unconfirmed() > 0) {
        link_.Hurry();
        if (room_.wait_until(lock, deadline) == std::cv_status::timeout) break;
    }
    left = outbox_.Unconfirmed();
    return left == 0;
}

void Sender::Deny(const std::string& subject) {
    const std::lock_guard lock(denials_);
    denied_.insert(subject);
    anyDenied_ = true;
}

void Sender::AllowAll() {
    const std::lock_guard lock(denials_);
    denied_.clear();
    anyDenied_ = false;
}

bool Sender::IsDenied(const std::string& subject) const {
    const std::lock_guard lock(denials_);
    return denied_.contains(subject);
}

}  // namespace tarvex
