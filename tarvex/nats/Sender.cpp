#include "tarvex/nats/Sender.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <functional>
#include <limits>

#include "tarvex/LastError.h"
#include "tarvex/nats/Replies.h"

namespace tarvex {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::int64_t kPassOn = 1000;    // milliseconds for the server to pass a message on
constexpr std::int64_t kAckWait = 2000;   // milliseconds without an acknowledgement: something was lost
constexpr std::int64_t kProbeWait = 300;  // milliseconds between two tries of a message that was not taken
constexpr milliseconds kRoomWait(10000);
constexpr std::uint64_t kHurryCount = 32768;
constexpr std::size_t kHurryBytes = 2u << 20;  // what waits stays in the processor's cache
constexpr std::size_t kLookAfter = 64u << 10;  // bytes, before the client's queue is looked at again
constexpr std::size_t kSlice = 4u << 20;       // bytes that go out before the keeper looks at other things
constexpr std::size_t kHeaderRoom = 160;       // names, numbers and ends of a message's headers
constexpr std::size_t kKeysRoom = 20u << 10;   // for the longest subject and key text
constexpr std::string_view kTooLongForStream = "\"err_code\":10054,";
constexpr int kLongestNumber = 20;

std::int64_t Now() { return std::chrono::duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count(); }

}  // namespace

Sender::Sender(const EngineSettings& settings, const Subjects& subjects, const std::string& run, const Denials& denials,
               Journal& journal, Link& link)
    : stores_(!settings.stream.empty()),
      subjects_(subjects),
      run_(run),
      ackHead_(subjects.Inbox('k')),
      denials_(denials),
      journal_(journal),
      link_(link),
      largest_(std::numeric_limits<std::int64_t>::max()) {}

bool Sender::IsTooLong(std::size_t keys, std::size_t body) const {
    return static_cast<std::int64_t>(body + keys + kHeaderRoom) > largest_;
}

int Sender::Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count) {
    Lock lock(mutex_);
    if (unlooked_ >= kLookAfter) AwaitWritten(lock);
    if (ends_) return Fail(TvxErrorNotConnected);
    if (!AwaitRoom(lock, count + kKeysRoom)) return Fail(TvxErrorQueueFull);
    if (refuses_) return Fail(TvxErrorRefused);
    const Subjects::Subject& subject = SubjectOf(msgKey, identifier);
    if (denials_.Has(subject.text)) return Fail(TvxErrorDenied);
    if (IsTooLong(subject.keys.size(), count)) return Fail(TvxErrorTooLong);
    unlooked_ += count + kHeaderRoom;
    Outbox::Tag tag{};
    if (stores_) tags_.Write(tag.data(), tag.size());
    const Outbox::Entry entry = outbox_.Add(subject.text, subject.keys, bytes, count, tag);
    if (connection_ && next_ == entry.number && !probes_) {
        const natsStatus status = Put(entry);
        if (status == NATS_OK) {
            highest_ = next_++;
        } else if (status == NATS_MAX_PAYLOAD || status == NATS_NO_SERVER_SUPPORT) {
            outbox_.GiveUp(next_++);
            return Fail(TvxErrorTooLong);
        } else if (status != NATS_NO_MEMORY) {  // else the keeper puts it soon
            connection_->Cut();                 // what was accepted waits for the next one
            connection_.reset();
        }
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
    const auto deadline = steady_clock::now() + kRoomWait;
    while (steady_clock::now() < deadline && connection_ && next_ > outbox_.LastNumber() && connection_->IsCrowded()) {
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

// The number in a header lets the stream drop what comes twice. Nobody can guess it: the stream would drop ours as the
// second.
natsStatus Sender::PutStored(const Outbox::Entry& entry) {
    char id[kLongestNumberText + 1 + sizeof(Outbox::Tag) + 1], reply[160];
    char* idEnd = WriteNumber(id, {run_, entry.number});
    *idEnd++ = '-';
    *std::copy(entry.tag.begin(), entry.tag.end(), idEnd) = '\0';
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
    largest_ = connection->LargestPayload();
    refuses_ = probes_ = false;
    next_ = stores_ ? outbox_.Confirmed() + 1 : 1;
    progress_ = Now();
    Pump(lock);
}

// One that was not sent at once.
Sender::Passed Sender::PutWaiting(const Outbox::Entry& entry) {
    const natsStatus status = IsTooLong(std::strlen(entry.keys), entry.bodyLength) ? NATS_MAX_PAYLOAD : Put(entry);
    if (status == NATS_MAX_PAYLOAD || status == NATS_NO_SERVER_SUPPORT) {
        Lose(entry, "too long for this server");
        return Passed::Lost;
    }
    if (status != NATS_OK) {
        if (status != NATS_NO_MEMORY) {
            connection_->Cut();
            connection_.reset();
        }
        return Passed::Waits;
    }
    if (entry.number <= highest_) journal_.Add(Count::Resent);
    highest_ = std::max(highest_, entry.number);
    return Passed::Put;
}

void Sender::Lose(const Outbox::Entry& entry, const char* why) {
    journal_.AddAndTell(Count::Lost, "%s: %s", why, entry.subject);
    outbox_.GiveUp(entry.number);
}

void Sender::Pump(Lock& lock) {
    Outbox::Cursor cursor = outbox_.From(next_);
    std::size_t bytes = 0;
    while (connection_ && !probes_) {
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
        if (bytes > kSlice) {
            link_.Hurry();
            break;
        }
        bytes += entry.bodyLength + kHeaderRoom;
        const Passed passed = PutWaiting(entry);
        if (passed == Passed::Waits) break;
        next_ = entry.number + 1;
        if (passed == Passed::Put)
            cursor.Next();
        else
            cursor = outbox_.From(next_);  // the outbox may have let go of what it points into
    }
    room_.notify_all();
}

void Sender::Suspend(const natsConnection* ended) {
    Link::Current last;
    const std::lock_guard lock(mutex_);
    if (!connection_ || (ended && connection_->Get() != ended)) return;
    last = std::move(connection_);
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
    const std::int64_t now = Now();
    if (stores_) {
        Urge(now);
    } else {
        outbox_.Confirm(sent, now);
        outbox_.Release(now, kPassOn);
        room_.notify_all();
    }
    if (next_ <= outbox_.LastNumber()) Pump(lock);
}

// Wants the mutex. An acknowledgement tells of its own message only: what is missing before it has to go out again.
void Sender::Urge(std::int64_t now) {
    if (outbox_.Confirmed() != seen_ || outbox_.Unconfirmed() == 0) {
        seen_ = outbox_.Confirmed();
        progress_ = now;
    }
    if (now - progress_ > kAckWait) probes_ = true;
    if (!probes_ || now - probed_ < kProbeWait) return;
    probed_ = now;
    const Outbox::Cursor first = outbox_.From(outbox_.Confirmed() + 1);
    if (first.AtEnd())
        GoOn();
    else
        PutWaiting(first.Get());
}

// Wants the mutex. The stream takes messages again.
void Sender::GoOn() {
    if (!probes_) return;
    probes_ = refuses_ = false;
    next_ = outbox_.Confirmed() + 1;
    link_.Hurry();
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
    if (number <= outbox_.Confirmed()) return;  // of one that went out twice
    if (body.starts_with("{\"stream\"")) {
        if (number != outbox_.Confirmed() + 1) {
            probes_ = true;
            return;
        }
        outbox_.Confirm(number, 0);
        outbox_.Release(0, 0);
        GoOn();
    } else if (body.find(kTooLongForStream) != std::string_view::npos) {
        const Outbox::Cursor refused = outbox_.From(number);
        if (refused.AtEnd() || refused.Get().number != number) return;  // given up already
        Lose(refused.Get(), "too long for the stream");
        outbox_.Release(0, 0);
        if (number <= outbox_.Confirmed()) GoOn();
    } else {
        journal_.AddAndTell(Count::Refused, "the stream refuses: %.*s", static_cast<int>(body.size()), body.data());
        probes_ = refuses_ = true;
    }
    room_.notify_all();
}

void Sender::GiveUpDenied() {
    const Lock lock(mutex_);
    Outbox::Cursor cursor = outbox_.From(outbox_.Confirmed() + 1);
    while (!cursor.AtEnd()) {
        const Outbox::Entry entry = cursor.Get();
        if (denials_.Has(entry.subject)) {
            outbox_.GiveUp(entry.number);
            cursor = outbox_.From(entry.number + 1);
        } else {
            cursor.Next();
        }
    }
    if (outbox_.Unconfirmed() == 0) GoOn();
    room_.notify_all();
}

bool Sender::Drain(milliseconds limit, std::uint64_t& left) {
    const auto deadline = steady_clock::now() + limit;
    Lock lock(mutex_);
    ends_ = true;
    while (outbox_.Unconfirmed() > 0) {
        link_.Hurry();
        if (room_.wait_until(lock, deadline) == std::cv_status::timeout) break;
    }
    left = outbox_.Unconfirmed();
    return left == 0;
}

}  // namespace tarvex
