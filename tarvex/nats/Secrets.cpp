#include "tarvex/nats/Secrets.h"

#include <sys/random.h>

namespace tarvex {

char* Secrets::Write(char* text, std::size_t length) {
    static constexpr char kLetters[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-_";
    for (; length > 0; --length) {
        if (left_ == 0) {
            // So few bytes come whole, without a signal in between, once the system has any.
            while (getrandom(drawn_.data(), drawn_.size(), 0) != static_cast<ssize_t>(drawn_.size())) {
            }
            left_ = drawn_.size();
        }
        *text++ = kLetters[drawn_[--left_] % 64];
    }
    return text;
}

std::string SecretWord(std::size_t length) {
    std::string word(length, '\0');
    Secrets().Write(word.data(), length);
    return word;
}

}  // namespace tarvex
