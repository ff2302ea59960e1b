#include "platform/linux/curl_transport_cause.h"

#include "platform/linux/network_interfaces.h"

#include <cerrno>

namespace zelkovanta::platform::linux_host {

namespace {

TransportCause causeOfConnectFailure(CURL* easy, bool usesProxy) {
    if (usesProxy) {
        return TransportCause::proxyFailed;
    }
    long number = 0;
    curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &number);
    switch (number) {
        case ENETUNREACH:
        case EHOSTUNREACH:
        case ENETDOWN:
            return TransportCause::noNetwork;
        case ETIMEDOUT:
            return TransportCause::timedOut;
        default:
            return TransportCause::refused;
    }
}

}  // namespace

TransportCause transportCauseOf(CURLcode code, CURL* easy, bool usesProxy) {
    long proxyStatus = 0;
    curl_easy_getinfo(easy, CURLINFO_HTTP_CONNECTCODE, &proxyStatus);
    if (proxyStatus != 0 && (proxyStatus < 200 || proxyStatus > 299)) {
        return TransportCause::proxyFailed;
    }
    switch (code) {
        case CURLE_URL_MALFORMAT:
        case CURLE_COULDNT_RESOLVE_HOST:
            return hasNetwork() ? TransportCause::nameNotFound : TransportCause::noNetwork;
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_PROXY:
            return TransportCause::proxyFailed;
        case CURLE_COULDNT_CONNECT:
            return causeOfConnectFailure(easy, usesProxy);
        case CURLE_OPERATION_TIMEDOUT:
            return TransportCause::timedOut;
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_ISSUER_ERROR:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_INVALIDCERTSTATUS:
        case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
            return TransportCause::certificateRefused;
        case CURLE_FILESIZE_EXCEEDED:
            return TransportCause::tooLarge;
        case CURLE_WRITE_ERROR:           // more header than is taken
        case CURLE_UNSUPPORTED_PROTOCOL:  // an answer without a status line; other schemes never get this far
        case CURLE_WEIRD_SERVER_REPLY:
        case CURLE_BAD_CONTENT_ENCODING:
            return TransportCause::badServerResponse;
        case CURLE_ABORTED_BY_CALLBACK:
            return TransportCause::cancelled;
        default:
            return TransportCause::interrupted;
    }
}

}  // namespace zelkovanta::platform::linux_host
