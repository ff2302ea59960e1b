#include "office/control.h"

#include "office/certificate.h"
#include "office/host.h"
#include "office/json_text.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <ostream>
#include <sys/socket.h>
#include <sys/time.h>
#include <tuple>

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/json.hpp>

namespace zelkovanta::office {
namespace {

namespace asio = boost::asio;
namespace ssl = boost::asio::ssl;
namespace json = boost::json;
using asio::ip::tcp;

template <class T>
using Result = std::expected<T, std::string>;
using Fault = std::unexpected<std::string>;

constexpr std::chrono::milliseconds askAgainAfter{150};
constexpr std::chrono::seconds longestWait{15};

struct Place {
    std::string url;
    std::string host;
    std::string port;
    std::string adminToken;
    bool encrypted = false;
    std::string certificateDigest;  ///< empty: what the host's authorities say counts
};

Result<Place> placeOf(const Whereabouts& office) {
    Place place;
    if (office.server) {
        place.url = *office.server;
    } else {
        const auto lines = readLines(addressFileOf(*office.database));
        if (!lines || lines->empty()) {
            return Fault("No office runs on " + office.database->string() + ".");
        }
        place.url = lines->front();
        place.certificateDigest = lines->size() > 1 ? (*lines)[1] : std::string();
    }
    const auto token = readLine(office.adminTokenFile ? *office.adminTokenFile : adminTokenFileOf(*office.database));
    if (!token) {
        return Fault(token.error());
    }
    place.adminToken = *token;

    std::string_view rest = place.url;
    place.encrypted = rest.starts_with("https://");
    if (!place.encrypted && !rest.starts_with("http://")) {
        return Fault("\"" + place.url + "\" is no http address.");
    }
    rest.remove_prefix(rest.find("//") + 2);
    rest = rest.substr(0, rest.find('/'));
    const auto colon = rest.rfind(':');
    place.host = rest.substr(0, colon);
    place.port =
        colon == std::string_view::npos ? (place.encrypted ? "443" : "80") : std::string(rest.substr(colon + 1));
    if (place.host.starts_with('[') && place.host.ends_with(']')) {
        place.host = place.host.substr(1, place.host.size() - 2);
    }
    return place;
}

struct Reply {
    int status = 0;
    std::string body;
};

constexpr auto awaited = asio::as_tuple(asio::use_awaitable);

/// Sends the request and reads what comes until the office closes the connection.
template <class Stream>
asio::awaitable<boost::system::error_code> askOver(Stream& stream, const std::string& request, std::string& answer) {
    auto [error, count] = co_await asio::async_write(stream, asio::buffer(request), awaited);
    if (!error) {
        std::tie(error, count) = co_await asio::async_read(stream, asio::dynamic_buffer(answer), awaited);
    }
    co_return error == asio::error::eof ? boost::system::error_code() : error;
}

/// The same on a connection of its own.
asio::awaitable<boost::system::error_code> converse(const Place& place, const std::string& request,
                                                    std::string& answer) {
    const auto executor = co_await asio::this_coro::executor;
    tcp::resolver resolver(executor);
    auto [error, endpoints] = co_await resolver.async_resolve(place.host, place.port, awaited);
    if (error) {
        co_return error;
    }
    tcp::socket socket(executor);
    std::tie(error, std::ignore) = co_await asio::async_connect(socket, endpoints, awaited);
    if (error) {
        co_return error;
    }
    if (!place.encrypted) {
        co_return co_await askOver(socket, request, answer);
    }
    ssl::context context(ssl::context::tls_client);
    context.set_default_verify_paths(error);
    ssl::stream<tcp::socket> stream(std::move(socket), context);
    if (place.certificateDigest.empty()) {
        stream.set_verify_mode(ssl::verify_peer);
        stream.set_verify_callback(ssl::host_name_verification(place.host));
    }
    std::tie(error) = co_await stream.async_handshake(ssl::stream_base::client, awaited);
    if (!error && !place.certificateDigest.empty() && digestOfPeer(stream.native_handle()) != place.certificateDigest) {
        error = asio::error::access_denied;
    }
    if (error) {
        co_return error;
    }
    co_return co_await askOver(stream, request, answer);
}

Result<Reply> exchange(const Place& place, const Control& order) {
    const std::string request = order.method + " " + order.path + " HTTP/1.1\r\nHost: " + place.host +
                                "\r\nAuthorization: Bearer " + place.adminToken +
                                "\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: " +
                                std::to_string(order.body.size()) + "\r\n\r\n" + order.body;
    std::string answer;
    boost::system::error_code result = asio::error::timed_out;
    asio::io_context context;
    asio::co_spawn(context, converse(place, request, answer),
                   [&result](const std::exception_ptr&, boost::system::error_code error) { result = error; });
    context.run_for(longestWait);
    if (result) {
        return Fault("The office at " + place.url + " does not answer: " + result.message() + ".");
    }

    constexpr std::string_view version = "HTTP/1.1 ";
    const auto headerEnd = answer.find("\r\n\r\n");
    Reply reply;
    if (!answer.starts_with(version) || headerEnd == std::string::npos ||
        std::from_chars(answer.data() + version.size(), answer.data() + answer.size(), reply.status).ec !=
            std::errc()) {
        return Fault("What answers at " + place.url + " is no office.");
    }
    reply.body = answer.substr(headerEnd + 4);
    return reply;
}

/// The answer's content, or the office's sentence why there is none.
Result<json::value> ask(const Control& order, std::string* text = nullptr) {
    const auto place = placeOf(order.office);
    if (!place) {
        return Fault(place.error());
    }
    const auto reply = exchange(*place, order);
    if (!reply) {
        return Fault(reply.error());
    }
    boost::system::error_code error;
    json::value content = json::parse(reply->body, error);
    if (error || !content.is_object()) {
        return Fault("What answers at " + place->url + " is no office.");
    }
    if (reply->status < 200 || reply->status > 299) {
        const json::object& envelope = content.get_object();
        if (const json::value* message = envelope.if_contains("message"); message != nullptr && message->is_string()) {
            return Fault(std::string(message->get_string()));
        }
        return Fault("What answers at " + place->url + " is no office.");
    }
    if (text != nullptr) {
        *text = reply->body;
    }
    return content;
}

std::string textAt(const json::value& content, std::string_view key) {
    const json::value* found = &content;
    while (found != nullptr && !key.empty()) {
        const auto dot = key.find('.');
        const std::string_view step = key.substr(0, dot);
        key = dot == std::string_view::npos ? std::string_view() : key.substr(dot + 1);
        const json::object* object = found->if_object();
        found = object == nullptr ? nullptr : object->if_contains(json::string_view(step));
    }
    return found != nullptr && found->is_string() ? std::string(found->get_string()) : std::string();
}

const json::array* waitingIn(const json::value& content) {
    const json::value* waiting = content.get_object().if_contains("waiting");
    return waiting == nullptr ? nullptr : waiting->if_array();
}

int failed(std::ostream& errors, const std::string& sentence) {
    errors << sentence << "\n";
    return 1;
}

}  // namespace

int control(const Control& order, std::ostream& output, std::ostream& errors) {
    std::string text;
    const auto content = ask(order, &text);
    if (!content) {
        return failed(errors, content.error());
    }
    const json::array* waiting = order.path.ends_with("/waiting") ? waitingIn(*content) : nullptr;
    if (waiting != nullptr) {
        for (const json::value& each : *waiting) {
            output << textAt(each, "request") << '\t' << textAt(each, "name") << '\t' << textAt(each, "createdAt")
                   << '\n';
        }
    } else if (order.print.empty()) {
        output << text << '\n';
    } else if (order.print != "-") {
        output << textAt(*content, order.print) << '\n';
    }
    output.flush();
    return 0;
}

int approve(const Approve& order, std::ostream& output, std::ostream& errors) {
    const Control look{
        .office = order.order.office, .method = "GET", .path = "/admin/v1/waiting", .body = {}, .print = {}};
    asio::io_context context;
    const auto deadline = asio::steady_timer::clock_type::now() + order.wait;
    std::string request;
    for (;;) {
        const auto content = ask(look);
        const json::array* waiting = content ? waitingIn(*content) : nullptr;
        for (const json::value& each : waiting == nullptr ? json::array() : *waiting) {
            if (!order.request || *order.request == textAt(each, "request") || *order.request == textAt(each, "name")) {
                request = textAt(each, "request");
                break;
            }
        }
        if (!request.empty()) {
            break;
        }
        if (asio::steady_timer::clock_type::now() + askAgainAfter > deadline) {
            return failed(errors, !content         ? content.error()
                                  : !order.request ? "No computer waits to be set up."
                                                   : "No computer \"" + *order.request + "\" waits to be set up.");
        }
        asio::steady_timer(context, askAgainAfter).wait();
    }

    Control approval = order.order;
    const std::string field = JsonText().object().field("request", request).take();
    approval.body = field + (approval.body == "{}" ? "}" : "," + approval.body.substr(1));
    return control(approval, output, errors);
}

}  // namespace zelkovanta::office
