#pragma once

#include "office/network_stream.h"
#include "office/office.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <boost/asio/bind_executor.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/websocket.hpp>

// Included by the server alone: Beast is heavy.
namespace zelkovanta::office {

/// One real-time connection, of a computer or of a console (whose device id is empty). What is sent before the
/// handshake is over waits for it. Keeps itself alive until it is closed, and then calls `gone` once.
class RealTimeChannel : public std::enable_shared_from_this<RealTimeChannel> {
public:
    using Frame = std::shared_ptr<const std::string>;
    using Gone = std::function<void(RealTimeChannel&)>;

    RealTimeChannel(NetworkStream stream, std::string deviceId, Gone gone)
        : socket_(std::move(stream)), deviceId_(std::move(deviceId)), gone_(std::move(gone)) {}

    [[nodiscard]] const std::string& deviceId() const { return deviceId_; }

    void accept(const boost::beast::http::request<boost::beast::http::string_body>& upgrade) {
        namespace websocket = boost::beast::websocket;
        socket_.set_option(websocket::stream_base::timeout{.handshake_timeout = std::chrono::seconds{15},
                                                           .idle_timeout = std::chrono::seconds{100},
                                                           .keep_alive_pings = true});
        socket_.read_message_max(longestInbound);
        socket_.auto_fragment(false);
        socket_.text(true);
        socket_.async_accept(upgrade, [self = shared_from_this()](boost::system::error_code error) {
            if (error) {
                self->leave();
                return;
            }
            self->open_ = true;
            self->read();
            self->proceed();
        });
    }

    void send(Frame frame) {
        if (left_ || closing_) {
            return;
        }
        queuedBytes_ += frame->size();
        queue_.push_back(std::move(frame));
        if (queue_.size() > mostQueuedFrames || queuedBytes_ > mostQueuedBytes) {
            // It reads too slowly. It comes back for a fresh snapshot.
            abandon();
            return;
        }
        proceed();
    }

    /// Says goodbye with this code. What is still queued is dropped, but for the frame that is on its way.
    void close(std::uint16_t code) {
        if (left_ || closing_) {
            return;
        }
        closing_ = true;
        closeCode_ = code;
        queue_.resize(writing_ ? 1 : 0);
        proceed();
    }

    void abandon() {
        boost::beast::get_lowest_layer(socket_).close();
        leave();
    }

private:
    static constexpr std::size_t longestInbound = 64 * 1024;
    static constexpr std::size_t mostQueuedFrames = 4096;
    static constexpr std::size_t mostQueuedBytes = 16U << 20U;

    void proceed() {
        if (!open_ || writing_ || left_) {
            return;
        }
        if (closing_) {
            writing_ = true;
            socket_.async_close(boost::beast::websocket::close_reason(closeCode_),
                                [self = shared_from_this()](boost::system::error_code) { self->abandon(); });
            return;
        }
        if (queue_.empty()) {
            return;
        }
        writing_ = true;
        socket_.async_write(boost::asio::buffer(*queue_.front()),
                            [self = shared_from_this()](boost::system::error_code error, std::size_t) {
                                self->writing_ = false;
                                if (error || self->left_) {
                                    self->leave();
                                    return;
                                }
                                self->queuedBytes_ -= self->queue_.front()->size();
                                self->queue_.pop_front();
                                self->proceed();
                            });
    }

    void read() {
        socket_.async_read(inbound_, [self = shared_from_this()](boost::system::error_code error, std::size_t) {
            if (error) {
                if (!self->closing_) {
                    self->leave();
                }
                return;
            }
            const auto bytes = self->inbound_.cdata();
            const std::string_view frame(static_cast<const char*>(bytes.data()), bytes.size());
            if (auto reply = Office::replyToFrame(frame)) {
                self->send(std::make_shared<const std::string>(std::move(*reply)));
            }
            self->inbound_.clear();
            self->read();
        });
    }

    void leave() {
        if (!std::exchange(left_, true)) {
            boost::beast::get_lowest_layer(socket_).close();
            gone_(*this);
        }
    }

    boost::beast::websocket::stream<NetworkStream> socket_;
    boost::beast::flat_buffer inbound_;
    std::string deviceId_;
    Gone gone_;
    std::deque<Frame> queue_;
    std::size_t queuedBytes_ = 0;
    std::uint16_t closeCode_ = 0;
    bool open_ = false;
    bool writing_ = false;
    bool closing_ = false;
    bool left_ = false;
};

}  // namespace zelkovanta::office
