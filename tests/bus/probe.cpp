// A sender or a reader of the bus, as a process of its own for the fault tests.
//
//   bus_probe send KEY COUNT RATE SIZE     numbered messages; RATE 0 is flat out. A refused message is sent
//                                          again a moment later, up to a minute. Ends at once after the last.
//   bus_probe receive KEY SENDERS DELAY    until the last message of each sender, or 10 s of silence;
//                                          DELAY microseconds after each
//   bus_probe offer KEY LETTER             a format of KEY and i that ends in LETTER, until it is killed
//
// Each says "ready" when it has begun, and at the end what it saw, as NAME=NUMBER.

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "surveymsg/outside/Tarvex.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Head {
    std::uint64_t number;  // from 1
    std::uint64_t count;
};

long long Milliseconds(Clock::duration duration) { return std::chrono::duration_cast<milliseconds>(duration).count(); }

void Say(const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
}

int Send(const char* key, std::uint64_t count, double rate, std::size_t size) {
    if (!TvxPublish(key, "", nullptr, 0)) {
        Say("failed=" + std::to_string(GetLastError()));
        return 1;
    }
    Say("ready");
    std::vector<char> body(std::max(size, sizeof(Head)), 'x');
    std::uint64_t accepted = 0, refused = 0;
    std::uint32_t reason = 0;
    Clock::duration longest{};
    const auto begin = Clock::now();
    for (std::uint64_t number = 1; number <= count; ++number) {
        if (rate > 0)
            std::this_thread::sleep_until(begin +
                                          std::chrono::duration_cast<Clock::duration>(
                                              std::chrono::duration<double>(static_cast<double>(number) / rate)));
        const Head head{number, count};
        std::memcpy(body.data(), &head, sizeof head);
        const auto started = Clock::now();
        while (!TvxSend(key, "", body.data(), static_cast<std::uint32_t>(body.size()))) {
            ++refused;
            reason = GetLastError();
            if (Clock::now() - started > std::chrono::minutes(1)) {
                number = count;
                break;
            }
            std::this_thread::sleep_for(milliseconds(20));
        }
        longest = std::max(longest, Clock::now() - started);
        ++accepted;
    }
    Say("accepted=" + std::to_string(accepted) + " refused=" + std::to_string(refused) +
        " reason=" + std::to_string(reason) + " longest=" + std::to_string(Milliseconds(longest)));
    return 0;
}

int Receive(const char* key, std::size_t senders, std::chrono::microseconds delay) {
    if (!TvxSubscribe("*", "*", 0, key, "*", 0, 0)) {
        Say("failed=" + std::to_string(GetLastError()));
        return 1;
    }
    Say("ready");
    std::map<std::uint32_t, std::uint64_t> last;
    std::uint64_t received = 0, lost = 0, behind = 0, repeated = 0, told = 0, ended = 0;
    std::vector<char> body(1310720);
    Clock::duration silence{};
    auto latest = Clock::now();
    while (ended < senders && Clock::now() - latest < std::chrono::seconds(10)) {
        if (!TvxWait(500)) {
            told += GetLastError() == TvxErrorLost;
            continue;
        }
        char node[1001], task[1001], msgKey[1001], identifier[1001];
        std::uint32_t number = 0, length = 0;
        if (!TvxRead(node, sizeof node, task, sizeof task, &number, msgKey, sizeof msgKey, identifier,
                     sizeof identifier, nullptr, body.data(), static_cast<std::uint32_t>(body.size()), &length)) {
            told += GetLastError() == TvxErrorLost;
            continue;
        }
        Head head{};
        if (length < sizeof head) continue;
        std::memcpy(&head, body.data(), sizeof head);
        const auto now = Clock::now();
        if (received++ > 0) silence = std::max(silence, now - latest);
        latest = now;
        std::uint64_t& before = last[number];
        if (head.number == before)
            ++repeated;
        else if (head.number < before)
            ++behind;
        else
            lost += head.number - before - 1;
        before = std::max(before, head.number);
        if (head.number == head.count) ++ended;
        if (delay.count() > 0) std::this_thread::sleep_for(delay);
    }
    Say("received=" + std::to_string(received) + " lost=" + std::to_string(lost) + " behind=" + std::to_string(behind) +
        " repeated=" + std::to_string(repeated) + " told=" + std::to_string(told) + " ended=" + std::to_string(ended) +
        " silence=" + std::to_string(Milliseconds(silence)));
    return 0;
}

int Offer(const char* key, char letter) {
    struct {
        msgfmt head;
        char rest[4];
    } format{};
    format.rest[sizeof format.rest - 1] = letter;
    if (!TvxPublish(key, "i", &format.head, sizeof format)) return 1;
    Say("ready");
    for (;;) pause();
}

}  // namespace

int main(int argc, char** argv) {
    const std::string role = argc > 1 ? argv[1] : "";
    if (role == "send" && argc == 6)
        return Send(argv[2], std::strtoull(argv[3], nullptr, 10), std::atof(argv[4]),
                    std::strtoull(argv[5], nullptr, 10));
    if (role == "receive" && argc == 5)
        return Receive(argv[2], std::strtoull(argv[3], nullptr, 10), std::chrono::microseconds(std::atoi(argv[4])));
    if (role == "offer" && argc == 4) return Offer(argv[2], *argv[3]);
    std::fputs("usage: bus_probe send KEY COUNT RATE SIZE | receive KEY SENDERS DELAY | offer KEY LETTER\n", stderr);
    return 2;
}
