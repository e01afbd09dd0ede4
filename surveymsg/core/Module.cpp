#include <surveymsg/core/detail/Module.h>

#include <surveymsg/outside/Tarvex.h>

namespace surveymsg::detail {

// The bus is loaded before this library and ends after it, so it still answers here.
Module module;

Module::~Module() {
    for (int i = 0; i < PublishedMap.GetCount(); ++i) {
        const auto* published = static_cast<PublishedKey*>(PublishedMap.GetAt(i));
        const char* pair = PublishedMap.GetKeyAt(i);
        TvxUnpublish(published->MsgKey, pair + published->MsgKey.GetLength() + 1);
        delete published;
    }
    PublishedMap.RemoveAll();
    for (int i = 0; i < FormatCache.GetCount(); ++i) delete FormatCache.GetAt(i);
    FormatCache.RemoveAll();
}

}  // namespace surveymsg::detail
