#include "tarvex/nats/Connection.h"

#include <vector>

namespace tarvex {
namespace {

constexpr std::int64_t kConnectWait = 2000;               // milliseconds for one server
constexpr std::int64_t kAnswerWait = 10 * kConnectWait;   // the loop cuts a silent server before
constexpr std::int64_t kNoPings = 24LL * 60 * 60 * 1000;  // silence is noticed sooner, by the loop

OptionsOwner MakeOptions(EventLoop& loop, const EngineSettings& settings, const std::string& name,
                         const std::string& inbox, const Connection::Handlers& handlers) {
    natsOptions* made = nullptr;
    if (natsOptions_Create(&made) != NATS_OK) return nullptr;
    OptionsOwner options(made);
    std::vector<const char*> servers;
    for (const std::string& server : settings.servers) servers.push_back(server.c_str());
    const auto file = [](const std::string& path) { return path.empty() ? nullptr : path.c_str(); };
    bool done =
        natsOptions_SetServers(made, servers.data(), static_cast<int>(servers.size())) == NATS_OK &&
        natsOptions_SetNoRandomize(made, true) == NATS_OK && natsOptions_SetTimeout(made, kConnectWait) == NATS_OK &&
        natsOptions_SetName(made, name.c_str()) == NATS_OK &&
        natsOptions_SetCustomInboxPrefix(made, inbox.c_str()) == NATS_OK &&
        natsOptions_SetAllowReconnect(made, false) == NATS_OK &&
        natsOptions_SetPingInterval(made, kNoPings) == NATS_OK && natsOptions_SetSendAsap(made, true) == NATS_OK &&
        natsOptions_UseGlobalMessageDelivery(made, true) == NATS_OK &&
        natsOptions_SetClosedCB(made, handlers.closed, handlers.closure) == NATS_OK &&
        natsOptions_SetErrorHandler(made, handlers.failed, handlers.closure) == NATS_OK && loop.Serve(made) == NATS_OK;
    if (settings.secure) done = done && natsOptions_SetSecure(made, true) == NATS_OK;
    if (file(settings.authority))
        done = done && natsOptions_LoadCATrustedCertificates(made, file(settings.authority)) == NATS_OK;
    if (file(settings.certificate))
        done =
            done && natsOptions_LoadCertificatesChain(made, file(settings.certificate), file(settings.key)) == NATS_OK;
    if (file(settings.credentials))
        done = done && natsOptions_SetUserCredentialsFromFiles(made, file(settings.credentials), nullptr) == NATS_OK;
    return done ? std::move(options) : nullptr;
}

}  // namespace

std::shared_ptr<Connection> Connection::Open(const std::shared_ptr<EventLoop>& loop, const EngineSettings& settings,
                                             const std::string& name, const std::string& inbox,
                                             const Handlers& handlers, std::string& why) {
    const OptionsOwner options = MakeOptions(*loop, settings, name, inbox, handlers);
    std::shared_ptr<Connection> connection(new Connection(loop));  // while nothing is lost if memory ends
    natsConnection* made = nullptr;
    if (options && natsConnection_Connect(&made, options.get()) == NATS_OK) {
        connection->connection_.reset(made);
        connection->largestPayload_ = natsConnection_GetMaxPayload(made);
        return connection;
    }
    natsStatus status = NATS_OK;
    const char* text = nats_GetLastError(&status);
    why = text && *text ? text : natsStatus_GetText(status);
    return nullptr;
}

Connection::~Connection() {
    if (connection_) Close();
}

bool Connection::RoundTrip() {
    const Expectation expectation(*this);
    return natsConnection_FlushTimeout(Get(), kAnswerWait) == NATS_OK;
}

std::string Connection::LastError() const {
    const char* text = nullptr;
    natsConnection_GetLastError(Get(), &text);
    return text ? text : "";
}

std::string Connection::Server() const {
    char url[256] = "";
    natsConnection_GetConnectedUrl(Get(), url, sizeof url);
    return url;
}

}  // namespace tarvex
