#include "tarvex/Identity.h"

#include <errno.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>

namespace tarvex {
namespace {

std::string HostName() {
    char name[256] = "";
    gethostname(name, sizeof name - 1);
    return *name ? name : "localhost";
}

std::string ProgramName() {
    const char* const name = program_invocation_short_name;
    return *name ? name : "program";
}

bool IsSenderKey(const std::string& key) { return key.size() <= kLongestKey && key != "*"; }

}  // namespace

std::string Setting(const char* name, const std::string& otherwise) {
    const char* value = std::getenv(name);
    return value && *value ? value : otherwise;
}

std::optional<Identity> ReadIdentity() {
    Identity identity{Setting("TARVEX_NODE", HostName()), Setting("TARVEX_TASK", ProgramName()), 0};
    const std::string number = Setting("TARVEX_NUMBER", std::to_string(getpid()));
    const char* end = number.data() + number.size();
    const auto [parsed, error] = std::from_chars(number.data(), end, identity.number);
    if (error != std::errc{} || parsed != end || identity.number == 0) return std::nullopt;
    if (!IsSenderKey(identity.node) || !IsSenderKey(identity.task)) return std::nullopt;
    return identity;
}

}  // namespace tarvex
