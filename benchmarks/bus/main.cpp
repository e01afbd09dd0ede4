// The bus beside the raw client of its engine and a plain queue: rates, delays and instructions, in rounds
// that take turns. ../README.md tells what is measured.

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "bus/Roles.h"
#include "server/ChildProcess.h"
#include "server/EngineServer.h"

namespace {

using server::ChildProcess;
using server::EngineServer;

double Number(const std::string& said, const std::string& name) {
    const std::size_t at = said.find(name + "=");
    return at == std::string::npos ? 0.0 : std::atof(said.c_str() + at + name.size() + 1);
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// A way to be measured, and what it stands beside.
struct Way {
    const char* name;
    const char* channel;
    bool isStored;
};
constexpr Way kLive = {"live", "bus", false};
constexpr Way kStored = {"stored", "bus", true};
constexpr Way kLoop = {"raw loop", "loop", false};
constexpr Way kDefault = {"raw default", "default", false};
constexpr Way kStore = {"raw js", "js", true};

struct Result {
    double rate = 0, lost = 0, p50 = 0, p99 = 0;
};

class Benchmark {
public:
    Benchmark(std::string program, bool isQuick)
        : program_(std::move(program)), isQuick_(isQuick), rounds_(isQuick ? 1 : 5) {}

    void Run() {
        Rates();
        Delays();
        Inside();
        Instructions();
        std::printf("\n%d of %d targets reached\n", reached_, targets_);
    }

private:
    // Each round on a server of its own, so that no way inherits another's streams.
    Result Once(const Way& way, std::size_t size, std::size_t count, int readers, double rate) {
        EngineServer::Options options;
        options.stores = way.isStored;
        const EngineServer engine(options);
        const ChildProcess::Settings settings = {{"TARVEX_URL", engine.Url()},
                                                 {"TARVEX_STORE", way.isStored ? "BENCH" : ""},
                                                 {"TARVEX_NODE", "vessel"},
                                                 {"TARVEX_TASK", "nav"}};
        const std::string number = std::to_string(count);
        std::vector<std::unique_ptr<ChildProcess>> all;
        for (int i = 0; i < readers; ++i) {
            all.push_back(std::make_unique<ChildProcess>(
                std::vector<std::string>{program_, "subscribe", way.channel, number}, settings));
            all.back()->Await("ready\n");
        }
        ChildProcess publisher({program_, "publish", way.channel, std::to_string(size), number, std::to_string(rate)},
                               settings);
        Result result;
        for (const auto& each : all) {
            const std::string& said = each->Output();
            result.rate += Number(said, "rate") / readers;
            result.lost += Number(said, "lost");
            result.p50 = std::max(result.p50, Number(said, "p50"));
            result.p99 = std::max(result.p99, Number(said, "p99"));
        }
        return result;
    }

    // The median of rounds in which the ways take turns.
    std::vector<Result> Compare(const std::vector<Way>& ways, std::size_t size, std::size_t count, int readers,
                                double rate) {
        std::vector<std::vector<Result>> rounds(ways.size());
        for (int round = 0; round < rounds_; ++round)
            for (std::size_t i = 0; i < ways.size(); ++i)
                rounds[i].push_back(Once(ways[i], size, count, readers, rate));
        std::vector<Result> medians;
        for (const auto& each : rounds) {
            Result& median = medians.emplace_back();
            for (double Result::*const field : {&Result::rate, &Result::lost, &Result::p50, &Result::p99}) {
                std::vector<double> values;
                for (const Result& result : each) values.push_back(result.*field);
                median.*field =
                    field == &Result::lost ? *std::max_element(values.begin(), values.end()) : Median(values);
            }
        }
        return medians;
    }

    std::string Judge(double ratio, double target, bool isAtLeast) {
        const bool holds = isAtLeast ? ratio >= target : ratio <= target;
        ++targets_;
        reached_ += holds;
        char text[64];
        std::snprintf(text, sizeof text, "%.2f (%s %.2f: %s)", ratio, isAtLeast ? "at least" : "at most", target,
                      holds ? "reached" : "not reached");
        return text;
    }

    void Rates() {
        std::printf(
            "Received a second by each reader, flat out\n\n"
            "| body | readers | live | raw loop | live / loop | stored | raw js | stored / js | lost |\n"
            "| --- | --- | --- | --- | --- | --- | --- | --- | --- |\n");
        struct {
            std::size_t size, live, stored;
        } const cases[] = {{100, 400000, 100000}, {1000, 200000, 50000}, {100000, 4000, 1000}};
        for (const auto& each : cases)
            for (const int readers : {1, 4}) {
                const std::size_t part = (isQuick_ ? 10 : 1) * static_cast<std::size_t>(readers == 4 ? 2 : 1);
                const auto live = Compare({kLive, kLoop}, each.size, each.live / part, readers, 0);
                const auto stored = Compare({kStored, kStore}, each.size, each.stored / part, readers, 0);
                std::printf("| %zu | %d | %.0f | %.0f | %s | %.0f | %.0f | %s | %.0f |\n", each.size, readers,
                            live[0].rate, live[1].rate, Judge(live[0].rate / live[1].rate, 0.9, true).c_str(),
                            stored[0].rate, stored[1].rate, Judge(stored[0].rate / stored[1].rate, 0.6, true).c_str(),
                            live[0].lost + stored[0].lost);
                std::fflush(stdout);
            }
    }

    void Delays() {
        std::printf(
            "\nOne way, microseconds, 100 bytes at 1,000 a second\n\n| way | p50 | p99 |\n| --- | --- | --- |\n");
        const std::vector<Way> ways = {kLive, kLoop, kDefault, kStored, kStore};
        const auto results = Compare(ways, 100, isQuick_ ? 500 : 3000, 1, 1000);
        for (std::size_t i = 0; i < ways.size(); ++i)
            std::printf("| %s | %.0f | %.0f |\n", ways[i].name, results[i].p50, results[i].p99);
        std::printf("\np50 of live / raw loop %s, live / raw default %s\n",
                    Judge(results[0].p50 / results[1].p50, 1.5, false).c_str(),
                    Judge(results[0].p50 / results[2].p50, 0.6, false).c_str());
        std::fflush(stdout);
    }

    double TimeInside(const char* channel, const char* size, const char* batch) {
        return Number(ChildProcess({program_, "inside", channel, size, batch}, {{"TARVEX_URL", ""}}).Output(), "time");
    }

    void Inside() {
        std::printf(
            "\nInside one process, nanoseconds for each message sent, waited for and read\n\n"
            "| body | batch | bus | plain queue | bus / queue |\n| --- | --- | --- | --- | --- |\n");
        struct {
            const char *size, *batch;
            double target;
        } const cases[] = {{"100", "1", 15}, {"1000", "64", 7}};
        for (const auto& each : cases) {
            std::vector<double> bus, queue;
            for (int round = 0; round < 2 * rounds_ + 1; ++round) {
                bus.push_back(TimeInside("bus", each.size, each.batch));
                queue.push_back(TimeInside("queue", each.size, each.batch));
            }
            std::printf("| %s | %s | %.0f | %.0f | %s |\n", each.size, each.batch, Median(bus), Median(queue),
                        Judge(Median(bus) / Median(queue), each.target, false).c_str());
        }
        std::fflush(stdout);
    }

    // By valgrind, inside the measured loop of the calling thread; 0 if it is not installed.
    double Instructions(const std::vector<std::string>& role, const ChildProcess::Settings& settings, double count) {
        std::vector<std::string> command = {"sh", "-c",
                                            "exec valgrind --tool=callgrind --callgrind-out-file=/dev/null "
                                            "'--toggle-collect=*MeasuredLoop*' \"$@\" 2>&1",
                                            "sh", program_};
        command.insert(command.end(), role.begin(), role.end());
        const std::string said = ChildProcess(command, settings).Output();
        const std::size_t at = said.find("Collected : ");
        return at == std::string::npos ? 0.0 : std::atof(said.c_str() + at + 12) / count;
    }

    void Instructions() {
        std::printf(
            "\nInstructions of the calling thread\n\n| call | bus | raw loop | ratio |\n| --- | --- | --- | --- |\n");
        for (const char* size : {"100", "1000"}) {
            const EngineServer engine;
            const ChildProcess::Settings settings = {
                {"TARVEX_URL", engine.Url()}, {"TARVEX_NODE", "vessel"}, {"TARVEX_TASK", "nav"}};
            const double bus = Instructions({"count", "bus", size}, settings, 64);
            const double raw = Instructions({"count", "loop", size}, settings, 64);
            std::printf("| a send of %s bytes, live | %.0f | %.0f | %s |\n", size, bus, raw,
                        Judge(bus / raw, 1.4, false).c_str());
        }
        const double inside = Instructions({"inside", "bus", "100", "1"}, {{"TARVEX_URL", ""}}, 200000);
        std::printf("| send, wait and read of 100 bytes, inside one process | %.0f | | %s |\n", inside,
                    Judge(inside / 2000, 1.0, false).c_str());
    }

    const std::string program_;
    const bool isQuick_;
    const int rounds_;
    int targets_ = 0;
    int reached_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto number = [&](std::size_t at) { return static_cast<std::size_t>(std::atoll(words[at].c_str())); };
    try {
        if (words.size() == 5 && words[0] == "publish")
            return busbench::Publish(words[1], number(2), number(3), std::atof(words[4].c_str()));
        if (words.size() == 3 && words[0] == "subscribe") return busbench::Subscribe(words[1], number(2));
        if (words.size() == 3 && words[0] == "count") return busbench::CountSends(words[1], number(2));
        if (words.size() == 4 && words[0] == "inside") return busbench::RunInside(words[1], number(2), number(3));
        if (words.empty() || words[0] == "--quick") {
            Benchmark(argv[0], !words.empty()).Run();
            return EXIT_SUCCESS;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "surveymsg-bench-bus: %s\n", error.what());
        return EXIT_FAILURE;
    }
    std::fputs("usage: surveymsg-bench-bus [--quick]\n", stderr);
    return 2;
}
