#include "tarvex/nats/Journal.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "tarvex/Identity.h"

namespace tarvex {
namespace {

constexpr const char* kNames[] = {"sent",      "resent",  "received", "repeated", "foreign",
                                  "overflown", "refused", "lost",     "denied",   "reconnected"};

bool IsPowerOfTen(std::uint64_t number) {
    while (number >= 10 && number % 10 == 0) number /= 10;
    return number == 1;
}

}  // namespace

Journal::Journal(std::string who) : who_(std::move(who)) {
    const std::string path = Setting("TARVEX_LOG", "");
    if (path == "-")
        file_ = STDERR_FILENO;
    else if (!path.empty())  // a full pipe holds nobody up
        file_ = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
}

Journal::~Journal() {
    if (file_ > STDERR_FILENO) close(file_);
}

// `number` is how often it has happened, 0 if that is not of interest. One write for each line, so that several
// programs can share a file.
void Journal::Write(const char* format, va_list parts, std::uint64_t number) {
    char line[kLongestLine];
    std::size_t length = 0;
    const auto add = [&](int wanted) {
        length = std::min(length + static_cast<std::size_t>(std::max(wanted, 0)), sizeof line - 2);
    };
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm utc{};
    gmtime_r(&now.tv_sec, &utc);
    length = strftime(line, sizeof line, "%Y-%m-%dT%H:%M:%SZ ", &utc);
    add(std::snprintf(line + length, sizeof line - length, "%s: ", who_.c_str()));
    add(std::vsnprintf(line + length, sizeof line - length, format, parts));
    if (number > 0) add(std::snprintf(line + length, sizeof line - length, ", %" PRIu64 " so far", number));
    line[length++] = '\n';
    [[maybe_unused]] const auto written = write(file_, line, length);
}

void Journal::Tell(const char* format, ...) {
    if (file_ < 0) return;
    va_list parts;
    va_start(parts, format);
    Write(format, parts, 0);
    va_end(parts);
}

void Journal::AddAndTell(Count what, const char* format, ...) {
    const std::uint64_t number = At(what).fetch_add(1, std::memory_order_relaxed) + 1;
    if (file_ < 0 || !IsPowerOfTen(number)) return;
    va_list parts;
    va_start(parts, format);
    Write(format, parts, number);
    va_end(parts);
}

void Journal::TellCounts() {
    std::array<char, 512> line{};
    std::size_t length = 0;
    for (std::size_t i = 0; i < counts_.size(); ++i)
        length += static_cast<std::size_t>(
            std::snprintf(line.data() + length, line.size() - length, " %s=%" PRIu64, kNames[i], counts_[i].load()));
    Tell("counts:%s", line.data());
}

}  // namespace tarvex
