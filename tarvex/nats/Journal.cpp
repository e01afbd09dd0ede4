#include "tarvex/nats/Journal.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include "tarvex/Identity.h"

namespace tarvex {
namespace {

constexpr const char* kNames[] = {"sent",      "resent",  "received", "repeated",   "foreign",
                                  "overflown", "refused", "lost",     "reconnected"};

bool IsPowerOfTen(std::uint64_t number) {
    while (number >= 10 && number % 10 == 0) number /= 10;
    return number == 1;
}

}  // namespace

Journal::Journal(std::string who) : who_(std::move(who)) {
    const std::string path = Setting("TARVEX_LOG", "");
    if (path == "-")
        file_ = STDERR_FILENO;
    else if (!path.empty())
        file_ = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
}

Journal::~Journal() {
    if (file_ > STDERR_FILENO) close(file_);
}

void Journal::Tell(const std::string& what) {
    if (file_ < 0) return;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm utc{};
    gmtime_r(&now.tv_sec, &utc);
    char time[40];
    const std::size_t length = strftime(time, sizeof time, "%Y-%m-%dT%H:%M:%SZ ", &utc);
    std::string line(time, length);
    line += who_;
    line += ": ";
    line += what;
    line += '\n';
    // One write for each line, so that several programs can share a file.
    [[maybe_unused]] const auto written = write(file_, line.data(), line.size());
}

void Journal::AddAndTell(Count what, const std::string& text) {
    const std::uint64_t number = At(what).fetch_add(1, std::memory_order_relaxed) + 1;
    if (file_ >= 0 && IsPowerOfTen(number)) Tell(text + ", " + std::to_string(number) + " so far");
}

void Journal::TellCounts() {
    std::string line = "counts:";
    for (std::size_t i = 0; i < counts_.size(); ++i)
        line.append(" ").append(kNames[i]).append("=").append(std::to_string(counts_[i].load()));
    Tell(line);
}

}  // namespace tarvex
