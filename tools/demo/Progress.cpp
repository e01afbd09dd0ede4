#include "demo/Progress.h"

#include <iostream>
#include <utility>

#include "demo/Text.h"

namespace demo {
namespace {

constexpr std::chrono::seconds kInterval{1};

}  // namespace

Progress::Progress(std::string done, std::string things)
    : done_(std::move(done)), things_(std::move(things)), next_(Clock::now() + kInterval) {}

void Progress::At(std::size_t count) {
    const Clock::time_point now = Clock::now();
    if (now < next_) return;
    next_ = now + kInterval;
    std::cerr << "surveymsg-demo: " << done_ << ' ' << Grouped(count) << ' ' << things_ << '\n';
}

}  // namespace demo
