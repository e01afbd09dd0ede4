#include "tarvex/nats/Formats.h"

#include <charconv>
#include <chrono>

namespace tarvex {
namespace {

constexpr std::chrono::milliseconds kAnswerWait(2000);
constexpr std::chrono::milliseconds kMoreAnswersWait(30);  // after one that had none
constexpr int kMostQuestion = 16384;                       // a key text of five escaped keys, and more

bool IsOne(std::string_view key) { return key != "*"; }

}  // namespace

Formats::Formats(const Subjects& subjects, const Identity& identity, const Publications& publications, Wishes& wishes,
                 Journal& journal)
    : subjects_(subjects),
      identity_(identity),
      publications_(publications),
      wishes_(wishes),
      replies_(subjects.Inbox('f')),
      journal_(journal) {
    wishes_.AddForLater(replies_ + "*", {OnAnswer, this});
}

Formats::Offering Formats::OfferingOf(std::string_view msgKey, std::string_view identifier) const {
    return {subjects_.FormatOfSender(identity_.Sends(msgKey, identifier)), subjects_.FormatOfPair(msgKey, identifier),
            subjects_.FormatOfAny()};
}

bool Formats::Offer(Connection& connection, const Offering& offering) {
    for (const std::string& subject : offering)
        if (!wishes_.Add(connection, subject, {OnQuestion, this})) return false;
    return connection.RoundTrip();
}

void Formats::Withdraw(const Offering& offering) {
    const bool isLast = !publications_.HasFormats();
    for (const std::string& subject : offering)
        if (isLast || subject != offering.back()) wishes_.Remove(subject);
}

void Formats::OnQuestion(natsConnection* connection, natsSubscription*, natsMsg* message, void* closure) {
    const MessageOwner owner(message);
    try {
        static_cast<Formats*>(closure)->Answer(connection, message);
    } catch (const std::bad_alloc&) {  // who asked is told by the time
    }
}

// A question that is none is answered as well: that this program has no such format.
void Formats::Answer(natsConnection* connection, natsMsg* question) const {
    const char* const reply = natsMsg_GetReply(question);
    const int length = natsMsg_GetDataLength(question);
    if (!reply || !Subjects::IsInbox(reply) || length > kMostQuestion || Connection::IsCrowded(connection)) {
        journal_.AddAndTell(Count::Foreign, "a question for a format that is none");
        return;
    }
    std::string text(natsMsg_GetData(question), static_cast<std::size_t>(length));
    Address pattern;
    char* end = nullptr;
    std::vector<char> format;
    if (ParseKeyText(text.data(), pattern, end)) format = publications_.FindFormat(pattern);
    natsConnection_Publish(connection, reply, format.data(), static_cast<int>(format.size()));
}

void Formats::OnAnswer(natsConnection*, natsSubscription*, natsMsg* message, void* closure) {
    const MessageOwner owner(message);
    auto* self = static_cast<Formats*>(closure);
    const std::string_view subject = natsMsg_GetSubject(message);
    std::uint64_t number = 0;
    std::from_chars(subject.data() + self->replies_.size(), subject.data() + subject.size(), number);
    const int length = natsMsg_GetDataLength(message);
    const std::lock_guard lock(self->mutex_);
    const auto asked = self->questions_.find(number);
    if (asked == self->questions_.end()) return;  // the answer came too late
    Question& question = asked->second;
    if (natsMsg_IsNoResponders(message)) {
        question.isNobodyThere = true;
    } else if (length >= static_cast<int>(sizeof(msgfmt)) && length <= 0xFFFF) {
        try {
            if (question.format.empty())
                question.format.assign(natsMsg_GetData(message), natsMsg_GetData(message) + length);
        } catch (const std::bad_alloc&) {
            ++question.refusals;
        }
    } else {
        ++question.refusals;
    }
    self->answered_.notify_all();
}

std::string Formats::SubjectFor(const Address& pattern) const {
    if (!IsOne(pattern.msgKey) || !IsOne(pattern.identifier)) return subjects_.FormatOfAny();
    if (IsOne(pattern.node) && IsOne(pattern.task) && pattern.number != 0) return subjects_.FormatOfSender(pattern);
    return subjects_.FormatOfPair(pattern.msgKey, pattern.identifier);
}

Formats::Found Formats::Ask(Connection& connection, const Address& pattern, std::vector<char>& format) {
    std::string text;
    AppendKeyText(text, pattern);
    const std::string subject = SubjectFor(pattern);
    const std::uint64_t number = next_++;
    const std::string reply = replies_ + std::to_string(number);
    std::unique_lock lock(mutex_);
    Question& question = questions_[number];
    lock.unlock();
    const bool asked = natsConnection_PublishRequest(connection.Get(), subject.c_str(), reply.c_str(), text.data(),
                                                     static_cast<int>(text.size())) == NATS_OK;
    lock.lock();
    const auto isSettled = [&] { return question.isNobodyThere || !question.format.empty(); };
    const auto isAnswered = [&] { return isSettled() || question.refusals > 0; };
    // Behind one publisher that has no such format there may be one that has.
    if (asked && answered_.wait_for(lock, kAnswerWait, isAnswered))
        answered_.wait_for(lock, kMoreAnswersWait, isSettled);
    Question result = std::move(question);
    questions_.erase(number);
    if (!result.format.empty()) {
        format = std::move(result.format);
        return Found::Format;
    }
    return result.isNobodyThere || result.refusals > 0 ? Found::Nobody : Found::NoAnswer;
}

}  // namespace tarvex
