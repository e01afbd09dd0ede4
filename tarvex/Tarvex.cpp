// The bus's functions as programs see them: arguments are checked here, once for every way to run.

#include "surveymsg/outside/Tarvex.h"

#include <pthread.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <new>
#include <string>

#include "tarvex/Bus.h"
#include "tarvex/EmbeddedBus.h"
#include "tarvex/LastError.h"
#include "tarvex/nats/NatsBus.h"

namespace tarvex {
namespace {

constexpr int kQuerySelector = 4;

struct Choice {
    Bus* bus;
    TvxError reason;  // why there is none
};

Choice ChooseBus() {
    const std::string url = Setting("TARVEX_URL", "inproc:");
    auto identity = ReadIdentity();
    if (!identity) return {nullptr, TvxErrorInvalid};
    if (url == "inproc:") return {new EmbeddedBus(std::move(*identity)), TvxErrorInvalid};
    auto engine = ReadEngineSettings(url);
    if (!engine) return {nullptr, TvxErrorInvalid};
    return {new NatsBus(std::move(*identity), std::move(*engine)), TvxErrorInvalid};
}

// The bus is never destroyed: a program's last objects may still send while it ends, and other threads may
// be in a call. It ends with this library, behind all that link it.
std::atomic<Choice*> chosen = nullptr;
std::mutex choosing;
Choice* parents = nullptr;  // in a forked child; a thread that is not here may have held its locks

Choice& TheChoice() {
    if (Choice* const choice = chosen.load(std::memory_order_acquire)) return *choice;
    const std::lock_guard lock(choosing);
    if (!chosen) chosen = new Choice(ChooseBus());
    return *chosen;
}

// A forked child has its parent's memory, but neither its threads nor its connection: a bus inside the
// process starts anew there, any other is not connected.
void LeaveParentsBus() {
    Choice* const choice = chosen;
    if (!choice || !choice->bus) return;
    if (choice->bus->HasThreads())
        *choice = {nullptr, TvxErrorNotConnected};
    else
        parents = chosen.exchange(nullptr);
}

struct LibraryLife {
    LibraryLife() {
        pthread_atfork([] { choosing.lock(); }, [] { choosing.unlock(); },
                       [] {
                           choosing.unlock();
                           LeaveParentsBus();
                       });
    }
    ~LibraryLife() {
        const Choice* const choice = chosen;
        if (choice && choice->bus) choice->bus->End();
    }
} libraryLife;

std::string_view OrEmpty(const char* text) { return text ? std::string_view(text) : std::string_view(); }

bool IsLong(std::string_view key) { return key.size() > kLongestKey; }

// A function's work, with what can go wrong in any of them.
template <class Work>
int Call(Work&& work) {
    try {
        Bus* bus = TheBus();
        return bus ? work(*bus) : 0;
    } catch (const std::bad_alloc&) {
        return Fail(TvxErrorNoMemory);
    } catch (const std::exception&) {  // a lock that the system refuses
        return Fail(TvxErrorNotConnected);
    }
}

// The same for a pair of keys.
template <class Work>
int CallWithPair(const char* msgKey, const char* identifier, Work&& work) {
    if (!msgKey) return Fail(TvxErrorInvalid);
    const std::string_view key(msgKey);
    const std::string_view instance = OrEmpty(identifier);
    if (IsLong(key) || IsLong(instance)) return Fail(TvxErrorTooLong);
    return Call([&](Bus& bus) { return work(bus, key, instance); });
}

// The same for a subscription's five keys.
template <class Work>
int CallWithPattern(const char* node, const char* task, uint32_t number, const char* msgKey, const char* identifier,
                    Work&& work) {
    if (!node || !task) return Fail(TvxErrorInvalid);
    const Address sender{node, task, number, {}, {}};
    if (IsLong(sender.node) || IsLong(sender.task)) return Fail(TvxErrorTooLong);
    return CallWithPair(msgKey, identifier, [&](Bus& bus, std::string_view key, std::string_view instance) {
        return work(bus, Address{sender.node, sender.task, number, key, instance});
    });
}

}  // namespace

Bus* TheBus() {
    const Choice& choice = TheChoice();
    if (!choice.bus) SetLastError(choice.reason);
    return choice.bus;
}

int AnswerFormat(const std::vector<char>& format, void* buffer, std::uint32_t bufferSize, std::uint32_t& needed) {
    needed = static_cast<std::uint32_t>(format.size());
    if (needed > bufferSize) return Fail(TvxErrorTooSmall);
    if (needed > 0) std::memcpy(buffer, format.data(), needed);
    return 1;
}

}  // namespace tarvex

using namespace tarvex;

int TvxSubscribe(const char* node, const char* task, uint32_t number, const char* msgKey, const char* identifier,
                 uint32_t /*reserved*/, uint16_t value) {
    return CallWithPattern(node, task, number, msgKey, identifier,
                           [value](Bus& bus, const Address& pattern) { return bus.Subscribe(pattern, value); });
}

int TvxUnsubscribe(const char* node, const char* task, uint32_t number, const char* msgKey, const char* identifier) {
    return CallWithPattern(node, task, number, msgKey, identifier,
                           [](Bus& bus, const Address& pattern) { return bus.Unsubscribe(pattern); });
}

int TvxPublish(const char* msgKey, const char* identifier, const msgfmt* format, uint16_t formatSize) {
    if (format ? formatSize < sizeof(msgfmt) : formatSize != 0) return Fail(TvxErrorInvalid);
    return CallWithPair(msgKey, identifier, [&](Bus& bus, std::string_view key, std::string_view instance) {
        return bus.Publish(key, instance, format, formatSize);
    });
}

int TvxUnpublish(const char* msgKey, const char* identifier) {
    return CallWithPair(msgKey, identifier, [](Bus& bus, std::string_view key, std::string_view instance) {
        return bus.Unpublish(key, instance);
    });
}

int TvxSend(const char* msgKey, const char* identifier, const void* bytes, uint32_t count) {
    if (!bytes && count > 0) return Fail(TvxErrorInvalid);
    if (count > kLargestBody) return Fail(TvxErrorTooLong);
    return CallWithPair(msgKey, identifier, [&](Bus& bus, std::string_view key, std::string_view instance) {
        return bus.Send(key, instance, bytes, count);
    });
}

int TvxWait(uint32_t wait) {
    return Call([wait](Bus& bus) { return bus.Wait(wait); });
}

int TvxRead(char* node, uint32_t nodeSize, char* task, uint32_t taskSize, uint32_t* number, char* msgKey,
            uint32_t msgKeySize, char* identifier, uint32_t identifierSize, uint32_t* further, void* body,
            uint32_t bodySize, uint32_t* bodyLength) {
    if (!node || !task || !number || !msgKey || !identifier || (!body && bodySize > 0) || !bodyLength)
        return Fail(TvxErrorInvalid);
    ReadBuffers buffers{
        {node, nodeSize}, {task, taskSize}, {msgKey, msgKeySize}, {identifier, identifierSize}, number, body,
        bodySize,         bodyLength};
    return Call([&](Bus& bus) {
        const int result = bus.Read(buffers);
        if (result && further) *further = 0;
        return result;
    });
}

int TvxQueryFormat(int selector, const char* keyText, uint32_t keyTextSize, void* buffer, uint32_t bufferSize,
                   uint32_t* needed) {
    if (selector != kQuerySelector || !keyText || (!buffer && bufferSize > 0) || !needed) return Fail(TvxErrorInvalid);
    return Call([&](Bus& bus) {
        std::string scratch(keyText, strnlen(keyText, keyTextSize));
        Address pattern;
        char* end = nullptr;
        if (!ParseKeyText(scratch.data(), pattern, end)) return Fail(TvxErrorInvalid);
        // No sender has an empty name: an address that was never on the bus asks for any sender.
        if (pattern.node.empty()) pattern.node = "*";
        if (pattern.task.empty()) pattern.task = "*";
        return bus.QueryFormat(pattern, buffer, bufferSize, *needed);
    });
}

int TvxCombineKeys(char* text, uint32_t textSize, const char* node, const char* task, uint32_t number,
                   const char* msgKey, const char* identifier) {
    if (!text || textSize == 0) return Fail(TvxErrorInvalid);
    text[0] = '\0';
    try {
        std::string combined;
        AppendKeyText(combined, {OrEmpty(node), OrEmpty(task), number, OrEmpty(msgKey), OrEmpty(identifier)});
        if (combined.size() >= textSize) return Fail(TvxErrorTooSmall);
        std::memcpy(text, combined.c_str(), combined.size() + 1);
        return 1;
    } catch (const std::bad_alloc&) {
        return Fail(TvxErrorNoMemory);
    }
}

int TvxExtractKeys(char** text, char** node, char** task, uint32_t* number, char** msgKey, char** identifier) {
    if (!text || !*text || !node || !task || !number || !msgKey || !identifier) return Fail(TvxErrorInvalid);
    Address address;
    char* end = nullptr;
    if (!ParseKeyText(*text, address, end)) return Fail(TvxErrorInvalid);
    const auto place = [](std::string_view key) { return const_cast<char*>(key.data()); };
    *node = place(address.node);
    *task = place(address.task);
    *number = address.number;
    *msgKey = place(address.msgKey);
    *identifier = place(address.identifier);
    *text = end;
    return 1;
}
