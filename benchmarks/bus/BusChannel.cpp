#include <surveymsg/outside/Tarvex.h>

#include <stdexcept>
#include <vector>

#include "bus/Channel.h"

namespace busbench {
namespace {

constexpr const char* kKey = "PRX~Position";
constexpr const char* kIdentifier = "POS/Vessel 1";

[[noreturn]] void Fail(const char* what) {
    throw std::runtime_error(std::string(what) + ": bus error " + std::to_string(GetLastError()));
}

class BusChannel : public Channel {
    void Subscribe() override {
        if (!TvxSubscribe("*", "*", 0, kKey, kIdentifier, 0, 0)) Fail("subscribe");
    }

    void Receive(const Taker& taker) override {
        std::vector<char> body(1310720);
        char node[256], task[256], key[256], identifier[256];
        std::uint32_t number = 0, size = 0;
        do {
            while (!TvxWait(0xFFFFFFFF)) {
            }
            if (!TvxRead(node, sizeof node, task, sizeof task, &number, key, sizeof key, identifier, sizeof identifier,
                         nullptr, body.data(), static_cast<std::uint32_t>(body.size()), &size))
                Fail("read");
        } while (taker(body.data(), size));
    }

    void Publish(const char* body, std::size_t size) override {
        if (!TvxSend(kKey, kIdentifier, body, static_cast<std::uint32_t>(size))) Fail("send");
    }

    void Finish() override {}  // the library does so when the process ends
};

}  // namespace

std::unique_ptr<Channel> MakeBusChannel() { return std::make_unique<BusChannel>(); }

}  // namespace busbench
