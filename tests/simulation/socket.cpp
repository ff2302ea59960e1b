#include "tests/simulation/socket.h"

#include <algorithm>
#include <array>
#include <utility>

#include <boost/asio/async_result.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::simulation {

namespace asio = boost::asio;
using namespace std::chrono_literals;
using platform::WebSocketFailure;

namespace {

constexpr std::array openingMishaps{Fault::upgrade401, Fault::upgrade429, Fault::upgrade500, Fault::upgradeGarbage,
                                    Fault::silentUpgrade};
constexpr std::array frameMishaps{Fault::frameCut, Fault::socketReset, Fault::socketClosed, Fault::halfOpen};
constexpr std::array pingMishaps{Fault::pingUnsent, Fault::halfOpen};

constexpr double deadSocketSpeaks = 0.2;
/// After this long without a ping the office gives a connection up.
constexpr auto officePatience = 90s;

OfficeFramePointer plainFrame(std::string text) {
    return std::make_shared<const OfficeFrame>(OfficeFrame{.text = std::move(text), .type = {}, .recordId = {}});
}

}  // namespace

Socket::Socket(NetworkPort& port, platform::WebSocketRequest request, platform::Executor executor)
    : port_(port), request_(std::move(request)), executor_(std::move(executor)), session_(port.watch_.session()) {}

void Socket::after(platform::Duration delay, void (Socket::*step)()) {
    auto& loop = port_.network_.loop;
    loop.schedule(loop.now() + delay, [self = shared_from_this(), step] { (self.get()->*step)(); });
}

// Opening.

void Socket::resume() {
    Network& network = port_.network_;
    network.trace.note(network.loop.now(), port_.computer_, "open");
    if (session_ == port_.watch_.session()) {
        port_.watch_.openingBegan();
    }
    if (port_.link_.path == Link::Path::down) {
        failOpening({}, 1ms);
        return;
    }
    after(2 * network.latency(port_.link_), &Socket::arriveAtOffice);
    after(request_.openingTimeout, &Socket::openingTimedOut);
}

void Socket::arriveAtOffice() {
    if (!isLive()) {
        return;
    }
    Network& network = port_.network_;
    const Link& link = port_.link_;
    if (link.path == Link::Path::silent) {
        return;  // The opening's time-out ends it.
    }
    if (link.stalledUntil > network.loop.now()) {
        after(link.stalledUntil - network.loop.now() + network.latency(link), &Socket::arriveAtOffice);
        return;
    }
    const auto mishap = network.mishap(link, openingMishaps);
    if (mishap) {
        network.faults.add(*mishap);
    }
    const auto delay = network.latency(link);
    if (mishap == Fault::upgrade401) {
        failOpening({.closeCode = {}, .httpStatus = 401}, delay);
    } else if (mishap == Fault::upgrade429) {
        failOpening({.closeCode = {}, .httpStatus = 429}, delay);
    } else if (mishap == Fault::upgrade500) {
        failOpening({.closeCode = {}, .httpStatus = 500}, delay);
    } else if (mishap == Fault::upgradeGarbage || !network.office.isUp()) {
        failOpening({}, delay);
    } else if (mishap == Fault::silentUpgrade) {
        isOpen_ = true;
        isHalfOpen_ = true;
        completeSend();
    } else {
        isOpenAtOffice_ = true;
        const std::string token = request_.headers.front().value.substr(std::string_view{"Bearer "}.size());
        const auto answer = network.office.open(token, shared_from_this());
        if (answer.status != 101) {
            isOpenAtOffice_ = false;
            failOpening({.closeCode = {}, .httpStatus = answer.status}, delay);
        }
    }
}

void Socket::failOpening(WebSocketFailure failure, platform::Duration delay) {
    openingFailure_ = failure;
    auto& loop = port_.network_.loop;
    loop.schedule(loop.now() + delay, [self = shared_from_this()] { self->end(self->openingFailure_); });
}

void Socket::openingTimedOut() {
    if (!isOpen_ && isLive()) {
        end({});
    }
}

// The office's end.

void Socket::send(OfficeFramePointer frame) {
    if (isOpenAtOffice_) {
        push(std::move(frame));
    }
}

void Socket::closeFromOffice(std::uint16_t code) {
    isOpenAtOffice_ = false;
    push(WebSocketFailure{.closeCode = code, .httpStatus = {}});
}

void Socket::officeDied() {
    isOpenAtOffice_ = false;
    Network& network = port_.network_;
    if (network.chance.happens(0.2)) {
        network.faults.add(Fault::halfOpen);
        makeHalfOpen();  // The machine went down without a word.
    } else {
        push(WebSocketFailure{});
    }
}

void Socket::leaveOffice() {
    if (std::exchange(isOpenAtOffice_, false)) {
        port_.network_.office.closed(*this);
    }
}

void Socket::pingArrives() {
    Network& network = port_.network_;
    const Link& link = port_.link_;
    if (isHalfOpen_ || link.path == Link::Path::silent || !isLive()) {
        return;
    }
    if (link.stalledUntil > network.loop.now()) {
        after(link.stalledUntil - network.loop.now() + network.latency(link), &Socket::pingArrives);
    } else if (!isOpenAtOffice_) {
        push(WebSocketFailure{});  // Nobody knows this connection there.
    } else {
        send(plainFrame(*office::Office::replyToFrame(R"({"type":"ping"})")));
    }
}

// On the way down.

void Socket::push(std::variant<OfficeFramePointer, WebSocketFailure> what) {
    if (isHalfOpen_ || !isLive()) {
        return;
    }
    Network& network = port_.network_;
    lastDue_ = std::max(lastDue_ + 1ns, network.loop.now() + network.latency(port_.link_));
    down_.push_back({lastDue_, std::move(what)});
    armPump();
}

void Socket::armPump() {
    if (pumpArmed_ || down_.empty()) {
        return;
    }
    pumpArmed_ = true;
    auto& loop = port_.network_.loop;
    loop.schedule(std::max(down_.front().due, loop.now()), [self = shared_from_this()] {
        self->pumpArmed_ = false;
        self->pump();
    });
}

void Socket::pump() {
    if (down_.empty()) {
        return;
    }
    Network& network = port_.network_;
    const Link& link = port_.link_;
    if (link.path != Link::Path::open) {
        network.faults.add(Fault::halfOpen);
        makeHalfOpen();
        return;
    }
    if (link.stalledUntil > network.loop.now()) {
        down_.front().due = link.stalledUntil + 1ns;
        lastDue_ = std::max(lastDue_, down_.front().due);
        armPump();
        return;
    }
    const InFlight next = std::move(down_.front());
    down_.pop_front();
    if (const auto* frame = std::get_if<OfficeFramePointer>(&next.what)) {
        reach(*frame);
    } else {
        end(std::get<WebSocketFailure>(next.what));
    }
    armPump();
}

void Socket::reach(const OfficeFramePointer& frame) {
    Network& network = port_.network_;
    if (const auto mishap = network.mishap(port_.link_, frameMishaps)) {
        network.faults.add(*mishap);
        switch (*mishap) {
            case Fault::frameCut: {
                leaveOffice();
                down_.clear();
                isOpen_ = true;
                auto piece = plainFrame(frame->text.substr(0, network.chance.below(frame->text.size())));
                inbox_.push_back(std::move(piece));
                down_.push_back({network.loop.now() + network.chance.between(0ms, 900ms), WebSocketFailure{}});
                completeSend();
                completeReceive();
                return;
            }
            case Fault::socketClosed:
                closeOnTheWay(network.chance.happens(0.5) ? 1001 : 1011);
                return;
            case Fault::halfOpen:
                makeHalfOpen();
                return;
            default:
                breakOff();
                return;
        }
    }
    if (!isLive()) {
        return;
    }
    isOpen_ = true;
    inbox_.push_back(frame);
    completeSend();
    completeReceive();
}

void Socket::breakOff() {
    leaveOffice();
    down_.clear();
    end({});
}

void Socket::closeOnTheWay(std::uint16_t code) {
    leaveOffice();
    down_.clear();
    end({.closeCode = code, .httpStatus = {}});
}

/// Neither end hears anything more of the other, and neither is told.
void Socket::makeHalfOpen() {
    isHalfOpen_ = true;
    down_.clear();
    after(officePatience, &Socket::leaveOffice);
}

// The computer's end.

platform::Awaitable<Socket::Received> Socket::receive() {
    co_return co_await asio::async_initiate<const asio::use_awaitable_t<platform::Executor>, void(Received)>(
        [this](auto handler) {
            receiving_ = std::move(handler);
            completeReceive();
        },
        asio::use_awaitable_t<platform::Executor>{});
}

platform::Awaitable<bool> Socket::send(std::string) {
    co_return co_await asio::async_initiate<const asio::use_awaitable_t<platform::Executor>, void(bool)>(
        [this](auto handler) {
            sending_ = std::move(handler);
            completeSend();
        },
        asio::use_awaitable_t<platform::Executor>{});
}

void Socket::completeSend() {
    if (!sending_ || (isLive() && !isOpen_)) {
        return;
    }
    Network& network = port_.network_;
    bool isSent = isLive();
    if (isSent && !isHalfOpen_) {
        const auto mishap = network.mishap(port_.link_, pingMishaps);
        if (mishap) {
            network.faults.add(*mishap);
        }
        if (mishap == Fault::pingUnsent) {
            isSent = false;
        } else if (mishap == Fault::halfOpen) {
            makeHalfOpen();
        } else {
            after(network.latency(port_.link_), &Socket::pingArrives);
        }
    }
    asio::post(executor_, [self = shared_from_this(), complete = std::exchange(sending_, nullptr), isSent]() mutable {
        if (!isSent) {
            self->countFailure();
        }
        complete(isSent);
    });
}

/// The client learns of the end, once, whether by its reading or by its ping; unless it has given the socket up before.
void Socket::countFailure() {
    if (!isCancelled_ && !std::exchange(isFailureCounted_, true) && session_ == port_.watch_.session()) {
        port_.watch_.openingFailed();
    }
}

void Socket::completeReceive() {
    if (!receiving_) {
        return;
    }
    if (!inbox_.empty()) {
        const OfficeFramePointer frame = std::move(inbox_.front());
        inbox_.pop_front();
        Network& network = port_.network_;
        std::string text = frame->text;
        if (session_ == port_.watch_.session()) {
            port_.watch_.frameHanded(*frame);
        } else {
            network.faults.add(Fault::poisonedFrame);
            text = poison::frame(network.chance);
        }
        network.trace.note(network.loop.now(), port_.computer_, "frame", text);
        handOver(platform::WebSocketFrame{.kind = platform::WebSocketFrame::Kind::text, .payload = std::move(text)});
    } else if (failure_) {
        handOver(std::unexpected{*failure_});
    }
}

void Socket::handOver(Received received) {
    asio::post(executor_, [self = shared_from_this(), complete = std::exchange(receiving_, nullptr),
                           received = std::move(received)]() mutable {
        if (!received) {
            self->countFailure();
        }
        complete(std::move(received));
    });
}

void Socket::end(WebSocketFailure failure) {
    if (!isLive()) {
        return;
    }
    Network& network = port_.network_;
    network.trace.note(network.loop.now(), port_.computer_, "socket ended");
    failure_ = failure;
    const auto self = shared_from_this();
    std::erase(port_.sockets_, self);
    completeReceive();
    completeSend();
}

void Socket::cancel(std::uint16_t) {
    if (isCancelled_) {
        return;
    }
    Network& network = port_.network_;
    const auto self = shared_from_this();
    isCancelled_ = true;
    inbox_.clear();
    down_.clear();
    std::erase(port_.sockets_, self);
    after(isHalfOpen_ || port_.link_.path != Link::Path::open ? platform::Duration{officePatience}
                                                              : network.latency(port_.link_),
          &Socket::leaveOffice);
    if (!failure_ && receiving_ && network.chance.happens(deadSocketSpeaks)) {
        // A frame that was being read when the socket was given up.
        network.faults.add(Fault::poisonedFrame);
        handOver(platform::WebSocketFrame{.kind = platform::WebSocketFrame::Kind::text,
                                          .payload = poison::frame(network.chance)});
    }
    failure_ = failure_.value_or(WebSocketFailure{});
    completeReceive();
    completeSend();
}

void Socket::letGo() {
    isCancelled_ = true;
    failure_ = WebSocketFailure{};
    inbox_.clear();
    down_.clear();
    const auto receiving = std::exchange(receiving_, nullptr);
    const auto sending = std::exchange(sending_, nullptr);
    after(port_.network_.latency(port_.link_), &Socket::leaveOffice);
}

bool Socket::isQuiet() const {
    return isOpenAtOffice_ && isOpen_ && isLive() && !isHalfOpen_ && down_.empty() && inbox_.empty();
}

}  // namespace zelkovanta::simulation
