// Messages through the bus inside the process, beside the queue that a program would write for itself.

#include <deque>
#include <mutex>

#include <surveymsg/outside/Tarvex.h>

#include "operations/Operations.h"
#include "peers/Hand.h"
#include "peers/Surveymsg.h"
#include "suite/Keep.h"
#include "values/Sample.h"

namespace bench {
namespace {

constexpr const char* kRawKey = "BENCH~Raw";
constexpr const char* kRawIdentifier = "one";
constexpr std::size_t kRawBytes = 100;
constexpr std::uint32_t kKeySize = 64;

/// The plain way: bytes with their address behind a mutex.
class Queue {
public:
    struct Entry {
        std::string key, identifier, bytes;
    };
    void Send(std::string_view key, std::string_view identifier, std::string_view bytes) {
        const std::lock_guard lock(mutex_);
        entries_.push_back({std::string(key), std::string(identifier), std::string(bytes)});
    }
    bool Receive(Entry& entry) {
        const std::lock_guard lock(mutex_);
        if (entries_.empty()) return false;
        entry = std::move(entries_.front());
        entries_.pop_front();
        return true;
    }

private:
    std::mutex mutex_;
    std::deque<Entry> entries_;
};

/// A subscription of this process for as long as the object lives.
class Subscription {
public:
    Subscription(const char* key, const char* identifier) : key_(key), identifier_(identifier) {
        TvxSubscribe("*", "*", 0, key_, identifier_, 0, 0);
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    ~Subscription() { TvxUnsubscribe("*", "*", 0, key_, identifier_); }

private:
    const char* key_;
    const char* identifier_;
};

struct RawReader {
    char node[kKeySize], task[kKeySize], key[kKeySize], identifier[kKeySize], body[kRawBytes];
    std::uint32_t number = 0, further = 0, length = 0;

    bool Read() {
        return TvxWait(0) && TvxRead(node, kKeySize, task, kKeySize, &number, key, kKeySize, identifier, kKeySize,
                                     &further, body, kRawBytes, &length);
    }
};

bool Delivers() {
    const Subscription subscription("PRX~Position", "POS/ROV 1");
    CPosnMsg message;
    SurveymsgPeer::Fill(SamplePosition(), message);
    CMsg received;
    return message.Send() && received.Receive(0) && received.Body == message.Body && !received.Receive(0);
}

bool DeliversRaw() {
    const Subscription subscription(kRawKey, kRawIdentifier);
    const std::string bytes(kRawBytes, 'x');
    RawReader reader;
    return TvxSend(kRawKey, kRawIdentifier, bytes.data(), kRawBytes) && reader.Read() && reader.length == kRawBytes &&
           !reader.Read();
}

void AddMessages(Suite& suite) {
    suite.Expect("delivery of a message", Delivers);
    suite.Add("bus/send-receive", "surveymsg", [] {
        auto message = std::make_unique<CPosnMsg>();
        SurveymsgPeer::Fill(SamplePosition(), *message);
        return [subscription = std::make_unique<Subscription>("PRX~Position", "POS/ROV 1"),
                message = std::move(message), received = std::make_unique<CMsg>()] {
            message->Send();
            received->Receive(0);
            Use(received.get());
        };
    });
    suite.Add("bus/send-receive", "plain", [] {
        return [queue = std::make_unique<Queue>(), encoder = std::make_unique<HandPeer::Encoder>(),
                position = SamplePosition(), received = Queue::Entry()]() mutable {
            queue->Send("PRX~Position", "POS/ROV 1", encoder->Encode(position));
            queue->Receive(received);
            Use(&received);
        };
    });
}

void AddRaw(Suite& suite) {
    suite.Expect("delivery of raw bytes", DeliversRaw);
    suite.Add("bus/raw-100", "surveymsg", [] {
        return [subscription = std::make_unique<Subscription>(kRawKey, kRawIdentifier),
                reader = std::make_unique<RawReader>(), bytes = std::string(kRawBytes, 'x')] {
            TvxSend(kRawKey, kRawIdentifier, bytes.data(), kRawBytes);
            reader->Read();
            Use(reader.get());
        };
    });
    suite.Add("bus/raw-100", "plain", [] {
        return [queue = std::make_unique<Queue>(), bytes = std::string(kRawBytes, 'x'),
                received = Queue::Entry()]() mutable {
            queue->Send(kRawKey, kRawIdentifier, bytes);
            queue->Receive(received);
            Use(&received);
        };
    });
}

}  // namespace

void AddBusCases(Suite& suite) {
    AddMessages(suite);
    AddRaw(suite);
}

}  // namespace bench
