// Formats that a tool's user brings, for every kind of member and the forms without a message.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include <surveymsg/surveymsg.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < sizeof(double)) return 0;
    double value;
    std::memcpy(&value, data, sizeof value);
    const std::string format(reinterpret_cast<const char*>(data) + sizeof value, size - sizeof value);

    CString text;
    CMsg::ValidNumberFormat(format.c_str());
    CMsg::FormatString(value, format.c_str(), &text);
    CTransMsg transponder;
    transponder.Name = format.c_str();
    transponder.IRF = static_cast<std::int32_t>(size);
    CPosnMsg position;
    position.Latitude = value;
    position.MsgTime = value;
    for (std::uint16_t id = 1; id < 120; ++id) {
        transponder.FormatString(id, 0, format.c_str(), &text);
        position.FormatString(id, 0, format.c_str(), &text);
    }
    return 0;
}
