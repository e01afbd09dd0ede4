// Starts a server of its own for a test program of the bus, where its way needs one.

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "bus/Way.h"
#include "server/EngineServer.h"

namespace {

class Environment : public testing::Environment {
    void SetUp() override {
        const char* const way = bus::Way();
        if (!way) return;
        if (!server::EngineServer::IsInstalled()) GTEST_SKIP() << "nats-server is not installed";
        const bool stores = std::string(way) == "stored";
        server::EngineServer::Options options;
        options.stores = stores;
        server_ = std::make_unique<server::EngineServer>(options);
        setenv("TARVEX_URL", server_->Url().c_str(), 1);
        if (stores) setenv("TARVEX_STORE", "TEST", 1);
    }
    void TearDown() override { server_.reset(); }

    std::unique_ptr<server::EngineServer> server_;
};

[[maybe_unused]] const auto* const environment = testing::AddGlobalTestEnvironment(new Environment);

}  // namespace
