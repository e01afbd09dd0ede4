#include <surveymsg/core/Msg.h>
#include <surveymsg/outside/Tarvex.h>

namespace {

constexpr int kKeyTextSize = 256;

}  // namespace

void CMsg::CombineKeys(CString* out) {
    if (InstanceIdentifier.IsEmpty()) SetInstanceIdentifier();
    CString text;  // the keys may be read from `*out` itself
    char* storage = text.GetBuffer(kKeyTextSize);
    storage[0] = '\0';
    TvxCombineKeys(storage, kKeyTextSize, SourceNode, SourceTask, SourceNumber, MsgKey, InstanceIdentifier);
    text.ReleaseBuffer();
    *out = text;
}

int CMsg::ExtractKeys(const char* text) {
    if (!text) {
        text = Body;
        BodyIsKeyText = 1;
    }
    CString scratch(text);  // the bus parses in place, and the results point into it
    char* start = scratch.GetBuffer(0);
    char* node = nullptr;
    char* task = nullptr;
    std::uint32_t number = 0;
    char* msgKey = nullptr;
    char* identifier = nullptr;
    if (!TvxExtractKeys(&start, &node, &task, &number, &msgKey, &identifier)) return 0;
    SourceNode = node;
    SourceTask = task;
    SourceNumber = number;
    MsgKey = msgKey;
    InstanceIdentifier = identifier;
    return 1;
}

int CMsg::ExtractKeys(const char** text) {
    if (!text) return 0;
    if (!*text) {
        *text = Body;
        BodyIsKeyText = 1;
    }
    return ExtractKeys(*text);
}

int CMsg::ExtractSourceAndTarget(const CString& text, CString* source, CString* target) {
    if (text.IsEmpty()) return 0;
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization) `text` may be one of the two results
    const CString whole = text;
    const int arrow = whole.Find("->");
    *source = arrow < 0 ? whole : whole.Left(arrow);
    *target = arrow < 0 ? CString() : whole.Mid(arrow + 2);
    return 1;
}
