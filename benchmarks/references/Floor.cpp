#include "references/Floor.h"

#include <bit>
#include <chrono>
#include <functional>

#include "references/Shares.h"

namespace bench::floor_ {

using packed::Reader;
using packed::Writer;

namespace {

constexpr double kUnixEpochOffset = 315964800.0;  // seconds from 1970-01-01 to 1980-01-06
constexpr std::size_t kFewRows = 8;               // compared one by one

double Now() {
    const auto sinceUnix = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(sinceUnix).count() - kUnixEpochOffset;
}

// Encoding goes here first, so that a body never has to be filled or grown twice.
unsigned char scratch[shares::kCapacity];

}  // namespace

Message* Dependencies::Find(std::string_view identifier) const {
    if (slots_.empty()) {
        for (const Row& row : rows_)
            if (row.identifier.View() == identifier) return row.message.get();
        return nullptr;
    }
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = std::hash<std::string_view>{}(identifier)&mask; slots_[slot] != 0;
         slot = (slot + 1) & mask) {
        const Row& row = rows_[slots_[slot] - 1];
        if (row.identifier.View() == identifier) return row.message.get();
    }
    return nullptr;
}

void Dependencies::Enter(std::size_t row) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = std::hash<std::string_view>{}(rows_[row].identifier.View()) & mask;
    while (slots_[slot] != 0) slot = (slot + 1) & mask;
    slots_[slot] = static_cast<std::uint32_t>(row + 1);
}

void Dependencies::Add(const Text& identifier, std::unique_ptr<Message> message) {
    rows_.push_back({identifier, std::move(message)});
    if (rows_.size() <= kFewRows) return;
    if (slots_.size() >= rows_.size() * 2) return Enter(rows_.size() - 1);
    slots_.assign(std::bit_ceil(rows_.capacity() * 2), 0);
    for (std::size_t row = 0; row < rows_.size(); ++row) Enter(row);
}

void Dependencies::Clear() {
    rows_.clear();
    slots_.clear();
}

Message::Message(std::string_view messageKey) : time(Now()), key(messageKey) {}

Message::~Message() = default;

Message& Message::operator=(Message& source) {
    source.Encode();
    time = source.time;
    key = source.key;
    identifier = source.identifier;
    sourceNode = source.sourceNode;
    sourceTask = source.sourceTask;
    sourceNumber = source.sourceNumber;
    body = source.body;
    Decode(body);
    return *this;
}

void Message::Encode() {
    const Writer out = Put(Writer(scratch, sizeof scratch));
    body.assign(reinterpret_cast<const char*>(scratch), static_cast<std::size_t>(out.Cursor() - scratch));
}

void Message::Decode(std::string_view bytes) {
    Take(Reader(bytes));
    BuildIdentifier();
}

bool Message::AddDependency(Message& message) {
    message.BuildIdentifier();
    if (Message* stored = nested.Find(message.identifier.View())) {
        *stored = message;
        return true;
    }
    std::unique_ptr<Message> copy = Make(message.key);
    if (!copy) return false;
    *copy = message;
    nested.Add(message.identifier, std::move(copy));
    return true;
}

Writer Message::PutNested(Writer out) const {
    out = shares::PutBase(out, time, nested.Count());
    for (std::size_t i = 0; i < nested.Count(); ++i) {
        out.Text(nested.At(i)->key);
        out = nested.At(i)->Put(out);
    }
    return out;
}

Reader Message::TakeNested(Reader in) {
    std::int32_t count = 0;
    in = shares::TakeBase(in, time, count);
    nested.Clear();
    nested.Reserve(shares::AtMost(in, count, shares::kLeastNested));
    for (; count > 0; --count) {
        std::unique_ptr<Message> message = Make(in.View());
        if (!message) packed::RaiseShort();
        in = message->Take(in);
        message->BuildIdentifier();
        if (nested.Find(message->identifier.View())) packed::RaiseShort();
        const Text& built = message->identifier;
        nested.Add(built, std::move(message));
    }
    return in;
}

std::unique_ptr<Message> Make(std::string_view key) {
    if (key == "RAW~AcousticObservation") return std::make_unique<ObservationMessage>();
    if (key == "PRX~Position") return std::make_unique<PositionMessage>();
    if (key == "PRX~ComputedPosition") return std::make_unique<ComputedPositionMessage>();
    if (key == "PRX~MobileTransponder") return std::make_unique<MobileTransponderMessage>();
    return nullptr;
}

Writer PositionMessage::Put(Writer out) const { return PutNested(shares::Put(out, fields)); }

Reader PositionMessage::Take(Reader in) { return TakeNested(shares::Take(in, fields)); }

void PositionMessage::BuildIdentifier() {
    const auto build = [](Text& text, std::string_view prefix, std::string_view name) {
        if (prefix.empty())
            text.Join(name);
        else
            text.Join(prefix, "/", name);
    };
    build(identifier, fields.namePrefix, fields.name);
    if (!fields.oldName.empty() || !fields.oldNamePrefix.empty())
        build(oldIdentifier, fields.oldNamePrefix.empty() ? fields.namePrefix : fields.oldNamePrefix,
              fields.oldName.empty() ? fields.name : fields.oldName);
}

bool PositionMessage::Number(std::uint16_t id, std::uint16_t /*index*/, double& out) const {
    switch (id) {
        case 1:
            out = time;
            return true;
        case 4:
            out = sourceNumber;
            return true;
        case 102:
            out = fields.east;
            return true;
        case 103:
            out = fields.north;
            return true;
        case 104:
            out = fields.depth;
            return true;
        case 105:
            out = fields.pitch;
            return true;
        case 106:
            out = fields.roll;
            return true;
        case 107:
            out = fields.gridHeading;
            return true;
        case 108:
            out = fields.trueHeading;
            return true;
        case 109:
            out = fields.convergence;
            return true;
        case 110:
            out = fields.latitude;
            return true;
        case 111:
            out = fields.longitude;
            return true;
        default:
            return false;
    }
}

Writer ObservationMessage::Put(Writer out) const { return PutNested(shares::Put(out, fields)); }

Reader ObservationMessage::Take(Reader in) { return TakeNested(shares::Take(in, fields)); }

// For the type between two things, which is what this reference carries.
void ObservationMessage::BuildIdentifier() {
    name.Join(fields.fromName, "->", fields.toName);
    identifier.Join("Range/", name.View());
    if (fields.oldFromName.empty() && fields.oldToName.empty()) return;
    oldIdentifier.Join("Range/", fields.oldFromName.empty() ? fields.fromName : fields.oldFromName, "->",
                       fields.oldToName.empty() ? fields.toName : fields.oldToName);
}

bool ObservationMessage::Number(std::uint16_t id, std::uint16_t /*index*/, double& out) const {
    switch (id) {
        case 1:
            out = time;
            return true;
        case 4:
            out = sourceNumber;
            return true;
        case 102:
            out = fields.value;
            return true;
        case 103:
            out = fields.residual;
            return true;
        case 104:
            out = fields.scaleFactor;
            return true;
        case 105:
            out = fields.weight;
            return true;
        case 106:
            out = fields.timeOut;
            return true;
        case 107:
        case 108:
            out = fields.statusBits;
            return true;
        case 109:
            out = fields.correction;
            return true;
        case 110:
            out = fields.speedOfSound;
            return true;
        case 111:
            out = fields.twoWayMilliseconds;
            return true;
        case 112:
            out = fields.holdCount;
            return true;
        default:
            return false;
    }
}

Writer ComputedPositionMessage::Put(Writer out) const {
    out.Values(std::uint8_t{1}, standardDeviation);
    return PositionMessage::Put(out);
}

Reader ComputedPositionMessage::Take(Reader in) {
    in.Schema(1);
    in.Values(standardDeviation);
    return PositionMessage::Take(in);
}

bool ComputedPositionMessage::Number(std::uint16_t id, std::uint16_t index, double& out) const {
    const auto each = [&](std::uint16_t element) {
        return index >= nested.Count() || nested.At(index)->Number(element, 0, out);
    };
    switch (id) {
        case 199:
            out = standardDeviation;
            return true;
        case 202:
            return each(102);
        case 203:
            return each(103);
        case 204:
            return each(104);
        case 205:
            return each(105);
        case 206:
            return each(106);
        case 209:
            return each(110);
        case 210:
            return each(111);
        case 211:
            return each(112);
        default:
            return PositionMessage::Number(id, index, out);
    }
}

MobileTransponderMessage::Range::Range() : time(Now()) {}

Writer MobileTransponderMessage::Put(Writer out) const {
    out.Values(std::uint8_t{2});
    out = shares::Put(out, fields.interrogation);
    out.Values(static_cast<std::int32_t>(ranges.size()));
    for (const auto& range : ranges) out = shares::Put(out, range->fields);
    return PutNested(shares::PutTransponder(out, fields));
}

Reader MobileTransponderMessage::Take(Reader in) {
    std::int32_t count = 0;
    in.Schema(2);
    in = shares::Take(in, fields.interrogation);
    in.Values(count);
    ranges.clear();
    ranges.reserve(shares::AtMost(in, count, shares::kLeastRange));
    for (; count > 0; --count) in = shares::Take(in, ranges.emplace_back(std::make_unique<Range>())->fields);
    return TakeNested(shares::TakeTransponder(in, fields));
}

void MobileTransponderMessage::BuildIdentifier() {
    identifier.Join(fields.name);
    oldIdentifier.Join(fields.oldName);
}

bool MobileTransponderMessage::Number(std::uint16_t id, std::uint16_t index, double& out) const {
    if (id == 199) {
        if (index < ranges.size()) out = ranges[index]->fields.range;
        return true;
    }
    if (id != 102) return false;
    out = fields.sensors.depth;
    return true;
}

}  // namespace bench::floor_
