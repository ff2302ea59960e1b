#include "tests/platform/linux/curl_fixture.h"
#include "tests/platform/linux/scripted_server.h"
#include "tests/platform/linux/test_certificates.h"
#include "tests/support/temporary_folder.h"

namespace zelkovanta::platform::linux_host {
namespace {

struct CurlTlsTest : CurlUrlSessionTest {
    support::TemporaryFolder folder;
    TestCertificate authority = makeAuthority();

    CurlTlsTest() {
        settings.certificateFile = folder.path() / "authority.pem";
        writeCertificate(authority, settings.certificateFile);
    }
    static void answerAll(ScriptedConnection& connection) {
        connection.readRequest();
        connection.send(answer("secret"));
    }
    static std::string secureUrl(const ScriptedServer& server) {
        return "https://localhost:" + std::to_string(server.port());
    }
};

TEST_F(CurlTlsTest, aCertificateOfATrustedAuthorityForTheRightNameIsAccepted) {
    ScriptedServer server(answerAll, makeServerCertificate(authority, "localhost"));
    EXPECT_EQ(shown(get(secureUrl(server))), "200 secret");
}

TEST_F(CurlTlsTest, aSelfSignedCertificateIsRefusedBeforeAnyByteOfTheRequest) {
    bool sawRequest = false;
    {
        ScriptedServer server([&](ScriptedConnection& connection) { sawRequest = !connection.readRequest().empty(); },
                              makeServerCertificate(makeAuthority(), "localhost"));
        EXPECT_EQ(causeOfGetting(secureUrl(server)), TransportCause::certificateRefused);
    }
    EXPECT_FALSE(sawRequest);
}

TEST_F(CurlTlsTest, anExpiredCertificateIsRefused) {
    ScriptedServer server(answerAll, makeServerCertificate(authority, "localhost", Validity::expired));
    EXPECT_EQ(causeOfGetting(secureUrl(server)), TransportCause::certificateRefused);
}

TEST_F(CurlTlsTest, aCertificateForAnotherNameIsRefused) {
    ScriptedServer server(answerAll, makeServerCertificate(authority, "elsewhere.example"));
    EXPECT_EQ(causeOfGetting(secureUrl(server)), TransportCause::certificateRefused);
}

TEST_F(CurlTlsTest, aServerWithoutTlsIsNotTalkedTo) {
    std::string seen;
    ScriptedServer server([&](ScriptedConnection& connection) {
        seen = connection.read(1);
        connection.send("HTTP/1.1 200 OK\r\n\r\n");
    });
    const TransportCause cause = causeOfGetting(secureUrl(server));
    EXPECT_EQ(cause, TransportCause::interrupted);
    EXPECT_EQ(seen, "\x16");
}

struct CurlProxyTest : CurlTlsTest {
    /// A proxy that leads every tunnel to the end of the script itself, as the server that was asked for.
    static ScriptedServer::Script tunnelTo(const TestCertificate& certificate, std::string& seen,
                                           ScriptedServer::Script server = answerAll) {
        return [certificate, &seen, server = std::move(server)](ScriptedConnection& connection) {
            seen = connection.readRequest();
            connection.send("HTTP/1.1 200 Connection established\r\n\r\n");
            if (connection.startTls(certificate)) {
                server(connection);
            }
        };
    }
};

TEST_F(CurlProxyTest, aSecureRequestGoesThroughTheProxysTunnel) {
    std::string seen;
    ScriptedServer proxy(tunnelTo(makeServerCertificate(authority, "office.test"), seen));
    settings.proxies.https = "http://user:pass@" + proxy.address();
    const Result result =
        perform({.method = "GET", .url = "https://office.test/", .headers = {{"Authorization", "Bearer t"}}});
    EXPECT_EQ(shown(result), "200 secret");
    EXPECT_TRUE(seen.starts_with("CONNECT office.test:443 HTTP/1.1\r\n")) << seen;
    EXPECT_NE(seen.find("Proxy-Authorization: Basic dXNlcjpwYXNz\r\n"), std::string::npos) << seen;
    EXPECT_EQ(seen.find("Bearer"), std::string::npos) << "the proxy is shown the token";
}

TEST_F(CurlProxyTest, theCertificateBehindTheProxyIsChecked) {
    std::string seen;
    ScriptedServer proxy(tunnelTo(makeServerCertificate(makeAuthority(), "office.test"), seen));
    settings.proxies.https = proxy.address();
    EXPECT_EQ(causeOfGetting("https://office.test/"), TransportCause::certificateRefused);
}

TEST_F(CurlProxyTest, aProxyThatWantsALoginOrIsNotThereIsTheProxysFailure) {
    ScriptedServer proxy([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 407 Proxy Authentication Required\r\nContent-Length: 0\r\n\r\n");
    });
    settings.proxies = {.http = proxy.address(), .https = proxy.address()};
    EXPECT_EQ(causeOfGetting("https://office.test/"), TransportCause::proxyFailed);
    EXPECT_EQ(causeOfGetting("http://office.test/"), TransportCause::proxyFailed);
}

TEST_F(CurlProxyTest, aServerBehindTheTunnelThatWantsALoginHasAnswered) {
    std::string seen;
    ScriptedServer proxy(
        tunnelTo(makeServerCertificate(authority, "office.test"), seen, [](ScriptedConnection& connection) {
            connection.readRequest();
            connection.send(answer("its own words", "407 Proxy Authentication Required"));
        }));
    settings.proxies.https = proxy.address();
    EXPECT_EQ(shown(get("https://office.test/")), "407 its own words");
}

TEST_F(CurlProxyTest, aProxyThatIsNotThereIsTheProxysFailure) {
    settings.proxies.https = "http://127.0.0.1:" + std::to_string(unusedPort());
    EXPECT_EQ(causeOfGetting("https://office.test/"), TransportCause::proxyFailed);
}

TEST_F(CurlProxyTest, aProxyOfAKindThatCannotBeAskedIsTheProxysFailureAndNothingGoesPastIt) {
    ScriptedServer proxy(answerAll);
    for (const std::string scheme : {"socks5://", "socks5h://", "socks4a://"}) {
        session.reset();
        settings.proxies = {.all = scheme + proxy.address()};
        EXPECT_EQ(causeOfGetting("http://office.test/"), TransportCause::proxyFailed) << scheme;
        EXPECT_EQ(causeOfGetting("https://office.test/"), TransportCause::proxyFailed) << scheme;
    }
    EXPECT_EQ(proxy.connections(), 0);
}

TEST_F(CurlProxyTest, thisComputerItselfIsReachedWithoutTheProxy) {
    settings.proxies = {.http = "http://127.0.0.1:" + std::to_string(unusedPort())};
    ScriptedServer server(answerAll);
    EXPECT_EQ(shown(get("http://" + server.address())), "200 secret");
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
