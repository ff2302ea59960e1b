#include "tests/simulation/exchange.h"

#include <algorithm>
#include <array>
#include <utility>

#include <boost/asio/post.hpp>

namespace zelkovanta::simulation {

using namespace std::chrono_literals;
using platform::HttpResponse;
using platform::TransportCause;
using platform::TransportError;

namespace {

constexpr std::array mishaps{Fault::requestLost,  Fault::replyLost,  Fault::exchangeReset,
                             Fault::refused401,   Fault::refused429, Fault::refused500,
                             Fault::garbageReply, Fault::cutReply,   Fault::slowReply};

constexpr std::string_view proxyPage = "<html><body>Bad gateway</body></html>";

std::string_view pathOf(std::string_view url) {
    const auto host = url.find("://") + 3;
    return url.substr(std::min(url.find('/', host), url.size()));
}

std::string tokenOf(const platform::HttpRequest& request) {
    for (const auto& header : request.headers) {
        if (header.name == "Authorization") {
            return header.value.substr(std::string_view{"Bearer "}.size());
        }
    }
    return {};
}

}  // namespace

Exchange::Exchange(NetworkPort& port, const platform::HttpRequest& request, platform::Duration idleLimit,
                   platform::Executor executor, Completion complete)
    : port_(port),
      request_{.method = request.method,
               .path = std::string{pathOf(request.url)},
               .token = tokenOf(request),
               .body = request.body.value_or(std::string{}),
               .peer = port.peer_},
      route_(routeOf(request_.method, request_.path)),
      session_(port.watch_.session()),
      deadline_(port.network_.loop.now() + idleLimit),
      executor_(std::move(executor)),
      complete_(std::move(complete)) {}

void Exchange::after(platform::Duration delay, void (Exchange::*step)()) {
    auto& loop = port_.network_.loop;
    loop.schedule(loop.now() + delay, [self = shared_from_this(), step] { (self.get()->*step)(); });
}

void Exchange::begin() {
    Network& network = port_.network_;
    network.trace.note(network.loop.now(), port_.computer_, request_.method, request_.path);
    port_.watch_.requestBegan(route_);
    if (port_.link_.path == Link::Path::down) {
        fail(TransportCause::noNetwork, 1ms);
        return;
    }
    mishap_ = network.mishap(port_.link_, mishaps);
    if (mishap_) {
        network.faults.add(*mishap_);
    }
    if (mishap_ == Fault::requestLost) {
        timeOut();
        return;
    }
    after(network.latency(port_.link_), &Exchange::arrive);
}

void Exchange::arrive() {
    Network& network = port_.network_;
    const Link& link = port_.link_;
    if (link.path == Link::Path::silent) {
        timeOut();
        return;
    }
    if (link.stalledUntil > network.loop.now()) {
        after(link.stalledUntil - network.loop.now() + network.latency(link), &Exchange::arrive);
        return;
    }
    if (mishap_ == Fault::refused401) {
        refuse(401, std::string{proxyPage});
    } else if (mishap_ == Fault::refused429) {
        refuse(429, R"({"error":"too_many_attempts"})");
    } else if (mishap_ == Fault::refused500) {
        refuse(500, std::string{proxyPage});
    } else if (mishap_ == Fault::garbageReply) {
        refuse(200, std::string{proxyPage});
    } else if (!network.office.isUp()) {
        fail(TransportCause::refused, network.latency(link));
    } else {
        office::Answer answer = network.office.handle(request_);
        if (mishap_ == Fault::replyLost) {
            timeOut();
            return;
        }
        if (mishap_ == Fault::exchangeReset) {
            fail(TransportCause::interrupted, network.latency(link));
            return;
        }
        if (mishap_ == Fault::cutReply) {
            answer.body.resize(network.chance.below(answer.body.size() + 1));
        }
        platform::Duration delay = network.latency(link);
        if (mishap_ == Fault::slowReply) {
            // It keeps moving, if only a little, so that the idle limit does not end it.
            delay = network.chance.between(500ms, 40s);
            deadline_ += delay;
        }
        comeBack(delay, {HttpResponse{.status = answer.status, .body = std::move(answer.body)},
                         network.office.sequence(), network.office.incarnation()});
    }
}

void Exchange::refuse(int status, std::string body) {
    comeBack(port_.network_.latency(port_.link_),
             {HttpResponse{.status = status, .body = std::move(body)}, 0, port_.network_.office.incarnation()});
}

void Exchange::comeBack(platform::Duration delay, Reply reply) {
    reply_ = std::move(reply);
    after(delay, &Exchange::handBack);
}

void Exchange::handBack() {
    Network& network = port_.network_;
    const Link& link = port_.link_;
    const auto now = network.loop.now();
    if (link.path == Link::Path::silent || now > deadline_) {
        timeOut();
        return;
    }
    if (link.path == Link::Path::open && link.stalledUntil > now) {
        after(std::min(link.stalledUntil, deadline_) - now + network.chance.between(1us, 1ms), &Exchange::handBack);
        return;
    }
    // An office that died meanwhile may have been writing still.
    const bool isBroken = link.path == Link::Path::down ||
                          (reply_.incarnation != network.office.incarnation() && network.chance.happens(0.5));
    if (isBroken) {
        fail(TransportCause::interrupted, 0ms);
    } else {
        finish();
    }
}

void Exchange::fail(TransportCause cause, platform::Duration delay) {
    reply_ = {std::unexpected(TransportError{cause}), 0, 0};
    after(delay, &Exchange::finish);
}

void Exchange::timeOut() {
    const auto now = port_.network_.loop.now();
    fail(TransportCause::timedOut, std::max(deadline_, now) - now);
}

void Exchange::finish() {
    const auto self = shared_from_this();
    std::erase(port_.exchanges_, self);
    if (!complete_) {
        return;
    }
    Network& network = port_.network_;
    Watch& watch = port_.watch_;
    Exchange::Result& result = reply_.result;
    const bool answered = result.has_value();
    const bool isCurrent = session_ == watch.session();
    if (!isCurrent) {
        if (std::string body = poison::body(route_); answered && !body.empty()) {
            network.faults.add(Fault::poisonedReply);
            result = HttpResponse{.status = 200, .body = std::move(body)};
        }
    } else {
        const bool succeeded = answered && result->status >= 200 && result->status <= 299 && reply_.sequence > 0 &&
                               mishap_ != Fault::cutReply;
        watch.replyHanded(route_, answered ? jsonText(result->body, "id") : std::string_view{}, reply_.sequence,
                          succeeded);
        if (route_ == Route::unlink && answered && (result->status <= 299 || result->status == 401)) {
            watch.setUnlinkAnswered(true);
        }
    }
    network.trace.note(network.loop.now(), port_.computer_, answered ? "reply" : "no reply",
                       answered ? std::string_view{result->body} : std::string_view{});
    boost::asio::post(executor_, [complete = std::exchange(complete_, nullptr), handed = std::move(result)]() mutable {
        complete(std::move(handed));
    });
}

}  // namespace zelkovanta::simulation
