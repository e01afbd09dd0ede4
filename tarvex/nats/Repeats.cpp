#include "tarvex/nats/Repeats.h"

namespace tarvex {

bool Repeats::IsNew(const Number& number) {
    if (latest_ == last_.end() || latest_->first != number.run) latest_ = last_.find(number.run);
    if (latest_ == last_.end()) {
        if (last_.size() >= kMostRuns) last_.clear();
        latest_ = last_.emplace(number.run, number.number).first;
        return true;
    }
    std::uint64_t& last = latest_->second;
    if (number.number == last || (number.isAgain && number.number < last)) return false;
    last = number.number;
    return true;
}

}  // namespace tarvex
