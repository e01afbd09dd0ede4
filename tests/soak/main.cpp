// Hours of traffic over the real bus, a hundredth of it hostile, while the server is killed and started
// again: nothing good is lost beyond what the way promises, and neither memory nor descriptors grow.
//
//   bus_soak SECONDS live|stored

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "server/ChildProcess.h"
#include "server/EngineServer.h"
#include "soak/Traffic.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

constexpr int kRate = 1000;  // messages a second
constexpr seconds kBetweenKills(15);
constexpr long kAllowedGrowth = 4096;  // KiB of resident size after the first quarter

int Produce(seconds time) {
    soak::Producer producer(1);
    std::puts("ready");
    std::fflush(stdout);
    const auto begin = Clock::now();
    for (long tick = 1; Clock::now() - begin < time; ++tick) {
        if (!producer.SendNext()) std::this_thread::sleep_for(std::chrono::milliseconds(20));
        std::this_thread::sleep_until(begin + std::chrono::microseconds(tick * (1000000 / kRate)));
    }
    std::this_thread::sleep_for(seconds(2));
    while (!producer.SendEnd()) std::this_thread::sleep_for(seconds(1));
    std::puts(producer.Report().c_str());
    std::this_thread::sleep_for(seconds(2));  // formats are answered to the last
    return EXIT_SUCCESS;
}

int Consume() {
    soak::Consumer consumer;
    std::puts("ready");
    std::fflush(stdout);
    for (int silent = 0; !consumer.IsAtEnd() && silent < 60;) silent = consumer.TakeNext() ? 0 : silent + 1;
    std::puts((consumer.Report() + " end=" + std::to_string(consumer.IsAtEnd())).c_str());
    return EXIT_SUCCESS;
}

struct Size {
    long resident = 0;  // KiB
    long descriptors = 0;
};

Size SizeOf(pid_t process) {
    Size size;
    const std::string folder = "/proc/" + std::to_string(process);
    std::ifstream status(folder + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:")) size.resident = std::atol(line.c_str() + 6);
    std::error_code ignored;
    for ([[maybe_unused]] const auto& each : std::filesystem::directory_iterator(folder + "/fd", ignored))
        ++size.descriptors;
    return size;
}

long Number(const std::string& report, const std::string& name) {
    const std::size_t at = (" " + report).find(" " + name + "=");
    return at == std::string::npos ? -1 : std::atol(report.c_str() + at + name.size() + 1);
}

int Soak(seconds time, bool isStored, const std::string& program) {
    server::EngineServer::Options options;
    options.stores = isStored;
    server::EngineServer server(options);
    const auto start = [&](const char* role, const char* number) {
        return server::ChildProcess(
            {program, role, std::to_string(time.count())},
            {{"TARVEX_URL", server.Url()}, {"TARVEX_NUMBER", number}, {"TARVEX_STORE", isStored ? "SOAK" : ""}});
    };
    server::ChildProcess first = start("consume", "1"), second = start("consume", "2");
    if (!first.Await("ready\n") || !second.Await("ready\n")) return EXIT_FAILURE;
    server::ChildProcess producer = start("produce", "3");
    if (!producer.Await("ready\n")) return EXIT_FAILURE;

    server::ChildProcess* const all[] = {&first, &second, &producer};
    std::vector<Size> warm, last;
    long kills = 0;
    const auto begin = Clock::now();
    for (auto next = kBetweenKills; next < time; next += kBetweenKills) {
        std::this_thread::sleep_until(begin + next - seconds(2));
        last.clear();
        for (const auto* each : all) last.push_back(SizeOf(each->Id()));
        if (warm.empty() && next * 4 >= time) warm = last;
        std::this_thread::sleep_until(begin + next);
        server.Kill();
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        server.Restart();
        ++kills;
    }
    const std::string sent = producer.Output();
    bool holds = true;
    std::printf("%s, %ld s, server killed %ld times; sent: %s", isStored ? "stored" : "live",
                static_cast<long>(time.count()), kills, sent.c_str() + std::strlen("ready\n"));
    for (server::ChildProcess* reader : {&first, &second}) {
        const std::string report = reader->Output().substr(std::strlen("ready\n"));
        std::printf("  read: %s", report.c_str());
        const long lost = Number(report, "lost");
        const long recordsLost = Number(sent.substr(std::strlen("ready\n")), "records") - Number(report, "records");
        holds = holds &&
                Number(report, "positions") + lost == Number(sent.substr(std::strlen("ready\n")), "positions") &&
                Number(report, "spoiled") == 0 && Number(report, "behind") == 0 && Number(report, "end") == 1 &&
                (isStored ? lost == 0 && recordsLost == 0
                          : lost + recordsLost <= 10 * kills && recordsLost >= 0 &&
                                (lost + recordsLost == 0 || Number(report, "told") > 0));
    }
    for (std::size_t i = 0; i < warm.size(); ++i) {
        std::printf("  %s: %ld KiB resident, %ld descriptors; after a quarter %ld and %ld\n",
                    i < 2 ? "reader" : "sender", last[i].resident, last[i].descriptors, warm[i].resident,
                    warm[i].descriptors);
        holds =
            holds && last[i].resident - warm[i].resident < kAllowedGrowth && last[i].descriptors <= warm[i].descriptors;
    }
    std::puts(holds ? "  holds" : "  DOES NOT HOLD");
    return holds ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string role = argc > 1 ? argv[1] : "";
    const seconds time(argc > 2 ? std::atoi(argv[2]) : 0);
    try {
        if (role == "produce") return Produce(time);
        if (role == "consume") return Consume();
        if (std::atoi(role.c_str()) > 0 && argc == 3)
            return Soak(seconds(std::atoi(role.c_str())), std::string(argv[2]) == "stored", argv[0]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bus_soak: %s\n", error.what());
        return EXIT_FAILURE;
    }
    std::fputs("usage: bus_soak SECONDS live|stored\n", stderr);
    return 2;
}
