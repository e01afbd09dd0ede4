#include "tarvex/nats/Secrets.h"

#include <sys/random.h>

#include <cinttypes>
#include <cstdio>

namespace tarvex {

std::uint64_t Secrets::Next() {
    if (left_ == 0) {
        // So few bytes come whole, without a signal in between, once the system has any.
        while (getrandom(drawn_.data(), sizeof drawn_, 0) != static_cast<ssize_t>(sizeof drawn_)) {
        }
        left_ = drawn_.size();
    }
    return drawn_[--left_];
}

std::string SecretWord() {
    Secrets secrets;
    char word[33];
    std::snprintf(word, sizeof word, "%016" PRIx64 "%016" PRIx64, secrets.Next(), secrets.Next());
    return word;
}

}  // namespace tarvex
