#include "soak/Traffic.h"

#include <surveymsg/outside/Tarvex.h>

#include <memory>

namespace soak {
namespace {

constexpr int kMostObservations = 8;

struct Free {
    void operator()(CMsg* message) const { FreeMsg(message); }
};

std::string Bytes(const CString& text) { return std::string(text.View()); }

// Of the message at this number, which its readers know as well.
double North(std::uint64_t number) { return static_cast<double>(number) * 0.5; }
int Observations(std::uint64_t number) { return static_cast<int>(number % (kMostObservations + 1)); }

}  // namespace

bool Producer::SendNext() {
    const std::uint32_t kind = Below(100);
    if (kind == 0) SendHostile();
    if (kind == 1) SendChanged();
    const bool isTaken = kind < 20 ? SendRecord() : SendPosition();
    if (!isTaken) ++refused_;
    return isTaken;
}

bool Producer::SendPosition() {
    CCompPosnMsg position;
    position.Name = kGood;
    position.North = North(positions_ + 1);
    for (int i = 0; i < Observations(positions_ + 1); ++i) {
        CAcObsMsg observation;
        observation.FromName = std::to_string(i).c_str();
        observation.ToName = "Transponder";
        observation.Value = North(positions_ + 1);
        observation.SetInstanceIdentifier();
        position.AddObservation(observation);
    }
    if (!position.Send()) return false;
    ++positions_;
    lastBody_ = Bytes(position.Body);
    return true;
}

bool Producer::SendRecord() {
    CCompPosnMsg position;
    position.Name = kGood;
    position.North = North(records_ + 1);
    if (!position.SendOrvanePosn()) return false;
    ++records_;
    if (format_.empty()) {
        const std::string text = std::string("*.*.0.") + kRecordKey + ".*";
        std::uint32_t size = 0;
        std::vector<char> buffer(65535);
        if (TvxQueryFormat(4, text.c_str(), static_cast<std::uint32_t>(text.size() + 1), buffer.data(),
                           static_cast<std::uint32_t>(buffer.size()), &size))
            format_.assign(buffer.begin(), buffer.begin() + size);
    }
    return true;
}

std::string Producer::Spoil(std::string bytes) {
    if (bytes.empty()) bytes = "x";
    switch (Below(4)) {
        case 0:  // flipped
            for (std::uint32_t i = Below(8) + 1; i > 0; --i)
                bytes[Below(static_cast<std::uint32_t>(bytes.size()))] ^= static_cast<char>(1 << Below(8));
            break;
        case 1:  // cut
            bytes.resize(Below(static_cast<std::uint32_t>(bytes.size())));
            break;
        case 2:  // lengths that lie
            bytes[Below(static_cast<std::uint32_t>(bytes.size()))] = '\xFF';
            break;
        default:  // nothing of a message
            for (char& byte : bytes) byte = static_cast<char>(random_());
            break;
    }
    return bytes;
}

void Producer::SendHostile() {
    const std::string body = Spoil(lastBody_);
    const char* const keys[] = {"PRX~ComputedPosition", "PRX~Position", "PRX~Observation", "PRX~Transponder"};
    if (TvxSend(keys[Below(4)], kHostile, body.data(), static_cast<std::uint32_t>(body.size()))) ++hostile_;
}

void Producer::SendChanged() {
    if (format_.empty()) return;
    const std::string key = kChangedKey + std::to_string(Below(kChangedKeys));
    const std::string record = Spoil(std::string(format_.begin(), format_.end()));
    if (record.size() < sizeof(msgfmt)) return;
    std::vector<char> aligned(record.begin(), record.end());
    TvxPublish(key.c_str(), "", reinterpret_cast<const msgfmt*>(aligned.data()),
               static_cast<std::uint16_t>(record.size()));
    const std::string body(Below(300), 'x');
    if (TvxSend(key.c_str(), "", body.data(), static_cast<std::uint32_t>(body.size()))) ++changed_;
}

bool Producer::SendEnd() { return TvxSend(kEndKey, "", nullptr, 0) != 0; }

std::string Producer::Report() const {
    return "positions=" + std::to_string(positions_) + " records=" + std::to_string(records_) +
           " hostile=" + std::to_string(hostile_) + " changed=" + std::to_string(changed_) +
           " refused=" + std::to_string(refused_);
}

Consumer::Consumer() {
    CMsg wanted;
    wanted.MsgKey = "*";
    wanted.InstanceIdentifier = "*";
    wanted.Subscribe(0);
}

bool Consumer::TakeNext() {
    if (!received_.Receive(1000)) {
        const bool isTold = GetLastError() == TvxErrorLost;
        told_ += isTold;
        return isTold;
    }
    if (received_.MsgKey.View() == kEndKey)
        isAtEnd_ = true;
    else if (received_.InstanceIdentifier.View() == kGood && received_.MsgKey.View() != kRecordKey)
        TakePosition();
    else
        TakeOther();
    return true;
}

// Whatever came before, a good message comes whole.
void Consumer::TakePosition() {
    CCompPosnMsg position;
    try {
        position.Decode(&received_);
    } catch (...) {
        ++spoiled_;
        return;
    }
    const auto number = static_cast<std::uint64_t>(position.North * 2.0);
    if (position.MsgDependencies.GetCount() != Observations(number)) ++spoiled_;
    ++positions_;
    if (number < next_)
        ++behind_;
    else
        lost_ += number - next_;
    next_ = std::max(next_, number + 1);
    if (positions_ % 100 == 0) UseEveryMember(position);
}

void Consumer::TakeOther() {
    CString formatKey;
    received_.CombineKeys(&formatKey);
    CMsg* made = nullptr;
    const bool isRecord = received_.MsgKey.View() == kRecordKey;
    if (!AllocMsg(received_.MsgKey, formatKey, &made)) {
        ++(isRecord ? spoiled_ : hostileRefused_);
        return;
    }
    const std::unique_ptr<CMsg, Free> message(made);
    try {
        if (received_.InstanceIdentifier.View() == kHostile)
            message->Decode(&received_);
        else
            *message << received_;
        ++(isRecord ? records_ : hostileTaken_);
        UseEveryMember(*message);
    } catch (const CArchiveException&) {
        ++hostileRefused_;
    }
}

void Consumer::UseEveryMember(CMsg& message) {
    CPtrArray rows;
    message.GetMemberDefinitions(&rows);
    for (int i = 0; i < rows.GetSize(); ++i) {
        const auto& row = *static_cast<const MemberDefinition*>(rows[i]);
        CString text;
        message.FormatString(row.Id, 0, nullptr, &text);
        std::vector<char> copy(row.Width < 16 ? 16u : row.Width);
        message.MemberCopy(row.Id, 0, copy.data());
        double value = 0.0;
        if (message.GetMemberValue(row.Id, 0, &value)) message.SetMemberValue(row.Id, 0, value);
    }
}

std::string Consumer::Report() const {
    return "positions=" + std::to_string(positions_) + " lost=" + std::to_string(lost_) +
           " behind=" + std::to_string(behind_) + " spoiled=" + std::to_string(spoiled_) +
           " told=" + std::to_string(told_) + " records=" + std::to_string(records_) +
           " taken=" + std::to_string(hostileTaken_) + " refused=" + std::to_string(hostileRefused_);
}

}  // namespace soak
