#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarvex {

/// How a program reaches the engine, as its user set it.
struct EngineSettings {
    std::vector<std::string> servers;  ///< `TARVEX_URL`, each with a scheme that the engine's client takes
    bool secure = false;               ///< the URL's scheme is tls
    std::string authority;             ///< `TARVEX_CA`: a file of certificates
    std::string certificate;           ///< `TARVEX_CERT`, `TARVEX_KEY`: this program's own
    std::string key;
    std::string credentials;  ///< `TARVEX_CREDENTIALS`: a file
    std::string domain;       ///< `TARVEX_DOMAIN`: the first word of every subject
    std::string stream;       ///< `TARVEX_STORE`: where sends are stored; empty for live
};

/// Nothing if the URL is none of nats or tls, or if a variable holds what it cannot.
std::optional<EngineSettings> ReadEngineSettings(const std::string& url);

}  // namespace tarvex
