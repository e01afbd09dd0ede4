#include "demo/Producer.h"

#include <cstdio>
#include <string>

#include "demo/LibraryFailure.h"
#include "demo/Progress.h"

namespace demo {
namespace {

constexpr int kLargestEncoded = 122'880;        // bytes of a message
constexpr double kFileEpoch = 1'261'872'000.0;  // 2020-01-01 in the messages' seconds, since 1980-01-06
constexpr double kMilliseconds = 1000.0;        // in a second
constexpr int kKeyPrefix = 1;                   // bytes before a nested message's key, for its length
constexpr const char* kTransponder = "Transponder";

CString NameOfShot(std::size_t index) {
    char name[32];
    std::snprintf(name, sizeof name, "Shot %04zu", index + 1);
    return name;
}

CString NameOfPart(std::size_t part, std::size_t count) {
    const std::string name = std::to_string(part) + " of " + std::to_string(count);
    return name.c_str();
}

void SendOrFail(CMsg& message, const char* what) {
    if (!message.Send()) FailOnBus(std::string("the bus did not take ") + what);
}

void SendFix(const Eigen::Vector3d& place, const Producer::AfterSend& afterSend) {
    CPosnMsg fix;
    fix.Name = "Transducer";
    fix.North = place.x();
    fix.East = place.y();
    fix.Depth = -place.z();
    SendOrFail(fix, "a fix of the transducer");
    afterSend();
}

void FillPosition(const Solution& solution, CCompPosnMsg& position) {
    position.Name = kTransponder;
    position.North = solution.position.x();
    position.East = solution.position.y();
    position.Depth = -solution.position.z();
    position.StandardDeviation = solution.standardDeviation;
}

}  // namespace

void Producer::Observe(std::size_t index, CAcObsMsg& observation) const {
    const Shot& shot = shots_[index];
    observation.Type = CObsMsg::Range;
    observation.FromName = NameOfShot(index);
    observation.ToName = kTransponder;
    observation.Value = soundSpeed_ * shot.travelTime / 2.0;
    observation.TwoWayMilliseconds = shot.travelTime * kMilliseconds;
    observation.SpeedOfSound = soundSpeed_;
    observation.MsgTime = shot.receiveTime + kFileEpoch;
    observation.SetInstanceIdentifier();  // the object is used again, and an identifier once built stays
}

void Producer::Observe(std::size_t index, const Solution& solution, CAcObsMsg& observation) const {
    Observe(index, observation);
    const bool used = solution.used[index];
    observation.Residual = solution.residuals[index] / 2.0;  // observed minus computed, one-way as the value is
    observation.Weight = used ? 1.0 : 0.0;
    observation.SetStatusBit(CObsMsg::StatusUsedInComp, used);
}

std::size_t Producer::SendFixes(const AfterSend& afterSend) const {
    Progress progress("sent", "fixes");
    std::size_t sent = 0;
    for (const Shot& shot : shots_) {
        SendFix(shot.transmit, afterSend);
        SendFix(shot.receive, afterSend);
        progress.At(sent += 2);
    }
    return sent;
}

// Where each message ends, as the number of the shot behind its last: as many as the room allows.
std::vector<std::size_t> Producer::PartEnds(const Solution& solution) const {
    CCompPosnMsg position;
    FillPosition(solution, position);
    position.NamePrefix = NameOfPart(shots_.size(), shots_.size());  // no part's prefix is longer
    position.Encode();
    const int empty = position.Body.GetLength();

    std::vector<std::size_t> ends;
    int size = empty;
    CAcObsMsg observation;
    for (std::size_t i = 0; i < shots_.size(); ++i) {
        Observe(i, solution, observation);
        observation.Encode();
        const int nested = kKeyPrefix + observation.MsgKey.GetLength() + observation.Body.GetLength();
        if (size + nested > kLargestEncoded) {
            ends.push_back(i);
            size = empty;
        }
        size += nested;
    }
    ends.push_back(shots_.size());
    return ends;
}

std::size_t Producer::SendPosition(const Solution& solution, const AfterSend& afterSend) const {
    const std::vector<std::size_t> ends = PartEnds(solution);
    Progress progress("sent", "observations");
    CAcObsMsg observation;
    std::size_t next = 0;
    for (std::size_t part = 0; part < ends.size(); ++part) {
        CCompPosnMsg position;
        FillPosition(solution, position);
        if (ends.size() > 1) position.NamePrefix = NameOfPart(part + 1, ends.size());
        for (; next < ends[part]; ++next) {
            Observe(next, solution, observation);
            if (!position.AddObservation(observation)) throw LibraryFailure("an observation cannot be added");
        }
        SendOrFail(position, "the computed position");
        afterSend();
        progress.At(next);
    }
    return ends.size();
}

void Producer::SendRecord(const Solution& solution) const {
    CCompPosnMsg position;
    FillPosition(solution, position);
    if (!position.SendOrvanePosn()) FailOnBus("the raw record cannot be sent");
}

void Producer::SendEnd() const {
    CMsg end;
    end.MsgKey = kEndKey;
    SendOrFail(end, "the end");
}

}  // namespace demo
