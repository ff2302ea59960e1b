#pragma once

#include "platform/linux/bundle_information.h"
#include "platform/linux/curl_url_session.h"
#include "platform/linux/network_thread.h"
#include "tests/platform/linux/test_certificates.h"
#include "tests/support/temporary_folder.h"

#include <expected>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {

/// An authority, one that acts for it, and a server's certificate of the latter.
struct CertificateChain {
    TestCertificate root;
    TestCertificate intermediate;
    TestCertificate leaf;

    /// As a server sends it: the client has the root.
    [[nodiscard]] std::vector<TestCertificate> sent() const { return {leaf, intermediate}; }
    [[nodiscard]] std::vector<TestCertificate> places() const { return {leaf, intermediate, root}; }
};

struct ChainKeys {
    KeyKind root = KeyKind::p256;
    KeyKind intermediate = KeyKind::p256;
    KeyKind leaf = KeyKind::p256;
};

[[nodiscard]] CertificateChain makeChain(const std::string& name = "localhost", Validity validity = Validity::current,
                                         const ChainKeys& keys = {});

/// Answers as another delegate does, and remembers it.
class WitnessDelegate final : public UrlSessionDelegate {
public:
    explicit WitnessDelegate(std::shared_ptr<const UrlSessionDelegate> answering) : answering_(std::move(answering)) {}

    [[nodiscard]] ChallengeDisposition answer(const AuthenticationChallenge& challenge) const override;
    /// The answers so far, in words.
    [[nodiscard]] std::string answers() const;

private:
    std::shared_ptr<const UrlSessionDelegate> answering_;
    mutable std::mutex mutex_;
    mutable std::string answers_;
};

/// Real sessions of this host, with the program's own delegate and its pin in a real Info.json.
class TlsTest : public testing::Test {
protected:
    using Result = std::expected<HttpResponse, TransportError>;

    TlsTest();
    ~TlsTest() override;

    /// The roots of this computer, from the next session on.
    void trust(const std::vector<TestCertificate>& roots) const;
    void pin(const std::string& text) const;
    /// None at all.
    void unpin() const;
    void writeInformation(const std::string& json) const;

    /// A session as a REST client has one, or with a delegate of the test's own.
    void openSession();
    void openSession(std::shared_ptr<const UrlSessionDelegate> delegate);

    std::future<Result> begin(const std::string& url);
    Result get(const std::string& url) { return begin(url).get(); }
    /// A result in words.
    [[nodiscard]] static std::string shown(const Result& result);

    NetworkThread network;
    support::TemporaryFolder folder;
    BundleInformation information{folder.path()};
    TransportSettings settings;
    std::unique_ptr<CurlUrlLoading> loading;
    std::shared_ptr<UrlSession> session;
    std::shared_ptr<WitnessDelegate> witness;
};

}  // namespace zelkovanta::platform::linux_host
