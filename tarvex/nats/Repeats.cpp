#include "tarvex/nats/Repeats.h"

namespace tarvex {

bool Repeats::IsNew(const Number& number) {
    auto known = last_.find(number.run);
    if (known == last_.end()) {
        if (last_.size() >= kMostRuns) last_.clear();
        last_.emplace(number.run, number.number);
        return true;
    }
    std::uint64_t& last = known->second;
    if (number.number == last || (number.isAgain && number.number < last)) return false;
    last = number.number;
    return true;
}

}  // namespace tarvex
