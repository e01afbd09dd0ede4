// The half that knows the struct: a program describes its own record, publishes the description with the
// record's name, and sends records. Nothing of this is shared with the reader.

#include "examples/own-record/OwnRecord.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <surveymsg/outside/Lumbra.h>
#include <surveymsg/outside/Tarvex.h>

namespace {

struct Mount {
    double x, y, z;  // metres from the reference point
    float heading;   // degrees
};

struct SonarStatus {
    double time;  // seconds since 1980-01-06 UTC
    char name[12];
    std::uint16_t pings;
    Mount mount;
    float beams[5];  // metres
};

msguser Field(std::uint8_t storage, const char* name, std::uint8_t display = 0) {
    return {storage, display, 0, name, 0, 0, 0};
}
msguser Array(std::uint8_t storage, const char* name, std::uint16_t count) {
    return {storage, 0, count, name, 0, 0, 0};
}
msguser Text(const char* name, std::uint16_t size) { return {MsgStorageText, 0, 0, name, 0, size, 0}; }
msguser Open(const char* name) { return {MsgStorageOpen, 0, 1, name, 0, 0, 0}; }
const msguser kClose = {MsgStorageClose, 0, 0, nullptr, 0, 0, 0};

// One row a field, in the order of the struct. Offsets follow from the alignment, which is the compiler's.
const msguser kRows[] = {
    Field(MsgStorageDouble, "time", MsgDisplayTime),
    Text("name", sizeof(SonarStatus::name)),
    Field(MsgStorageUInt16, "pings"),
    Open("mount"),
    Field(MsgStorageDouble, "x"),
    Field(MsgStorageDouble, "y"),
    Field(MsgStorageDouble, "z"),
    Field(MsgStorageFloat, "heading", MsgDisplayAngle),
    kClose,
    Array(MsgStorageFloat, "beams", std::size(SonarStatus{}.beams)),
};

std::unique_ptr<msgfmt, void (*)(void*)> BuildFormat() {
    msgfmt* format = nullptr;
    std::uint32_t used = 0;
    LmbSetAlignment(alignof(double));
    LmbDefineFields(kRows, static_cast<int>(std::size(kRows)));
    if (LmbBuildFormat(sizeof(SonarStatus), &format, &used) != 0) format = nullptr;
    return {format, std::free};
}

}  // namespace

bool SendSonarStatus() {
    static const auto format = BuildFormat();
    if (!format || !TvxPublish("OWN~SonarStatus", "bow sonar", format.get(), format->Length)) return false;
    const SonarStatus status{1.0e9, "bow", 42, {1.5, -2.0, 4.25, 271.5F}, {40.25F, 41.5F, 42.0F, 41.75F, 40.0F}};
    return TvxSend("OWN~SonarStatus", "bow sonar", &status, sizeof status) != 0;
}
