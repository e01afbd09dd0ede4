// Format records from outside, with bodies: 0, or a message whose every member stays inside its body.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include <surveymsg/outside/Tarvex.h>
#include <surveymsg/surveymsg.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The first byte is the length of the body, which stands behind the record.
    if (size < 1 + sizeof(msgfmt)) return 0;
    const std::size_t bodyLength = data[0];
    const std::size_t recordLength = size - 1 - std::min(size - 1 - sizeof(msgfmt), bodyLength);
    if (recordLength > 0xFFFF) return 0;
    std::vector<std::uint8_t> record(data + 1, data + 1 + recordLength);
    TvxPublish("fuzz", "", reinterpret_cast<const msgfmt*>(record.data()), static_cast<std::uint16_t>(recordLength));

    CMapStringToOb cache;
    {
        CExtMsg message;
        if (message.GetMsgFmt("*.*.0.fuzz.%", cache)) {
            message.Body = CString(reinterpret_cast<const char*>(data + 1 + recordLength),
                                   static_cast<int>(size - 1 - recordLength));
            CPtrArray rows;
            message.GetMemberDefinitions(&rows);
            for (int i = 0; i < rows.GetSize(); ++i) {
                const auto& row = *static_cast<const MemberDefinition*>(rows[i]);
                for (const std::uint16_t index : {std::uint16_t{0}, std::uint16_t{1}, std::uint16_t{65535}}) {
                    CString text;
                    message.FormatString(row.Id, index, nullptr, &text);
                    std::vector<char> copy(row.Width + 1u);
                    message.MemberCopy(row.Id, index, copy.data());
                    double value = 0.0;
                    message.GetMemberValue(row.Id, index, &value);
                    message.SetMemberValue(row.Id, index, value);
                }
            }
        }
    }
    for (int i = 0; i < cache.GetCount(); ++i) delete cache.GetAt(i);
    return 0;
}
