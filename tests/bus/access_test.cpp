// Who may connect to a server, and what it permits.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "bus/Calls.h"
#include "bus/OwnProcess.h"
#include "server/ChildProcess.h"
#include "server/EngineServer.h"
#include "surveymsg/outside/Tarvex.h"

namespace {

using bus::FailedWith;
using bus::InOwnProcess;
using bus::Read;
using bus::Send;
using bus::Subscribe;
using server::EngineServer;

// The server tells after the fact.
bool IsDeniedSoon(const std::string& key) {
    for (int i = 0; i < 500; ++i) {
        if (FailedWith(Send(key, "x"), TvxErrorDenied)) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

std::string FileText(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Access : public testing::Test {
protected:
    void SetUp() override {
        if (!EngineServer::IsInstalled()) GTEST_SKIP() << "nats-server is not installed";
    }
    void Start(const std::string& configuration, bool stores = false) {
        EngineServer::Options options;
        options.configuration = configuration;
        options.stores = stores;
        server_ = std::make_unique<EngineServer>(options);
    }
    void Use(const std::string& who, const std::string& scheme = "nats") const {
        const std::string url = scheme + "://" + who + "127.0.0.1:" + std::to_string(server_->Port());
        setenv("TARVEX_URL", url.c_str(), 1);
    }
    static void ExpectToWork() {
        ASSERT_EQ(Subscribe("k"), 1);
        for (int i = 0; i < 1000; ++i) ASSERT_EQ(Send("k", std::string(static_cast<std::size_t>(i) * 10, 'x')), 1);
        for (int i = 0; i < 1000; ++i) ASSERT_EQ(Read().size(), static_cast<std::size_t>(i) * 10);
    }
    static void ExpectNoConnection() { EXPECT_TRUE(FailedWith(Send("k", "x"), TvxErrorNotConnected)); }

    std::unique_ptr<EngineServer> server_;
};

TEST_F(Access, ATokenOpens) {
    Start("authorization { token: \"S3cret\" }\n");
    EXPECT_TRUE(InOwnProcess([&] {
        Use("S3cret@");
        ExpectToWork();
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        Use("other@");
        ExpectNoConnection();
    }));
}

TEST_F(Access, CredentialsOpen) {
    const std::string folder = CREDENTIALS_DIR;
    Start(FileText(folder + "/server.conf"));
    EXPECT_TRUE(InOwnProcess([&] {
        Use("");
        setenv("TARVEX_CREDENTIALS", (folder + "/program.creds").c_str(), 1);
        ExpectToWork();
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        Use("");
        ExpectNoConnection();
    }));
}

TEST_F(Access, CertificatesOpen) {
    std::string folder = (std::filesystem::temp_directory_path() / "tarvex-tls-XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string certificate = folder + "/server.pem", key = folder + "/server.key";
    const std::string make =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1 "
        "-subj /CN=localhost -addext subjectAltName=IP:127.0.0.1 -out " +
        certificate + " -keyout " + key + " 2>/dev/null";
    ASSERT_EQ(std::system(make.c_str()), 0);
    const std::string own = "cert_file: \"" + certificate + "\", key_file: \"" + key + "\"";
    const auto trust = [&] { setenv("TARVEX_CA", certificate.c_str(), 1); };
    Start("tls { " + own + " }\n");
    EXPECT_TRUE(InOwnProcess([&] {
        Use("", "tls");
        trust();
        ExpectToWork();
    }));
    EXPECT_TRUE(InOwnProcess([&] {  // an authority that nobody knows
        Use("", "tls");
        ExpectNoConnection();
    }));
    Start("tls { " + own + ", ca_file: \"" + certificate + "\", verify: true }\n");
    EXPECT_TRUE(InOwnProcess([&] {
        Use("", "tls");
        trust();
        setenv("TARVEX_CERT", certificate.c_str(), 1);
        setenv("TARVEX_KEY", key.c_str(), 1);
        ExpectToWork();
    }));
    EXPECT_TRUE(InOwnProcess([&] {  // a program without one
        Use("", "tls");
        trust();
        ExpectNoConnection();
    }));
    std::filesystem::remove_all(folder);
}

TEST_F(Access, DomainsAreApart) {
    Start("");
    server::ChildProcess other({BUS_PROBE, "receive", "*", "1", "0"},
                               {{"TARVEX_URL", server_->Url()}, {"TARVEX_DOMAIN", "second"}});
    ASSERT_TRUE(other.Await("ready\n"));
    for (const char* domain : {"first", "second"})
        EXPECT_TRUE(InOwnProcess([&] {
            Use("");
            setenv("TARVEX_DOMAIN", domain, 1);
            const std::uint64_t onlyOne[] = {1, 1};  // a message that the probe counts
            ASSERT_EQ(Subscribe("k"), 1);
            ASSERT_EQ(TvxSend("k", domain, onlyOne, sizeof onlyOne), 1);
            EXPECT_EQ(Read().size(), sizeof onlyOne);
        }));
    EXPECT_NE(other.Output().find("received=1 "), std::string::npos) << other.Output();
}

TEST_F(Access, WhatIsNotPermittedIsRefused) {
    const std::string longKey(300, 'k');  // longer than what the client keeps of the server's text
    Start(
        "authorization { users = [ { user: rov, password: secret, permissions: {\n"
        "  publish: [\"tvx.m.rov.>\"], subscribe: [\"tvx.m.*.*.*.open.*\", \"_INBOX.rov.>\"] } } ] }\n");
    EXPECT_TRUE(InOwnProcess([&] {
        Use("rov:secret@");
        setenv("TARVEX_NODE", "rov", 1);
        EXPECT_TRUE(FailedWith(Subscribe("secret"), TvxErrorDenied));
        EXPECT_TRUE(FailedWith(Subscribe(longKey), TvxErrorDenied));
        ASSERT_EQ(Subscribe("open"), 1);
        EXPECT_EQ(Send("open", "x"), 1);
        EXPECT_EQ(Read(), "x");
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        Use("rov:secret@");
        setenv("TARVEX_NODE", "vessel", 1);
        EXPECT_TRUE(IsDeniedSoon("open"));  // a forged sender
        EXPECT_TRUE(IsDeniedSoon(longKey));
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        Use("rov:wrong@");
        ExpectNoConnection();
    }));
}

// Those of docs/bus.md: enough for all that a program does, and to send only as itself.
TEST_F(Access, TheDocumentedPermissionsAreEnough) {
    Start(
        "authorization { users = [ { user: owner, password: secret }, { user: rov, password: secret, permissions: {\n"
        "  publish: [\"tvx.m.rov.>\", \"tvx.a\", \"tvx.a.>\", \"tvx.f.>\", \"_INBOX.*.f.>\",\n"
        "            \"$JS.API.STREAM.INFO.NAV\", \"$JS.API.CONSUMER.*.NAV\", \"$JS.API.CONSUMER.*.NAV.>\", "
        "\"$JS.FC.NAV.>\"],\n"
        "  subscribe: [\"tvx.>\", \"_INBOX.rov.>\"] } } ] }\n",
        true);
    const auto useAsRov = [&](const char* node) {
        Use("rov:secret@");
        setenv("TARVEX_NODE", node, 1);
        setenv("TARVEX_TASK", "t", 1);
        setenv("TARVEX_NUMBER", "1", 1);
    };
    const auto askForFormats = [](const char* pattern) {
        char text[100], buffer[100];
        std::uint32_t needed = 0;
        std::snprintf(text, sizeof text, "%s", pattern);
        EXPECT_EQ(TvxQueryFormat(4, text, sizeof text, buffer, sizeof buffer, &needed), 1) << pattern;
        EXPECT_EQ(needed, 0u);  // nobody else has one
    };
    EXPECT_TRUE(InOwnProcess([&] {
        useAsRov("rov");
        ExpectToWork();
        msgfmt format{};
        EXPECT_EQ(TvxPublish("k", "i", &format, sizeof format), 1);
        for (const char* pattern : {"*.*.0.other.i", "other.t.1.k.i", "*.*.0.*.other"}) askForFormats(pattern);
        EXPECT_EQ(TvxUnpublish("k", "i"), 1);
    }));
    EXPECT_TRUE(InOwnProcess([&] {  // its owner makes the stream
        Use("owner:secret@");
        setenv("TARVEX_STORE", "NAV", 1);
        ASSERT_EQ(Send("k", "owner"), 1);
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        useAsRov("rov");
        setenv("TARVEX_STORE", "NAV", 1);
        ExpectToWork();
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "*", "", 0, 60), 1);
        EXPECT_EQ(Read(), "owner");
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        useAsRov("vessel");
        EXPECT_TRUE(IsDeniedSoon("k"));
    }));
}

}  // namespace
