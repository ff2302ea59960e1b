#include "tests/server/web_socket_client_fixture.h"

#include <algorithm>
#include <ostream>
#include <rapidcheck.h>

#include <rapidcheck/gtest.h>

namespace zelkovanta::server {
namespace {

using namespace std::chrono_literals;

enum class Act : std::uint8_t {
    nothing,
    accept,
    speak,
    babble,
    breakOff,
    refuse,
    unauthorized,
    breakSending,
    stallSending,
    outliveCancellation,
    oldSocketSpeaks,
    oldSocketFails,
    holdMain,
    releaseMain,
    suspend,
};

struct Step {
    Act act = Act::nothing;
    int milliseconds = 0;
};

std::ostream& operator<<(std::ostream& out, const Step& step) {
    return out << "{act " << static_cast<int>(step.act) << ", then " << step.milliseconds << " ms}";
}

rc::Gen<Step> arbitraryStep() {
    return rc::gen::build<Step>(
        rc::gen::set(&Step::act, rc::gen::map(rc::gen::inRange(0, static_cast<int>(Act::suspend) + 1),
                                              [](int act) { return static_cast<Act>(act); })),
        rc::gen::set(&Step::milliseconds, rc::gen::oneOf(rc::gen::inRange(0, 200), rc::gen::inRange(0, 40'000))));
}

struct World : WebSocketClientTest {
    void TestBody() override {}

    void perform(Act act) {
        auto& socket = sockets.current();
        auto& old = *sockets.tasks()[sockets.tasks().size() / 2];
        switch (act) {
            case Act::nothing:
                break;
            case Act::accept:
                socket.accept();
                break;
            case Act::speak:
                socket.deliver(pong);
                break;
            case Act::babble:
                socket.deliver("{");
                break;
            case Act::breakOff:
                socket.fail({});
                break;
            case Act::refuse:
                socket.fail({.closeCode = {}, .httpStatus = 503});
                break;
            case Act::unauthorized:
                socket.fail({.closeCode = {}, .httpStatus = 401});
                break;
            case Act::breakSending:
                socket.breakSending();
                break;
            case Act::stallSending:
                socket.stallSending();
                break;
            case Act::outliveCancellation:
                socket.outliveCancellation();
                break;
            case Act::oldSocketSpeaks:
                old.deliver(pong);
                break;
            case Act::oldSocketFails:
                old.fail({.closeCode = {}, .httpStatus = {}});
                break;
            case Act::holdMain:
                main.setHeld(true);
                break;
            case Act::releaseMain:
                main.setHeld(false);
                break;
            case Act::suspend:
                main.setHeld(true);
                queue.setHeld(true);
                loop.advance(3min);
                main.setHeld(false);
                queue.setHeld(false);
                break;
        }
    }

    /// Sockets that the client has not given up.
    [[nodiscard]] auto kept() const {
        return std::ranges::count_if(sockets.tasks(), [](const auto& task) { return !task->cancelledWith(); });
    }
};

RC_GTEST_PROP(WebSocketClientProperties, whateverTheNetworkDoesTheClientComesBackAndStopsWhenTold, ()) {
    World world;
    world.start();
    for (const Step& step : *rc::gen::resize(200, rc::gen::container<std::vector<Step>>(arbitraryStep()))) {
        world.perform(step.act);
        world.loop.advance(std::chrono::milliseconds{step.milliseconds});
        RC_ASSERT(world.kept() <= 1);
        for (std::size_t index = 1; index < world.states.size(); ++index) {
            RC_ASSERT(world.states[index].second != world.states[index - 1].second);
        }
    }

    world.main.setHeld(false);
    world.sockets.setServer([](auto& task) { task.deliver(WebSocketClientTest::pong); });
    // The longest silence, the rest of a watchdog interval, and what the network holds back of it.
    world.loop.advance(75s + 5s);
    RC_ASSERT(world.lastState() == ConnectionState::connected);
    RC_ASSERT(world.kept() == 1);
    RC_ASSERT(world.messages.size() >= 1U);

    world.client->stop();
    world.loop.runReady();
    RC_ASSERT(world.lastState() == ConnectionState::stopped);
    RC_ASSERT(world.kept() == 0);
    const auto told = world.told.size();
    const auto made = world.sockets.tasks().size();
    world.perform(Act::oldSocketSpeaks);
    world.loop.advance(1h);
    RC_ASSERT(world.told.size() == told);
    RC_ASSERT(world.sockets.tasks().size() == made);
}

}  // namespace
}  // namespace zelkovanta::server
