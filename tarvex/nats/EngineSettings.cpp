#include "tarvex/nats/EngineSettings.h"

#include <algorithm>
#include <string_view>

#include "tarvex/Identity.h"

namespace tarvex {
namespace {

constexpr std::string_view kPlain = "nats://";
constexpr std::string_view kSecure = "tls://";

// What may stand as one word of a subject, and as the name of a stream.
bool IsWord(const std::string& text) {
    return text.size() <= 64 && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
                      c == '_';
           });
}

bool TakeScheme(std::string_view& server, std::string_view scheme) {
    if (!server.starts_with(scheme)) return false;
    server.remove_prefix(scheme.size());
    return true;
}

}  // namespace

std::optional<EngineSettings> ReadEngineSettings(const std::string& url) {
    EngineSettings settings;
    std::string_view rest = url;
    settings.secure = rest.starts_with(kSecure);
    if (!settings.secure && !rest.starts_with(kPlain)) return std::nullopt;
    std::string_view account;  // of the first server; the others share it unless they have their own
    while (!rest.empty()) {
        std::string_view server = rest.substr(0, rest.find(','));
        rest.remove_prefix(std::min(rest.size(), server.size() + 1));
        TakeScheme(server, settings.secure ? kSecure : kPlain);
        const std::size_t at = server.rfind('@');
        const std::string_view host = at == std::string_view::npos ? server : server.substr(at + 1);
        if (host.empty() || host.find("://") != std::string_view::npos) return std::nullopt;
        if (at != std::string_view::npos && account.empty()) account = server.substr(0, at + 1);
        const std::string_view own = at != std::string_view::npos ? server.substr(0, at + 1) : account;
        settings.servers.push_back(std::string(kPlain).append(own).append(host));
    }
    settings.authority = Setting("TARVEX_CA", "");
    settings.certificate = Setting("TARVEX_CERT", "");
    settings.key = Setting("TARVEX_KEY", "");
    settings.credentials = Setting("TARVEX_CREDENTIALS", "");
    settings.domain = Setting("TARVEX_DOMAIN", "tvx");
    settings.stream = Setting("TARVEX_STORE", "");
    const bool isUsable = !settings.servers.empty() && IsWord(settings.domain) && IsWord(settings.stream) &&
                          settings.certificate.empty() == settings.key.empty();
    return isUsable ? std::optional(std::move(settings)) : std::nullopt;
}

}  // namespace tarvex
