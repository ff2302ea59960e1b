#include "tests/server/web_socket_client_fixture.h"

namespace zelkovanta::server {

std::shared_ptr<WebSocketClient> WebSocketClientTest::makeClient(const std::string& baseURL,
                                                                 platform::Executor mainExecutor) {
    auto made = WebSocketClient::make(records::Url::parse(baseURL).value(), "secret",
                                      {.webSocketLoading = sockets,
                                       .clock = clock,
                                       .random = random,
                                       .queue = queue.executor(),
                                       .main = std::move(mainExecutor)});
    made->onMessage = [this](ServerMessage message) {
        messages.push_back(std::move(message));
        told.emplace_back("message");
    };
    made->onStateChange = [this](ConnectionState state) {
        states.emplace_back(now(), state);
        told.push_back("state " + std::to_string(static_cast<int>(state)));
    };
    made->onRevoked = [this] {
        ++revocations;
        told.emplace_back("revoked");
    };
    made->onUpgradeUnauthorized = [this] {
        ++unauthorized;
        told.emplace_back("unauthorized");
    };
    return made;
}

void WebSocketClientTest::start() {
    client->start();
    loop.runReady();
}

void WebSocketClientTest::connect() {
    start();
    deliver(pong);
}

void WebSocketClientTest::deliver(const std::string& text) {
    sockets.current().deliver(text);
    loop.runReady();
}

void WebSocketClientTest::failCurrent(const platform::WebSocketFailure& failure) {
    sockets.current().fail(failure);
    loop.runReady();
}

}  // namespace zelkovanta::server
