#include <algorithm>
#include <cstdio>
#include <map>

#include "measure/Measure.h"

namespace bench {
namespace {

constexpr const char* kYardsticks[] = {"hand", "floor", "protobuf", "plain"};

using Times = std::map<std::string, double>;  // by "operation peer"

void PrintRatio(const Times& times, const Result& result, const char* yardstick) {
    const auto found = times.find(result.measured->operation + " " + yardstick);
    if (found == times.end() || found->second <= 0.0)
        std::printf(" %9s", "");
    else
        std::printf(" %9.2f", result.nanoseconds / found->second);
}

void PrintRow(const Times& times, const Result& result, bool first) {
    std::printf("%-30s %-12s %11.1f", first ? result.measured->operation.c_str() : "", result.measured->peer.c_str(),
                result.nanoseconds);
    for (const char* yardstick : kYardsticks) PrintRatio(times, result, yardstick);
    std::printf(" %10.2f", result.heapCalls);
    if (result.measured->encodedBytes) std::printf(" %8zu", result.measured->encodedBytes());
    std::printf("\n");
}

}  // namespace

void PrintTable(const std::vector<Result>& results) {
    Times times;
    std::vector<std::string> operations;
    for (const Result& result : results) {
        times[result.measured->Name()] = result.nanoseconds;
        const std::string& operation = result.measured->operation;
        if (std::find(operations.begin(), operations.end(), operation) == operations.end())
            operations.push_back(operation);
    }
    std::printf("%-30s %-12s %11s", "operation", "peer", "ns");
    for (const char* yardstick : kYardsticks) std::printf(" %9s", ("/" + std::string(yardstick)).c_str());
    std::printf(" %10s %8s\n", "heap calls", "bytes");
    for (const std::string& operation : operations) {
        bool first = true;
        for (const Result& result : results) {
            if (result.measured->operation != operation) continue;
            PrintRow(times, result, first);
            first = false;
        }
    }
}

void PrintLines(const std::vector<Result>& results) {
    for (const Result& result : results) std::printf("%s %.2f\n", result.measured->Name().c_str(), result.nanoseconds);
}

}  // namespace bench
