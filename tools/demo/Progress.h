#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace demo {

/// Says on stderr how far a phase has come, once a second; a phase shorter than that stays silent.
class Progress {
public:
    /// Lines read "surveymsg-demo: <done> 200,000 <things>".
    Progress(std::string done, std::string things);
    /// To be told often: `count` things are done.
    void At(std::size_t count);

private:
    using Clock = std::chrono::steady_clock;

    std::string done_;
    std::string things_;
    Clock::time_point next_;
};

}  // namespace demo
