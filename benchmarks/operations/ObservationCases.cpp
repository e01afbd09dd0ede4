
#include "operations/Operations.h"
#include "peers/Floor.h"
#include "peers/Protobuf.h"
#include "peers/Surveymsg.h"
#include "suite/Keep.h"
#include "values/Sample.h"

namespace bench {
namespace {

constexpr int kObservations = 8;

template <class Observation, class Peer>
std::shared_ptr<std::vector<std::unique_ptr<Observation>>> Observations() {
    auto observations = std::make_shared<std::vector<std::unique_ptr<Observation>>>();
    for (int i = 0; i < kObservations; ++i) {
        observations->push_back(std::make_unique<Observation>());
        Peer::Fill(SampleObservation(i), *observations->back());
    }
    return observations;
}

// A new position takes 8 observations; and a position takes one again that it has stored already.
template <class Peer, class Position, class Observation, class Add>
void AddPeer(Suite& suite, Add add) {
    suite.Add("add-observations/fresh-8", Peer::kName, [add] {
        return [add, observations = Observations<Observation, Peer>()] {
            Position position{};
            for (const auto& observation : *observations) add(position, *observation);
            Use(&position);
        };
    });
    if constexpr (std::is_same_v<Peer, ProtobufPeer>) return;  // it has no key to find one by
    suite.Add("add-observations/stored", Peer::kName, [add] {
        auto position = std::make_unique<Position>();
        auto observations = Observations<Observation, Peer>();
        for (const auto& observation : *observations) add(*position, *observation);
        return [add, observations, position = std::move(position)] {
            add(*position, *observations->back());
            Use(position.get());
        };
    });
}

}  // namespace

void AddObservationCases(Suite& suite) {
    AddPeer<SurveymsgPeer, CCompPosnMsg, CAcObsMsg>(
        suite, [](CCompPosnMsg& position, CAcObsMsg& observation) { position.AddObservation(observation); });
    AddPeer<FloorPeer, floor_::ComputedPositionMessage, floor_::ObservationMessage>(
        suite, [](floor_::ComputedPositionMessage& position, floor_::ObservationMessage& observation) {
            position.AddDependency(observation);
        });
    AddPeer<ProtobufPeer, proto::ComputedPosition, proto::AcousticObservation>(
        suite, [](proto::ComputedPosition& position, const proto::AcousticObservation& observation) {
            *position.add_observations() = observation;
        });
}

}  // namespace bench
