#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>

#include "measure/HeapCalls.h"
#include "measure/Measure.h"

namespace bench {
namespace {

constexpr std::size_t kWarmUp = 64;       // first uses: storage grows to its size, functions are bound
constexpr std::size_t kHeapCounted = 64;  // operations over which heap calls are counted
constexpr benchmark::IterationCount kBatch = 16;

void Run(benchmark::State& state, const Case& each) {
    const Loop loop = each.prepare();
    loop(kWarmUp);
    while (state.KeepRunningBatch(kBatch)) loop(static_cast<std::size_t>(kBatch));
}

double CountHeapCalls(const Case& each) {
    const Loop loop = each.prepare();
    loop(kWarmUp);
    const std::size_t before = HeapCalls();
    loop(kHeapCounted);
    return static_cast<double>(HeapCalls() - before) / static_cast<double>(kHeapCounted);
}

// Takes the single runs and leaves the printing to the table.
class Collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& /*context*/) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration)
                times_[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
    }
    double Median(const std::string& name) {
        std::vector<double>& times = times_[name];
        if (times.empty()) return 0.0;
        const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

private:
    std::map<std::string, std::vector<double>> times_;
};

void SetUp(const RoundOptions& options) {
    std::vector<std::string> flags = {"surveymsg-bench", "--benchmark_enable_random_interleaving=true",
                                      "--benchmark_repetitions=" + std::to_string(options.rounds),
                                      "--benchmark_min_time=" + std::to_string(options.secondsEach)};
    std::vector<char*> arguments;
    for (std::string& flag : flags) arguments.push_back(flag.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
}

}  // namespace

std::vector<Result> RunRounds(const std::vector<const Case*>& cases, const RoundOptions& options) {
    SetUp(options);
    for (const Case* each : cases)
        benchmark::RegisterBenchmark(each->Name().c_str(), [each](benchmark::State& state) { Run(state, *each); });
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector, "all");

    std::vector<Result> results;
    for (const Case* each : cases) results.push_back({each, collector.Median(each->Name()), CountHeapCalls(*each)});
    return results;
}

}  // namespace bench
