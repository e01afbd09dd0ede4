#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include "operations/Operations.h"
#include "peers/Floor.h"
#include "peers/Protobuf.h"
#include "peers/Surveymsg.h"
#include "suite/Keep.h"
#include "values/Sample.h"

namespace bench {
namespace {

constexpr std::uint16_t kNorth = 103;             // of a position
constexpr std::uint16_t kObservationValue = 202;  // of each observation of a computed position
constexpr int kSizes[] = {8, 64, 512, 4096};

// The numbers that the same members have in the schema for protobuf.
constexpr int kProtoNorth = 10;
constexpr int kProtoObservations = 3;
constexpr int kProtoValue = 9;

double Get(CMsg& message, std::uint16_t id, std::uint16_t index) {
    double value = 0.0;
    message.GetMemberValue(id, index, &value);
    return value;
}

double Get(const floor_::Message& message, std::uint16_t id, std::uint16_t index) {
    double value = 0.0;
    message.Number(id, index, value);
    return value;
}

double GetPlain(const google::protobuf::Message& message, int number) {
    return message.GetReflection()->GetDouble(message, message.GetDescriptor()->FindFieldByNumber(number));
}

double GetIndexed(const google::protobuf::Message& message, int number, int element, int index) {
    const auto* list = message.GetDescriptor()->FindFieldByNumber(number);
    return GetPlain(message.GetReflection()->GetRepeatedMessage(message, list, index), element);
}

struct SurveymsgGet {
    using Peer = SurveymsgPeer;
    static double Plain(CPosnMsg& message, std::uint16_t id) { return Get(message, id, 0); }
    static double Indexed(CCompPosnMsg& message, std::uint16_t id, int index) {
        return Get(message, id, static_cast<std::uint16_t>(index));
    }
    static constexpr std::uint16_t kPlain = kNorth;
    static constexpr std::uint16_t kIndexed = kObservationValue;
};

struct FloorGet {
    using Peer = FloorPeer;
    static double Plain(const floor_::Message& message, std::uint16_t id) { return Get(message, id, 0); }
    static double Indexed(const floor_::Message& message, std::uint16_t id, int index) {
        return Get(message, id, static_cast<std::uint16_t>(index));
    }
    static constexpr std::uint16_t kPlain = kNorth;
    static constexpr std::uint16_t kIndexed = kObservationValue;
};

struct ProtobufGet {
    using Peer = ProtobufPeer;
    static double Plain(const google::protobuf::Message& message, int number) { return GetPlain(message, number); }
    static double Indexed(const google::protobuf::Message& message, int number, int index) {
        return GetIndexed(message, number, kProtoValue, index);
    }
    static constexpr int kPlain = kProtoNorth;
    static constexpr int kIndexed = kProtoObservations;
};

template <class Peer, class Plain>
auto Filled(const Plain& plain) {
    auto message = std::make_unique<typename Peer::template Message<Plain>>();
    Peer::Fill(plain, *message);
    return message;
}

template <class Getter>
void AddPlain(Suite& suite) {
    using Peer = typename Getter::Peer;
    suite.Expect(std::string("plain member of ") + Peer::kName, [] {
        const auto message = Filled<Peer>(SamplePosition());
        return Getter::Plain(*message, Getter::kPlain) == SamplePosition().north;
    });
    suite.Add("get/plain", Peer::kName, [] {
        return [message = Filled<Peer>(SamplePosition())] {
            auto number = Getter::kPlain;
            Hide(number);
            const double value = Getter::Plain(*message, number);
            Use(&value);
        };
    });
}

// The last element shows what finding it costs, the walk over all what memory adds.
template <class Getter>
void AddIndexed(Suite& suite, int size) {
    using Peer = typename Getter::Peer;
    suite.Expect("indexed member of " + std::string(Peer::kName) + " at " + std::to_string(size), [size] {
        const auto message = Filled<Peer>(SampleComputedPosition(size));
        return Getter::Indexed(*message, Getter::kIndexed, size - 1) == SampleObservation(size - 1).value;
    });
    suite.Add("get/indexed-" + std::to_string(size), Peer::kName, [size] {
        return [message = Filled<Peer>(SampleComputedPosition(size)), last = size - 1] {
            auto number = Getter::kIndexed;
            int index = last;
            Hide(number);
            Hide(index);
            const double value = Getter::Indexed(*message, number, index);
            Use(&value);
        };
    });
    suite.Add("get/walk-" + std::to_string(size), Peer::kName, [size] {
        return [message = Filled<Peer>(SampleComputedPosition(size)), size, index = 0]() mutable {
            auto number = Getter::kIndexed;
            Hide(number);
            const double value = Getter::Indexed(*message, number, index);
            Use(&value);
            if (++index == size) index = 0;
        };
    });
}

}  // namespace

void AddMemberCases(Suite& suite) {
    AddPlain<SurveymsgGet>(suite);
    AddPlain<FloorGet>(suite);
    AddPlain<ProtobufGet>(suite);
    for (const int size : kSizes) {
        AddIndexed<SurveymsgGet>(suite, size);
        AddIndexed<FloorGet>(suite, size);
        AddIndexed<ProtobufGet>(suite, size);
    }
}

}  // namespace bench
