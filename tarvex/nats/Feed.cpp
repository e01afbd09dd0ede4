#include "tarvex/nats/Feed.h"

#include <algorithm>
#include <charconv>
#include <chrono>

#include "tarvex/LastError.h"
#include "tarvex/nats/Replies.h"

namespace tarvex {
namespace {

constexpr std::int64_t kNanoseconds = 1000000000;
constexpr std::int64_t kDeduplication = 600 * kNanoseconds;  // longer than any cut that a server restart makes
constexpr std::int64_t kKept = 24 * (3600 * kNanoseconds);   // in a stream of our own making
constexpr std::int64_t kHeartbeat = kNanoseconds;
constexpr std::int64_t kSilence = 4000;  // milliseconds without a heartbeat: the delivery is gone
constexpr std::int64_t kApiWait = 3000;  // milliseconds for an answer of the store
constexpr std::uint16_t kAllHistory = 0xFFFF;

using ContextOwner = std::unique_ptr<jsCtx, Destroy<jsCtx_Destroy>>;
using StreamInfoOwner = std::unique_ptr<jsStreamInfo, Destroy<jsStreamInfo_Destroy>>;
using ConsumerInfoOwner = std::unique_ptr<jsConsumerInfo, Destroy<jsConsumerInfo_Destroy>>;

std::int64_t Now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// Requests to the store, each of which a server that says nothing ends with the connection.
class Store {
public:
    explicit Store(Connection& connection) : expectation_(connection) {
        jsOptions options;
        jsOptions_Init(&options);
        options.Wait = kApiWait;
        jsCtx* made = nullptr;
        natsConnection_JetStream(&made, connection.Get(), &options);
        context_.reset(made);
    }
    explicit operator bool() const { return context_ != nullptr; }
    jsCtx* get() const { return context_.get(); }

private:
    Connection::Expectation expectation_;
    ContextOwner context_;
};

const char* Header(natsMsg* message, const char* name) {
    const char* value = nullptr;
    return natsMsgHeader_Get(message, name, &value) == NATS_OK ? value : nullptr;
}

}  // namespace

Feed::Feed(const EngineSettings& settings, const Subjects& subjects, Senders& senders, ReaderSide& reader, Waker& waker,
           Journal& journal)
    : settings_(settings),
      subjects_(subjects),
      senders_(senders),
      deliverHead_(subjects.Inbox('d')),
      reader_(reader),
      waker_(waker),
      journal_(journal) {}

bool Feed::FindStream(Connection& connection) {
    Stream stream;
    if (GetStream(connection, stream)) return true;
    const Store store(connection);
    const std::string subjects = subjects_.AllMessages();
    const char* const list[] = {subjects.c_str()};
    jsStreamConfig config;
    jsStreamConfig_Init(&config);
    config.Name = settings_.stream.c_str();
    config.Subjects = const_cast<const char**>(list);
    config.SubjectsLen = 1;
    config.MaxAge = kKept;
    config.Duplicates = kDeduplication;
    if (store && js_AddStream(nullptr, store.get(), &config, nullptr, nullptr) == NATS_OK) return true;
    natsStatus status = NATS_OK;
    const char* const why = nats_GetLastError(&status);
    journal_.Tell("the stream %s cannot be used: %s", settings_.stream.c_str(), why ? why : natsStatus_GetText(status));
    return false;
}

bool Feed::GetStream(Connection& connection, Stream& stream) {
    const Store store(connection);
    jsStreamInfo* made = nullptr;
    if (!store || js_GetStreamInfo(&made, store.get(), settings_.stream.c_str(), nullptr, nullptr) != NATS_OK)
        return false;
    const StreamInfoOwner info(made);
    // An empty stream has no first place yet.
    stream = {std::max<std::uint64_t>(info->State.FirstSeq, 1), info->State.LastSeq, info->Created};
    return true;
}

// The store finds the place for a consumer that nobody will read.
bool Feed::PlaceOfTime(Connection& connection, std::uint16_t seconds, std::uint64_t& place) {
    const Store store(connection);
    jsConsumerConfig config;
    jsConsumerConfig_Init(&config);
    config.DeliverPolicy = js_DeliverByStartTime;
    config.OptStartTime = nats_NowInNanoSeconds() - seconds * kNanoseconds;
    config.AckPolicy = js_AckNone;
    const std::string deliver = deliverHead_ + "t" + std::to_string(++serial_);
    config.DeliverSubject = deliver.c_str();
    config.InactiveThreshold = kNanoseconds;
    config.MemoryStorage = true;
    jsConsumerInfo* made = nullptr;
    if (!store || js_AddConsumer(&made, store.get(), settings_.stream.c_str(), &config, nullptr, nullptr) != NATS_OK)
        return false;
    const ConsumerInfoOwner info(made);
    place = info->Delivered.Stream + 1;
    js_DeleteConsumer(store.get(), settings_.stream.c_str(), info->Name, nullptr, nullptr);
    return true;
}

bool Feed::Add(Connection& connection, const Address& pattern, std::uint16_t history) {
    const std::lock_guard asking(asking_);
    Stream stream;
    bool isKnown = GetStream(connection, stream);
    std::uint64_t place = stream.last + 1;
    if (history == kAllHistory)
        place = stream.first;
    else if (history > 0)
        isKnown = isKnown && PlaceOfTime(connection, history, place);
    if (!isKnown) return Fail(TvxErrorTimeout) != 0;
    try {
        bool isServed;
        {
            const std::lock_guard lock(mutex_);
            if (!current_ && !reader_.FirstWanted()) position_ = place - 1;  // the first of all
            reader_.MoveOn(position_ + 1);
            if (!reader_.Add(pattern, place)) return true;
            isServed = current_ && place > position_ && filter_ == Filter();
            if (!isServed) current_ = nullptr;
        }
        if (isServed || Restart(connection)) return true;
    } catch (...) {
        reader_.Remove(pattern);
        throw;
    }
    reader_.Remove(pattern);
    return Fail(TvxErrorTimeout) != 0;
}

void Feed::Narrow() {
    const std::lock_guard asking(asking_);
    if (reader_.FirstWanted()) return;
    EndDelivery();
}

// Wants `asking_`.
void Feed::EndDelivery() {
    Subscription ended;
    {
        const std::lock_guard lock(mutex_);
        current_ = nullptr;
        ended = std::move(subscription_);
    }
    ended.End();
    waker_.EndRun();
}

void Feed::AddTo(Backlog& backlog) {
    const std::lock_guard lock(mutex_);
    backlog.Add(subscription_);
}

bool Feed::Renew(Connection& connection) {
    if (!FindStream(connection)) return false;
    const std::lock_guard asking(asking_);
    return GoOn(connection);
}

// Wants `asking_`. What was taken is wanted no more.
bool Feed::GoOn(Connection& connection) {
    {
        const std::lock_guard lock(mutex_);
        current_ = nullptr;
        reader_.MoveOn(position_ + 1);
    }
    return !reader_.FirstWanted() || Restart(connection);
}

// The store filters by one subject only: that of the pair if there is but one, and if its bytes survive the
// text form of a request.
std::string Feed::Filter() const {
    const auto pair = reader_.CommonPair();
    if (!pair) return subjects_.AllMessages();
    const std::string subject = subjects_.Pattern(pair->View());
    const bool isAscii = std::all_of(subject.begin(), subject.end(), [](char c) { return (c & 0x80) == 0; });
    return isAscii ? subject : subjects_.AllMessages();
}

// Wants `asking_`, and no delivery since it was settled where to begin.
bool Feed::Restart(Connection& connection) {
    {
        const std::lock_guard lock(mutex_);
        isFull_ = false;
    }
    EndDelivery();

    Stream stream;
    if (!GetStream(connection, stream)) return false;
    std::uint64_t start = reader_.FirstWanted().value_or(stream.last + 1);
    const bool isNew = created_ != 0 && stream.created != created_;
    if (isNew || start > stream.last + 1) {
        start = isNew ? stream.first : stream.last + 1;
        journal_.Tell(isNew ? "the stream began anew" : "the stream has lost its end");
        reader_.NoteLoss();
        reader_.MoveBack(start);
    } else if (start < stream.first) {
        journal_.Tell("the stream no longer keeps what was missed");
        reader_.NoteLoss();
        start = stream.first;
    }
    created_ = stream.created;
    const std::string deliver = deliverHead_ + std::to_string(++serial_);
    {
        const std::lock_guard lock(mutex_);
        if (!subscription_.Ask(connection, deliver, {OnMessage, this})) return false;
        current_ = subscription_.Get();
        expected_ = 1;
        position_ = start - 1;
        heard_ = Now();
    }
    filter_ = Filter();
    jsConsumerConfig config;
    jsConsumerConfig_Init(&config);
    config.DeliverPolicy = js_DeliverByStartSequence;
    config.OptStartSeq = start;
    config.AckPolicy = js_AckNone;
    config.MaxDeliver = 1;
    config.DeliverSubject = deliver.c_str();
    config.FilterSubject = filter_.c_str();
    config.FlowControl = true;  // a reader that stands still is not cut off by the server
    config.Heartbeat = kHeartbeat;
    config.MemoryStorage = true;
    config.Replicas = 1;
    const Store store(connection);
    if (store && js_AddConsumer(nullptr, store.get(), settings_.stream.c_str(), &config, nullptr, nullptr) == NATS_OK)
        return true;
    const std::lock_guard lock(mutex_);
    BreakOff("it was refused");
    return false;
}

void Feed::Tend(Connection& connection) {
    bool isDue;
    {
        const std::lock_guard lock(mutex_);
        if (current_ && Now() - heard_ > kSilence) BreakOff("no heartbeat");
        isDue = !current_ && (!isFull_ || reader_.HasRoom());
    }
    if (!isDue) return;
    const std::lock_guard asking(asking_);
    GoOn(connection);
}

// Wants `mutex_`. What still comes is not taken; the keeper asks again from the first that is missing.
void Feed::BreakOff(const char* why) {
    journal_.Tell("the delivery from the stream broke off: %s", why);
    current_ = nullptr;
}

void Feed::OnMessage(natsConnection* connection, natsSubscription* subscription, natsMsg* message, void* closure) {
    const MessageOwner owner(message);
    auto* self = static_cast<Feed*>(closure);
    self->Take(subscription, connection, message);
    self->waker_.After(subscription);
}

void Feed::Take(natsSubscription* subscription, natsConnection* connection, natsMsg* message) {
    const std::lock_guard lock(mutex_);
    if (subscription != current_) return;
    heard_ = Now();
    // What the stream stored comes under its own subject; all else was sent to this process and holds no place.
    const std::string_view subject = natsMsg_GetSubject(message);
    if (subject.starts_with(deliverHead_)) {
        TakeStatus(connection, message);
        return;
    }
    const char* const reply = natsMsg_GetReply(message);
    Places places;
    if (!reply || !ReadPlaces(reply, places)) {
        journal_.AddAndTell(Count::Foreign, "no message of the stream");
        return;
    }
    if (places.inDelivery != expected_ || places.inStream <= position_) {
        BreakOff("a gap");
        return;
    }
    ++expected_;
    try {
        const char* const keys = Subjects::IsDigest(subject) ? Header(message, Subjects::kKeysHeader) : nullptr;
        const Senders::Known* const sender = senders_.Find(subject, keys);
        const auto length = static_cast<std::uint32_t>(natsMsg_GetDataLength(message));
        if (length > kLargestBody || !sender) {
            journal_.AddAndTell(Count::Foreign, "no message of the bus");
        } else {
            const auto taken = reader_.Take(sender->address, natsMsg_GetData(message), length, places.inStream);
            if (taken == ReaderSide::Taken::Full) {
                isFull_ = true;
                BreakOff("the program is behind and its queue full");
                return;
            }
            if (taken == ReaderSide::Taken::Queued) journal_.Add(Count::Received);
        }
    } catch (const std::bad_alloc&) {
        isFull_ = true;
        BreakOff("memory is at its end");
        return;
    }
    position_ = places.inStream;
}

// Wants `mutex_`. The store asks in between whether it may go on, and tells that it is there.
void Feed::TakeStatus(natsConnection* connection, natsMsg* message) {
    if (natsMsg_GetDataLength(message) > 0 || !Header(message, "Status")) {
        journal_.AddAndTell(Count::Foreign, "no message of the stream");
        return;
    }
    const char* answer = natsMsg_GetReply(message);
    if (!answer) answer = Header(message, "Nats-Consumer-Stalled");
    // If it is not answered the store asks again.
    if (answer && std::string_view(answer).starts_with("$JS.FC.") && !Connection::IsCrowded(connection))
        natsConnection_Publish(connection, answer, nullptr, 0);
    const char* const last = Header(message, "Nats-Last-Consumer");
    if (!last) return;
    std::uint64_t number = 0;
    std::from_chars(last, last + std::char_traits<char>::length(last), number);
    if (number >= expected_) BreakOff("a gap before a heartbeat");
}

}  // namespace tarvex
