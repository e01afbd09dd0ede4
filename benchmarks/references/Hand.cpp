#include "references/Hand.h"

#include "references/Shares.h"

namespace bench::hand {

using namespace shares;

std::size_t Encode(const Position& position, unsigned char* bytes, std::size_t capacity) {
    const Writer out = Put(Writer(bytes, capacity), position);
    return static_cast<std::size_t>(PutBase(out, position.time, 0).Cursor() - bytes);
}

std::size_t Encode(const ComputedPosition& computed, unsigned char* bytes, std::size_t capacity) {
    Writer out(bytes, capacity);
    out.Values(std::uint8_t{1}, computed.standardDeviation);
    out = Put(out, computed.position);
    out = PutBase(out, computed.position.time, computed.observations.size());
    for (const AcousticObservation& observation : computed.observations) {
        out.Text(kObservationKey);
        out = Put(out, observation);
        out = PutBase(out, observation.time, 0);
    }
    return static_cast<std::size_t>(out.Cursor() - bytes);
}

std::size_t Encode(const MobileTransponder& mobile, unsigned char* bytes, std::size_t capacity) {
    Writer out(bytes, capacity);
    out.Values(std::uint8_t{2});
    out = Put(out, mobile.interrogation);
    out.Values(static_cast<std::int32_t>(mobile.ranges.size()));
    for (const TransponderRange& range : mobile.ranges) out = Put(out, range);
    out = PutTransponder(out, mobile);
    return static_cast<std::size_t>(PutBase(out, mobile.time, 0).Cursor() - bytes);
}

void Decode(std::string_view bytes, Position& position) {
    std::int32_t nested = 0;
    TakeBase(Take(Reader(bytes), position), position.time, nested);
    if (nested > 0) packed::RaiseShort();
}

void Decode(std::string_view bytes, ComputedPosition& computed) {
    Reader in(bytes);
    std::int32_t count = 0;
    in.Schema(1);
    in.Values(computed.standardDeviation);
    in = TakeBase(Take(in, computed.position), computed.position.time, count);
    computed.observations.resize(AtMost(in, count, kLeastNested));
    for (AcousticObservation& observation : computed.observations) {
        std::int32_t nested = 0;
        if (in.View() != kObservationKey) packed::RaiseShort();
        in = TakeBase(Take(in, observation), observation.time, nested);
        if (nested > 0) packed::RaiseShort();
    }
}

void Decode(std::string_view bytes, MobileTransponder& mobile) {
    Reader in(bytes);
    std::int32_t count = 0;
    in.Schema(2);
    in = Take(in, mobile.interrogation);
    in.Values(count);
    mobile.ranges.resize(AtMost(in, count, kLeastRange));
    for (TransponderRange& range : mobile.ranges) in = Take(in, range);
    in = TakeTransponder(in, mobile);
    TakeBase(in, mobile.time, count);
    if (count > 0) packed::RaiseShort();
}

}  // namespace bench::hand
