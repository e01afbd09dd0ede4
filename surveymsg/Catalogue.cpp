// Which classes can be made from a key. The one place that knows them all: a new class is a new row.

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include <surveymsg/core/detail/Module.h>
#include <surveymsg/surveymsg.h>

namespace {

template <class Message>
CMsg* Make() {
    return new Message;
}

struct CatalogueRow {
    std::string_view key;  // terminated
    CMsg* (*make)();
};

// clang-format off
constexpr CatalogueRow kCatalogue[] = {
    {"RAW~Observation",         Make<CObsMsg>},
    {"RAW~AcousticObservation", Make<CAcObsMsg>},
    {"PRX~Position",            Make<CPosnMsg>},
    {"PRX~ComputedPosition",    Make<CCompPosnMsg>},
    {"PRX~Target",              Make<CTargMsg>},
    {"PRX~StaticTransponder",   Make<CTransMsg>},
    {"PRX~MobileTransponder",   Make<CMobTransMsg>},
    {"STX~PosnList",            Make<CPosnListMsg>},
    {"PRX~ProfProcessed",       Make<CProfProcessedMsg>},
};
// clang-format on

constexpr auto kKeys = [] {
    std::array<const char*, std::size(kCatalogue) + 1> keys{};
    std::transform(std::begin(kCatalogue), std::end(kCatalogue), keys.begin(),
                   [](const CatalogueRow& row) { return row.key.data(); });
    return keys;
}();

CMsg* MakeByFormat(const char* formatKey) {
    auto message = std::make_unique<CExtMsg>();
    return message->GetMsgFmt(formatKey, surveymsg::detail::module.FormatCache) ? message.release() : nullptr;
}

}  // namespace

int AllocMsg(const char* key, const char* formatKey, CMsg** message) {
    if (!message) return 0;
    *message = nullptr;
    try {
        const std::string_view wanted = ViewOf(key);
        for (const CatalogueRow& row : kCatalogue) {
            if (wanted != row.key) continue;
            *message = row.make();
            return 1;
        }
        if (formatKey) *message = MakeByFormat(formatKey);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return *message != nullptr;
}

int FreeMsg(CMsg* message) {
    if (!message) return 0;
    delete message;
    return 1;
}

const char* const* GetMsgList() { return kKeys.data(); }
