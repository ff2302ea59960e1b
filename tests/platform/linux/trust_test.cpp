#include "platform/linux/beast_web_socket.h"
#include "platform/linux/curl_url_session.h"
#include "platform/linux/network_thread.h"
#include "platform/task.h"
#include "tests/platform/linux/scripted_server.h"
#include "tests/platform/linux/scripted_web_socket.h"
#include "tests/support/temporary_folder.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <future>
#include <memory>
#include <string>

#include <boost/asio/post.hpp>
#include <gtest/gtest.h>
#include <openssl/x509.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;

/// On a computer whose system trusts one authority: its folder of authorities holds nothing else.
struct TrustTest : testing::Test {
    NetworkThread network;
    support::TemporaryFolder folder;
    TestCertificate systems = makeAuthority();
    TestCertificate own = makeAuthority();
    const std::filesystem::path systemFolder = "/etc/ssl/certs";
    const std::string stranger = folder.path() / "stranger.pem";

    TrustTest() {
        writeCertificate(systems, systemFolder / "ca-certificates.crt");
        writeCertificate(systems, systemFolder / hashedName(systems));
        // Of another name than the authorities', so that it hides none of them.
        writeCertificate(makeServerCertificate(makeAuthority(), "stranger.example"), stranger);
    }

    /// The name under which the library looks for an issuer in a folder.
    static std::string hashedName(const TestCertificate& certificate) {
        std::array<char, 16> name{};
        const auto hash =
            X509_NAME_hash_ex(X509_get_subject_name(certificate.certificate.get()), nullptr, nullptr, nullptr);
        std::snprintf(name.data(), name.size(), "%08lx.0", hash);
        return name.data();
    }

    /// Whether a request, and whether a web socket, gets through to a server of this authority.
    std::string reached(const TestCertificate& authority, const TransportSettings& settings) {
        ScriptedServer rest(
            [](ScriptedConnection& connection) {
                connection.readRequest();
                connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
            },
            makeServerCertificate(authority, "localhost"));
        ScriptedServer socket(
            [](ScriptedConnection& connection) {
                acceptUpgrade(connection);
                connection.send(serverFrame(text, "hello"));
                connection.waitForClose();
            },
            makeServerCertificate(authority, "localhost"));
        CurlUrlLoading urls(network, settings);
        BeastWebSocketLoading sockets(settings);
        auto session = urls.makeSession({.idleTimeout = 10s});
        const Executor queue = network.makeSerialQueue();
        std::promise<std::string> outcome;
        startTask(queue, [&]() -> Awaitable<void> {
            const HttpRequest request{.method = "GET", .url = "https://localhost:" + std::to_string(rest.port())};
            const auto response = co_await session->perform(request);
            auto webSession = sockets.makeSession(queue);
            const auto task = webSession->makeTask({.url = "wss://localhost:" + std::to_string(socket.port()) + "/ws"});
            task->resume();
            const auto frame = co_await task->receive();
            task->cancel(1001);
            outcome.set_value(std::string{response ? "request " : ""} + (frame ? "socket" : ""));
        });
        auto result = outcome.get_future().get();
        session.reset();
        urls.cancelAll();
        sockets.cancelAll();
        network.runAndWait([]() -> Awaitable<void> { co_return; }, 10s);
        return result;
    }
};

TEST_F(TrustTest, theSystemsAuthoritiesAreTrustedWhereNothingElseIsNamed) {
    EXPECT_EQ(reached(systems, {}), "request socket");
    std::filesystem::remove(systemFolder / hashedName(systems));
    EXPECT_EQ(reached(systems, {}), "request socket") << "by the file alone";
    writeCertificate(systems, systemFolder / hashedName(systems));
    std::filesystem::remove(systemFolder / "ca-certificates.crt");
    writeCertificate(makeServerCertificate(makeAuthority(), "stranger.example"), systemFolder / "ca-certificates.crt");
    EXPECT_EQ(reached(systems, {}), "request socket") << "by the folder alone";
    EXPECT_EQ(reached(own, {}), "");
}

TEST_F(TrustTest, aFileThatIsNamedIsTrustedInPlaceOfTheSystems) {
    EXPECT_EQ(reached(systems, {.certificateFile = stranger}), "");
    const std::string file = folder.path() / "own.pem";
    writeCertificate(own, file);
    EXPECT_EQ(reached(own, {.certificateFile = file}), "request socket");
}

TEST_F(TrustTest, aFolderThatIsNamedIsTrustedInPlaceOfTheSystems) {
    EXPECT_EQ(reached(systems, {.certificateFolder = folder.path()}), "");
    writeCertificate(own, folder.path() / hashedName(own));
    EXPECT_EQ(reached(own, {.certificateFolder = folder.path()}), "request socket");
    EXPECT_EQ(reached(systems, {.certificateFolder = folder.path()}), "");
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
