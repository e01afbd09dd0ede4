// A message whose layout is known at run time only, beside what a program would do without the library: a table
// of its fields in a hash map, looked up by label.

#include <cstdlib>
#include <cstring>
#include <unordered_map>

#include <surveymsg/outside/Lumbra.h>
#include <surveymsg/outside/Tarvex.h>

#include <surveymsg/surveymsg.h>

#include "operations/Operations.h"
#include "suite/Keep.h"

namespace bench {
namespace {

constexpr const char* kKey = "BENCH~SensorStatus";
constexpr const char* kIdentifier = "starboard pole";
constexpr const char* kField = "Sensor 3.Value";

constexpr std::uint8_t kSensorFields[] = {MsgStorageDouble, MsgStorageFloat, MsgStorageFloat, MsgStorageInt32};
constexpr const char* kSensorNames[] = {"Value", "Sigma", "Age", "Status"};
constexpr const char* kSensors[] = {"Sensor 1", "Sensor 2", "Sensor 3", "Sensor 4", "Sensor 5",
                                    "Sensor 6", "Sensor 7", "Sensor 8", "Sensor 9"};

struct Field {
    std::uint8_t storage;
    std::size_t offset;
};

// The format of a record with a time, two counters and nine sensors of four fields: 39 fields.
struct Layout {
    std::vector<msguser> rows;
    std::unordered_map<std::string, Field> byLabel;
    std::size_t size = 0;

    void Add(std::uint8_t storage, const std::string& structure, const char* name) {
        const std::size_t width = storage == MsgStorageDouble ? sizeof(double) : sizeof(float);
        size = (size + width - 1) / width * width;
        rows.push_back({storage, 0, 0, name, 0, 0, 0});
        byLabel[structure.empty() ? name : structure + "." + name] = {storage, size};
        size += width;
    }
};

const Layout& TheLayout() {
    static const Layout layout = [] {
        Layout made;
        made.Add(MsgStorageDouble, "", "Time");
        made.Add(MsgStorageInt32, "", "Count");
        made.Add(MsgStorageInt32, "", "Lost");
        for (const char* sensor : kSensors) {
            made.rows.push_back({MsgStorageOpen, 0, 1, sensor, 0, 0, 0});
            for (std::size_t i = 0; i < std::size(kSensorFields); ++i)
                made.Add(kSensorFields[i], sensor, kSensorNames[i]);
            made.rows.push_back({MsgStorageClose, 0, 0, nullptr, 0, 0, 0});
            made.size = (made.size + sizeof(double) - 1) / sizeof(double) * sizeof(double);
        }
        return made;
    }();
    return layout;
}

std::string MakeRecord() {
    std::string record(TheLayout().size, '\0');
    double value = 0.5;
    for (const auto& [label, field] : TheLayout().byLabel) {
        value += 1.0;
        const auto single = static_cast<float>(value);
        const auto whole = static_cast<std::int32_t>(value);
        char* place = record.data() + field.offset;
        if (field.storage == MsgStorageDouble) std::memcpy(place, &value, sizeof value);
        if (field.storage == MsgStorageFloat) std::memcpy(place, &single, sizeof single);
        if (field.storage == MsgStorageInt32) std::memcpy(place, &whole, sizeof whole);
    }
    return record;
}

double Load(const std::string& record, const Field& field) {
    const char* place = record.data() + field.offset;
    switch (field.storage) {
        case MsgStorageDouble: {
            double value;
            std::memcpy(&value, place, sizeof value);
            return value;
        }
        case MsgStorageFloat: {
            float value;
            std::memcpy(&value, place, sizeof value);
            return value;
        }
        default: {
            std::int32_t value;
            std::memcpy(&value, place, sizeof value);
            return value;
        }
    }
}

void PublishOnce() {
    static const bool published = [] {
        msgfmt* format = nullptr;
        std::uint32_t used = 0;
        LmbSetAlignment(sizeof(double));
        LmbDefineFields(TheLayout().rows.data(), static_cast<int>(TheLayout().rows.size()));
        if (LmbBuildFormat(static_cast<std::uint32_t>(TheLayout().size), &format, &used) != 0) return false;
        const bool done = TvxPublish(kKey, kIdentifier, format, format->Length) != 0;
        std::free(format);
        return done;
    }();
    if (!published) std::abort();
}

struct FreesMessage {
    void operator()(CMsg* message) const { FreeMsg(message); }
};
using MessagePointer = std::unique_ptr<CMsg, FreesMessage>;

MessagePointer MakeMessage(const std::string& record) {
    PublishOnce();
    CMsg address;
    address.MsgKey = kKey;
    address.InstanceIdentifier = kIdentifier;
    address.SourceNode = "*";
    address.SourceTask = "*";
    CString keyText;
    address.CombineKeys(&keyText);
    CMsg* message = nullptr;
    if (!AllocMsg(kKey, keyText, &message)) std::abort();
    CPtrArray rows;
    message->GetMemberDefinitions(&rows);
    message->Body.Assign(record.data(), static_cast<int>(record.size()));
    return MessagePointer(message);
}

std::uint16_t NumberOf(CMsg& message, const std::string& label) {
    CPtrArray rows;
    message.GetMemberDefinitions(&rows);
    for (int i = 0; i < rows.GetSize(); ++i) {
        const auto& row = *static_cast<const MemberDefinition*>(rows[i]);
        if (label == row.Label) return row.Id;
    }
    return 0;
}

bool SameFields() {
    const std::string record = MakeRecord();
    const MessagePointer message = MakeMessage(record);
    for (const auto& [label, field] : TheLayout().byLabel) {
        double value = 0.0;
        if (!message->GetMemberValue(NumberOf(*message, label), 0, &value)) return false;
        if (value != Load(record, field)) return false;
    }
    return true;
}

}  // namespace

void AddRecordCases(Suite& suite) {
    suite.Expect("members of a run-time format", SameFields);
    suite.Add("get/run-time-format", "surveymsg", [] {
        MessagePointer message = MakeMessage(MakeRecord());
        const std::uint16_t field = NumberOf(*message, kField);
        return [message = std::move(message), field] {
            std::uint16_t number = field;
            double value = 0.0;
            Hide(number);
            message->GetMemberValue(number, 0, &value);
            Use(&value);
        };
    });
    suite.Add("get/run-time-format", "plain", [] {
        return [record = MakeRecord(), label = std::string(kField), fields = TheLayout().byLabel] {
            Use(&label);
            const auto found = fields.find(label);
            const double value = found == fields.end() ? 0.0 : Load(record, found->second);
            Use(&value);
        };
    });
}

}  // namespace bench
