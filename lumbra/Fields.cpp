// Listing a record's fields, and rendering a time.

#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <optional>

#include "lumbra/Record.h"
#include "surveymsg/outside/Lumbra.h"

namespace lumbra {
namespace {

constexpr std::size_t kFieldText = 80;
constexpr double kUnixEpochOffset = 315964800.0;  // seconds from 1970-01-01 to 1980-01-06

// What the count of a time field means, by `Display`.
struct TimeScale {
    double perSecond;
    double epoch;  // seconds since 1970-01-01
};
// clang-format off
constexpr TimeScale kTimeScales[] = {
    {1.0,    0.0},               // 1: seconds since 1970-01-01
    {1000.0, 0.0},               // 2: milliseconds since 1970-01-01
    {1.0,    kUnixEpochOffset},  // 3: seconds since 1980-01-06
    {1000.0, kUnixEpochOffset},  // 4: milliseconds since 1980-01-06
    {1.0,    0.0},               // 5: seconds of a day or of a duration, from 00:00:00
};
// clang-format on

template <class Number>
double Load(const char* place) {
    Number value;
    std::memcpy(&value, place, sizeof value);
    return static_cast<double>(value);
}

std::optional<double> NumberAt(const char* place, std::uint8_t storage) {
    switch (storage) {
        case MsgStorageInt8:
            return Load<std::int8_t>(place);
        case MsgStorageUInt8:
            return Load<std::uint8_t>(place);
        case MsgStorageInt16:
            return Load<std::int16_t>(place);
        case MsgStorageUInt16:
            return Load<std::uint16_t>(place);
        case MsgStorageInt32:
            return Load<std::int32_t>(place);
        case MsgStorageUInt32:
            return Load<std::uint32_t>(place);
        case MsgStorageFloat:
            return Load<float>(place);
        case MsgStorageDouble:
            return Load<double>(place);
        default:
            return std::nullopt;
    }
}

}  // namespace
}  // namespace lumbra

using namespace lumbra;

int LmbListFields(const msgfmt* format, const msguser* structure, msguser* fields, int capacity, int* count) {
    if (!count) return 0;
    *count = 0;
    if (!fields && capacity > 0) return 0;
    const Record record(format);
    // A listed row carries its place in the record, plus one.
    const Record::Rows rows = structure ? record.Inside(structure->Private - 1) : record.All();
    if (!rows.isSound) return 0;
    for (int i = rows.first; i < rows.end && *count < capacity; ++i) {
        const Row row = record.RowAt(i);
        fields[(*count)++] = {row.storage,
                              row.display,
                              row.count,
                              record.NameOf(row),
                              row.offset,
                              row.size,
                              static_cast<std::uint32_t>(i) + 1};
        i += row.inside;
    }
    return 1;
}

int LmbFormatField(char* text, const void* record, uint32_t length, const msguser* field, int /*two*/,
                   const char* format) {
    if (!text) return 0;
    text[0] = '\0';
    if (!record || !field || !format || field->Display < MsgDisplayTimeFirst || field->Display > MsgDisplayTimeLast)
        return 0;
    const std::uint32_t size = SizeOf(field->Storage);
    if (size == 0 || field->Offset > length || length - field->Offset < size) return 0;
    const auto number = NumberAt(static_cast<const char*>(record) + field->Offset, field->Storage);
    const TimeScale& scale = kTimeScales[field->Display - MsgDisplayTimeFirst];
    const double seconds = std::trunc(*number / scale.perSecond + scale.epoch);
    if (!(seconds >= 0.0 && seconds <= std::numeric_limits<std::int32_t>::max())) return 0;
    const auto count = static_cast<std::time_t>(seconds);
    std::tm calendar{};
    gmtime_r(&count, &calendar);
    if (std::strftime(text, kFieldText, format, &calendar) > 0) return 1;
    text[0] = '\0';
    return 0;
}
