// A position as a raw record under its own format, for readers that know no class.

#include <cstdlib>
#include <cstring>

#include <surveymsg/outside/Lumbra.h>
#include <surveymsg/outside/Tarvex.h>
#include <surveymsg/positions/PosnMsg.h>

namespace {

constexpr msguser Field(std::uint8_t storage, const char* name, std::uint8_t display = 0) {
    return {storage, display, 0, name, 0, 0, 0};
}
constexpr msguser Open(const char* name) { return {MsgStorageOpen, 0, 1, name, 0, 0, 0}; }
constexpr msguser kClose = {MsgStorageClose, 0, 0, nullptr, 0, 0, 0};

constexpr msguser PositionOffsetFieldTable[] = {
    Field(MsgStorageDouble, "Time", MsgDisplayTime),
    Field(MsgStorageInt32, "AvailFlags"),
    Open("Position"),
    Open("LocalENH"),
    Field(MsgStorageDouble, "Easting"),
    Field(MsgStorageDouble, "Northing"),
    Field(MsgStorageDouble, "Height"),
    kClose,
    Open("LocalGeog"),
    Field(MsgStorageDouble, "Latitude"),
    Field(MsgStorageDouble, "Longitude"),
    Field(MsgStorageDouble, "Height"),
    kClose,
    Open("WGS84Geog"),
    Field(MsgStorageDouble, "Latitude"),
    Field(MsgStorageDouble, "Longitude"),
    Field(MsgStorageDouble, "Height"),
    kClose,
    kClose,
    Open("FilterPos"),
    Open("LocalENH"),
    Field(MsgStorageDouble, "Easting"),
    Field(MsgStorageDouble, "Northing"),
    Field(MsgStorageDouble, "Height"),
    kClose,
    Open("LocalGeog"),
    Field(MsgStorageDouble, "Latitude"),
    Field(MsgStorageDouble, "Longitude"),
    Field(MsgStorageDouble, "Height"),
    kClose,
    Open("WGS84Geog"),
    Field(MsgStorageDouble, "Latitude"),
    Field(MsgStorageDouble, "Longitude"),
    Field(MsgStorageDouble, "Height"),
    kClose,
    kClose,
    Field(MsgStorageFloat, "GridHding", MsgDisplayAngle),
    Field(MsgStorageFloat, "TrueHding", MsgDisplayAngle),
    Field(MsgStorageInt32, "ValidFlags"),
};
static_assert(std::size(PositionOffsetFieldTable) == 39);

constexpr int kAlignment = 4;

// What the table describes. Doubles stand at multiples of 4 only.
#pragma pack(push, 4)
struct PositionOffsetRecord {
    struct Grid {
        double Easting, Northing, Height;
    };
    struct Geographic {
        double Latitude, Longitude, Height;
    };
    struct Place {
        Grid LocalENH;
        Geographic LocalGeog;
        Geographic WGS84Geog;
    };
    double Time;
    std::int32_t AvailFlags;
    Place Position;
    Place FilterPos;
    float GridHding;
    float TrueHding;
    std::int32_t ValidFlags;
};
#pragma pack(pop)
static_assert(sizeof(PositionOffsetRecord) == 168);

constexpr std::int32_t kAvailable = 902;
constexpr std::int32_t kValid = 1;

// Built by the first send and kept: the bus may be asked for it as long as the process lives.
msgfmt* PositionOffsetFormat = nullptr;

bool BuildFormat() {
    if (PositionOffsetFormat) return true;
    std::uint32_t scratch = 0;
    LmbSetAlignment(kAlignment);
    LmbDefineFields(PositionOffsetFieldTable, static_cast<int>(std::size(PositionOffsetFieldTable)));
    if (LmbBuildFormat(sizeof(PositionOffsetRecord), &PositionOffsetFormat, &scratch) == 0) return true;
    std::free(PositionOffsetFormat);
    PositionOffsetFormat = nullptr;
    return false;
}

// Gives a message another key until the end of the scope, whatever happens there.
class KeyForNow {
public:
    KeyForNow(CString& key, const char* other) : key_(key), kept_(other) { key_.Swap(kept_); }
    KeyForNow(const KeyForNow&) = delete;
    KeyForNow& operator=(const KeyForNow&) = delete;
    ~KeyForNow() { key_.Swap(kept_); }

private:
    CString& key_;
    CString kept_;
};

}  // namespace

int CPosnMsg::SendOrvanePosn() {
    if (!BuildFormat()) return 0;
    const KeyForNow key(MsgKey, "PRX~PositionOffset");
    SetInstanceIdentifier();
    if (!OldInstanceIdentifier.IsEmpty()) Unpublish(OldInstanceIdentifier);
    Publish(PositionOffsetFormat);

    PositionOffsetRecord record;
    std::memset(&record, 0, sizeof record);
    record.Time = MsgTime;
    record.AvailFlags = kAvailable;
    record.Position.LocalENH = {East, North, -Depth};
    record.Position.LocalGeog = {Latitude, Longitude, -Depth};
    record.GridHding = static_cast<float>(GridHeading);
    record.TrueHding = static_cast<float>(TrueHeading);
    record.ValidFlags = kValid;
    return TvxSend(MsgKey, InstanceIdentifier, &record, sizeof record);
}
