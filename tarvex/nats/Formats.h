#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "tarvex/Publications.h"
#include "tarvex/nats/Journal.h"
#include "tarvex/nats/Link.h"
#include "tarvex/nats/Subjects.h"
#include "tarvex/nats/Wishes.h"

namespace tarvex {

/// Formats over the engine: each publisher answers for its own pairs, and is gone when it is gone.
class Formats {
public:
    Formats(const Subjects& subjects, const Identity& identity, const Publications& publications, Wishes& wishes,
            Journal& journal);

    /// Where a pair's format is asked for.
    using Offering = std::array<std::string, 3>;
    Offering OfferingOf(std::string_view msgKey, std::string_view identifier) const;
    /// Answers there from now on. False if the engine refuses.
    bool Offer(Connection& connection, const Offering& offering);
    /// Answers no longer. Needs no memory.
    void Withdraw(const Offering& offering);

    enum class Found { Format, Nobody, NoAnswer };
    /// Asks the other programs; within two seconds.
    Found Ask(Connection& connection, const Address& pattern, std::vector<char>& format);

private:
    struct Question {
        std::vector<char> format;
        int refusals = 0;
        bool isNobodyThere = false;
    };

    static void OnQuestion(natsConnection* connection, natsSubscription*, natsMsg* message, void* closure);
    static void OnAnswer(natsConnection*, natsSubscription*, natsMsg* message, void* closure);
    void Answer(natsConnection* connection, natsMsg* question) const;
    std::string SubjectFor(const Address& pattern) const;

    const Subjects& subjects_;
    const Identity& identity_;
    const Publications& publications_;
    Wishes& wishes_;
    const std::string replies_;
    Journal& journal_;

    std::mutex mutex_;
    std::condition_variable answered_;
    std::map<std::uint64_t, Question> questions_;
    std::atomic<std::uint64_t> next_ = 1;
};

}  // namespace tarvex
