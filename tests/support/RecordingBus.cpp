#include "support/RecordingBus.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

thread_local std::uint32_t lastError = 0;

std::string Quoted(const char* text) { return text ? "'" + std::string(text) + "'" : "null"; }

int Note(const std::string& call) {
    RecordingBus& bus = TheRecordingBus();
    bus.calls.push_back(call);
    const std::string line = call + "\n";
    if (bus.echo >= 0 && write(bus.echo, line.data(), line.size()) < 0) std::abort();
    return bus.result;
}

bool Put(char* storage, std::uint32_t size, const std::string& text) {
    if (text.size() >= size) return false;
    std::memcpy(storage, text.c_str(), text.size() + 1);
    return true;
}

}  // namespace

RecordingBus& TheRecordingBus() {
    static auto* bus = new RecordingBus;
    return *bus;
}

std::string RecordingBus::TakeCalls() {
    std::string all;
    for (const std::string& call : calls) all += (all.empty() ? "" : "; ") + call;
    calls.clear();
    return all;
}

int TvxSubscribe(const char* node, const char* task, uint32_t number, const char* msgKey, const char* identifier,
                 uint32_t reserved, uint16_t value) {
    return Note("subscribe " + Quoted(node) + Quoted(task) + std::to_string(number) + Quoted(msgKey) +
                Quoted(identifier) + std::to_string(reserved) + "," + std::to_string(value));
}

int TvxUnsubscribe(const char* node, const char* task, uint32_t number, const char* msgKey, const char* identifier) {
    return Note("unsubscribe " + Quoted(node) + Quoted(task) + std::to_string(number) + Quoted(msgKey) +
                Quoted(identifier));
}

int TvxPublish(const char* msgKey, const char* identifier, const msgfmt* format, uint16_t formatSize) {
    return Note("publish " + Quoted(msgKey) + Quoted(identifier) + (format ? " with " : " without ") +
                std::to_string(formatSize));
}

int TvxUnpublish(const char* msgKey, const char* identifier) {
    return Note("unpublish " + Quoted(msgKey) + Quoted(identifier));
}

int TvxSend(const char* msgKey, const char* identifier, const void* bytes, uint32_t count) {
    TheRecordingBus().lastSent.assign(static_cast<const char*>(bytes), count);
    return Note("send " + Quoted(msgKey) + Quoted(identifier) + std::to_string(count));
}

int TvxWait(uint32_t wait) { return Note("wait " + std::to_string(wait)) && !TheRecordingBus().incoming.empty(); }

int TvxRead(char* node, uint32_t nodeSize, char* task, uint32_t taskSize, uint32_t* number, char* msgKey,
            uint32_t msgKeySize, char* identifier, uint32_t identifierSize, uint32_t* further, void* body,
            uint32_t bodySize, uint32_t* bodyLength) {
    RecordingBus& bus = TheRecordingBus();
    Note("read " + std::to_string(nodeSize) + "," + std::to_string(bodySize));
    *further = 77;
    if (bus.readFailure || bodySize < bus.neededBytes || bus.incoming.empty()) {
        lastError = bus.readFailure ? bus.readFailure : std::uint32_t{TvxErrorTooSmall};
        node[0] = 'x';  // a bus may have begun to write
        *number = 1234;
        return 0;
    }
    const RecordingBus::Incoming& message = bus.incoming.front();
    if (!Put(node, nodeSize, message.node) || !Put(task, taskSize, message.task) ||
        !Put(msgKey, msgKeySize, message.msgKey) || !Put(identifier, identifierSize, message.identifier)) {
        lastError = TvxErrorTooSmall | 0x1000;  // further bits do not matter
        return 0;
    }
    *number = message.number;
    std::memcpy(body, message.body.data(), message.body.size());
    *bodyLength = static_cast<std::uint32_t>(message.body.size());
    bus.incoming.pop_front();
    return 5;
}

int TvxQueryFormat(int, const char*, uint32_t, void*, uint32_t, uint32_t* needed) {
    *needed = 0;
    return Note("query");
}

int TvxCombineKeys(char* text, uint32_t textSize, const char* node, const char* task, uint32_t number,
                   const char* msgKey, const char* identifier) {
    Put(text, textSize, "combined");
    return Note("combine " + Quoted(node) + Quoted(task) + std::to_string(number) + Quoted(msgKey) +
                Quoted(identifier) + std::to_string(textSize));
}

int TvxExtractKeys(char** text, char** node, char**, uint32_t* number, char** msgKey, char** identifier) {
    Note("extract " + Quoted(*text));
    if (Quoted(*text) == "'bad'") return 0;
    *node = *text;  // the task is left null
    *number = 9;
    *msgKey = *text;
    *identifier = nullptr;
    *text += 1;
    return 1;
}

std::uint32_t GetLastError() { return lastError; }
void SetLastError(std::uint32_t value) { lastError = value; }
