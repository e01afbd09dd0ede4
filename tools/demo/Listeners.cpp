#include "demo/Listeners.h"

#include <surveymsg/outside/Tarvex.h>
#include <surveymsg/surveymsg.h>

#include <chrono>
#include <set>
#include <utility>

#include "demo/LibraryFailure.h"

namespace demo {
namespace {

constexpr const char* kReady = "Demo~Ready";
constexpr const char* kDone = "Demo~Done";
constexpr std::size_t kCount = 2;
constexpr std::chrono::seconds kPatience(30);
constexpr std::uint32_t kBetweenWords = 200;  // milliseconds

void Say(const char* msgKey) {
    CMsg word;
    word.MsgKey = msgKey;
    if (!word.Send()) FailOnBus(std::string("the bus did not take ") + msgKey);
}

}  // namespace

Listeners::Listeners() {
    for (const char* msgKey : {kReady, kDone}) {
        CMsg wanted;
        wanted.MsgKey = msgKey;
        if (!wanted.Subscribe(0)) FailOnBus(std::string("the bus did not take the subscription to ") + msgKey);
    }
}

void Listeners::AwaitReady() { Await(kReady); }

void Listeners::AwaitDone() { Await(kDone); }

void Listeners::Await(const std::string& msgKey) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    std::set<std::pair<std::string, std::uint32_t>> heard;
    while (heard.size() < kCount) {
        CMsg word;
        if (word.Receive(kBetweenWords)) {
            if (word.MsgKey.View() == msgKey)
                heard.emplace(std::string(word.SourceNode.View()), static_cast<std::uint32_t>(word.SourceNumber));
        } else if (std::chrono::steady_clock::now() > deadline) {
            throw LibraryFailure("the programs that listen have not said " + msgKey);
        }
    }
}

void ListenToEnd(Receiver& receiver) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    do {
        Say(kReady);
        if (std::chrono::steady_clock::now() > deadline) throw LibraryFailure("no producer is there");
    } while (!receiver.ReceiveOne(kBetweenWords));
    while (!receiver.IsAtEnd())
        if (!receiver.ReceiveOne(static_cast<std::uint32_t>(kPatience.count() * 1000)))
            throw LibraryFailure("the producer has fallen silent");
    Say(kDone);
}

}  // namespace demo
