#include "tests/platform/linux/tls_fixture.h"
#include "tests/platform/linux/tls_server.h"

#include <algorithm>
#include <cctype>

#include <openssl/ssl.h>

namespace zelkovanta::platform::linux_host {
namespace {

const std::string accepted = "use: answered";
const std::string cancelled = "cancel: certificate refused after 0 bytes";
const std::string leftToTheHost = "default: answered";
const std::string refusedByTheHost = "default: certificate refused after 0 bytes";

/// Every case is one handshake of each version of TLS, with a server and a session of its own.
struct TlsPinningTest : TlsTest {
    std::string outcomeWith(int version, TlsServerSettings server) {
        server.highestVersion = version;
        TlsServer peer(std::move(server));
        openSession();
        const std::string result = shown(get(url.empty() ? peer.url() : url + std::to_string(peer.port())));
        const auto account = peer.end();
        EXPECT_EQ(account.requests, result == "answered" ? 1 : 0);
        EXPECT_EQ(account.accepted, result == "answered" ? 1 : 0) << "refused only after the handshake";
        return witness->answers() + ": " + result +
               (result == "answered" ? "" : " after " + std::to_string(account.applicationBytes) + " bytes");
    }

    std::string outcome(const TlsServerSettings& server) {
        const std::string older = outcomeWith(TLS1_2_VERSION, server);
        const std::string newer = outcomeWith(TLS1_3_VERSION, server);
        return older == newer ? newer : "TLS 1.2 " + older + "; TLS 1.3 " + newer;
    }
    std::string outcome(const std::vector<TestCertificate>& chain) {
        return outcome(TlsServerSettings{.chain = chain});
    }

    /// For pins of the leaf, the intermediate and the root of `pinned`, in this order.
    std::vector<std::string> outcomes(const CertificateChain& pinned, const TlsServerSettings& server) {
        std::vector<std::string> all;
        for (const auto& place : pinned.places()) {
            pin(pinOf(place));
            all.push_back(outcome(server));
        }
        return all;
    }
    std::vector<std::string> outcomes(const CertificateChain& pinned, const std::vector<TestCertificate>& chain) {
        return outcomes(pinned, TlsServerSettings{.chain = chain});
    }

    std::string url;  ///< up to the port; empty for the server's own
    const CertificateChain honest = makeChain();
};

std::vector<std::string> always(const std::string& outcome) {
    return {outcome, outcome, outcome};
}

TEST_F(TlsPinningTest, aPinOfTheLeafTheIntermediateOrTheRootPasses) {
    trust({honest.root});
    EXPECT_EQ(outcomes(honest, honest.sent()), always(accepted));
}

TEST_F(TlsPinningTest, withoutAPinTheHostDecides) {
    trust({honest.root});
    unpin();
    EXPECT_EQ(outcome(honest.sent()), leftToTheHost);
    pin("");
    EXPECT_EQ(outcome(honest.sent()), leftToTheHost);
    writeInformation(R"({"ZVTPinnedSPKISHA256": 5})");
    EXPECT_EQ(outcome(honest.sent()), leftToTheHost);
    trust({makeAuthority()});
    EXPECT_EQ(outcome(honest.sent()), refusedByTheHost);
}

TEST_F(TlsPinningTest, aTrustedChainWithoutThePinnedKeyIsCancelled) {
    trust({honest.root});
    EXPECT_EQ(outcomes(makeChain(), honest.sent()), always(cancelled));
}

TEST_F(TlsPinningTest, anotherSpellingOfThePinNeverMatches) {
    trust({honest.root});
    for (const auto& place : honest.places()) {
        const std::string right = pinOf(place);
        std::string hexadecimal;
        for (const unsigned char byte : publicKeyDigestOf(place)) {
            constexpr std::string_view digits = "0123456789abcdef";
            hexadecimal += {digits[byte >> 4U], digits[byte & 15U]};
        }
        std::string capitals = hexadecimal;
        std::ranges::transform(capitals, capitals.begin(), [](unsigned char c) { return std::toupper(c); });
        // Base64 leaves two bits of the last letter unused: a lax reader takes this for the same bytes.
        std::string unusedBits = right;
        ++unusedBits[right.size() - 2];
        for (const std::string& wrong :
             {right + " ", " " + right, right + "\\n", hexadecimal, capitals, right.substr(0, right.size() - 1),
              "sha256/" + right, right + ";" + right, unusedBits}) {
            pin(wrong);
            EXPECT_EQ(outcomeWith(TLS1_3_VERSION, {.chain = honest.sent()}), cancelled) << wrong;
        }
        pin(right);
        EXPECT_EQ(outcomeWith(TLS1_3_VERSION, {.chain = honest.sent()}), accepted);
    }
}

TEST_F(TlsPinningTest, pinnedCertificatesThatAreMerelySentAlongDoNotCount) {
    const CertificateChain attacker = makeChain();
    trust({honest.root, attacker.root});
    for (const auto& appended : honest.places()) {
        pin(pinOf(appended));
        EXPECT_EQ(outcome({attacker.leaf, attacker.intermediate, appended}), cancelled);
        EXPECT_EQ(outcome({attacker.leaf, appended, attacker.intermediate}), cancelled);
        EXPECT_EQ(outcome({attacker.leaf, attacker.intermediate, attacker.root, honest.leaf, honest.intermediate,
                           honest.root}),
                  cancelled);
    }
    unpin();
    EXPECT_EQ(outcome({attacker.leaf, attacker.intermediate, honest.leaf, honest.intermediate, honest.root}),
              leftToTheHost);
}

TEST_F(TlsPinningTest, anotherAuthorityIsCancelledWhetherTheHostTrustsItOrNot) {
    const CertificateChain other = makeChain();
    trust({honest.root, other.root});
    EXPECT_EQ(outcomes(honest, other.sent()), always(cancelled));
    trust({honest.root});
    EXPECT_EQ(outcomes(honest, other.sent()), always(cancelled));
    // The pin is no trust: an authority that only the pin knows stays a stranger.
    EXPECT_EQ(outcomes(other, other.sent()), always(cancelled));
}

TEST_F(TlsPinningTest, anExpiredCertificateIsCancelledThoughItsKeyIsPinned) {
    const CertificateChain expired = makeChain("localhost", Validity::expired);
    trust({expired.root});
    EXPECT_EQ(outcomes(expired, expired.sent()), always(cancelled));
    unpin();
    EXPECT_EQ(outcome(expired.sent()), refusedByTheHost);
}

TEST_F(TlsPinningTest, aCertificateForAnotherNameIsCancelledThoughItsKeyIsPinned) {
    const CertificateChain elsewhere = makeChain("elsewhere.example");
    trust({elsewhere.root});
    EXPECT_EQ(outcomes(elsewhere, elsewhere.sent()), always(cancelled));
    unpin();
    EXPECT_EQ(outcome(elsewhere.sent()), refusedByTheHost);
}

TEST_F(TlsPinningTest, aServerWithoutANameIsKnownByItsAddress) {
    url = "https://127.0.0.1:";
    const CertificateChain here = makeChain("127.0.0.1");
    trust({here.root});
    EXPECT_EQ(outcomes(here, here.sent()), always(accepted));
    const CertificateChain elsewhere = makeChain("127.0.0.2");
    trust({elsewhere.root});
    EXPECT_EQ(outcomes(elsewhere, elsewhere.sent()), always(cancelled));
    trust({honest.root});
    EXPECT_EQ(outcomes(honest, honest.sent()), always(cancelled));
}

TEST_F(TlsPinningTest, aSelfSignedCertificateIsCancelledThoughItsKeyIsPinned) {
    const TestCertificate alone = makeSelfSignedServerCertificate("localhost");
    trust({honest.root});
    pin(pinOf(alone));
    EXPECT_EQ(outcome({alone}), cancelled);
    EXPECT_EQ(outcome({alone, honest.leaf, honest.intermediate, honest.root}), cancelled);
    EXPECT_EQ(outcomes(honest, std::vector{alone}), always(cancelled));
    unpin();
    EXPECT_EQ(outcome({alone}), refusedByTheHost);
}

TEST_F(TlsPinningTest, aServerThatAsksForACertificateGetsNoneAndIsStillPinned) {
    trust({honest.root});
    const TlsServerSettings asking{.chain = honest.sent(), .askForCertificate = AskForCertificate::politely};
    EXPECT_EQ(outcomes(honest, asking), always("use, client certificate default: answered"));
    EXPECT_EQ(outcomes(makeChain(), asking), always(cancelled));
    unpin();
    EXPECT_EQ(outcome(asking), "default, client certificate default: answered");
}

TEST_F(TlsPinningTest, aServerThatInsistsOnACertificateIsNotPinsBusiness) {
    trust({honest.root});
    pin(pinOf(honest.leaf));
    const TlsServerSettings insisting{.chain = honest.sent(), .askForCertificate = AskForCertificate::insistently};
    const std::string interrupted = shown(std::unexpected(TransportError{TransportCause::interrupted}));
    EXPECT_EQ(outcomeWith(TLS1_2_VERSION, insisting),
              "use, client certificate default: " + interrupted + " after 0 bytes");
    // From TLS 1.3 on the server says no only after the client has had its say, perhaps with its request.
    TlsServer peer({.chain = honest.sent(),
                    .highestVersion = TLS1_3_VERSION,
                    .askForCertificate = AskForCertificate::insistently});
    openSession();
    EXPECT_EQ(shown(get(peer.url())), interrupted);
    EXPECT_EQ(witness->answers(), "use, client certificate default");
    auto account = peer.end();
    account.applicationBytes = 0;
    EXPECT_EQ(account, (TlsServer::Account{.failed = 1}));
}

TEST_F(TlsPinningTest, everyKindOfKeyMatchesItsPinInEveryPlace) {
    for (const KeyKind kind :
         {KeyKind::rsa2048, KeyKind::rsa3072, KeyKind::rsa4096, KeyKind::p256, KeyKind::p384, KeyKind::ed25519}) {
        const CertificateChain leaf = makeChain("localhost", Validity::current, {.leaf = kind});
        const CertificateChain intermediate = makeChain("localhost", Validity::current, {.intermediate = kind});
        const CertificateChain root = makeChain("localhost", Validity::current, {.root = kind});
        trust({leaf.root, intermediate.root, root.root});
        const auto outcomeOf = [&](const CertificateChain& chain, const TestCertificate& pinned) {
            pin(pinOf(pinned));
            return outcome(chain.sent());
        };
        EXPECT_EQ(outcomeOf(leaf, leaf.leaf), accepted) << static_cast<int>(kind);
        EXPECT_EQ(outcomeOf(intermediate, intermediate.intermediate), accepted) << static_cast<int>(kind);
        EXPECT_EQ(outcomeOf(root, root.root), accepted) << static_cast<int>(kind);
        EXPECT_EQ(outcomeOf(leaf, makeServerCertificate(honest.root, "localhost")), cancelled)
            << static_cast<int>(kind);
    }
}

// As another tool computes them from the same keys; tests/data/keys/make_keys says how.
TEST_F(TlsPinningTest, pinsAreWhatOtherToolsMakeOfAKey) {
    const std::vector<std::pair<KeyKind, std::string>> pins{
        {KeyKind::rsa2048, "NsRl+4OsumvRKf7PlldSyBmjrTLgJqGvwtu5rx4mCsE="},
        {KeyKind::rsa3072, "TzV/gSFygHfnHsDdGq2zIMnDmI8kIusp59QAH6/kfyc="},
        {KeyKind::rsa4096, "2mp1Mz9miqK9Qrynzk1cV4x/LxOBLg4LZQLvVnHJz1k="},
        {KeyKind::keptP256, "/ytlqCNTPl5kWAvK3HE1ed4QT82Abn6yVbLID9oAQi4="},
        {KeyKind::keptP384, "Cb0DXDAERLE5TqZlA1TbBR3+H+w118w+uLkXVgfdTEo="},
        {KeyKind::keptEd25519, "ZMWot5eVo9lrXWsk7ksNYPdRnSdWJpzaYhh/LXzFOJ8="}};
    for (const auto& [kind, text] : pins) {
        const CertificateChain chain = makeChain("localhost", Validity::current, {.leaf = kind});
        trust({chain.root});
        pin(text);
        EXPECT_EQ(outcome(chain.sent()), accepted) << text;
    }
}

TEST_F(TlsPinningTest, aRootIsSeenThoughTheIntermediateIsTrustedByItselfAsWell) {
    trust({honest.root, honest.intermediate});
    EXPECT_EQ(outcomes(honest, honest.sent()), always(accepted));
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
