#include "tarvex/EmbeddedBus.h"

#include "tarvex/LastError.h"

namespace tarvex {

int EmbeddedBus::Subscribe(const Address& pattern, std::uint16_t /*value*/) {
    reader_.Add(pattern);
    return 1;
}

int EmbeddedBus::Unsubscribe(const Address& pattern) { return reader_.Remove(pattern) ? 1 : Fail(TvxErrorNothing); }

int EmbeddedBus::Publish(std::string_view msgKey, std::string_view identifier, const msgfmt* format,
                         std::uint16_t formatSize) {
    publications_.Add(msgKey, identifier, format, formatSize);
    return 1;
}

int EmbeddedBus::Unpublish(std::string_view msgKey, std::string_view identifier) {
    return publications_.Remove(msgKey, identifier) ? 1 : Fail(TvxErrorNothing);
}

int EmbeddedBus::Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count) {
    const bool refused = reader_.Take(identity_.Sends(msgKey, identifier), bytes, count) == ReaderSide::Taken::Full;
    if (refused) return Fail(TvxErrorQueueFull);
    reader_.Wake();
    return 1;
}

int EmbeddedBus::QueryFormat(const Address& pattern, void* buffer, std::uint32_t bufferSize, std::uint32_t& needed) {
    return AnswerFormat(publications_.FindFormat(pattern), buffer, bufferSize, needed);
}

}  // namespace tarvex
