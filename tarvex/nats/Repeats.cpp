#include "tarvex/nats/Repeats.h"

namespace tarvex {

bool Repeats::IsNew(std::string_view run, std::uint64_t number, bool isAgain) {
    auto known = last_.find(run);
    if (known == last_.end()) {
        if (last_.size() >= kMostRuns) last_.clear();
        last_.emplace(run, number);
        return true;
    }
    std::uint64_t& last = known->second;
    if (number == last || (isAgain && number < last)) return false;
    last = number;
    return true;
}

}  // namespace tarvex
