#include "demo/Options.h"

#include <string_view>

#include "demo/Text.h"

namespace demo {
namespace {

// Water is never slower or faster than this, from fresh ice water to the deepest trench.
constexpr double kSlowestSound = 1300.0;
constexpr double kFastestSound = 1700.0;

double ParseSoundSpeed(const char* text) {
    const auto speed = text ? ParseNumber(text) : std::nullopt;
    if (!speed || *speed < kSlowestSound || *speed > kFastestSound)
        throw OptionError("--sound-speed takes metres per second, a number from 1300 to 1700");
    return *speed;
}

std::string ParsePart(const char* text) {
    std::string part = text ? text : "";
    if (part != "producer" && part != "receiver" && part != "tool")
        throw OptionError("--part takes one of producer, receiver, tool");
    return part;
}

}  // namespace

const char kUsage[] =
    "usage: surveymsg-demo [FILE] [--sound-speed M/S] [--all] [--nats | --part producer|receiver|tool]";

Options ParseOptions(int argc, const char* const* argv) {
    Options options;
    bool namesOnly = false;  // "--" ends the options, for a file whose name starts with a dash
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (!namesOnly && argument == "--") {
            namesOnly = true;
        } else if (!namesOnly && argument == "--all") {
            options.all = true;
        } else if (!namesOnly && argument == "--nats") {
            options.overNetwork = true;
        } else if (!namesOnly && argument == "--part") {
            options.part = ParsePart(i + 1 < argc ? argv[++i] : nullptr);
        } else if (!namesOnly && argument == "--help") {
            options.help = true;
        } else if (!namesOnly && argument == "--sound-speed") {
            options.soundSpeed = ParseSoundSpeed(i + 1 < argc ? argv[++i] : nullptr);
        } else if (!namesOnly && argument.starts_with('-')) {
            throw OptionError("unknown option " + Quoted(argument));
        } else if (argument.empty() || !options.file.empty()) {
            throw OptionError(argument.empty() ? "the name of the file is empty" : "more than one file");
        } else {
            options.file = argument;
        }
    }
    return options;
}

}  // namespace demo
