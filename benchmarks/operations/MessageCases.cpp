#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include "operations/Operations.h"
#include "peers/CapnProto.h"
#include "peers/FastCdr.h"
#include "peers/FlatBuffers.h"
#include "peers/Floor.h"
#include "peers/Hand.h"
#include "peers/Lcm.h"
#include "peers/Protobuf.h"
#include "peers/Surveymsg.h"
#include "suite/Keep.h"
#include "values/Sample.h"

namespace bench {
namespace {

// The values of one row of the table, and which operations it has.
template <class Plain>
struct Kind {
    const char* name;
    Plain (*sample)(int count);
    int count;
    bool codecOnly;  // sizes beyond the usual, for cost in proportion
};

template <class Peer, class Plain>
std::string Encoded(const Plain& plain) {
    typename Peer::template Message<Plain> message{};
    typename Peer::Encoder encoder;
    Peer::Fill(plain, message);
    return std::string(encoder.Encode(message));
}

template <class Peer, class Plain>
std::unique_ptr<typename Peer::Received> Received(const Plain& plain) {
    return std::make_unique<typename Peer::Received>(Encoded<Peer>(plain));
}

template <class Peer, class Plain>
auto Filled(const Plain& plain) {
    auto message = std::make_unique<typename Peer::template Message<Plain>>();
    Peer::Fill(plain, *message);
    return message;
}

// The same values come back, into a fresh and into a used message; and where the bytes are to be ours, they are.
template <class Peer, class Plain>
bool RoundTrips(const Plain& plain) {
    auto received = Received<Peer>(plain);
    typename Peer::template Message<Plain> message{};
    for (int use = 0; use < 2; ++use) {
        Peer::Decode(*received, message);
        Plain back{};
        Peer::Read(message, back);
        if (back != plain) return false;
    }
    return !Peer::kSameBytes || Encoded<Peer>(plain) == Encoded<SurveymsgPeer>(plain);
}

template <class Peer, class Plain>
bool Assigns(const Plain& plain) {
    auto source = Filled<Peer>(plain);
    typename Peer::template Message<Plain> target{};
    Peer::Assign(target, *source);
    Plain back{};
    Peer::Read(target, back);
    return back == plain;
}

template <class Peer, class Plain>
void AddPeer(Suite& suite, const Kind<Plain>& kind) {
    using Message = typename Peer::template Message<Plain>;
    const auto named = [&](const char* operation) { return std::string(operation) + "/" + kind.name; };
    const auto sample = [kind] { return kind.sample(kind.count); };

    suite.Expect(std::string(kind.name) + " round trip of " + Peer::kName,
                 [sample] { return RoundTrips<Peer>(sample()); });

    suite
        .Add(named("encode"), Peer::kName,
             [sample] {
                 return [message = Filled<Peer>(sample()), encoder = std::make_unique<typename Peer::Encoder>()] {
                     Use(encoder->Encode(*message).data());
                 };
             })
        .encodedBytes = [sample] { return Encoded<Peer>(sample()).size(); };
    suite.Add(named("decode-fresh"), Peer::kName, [sample] {
        return [received = Received<Peer>(sample())] {
            Message message{};
            Peer::Decode(*received, message);
            Use(&message);
        };
    });
    if (kind.codecOnly) return;

    suite.Add(named("decode-reused"), Peer::kName, [sample] {
        return [received = Received<Peer>(sample()), message = std::make_unique<Message>()] {
            Peer::Decode(*received, *message);
            Use(message.get());
        };
    });
    if constexpr (Peer::kOwnMessages) {
        suite.Expect(std::string(kind.name) + " assignment of " + Peer::kName,
                     [sample] { return Assigns<Peer>(sample()); });
        suite.Add(named("construct"), Peer::kName, [] {
            return [] {
                Message message{};
                Use(&message);
            };
        });
        suite.Add(named("assign"), Peer::kName, [sample] {
            return [source = Filled<Peer>(sample()), target = std::make_unique<Message>()] {
                Peer::Assign(*target, *source);
                Use(target.get());
            };
        });
    }
}

template <class Plain>
void AddKind(Suite& suite, const Kind<Plain>& kind) {
    AddPeer<SurveymsgPeer>(suite, kind);
    AddPeer<FloorPeer>(suite, kind);
    AddPeer<HandPeer>(suite, kind);
    AddPeer<ProtobufPeer>(suite, kind);
    AddPeer<FastCdrPeer>(suite, kind);
    AddPeer<LcmPeer>(suite, kind);
    AddPeer<FlatBuffersPeer>(suite, kind);
    AddPeer<CapnProtoPeer>(suite, kind);
}

// What a receiver does that takes whatever comes: the class is known from a text.
void AddDecodeByKey(Suite& suite) {
    constexpr const char* kOperation = "decode-by-key/position";
    suite.Add(kOperation, "surveymsg", [] {
        auto received = Received<SurveymsgPeer>(SamplePosition());
        received->message.MsgKey = "PRX~Position";
        return [received = std::move(received)] {
            CMsg* message = nullptr;
            AllocMsg(received->message.MsgKey, nullptr, &message);
            message->Decode(&received->message);
            Use(message);
            FreeMsg(message);
        };
    });
    suite.Add(kOperation, "floor", [] {
        return [received = Received<FloorPeer>(SamplePosition()), key = std::string("PRX~Position")] {
            const auto message = floor_::Make(key);
            message->Decode(received->View());
            Use(message.get());
        };
    });
    suite.Add(kOperation, "protobuf", [] {
        return [received = Received<ProtobufPeer>(SamplePosition()), key = std::string("bench.proto.Position")] {
            using namespace google::protobuf;
            const Descriptor* type = DescriptorPool::generated_pool()->FindMessageTypeByName(key);
            const std::unique_ptr<Message> message(MessageFactory::generated_factory()->GetPrototype(type)->New());
            message->ParseFromArray(received->View().data(), static_cast<int>(received->View().size()));
            Use(message.get());
        };
    });
}

Position OnePosition(int /*count*/) { return SamplePosition(); }

}  // namespace

void AddMessageCases(Suite& suite) {
    AddKind<Position>(suite, {"position", OnePosition, 1, false});
    AddDecodeByKey(suite);
    AddKind<ComputedPosition>(suite, {"computed-8", SampleComputedPosition, 8, false});
    AddKind<MobileTransponder>(suite, {"mobile-16", SampleMobileTransponder, 16, false});
    AddKind<ComputedPosition>(suite, {"computed-64", SampleComputedPosition, 64, true});
    AddKind<ComputedPosition>(suite, {"computed-512", SampleComputedPosition, 512, true});
}

}  // namespace bench
