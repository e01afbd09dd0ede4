#include "tarvex/nats/Repeats.h"

namespace tarvex {

bool Repeats::IsLatest(std::string_view sender, std::string_view run) const {
    if (latest_ == last_.end()) return false;
    const std::string& name = latest_->first;
    return name.size() == run.size() + sender.size() && name.starts_with(run) && name.ends_with(sender);
}

bool Repeats::IsNew(std::string_view sender, const Number& number) {
    if (!IsLatest(sender, number.run)) {
        name_.assign(number.run).append(sender);
        latest_ = last_.find(name_);
    }
    if (latest_ == last_.end()) {
        if (last_.size() >= kMostRuns) last_.clear();
        latest_ = last_.emplace(name_, number.number).first;
        return true;
    }
    std::uint64_t& last = latest_->second;
    if (number.number == last || (number.isAgain && number.number < last)) return false;
    last = number.number;
    return true;
}

}  // namespace tarvex
