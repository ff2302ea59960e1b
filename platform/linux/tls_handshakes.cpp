#include "platform/linux/tls_handshakes.h"

#include "platform/linux/url_parts.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace zelkovanta::platform::linux_host {

/// The way to a server, which tells whose handshake one is.
struct TlsHandshakes::Route {
    const UrlSessionDelegate& delegate;
    std::string server;
    std::string proxy;             ///< of one that speaks TLS itself and can be told from the server, empty otherwise
    bool isProxyNameless = false;  ///< its handshake asks for no name, and the server's does
};

namespace {

std::vector<PublicKeyDigest> publicKeysOf(const STACK_OF(X509) * chain) {
    std::vector<PublicKeyDigest> digests;
    for (int index = 0; index < sk_X509_num(chain); ++index) {
        unsigned char* encoded = nullptr;
        const int size = i2d_X509_PUBKEY(X509_get_X509_PUBKEY(sk_X509_value(chain, index)), &encoded);
        if (size <= 0) {
            continue;
        }
        PublicKeyDigest digest{};
        if (EVP_Digest(encoded, static_cast<std::size_t>(size), digest.data(), nullptr, EVP_sha256(), nullptr) == 1) {
            digests.push_back(digest);
        }
        OPENSSL_free(encoded);
    }
    return digests;
}

/// A host as a handshake asks for it: in lower case, without the dot of the root.
std::string nameToAskFor(std::string host) {
    std::ranges::transform(host, host.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    if (host.ends_with('.')) {
        host.pop_back();
    }
    return host;
}

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80U; });
}

/// Whether the library may take a host for an address, for which it asks no name. It reads "127.1" and "0x7f000001"
/// too; no top-level domain begins with a digit.
bool mayBeAddress(std::string_view host) {
    const std::string_view last = host.substr(host.rfind('.') + 1);
    return host.contains(':') || (!last.empty() && last.front() >= '0' && last.front() <= '9');
}

/// The name that a handshake asks for; empty for an address.
std::string_view nameAskedFor(const SSL* connection) {
    const char* const name = SSL_get_servername(connection, TLSEXT_NAMETYPE_host_name);
    return name != nullptr ? name : std::string_view{};
}

/// The library looks at the name again, but only once the handshake is over.
void expectName(X509_STORE_CTX* verification, std::string_view name, const std::string& address) {
    X509_VERIFY_PARAM* const expected = X509_STORE_CTX_get0_param(verification);
    if (name.empty()) {
        X509_VERIFY_PARAM_set1_ip_asc(expected, address.c_str());
    } else {
        X509_VERIFY_PARAM_set1_host(expected, name.data(), name.size());
    }
}

}  // namespace

TlsHandshakes::TlsHandshakes(const TransportSettings& settings, std::shared_ptr<const UrlSessionDelegate> delegate)
    : settings_(settings), delegate_(std::move(delegate)) {}

TlsHandshakes::~TlsHandshakes() = default;

bool TlsHandshakes::setUp(CURL* easy, const UrlParts& server, const std::optional<std::string>& proxy) {
    // An intermediate that is trusted by itself would end a chain below the root, and hide a pinned root.
    constexpr long options = CURLSSLOPT_NO_PARTIALCHAIN;
    constexpr long leastVersion = CURL_SSLVERSION_TLSv1_2;
    curl_easy_setopt(easy, CURLOPT_SSLVERSION, leastVersion);
    curl_easy_setopt(easy, CURLOPT_PROXY_SSLVERSION, leastVersion);
    curl_easy_setopt(easy, CURLOPT_SSL_OPTIONS, options);
    curl_easy_setopt(easy, CURLOPT_PROXY_SSL_OPTIONS, options);
    if (!settings_.certificateFile.empty() || !settings_.certificateFolder.empty()) {
        // The library has the system's file and folder built in. One that is named stands in place of both.
        const auto* const file = settings_.certificateFile.empty() ? nullptr : settings_.certificateFile.c_str();
        const auto* const folder = settings_.certificateFolder.empty() ? nullptr : settings_.certificateFolder.c_str();
        curl_easy_setopt(easy, CURLOPT_CAINFO, file);
        curl_easy_setopt(easy, CURLOPT_CAPATH, folder);
        curl_easy_setopt(easy, CURLOPT_PROXY_CAINFO, file);
        curl_easy_setopt(easy, CURLOPT_PROXY_CAPATH, folder);
    }
    if (!delegate_ || server.scheme != "https") {
        return true;
    }
    const auto proxyParts = proxy ? parseUrl(*proxy) : std::nullopt;
    const std::string name = nameToAskFor(server.host);
    std::string secureProxy = proxyParts && proxyParts->scheme == "https" ? nameToAskFor(proxyParts->host) : "";
    // Where both may ask for the same, both are shown: rather a proxy too many than a server too few. A name in other
    // letters is asked for in a spelling of the library's own.
    if (secureProxy == name || !isAscii(name) || (mayBeAddress(secureProxy) && mayBeAddress(name))) {
        secureProxy.clear();
    }
    const auto [found, isNew] =
        routes_.try_emplace({name, secureProxy}, Route{*delegate_, name, secureProxy, mayBeAddress(secureProxy)});
    curl_easy_setopt(easy, CURLOPT_SSL_SESSIONID_CACHE, 0L);
    return curl_easy_setopt(easy, CURLOPT_SSL_CTX_FUNCTION, &TlsHandshakes::prepareContext) == CURLE_OK &&
           curl_easy_setopt(easy, CURLOPT_SSL_CTX_DATA, &found->second) == CURLE_OK;
}

CURLcode TlsHandshakes::prepareContext(CURL*, void* context, void* route) {
    auto* const tls = static_cast<SSL_CTX*>(context);
    SSL_CTX_set_session_cache_mode(tls, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(tls, SSL_OP_NO_TICKET | SSL_OP_NO_RENEGOTIATION);

    const auto verify = [](X509_STORE_CTX* verification, void* argument) noexcept -> int {
        const auto& [delegate, server, proxy, isProxyNameless] = *static_cast<const Route*>(argument);
        const auto* const connection =
            static_cast<const SSL*>(X509_STORE_CTX_get_ex_data(verification, SSL_get_ex_data_X509_STORE_CTX_idx()));
        const std::string_view name = nameAskedFor(connection);
        if (!proxy.empty() && (name.empty() ? isProxyNameless : name == proxy)) {
            return X509_verify_cert(verification);
        }
        expectName(verification, name, server);
        ServerTrust trust{.isTrusted = X509_verify_cert(verification) == 1};
        if (trust.isTrusted) {
            trust.publicKeys = publicKeysOf(X509_STORE_CTX_get0_chain(verification));
        }
        const bool isTrusted = trust.isTrusted;
        const auto disposition =
            delegate.answer({.method = AuthenticationMethod::serverTrust, .serverTrust = std::move(trust)});
        if (isTrusted && disposition == ChallengeDisposition::cancel) {
            X509_STORE_CTX_set_error(verification, X509_V_ERR_APPLICATION_VERIFICATION);
        }
        return isTrusted && disposition != ChallengeDisposition::cancel ? 1 : 0;
    };
    SSL_CTX_set_cert_verify_callback(tls, verify, route);

    const auto present = [](SSL*, void* argument) noexcept -> int {
        const auto disposition = static_cast<const Route*>(argument)->delegate.answer(
            {.method = AuthenticationMethod::clientCertificate, .serverTrust = std::nullopt});
        // This computer has no certificate of its own: by default the handshake goes on without.
        return disposition == ChallengeDisposition::cancel ? 0 : 1;
    };
    SSL_CTX_set_cert_cb(tls, present, route);
    return CURLE_OK;
}

bool TlsHandshakes::stillConsents(CURL* easy) const {
    long connectionsMade = 0;
    curl_easy_getinfo(easy, CURLINFO_NUM_CONNECTS, &connectionsMade);
    if (!delegate_ || connectionsMade > 0) {
        return true;
    }
    const char* scheme = nullptr;
    curl_easy_getinfo(easy, CURLINFO_SCHEME, &scheme);
    if (scheme != nullptr && curl_strequal(scheme, "http") != 0) {
        return true;
    }
    const curl_tlssessioninfo* session = nullptr;
    curl_easy_getinfo(easy, CURLINFO_TLS_SSL_PTR, &session);
    if (session == nullptr || session->backend != CURLSSLBACKEND_OPENSSL || session->internals == nullptr) {
        return false;
    }
    const auto* const connection = static_cast<const SSL*>(session->internals);
    const STACK_OF(X509)* const chain = SSL_get0_verified_chain(connection);
    ServerTrust trust{.isTrusted = chain != nullptr && SSL_get_verify_result(connection) == X509_V_OK};
    if (trust.isTrusted) {
        trust.publicKeys = publicKeysOf(chain);
    }
    return delegate_->answer({.method = AuthenticationMethod::serverTrust, .serverTrust = std::move(trust)}) !=
           ChallengeDisposition::cancel;
}

}  // namespace zelkovanta::platform::linux_host
