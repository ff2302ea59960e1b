#include "benchmarks/results.h"
#include "platform/linux/bundle_information.h"
#include "platform/linux/tls_handshakes.h"
#include "platform/linux/url_parts.h"
#include "server/app_check_pinning.h"
#include "tests/platform/linux/tls_server.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <curl/curl.h>

namespace {

using namespace zelkovanta;
namespace host = platform::linux_host;

/// Milliseconds from the connection to the end of its TLS handshake, set up as a URL session does. None if it failed.
std::optional<double> timeOfHandshake(host::TlsHandshakes& handshakes, const host::UrlParts& server,
                                      const std::string& url) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy(curl_easy_init(), &curl_easy_cleanup);
    curl_easy_setopt(easy.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy.get(), CURLOPT_NOPROXY, "*");
    curl_easy_setopt(easy.get(), CURLOPT_CONNECT_ONLY, 1L);
    curl_off_t connected = 0;
    curl_off_t agreed = 0;
    if (!handshakes.setUp(easy.get(), server, std::nullopt) || curl_easy_perform(easy.get()) != CURLE_OK ||
        curl_easy_getinfo(easy.get(), CURLINFO_CONNECT_TIME_T, &connected) != CURLE_OK ||
        curl_easy_getinfo(easy.get(), CURLINFO_APPCONNECT_TIME_T, &agreed) != CURLE_OK) {
        return std::nullopt;
    }
    return static_cast<double>(agreed - connected) / 1000;
}

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

bool measure(std::size_t rounds, benchmarks::Results& results) {
    const support::TemporaryFolder folder;
    const host::TestCertificate root = host::makeAuthority();
    const host::TestCertificate intermediate = host::makeIntermediate(root);
    const host::TestCertificate leaf = host::makeServerCertificate(intermediate, "localhost");
    const host::TransportSettings settings{.certificateFile = folder.path() / "roots.pem"};
    host::writeCertificate(root, settings.certificateFile);
    std::ofstream(folder.path() / "Info.json") << R"({"CFBundleShortVersionString": "1.0.1", "CFBundleVersion": "1", )"
                                               << R"("ZVTPinnedSPKISHA256": ")" << host::pinOf(root) << "\"}";
    const host::TlsServer server({.chain = {leaf, intermediate}});
    const std::string url = server.url();
    const auto parts = host::parseUrl(url);

    // The pin of the root is the last that is looked at.
    const host::BundleInformation information(folder.path());
    host::TlsHandshakes pinned(settings, std::make_shared<server::AppCheckPinningDelegate>(information));
    host::TlsHandshakes unpinned(settings, nullptr);
    std::vector<double> withPin;
    std::vector<double> without;
    constexpr std::size_t warmUp = 10;
    for (std::size_t round = 0; round < rounds + warmUp; ++round) {
        // Each goes first every other time.
        for (const bool isPinned : {round % 2 == 0, round % 2 != 0}) {
            const auto time = timeOfHandshake(isPinned ? pinned : unpinned, *parts, url);
            if (!time) {
                std::cerr << "pin.handshake: a handshake " << (isPinned ? "with" : "without") << " a pin failed"
                          << std::endl;
                return false;
            }
            if (round >= warmUp) {
                (isPinned ? withPin : without).push_back(*time);
            }
        }
    }
    const double pinnedTime = medianOf(withPin);
    const double unpinnedTime = medianOf(without);
    results.add("pin.handshake", pinnedTime, "ms", "unpinned", unpinnedTime);
    results.add("pin.handshake.added", (pinnedTime - unpinnedTime) * 1000, "µs");
    return true;
}

}  // namespace

/// Arguments: the file of results, and how many handshakes of each kind.
int main(int count, char** arguments) {
    benchmarks::Results results(count > 1 ? arguments[1] : "");
    std::size_t rounds = 2000;
    if (count > 2) {
        const char* const text = arguments[2];
        if (std::from_chars(text, text + std::strlen(text), rounds).ec != std::errc{} || rounds == 0) {
            std::cerr << text << " is no number of handshakes" << std::endl;
            return 1;
        }
    }
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const bool measured = measure(rounds, results);
    curl_global_cleanup();
    return measured && results.write() ? 0 : 1;
}
