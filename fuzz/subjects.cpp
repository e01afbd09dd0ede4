// What another client of the server can put around a message: the subject, the key text in a header and the
// reply subject, a line each. What is taken for a message of the bus has keys, and these have one subject.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tarvex/nats/Repeats.h"
#include "tarvex/nats/Replies.h"
#include "tarvex/nats/Subjects.h"

namespace {

using namespace tarvex;

void Require(bool holds) {
    if (!holds) std::abort();
}

std::string TakeLine(std::string_view& rest) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    return std::string(line.substr(0, line.find('\0')));  // the client's texts end at a zero
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Identity identity{"node", "task", 1};
    static const Subjects subjects("tvx", identity);
    static Repeats repeats;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    const std::string subject = TakeLine(rest), keys = TakeLine(rest), reply = TakeLine(rest);

    std::string scratch;
    Address address;
    if (subjects.Parse(subject, keys.empty() ? nullptr : keys.c_str(), scratch, address)) {
        Require(address.number != 0 && !address.node.empty() && !address.task.empty());
        Require(address.identifier.size() <= kLongestKey);
        // A key that is the wildcard's character is told apart from it by its escape.
        const bool isPattern =
            address.node == "*" || address.task == "*" || address.msgKey == "*" || address.identifier == "*";
        const std::string told = subjects.Pattern(address);
        std::string text, again;
        AppendKeyText(text, address);
        Address same;
        if (!isPattern) Require(told == subject && subjects.Parse(told, text.c_str(), again, same) && same == address);
    }
    Number number;
    if (ReadNumber(reply, number)) {
        Require(number.number != 0 && number.run.size() == kRunSize);
        char told[kLongestNumberText];
        const std::string text(told, WriteNumber(told, number));
        Number same;
        Require(ReadNumber(text, same) && same.number == number.number && same.run == number.run);
        const std::string_view sender = Subjects::SenderOf(subject);
        repeats.IsNew(sender, number);
        number.isAgain = true;
        Require(!repeats.IsNew(sender, number));
    }
    Places places;
    if (ReadPlaces(reply, places)) Require(places.inStream != 0 && places.inDelivery != 0);
    return 0;
}
