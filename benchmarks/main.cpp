// surveymsg-bench: what the library's operations cost beside two references and other libraries. See README.md.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "measure/Measure.h"
#include "operations/Operations.h"

namespace {

constexpr const char* kUsage =
    "surveymsg-bench [--rounds N] [--filter TEXT] [--quick] [--lines]\n"
    "                                                         the table of times, or its bare numbers\n"
    "surveymsg-bench --resident                               memory of live messages\n"
    "surveymsg-bench --list [--filter TEXT]                   operations and peers\n"
    "surveymsg-bench --count OPERATION PEER ITERATIONS        one operation, for an instruction counter\n";

struct Request {
    bench::RoundOptions rounds;
    std::string filter;
    bool resident = false;
    bool list = false;
    bool lines = false;
    std::string countedName;
    std::size_t iterations = 0;
};

bool Parse(int count, char** arguments, Request& request) {
    for (int i = 1; i < count; ++i) {
        const std::string_view flag = arguments[i];
        const int left = count - i - 1;
        if (flag == "--rounds" && left >= 1) {
            request.rounds.rounds = std::atoi(arguments[++i]);
            if (request.rounds.rounds < 1) return false;
        } else if (flag == "--filter" && left >= 1) {
            request.filter = arguments[++i];
        } else if (flag == "--quick") {
            request.rounds = {3, 0.002};
        } else if (flag == "--resident") {
            request.resident = true;
        } else if (flag == "--list") {
            request.list = true;
        } else if (flag == "--lines") {
            request.lines = true;
        } else if (flag == "--count" && left >= 3) {
            request.countedName = std::string(arguments[i + 1]) + " " + arguments[i + 2];
            request.iterations = std::strtoul(arguments[i + 3], nullptr, 10);
            i += 3;
        } else {
            return false;
        }
    }
    return true;
}

bench::Suite MakeSuite() {
    bench::Suite suite;
    bench::AddMessageCases(suite);
    bench::AddObservationCases(suite);
    bench::AddMemberCases(suite);
    bench::AddRecordCases(suite);
    bench::AddTextCases(suite);
    bench::AddBusCases(suite);
    return suite;
}

bool Verify(const bench::Suite& suite) {
    bool all = true;
    for (const bench::Check& check : suite.Checks()) {
        if (check.holds()) continue;
        std::fprintf(stderr, "not the same: %s\n", check.name.c_str());
        all = false;
    }
    return all;
}

int Count(const bench::Suite& suite, const Request& request) {
    for (const bench::Case& each : suite.Cases()) {
        if (each.Name() != request.countedName) continue;
        bench::RunCounted(each, request.iterations);
        return 0;
    }
    std::fprintf(stderr, "no such operation and peer: %s\n", request.countedName.c_str());
    return 2;
}

int Run(const Request& request) {
    const bench::Suite suite = MakeSuite();
    if (!request.countedName.empty()) return Count(suite, request);

    std::vector<const bench::Case*> cases;
    for (const bench::Case& each : suite.Cases())
        if (each.Name().find(request.filter) != std::string::npos) cases.push_back(&each);
    if (request.list) {
        for (const bench::Case* each : cases) std::printf("%s\n", each->Name().c_str());
        return 0;
    }
    if (!Verify(suite)) return 1;
    if (request.resident) {
        bench::PrintResident();
        return 0;
    }
    if (cases.empty()) {
        std::fprintf(stderr, "nothing is named like \"%s\"\n", request.filter.c_str());
        return 2;
    }
    const std::vector<bench::Result> results = bench::RunRounds(cases, request.rounds);
    request.lines ? bench::PrintLines(results) : bench::PrintTable(results);
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    Request request;
    if (!Parse(count, arguments, request)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    try {
        return Run(request);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
