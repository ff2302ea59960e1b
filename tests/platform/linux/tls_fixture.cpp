#include "tests/platform/linux/tls_fixture.h"

#include "platform/task.h"
#include "server/app_check_pinning.h"

#include <fstream>
#include <utility>

namespace zelkovanta::platform::linux_host {

using namespace std::chrono_literals;

CertificateChain makeChain(const std::string& name, Validity validity, const ChainKeys& keys) {
    CertificateChain chain;
    chain.root = makeAuthority(keys.root);
    chain.intermediate = makeIntermediate(chain.root, keys.intermediate);
    chain.leaf = makeServerCertificate(chain.intermediate, name, validity, keys.leaf);
    return chain;
}

ChallengeDisposition WitnessDelegate::answer(const AuthenticationChallenge& challenge) const {
    const auto disposition = answering_->answer(challenge);
    const std::scoped_lock lock(mutex_);
    answers_ += answers_.empty() ? "" : ", ";
    answers_ += challenge.method == AuthenticationMethod::clientCertificate ? "client certificate " : "";
    switch (disposition) {
        case ChallengeDisposition::performDefaultHandling:
            answers_ += "default";
            break;
        case ChallengeDisposition::useCredential:
            answers_ += "use";
            break;
        case ChallengeDisposition::cancel:
            answers_ += "cancel";
            break;
    }
    return disposition;
}

std::string WitnessDelegate::answers() const {
    const std::scoped_lock lock(mutex_);
    return answers_;
}

TlsTest::TlsTest() : settings{.certificateFile = folder.path() / "roots.pem"} {}

TlsTest::~TlsTest() {
    session.reset();
    if (loading) {
        loading->cancelAll();
    }
    network.runAndWait([]() -> Awaitable<void> { co_return; }, 10s);
}

void TlsTest::trust(const std::vector<TestCertificate>& roots) const {
    writeCertificates(roots, settings.certificateFile);
}

void TlsTest::pin(const std::string& text) const {
    writeInformation(R"({"ZVTPinnedSPKISHA256": ")" + text + "\"}");
}

void TlsTest::unpin() const {
    std::filesystem::remove(folder.path() / "Info.json");
}

void TlsTest::writeInformation(const std::string& json) const {
    std::ofstream(folder.path() / "Info.json") << json;
}

void TlsTest::openSession() {
    openSession(std::make_shared<server::AppCheckPinningDelegate>(information));
}

void TlsTest::openSession(std::shared_ptr<const UrlSessionDelegate> delegate) {
    if (!loading) {
        loading = std::make_unique<CurlUrlLoading>(network, settings);
    }
    witness = std::make_shared<WitnessDelegate>(std::move(delegate));
    session = loading->makeSession({.idleTimeout = 10s, .delegate = witness});
}

std::future<TlsTest::Result> TlsTest::begin(const std::string& url) {
    auto promise = std::make_shared<std::promise<Result>>();
    startTask(network.makeSerialQueue(), [asked = session, promise, url]() -> Awaitable<void> {
        const HttpRequest request{.method = "GET", .url = url};
        promise->set_value(co_await asked->perform(request));
    });
    return promise->get_future();
}

std::string TlsTest::shown(const Result& result) {
    if (result) {
        return result->status == 200 && result->body == "secret" ? "answered" : "answered something else";
    }
    return result.error().cause == TransportCause::certificateRefused
               ? "certificate refused"
               : "failed with cause " + std::to_string(static_cast<int>(result.error().cause));
}

}  // namespace zelkovanta::platform::linux_host
