#include "tarvex/nats/Senders.h"

#include <functional>

namespace tarvex {

const Senders::Known* Senders::Find(std::string_view subject, const char* keys) {
    // A subject with a digest does not tell its keys: the header does, each time.
    if (!keys && latest_->subject == subject) return latest_;
    latest_ = &known_[std::hash<std::string_view>()(subject) % known_.size()];
    Known& known = *latest_;
    if (!keys && known.subject == subject) return &known;
    known.subject.clear();
    if (!subjects_.Parse(subject, keys, known.text, known.address)) return nullptr;
    known.sender = Subjects::SenderOf(subject);
    if (!keys) known.subject = subject;
    return &known;
}

}  // namespace tarvex
