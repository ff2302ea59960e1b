#include "office/memory_storage.h"
#include "office/office.h"
#include "store/settings.h"
#include "tests/support/store_fixture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <random>

#include <gtest/gtest.h>

/// Real stores against the real office's rules, each in a time of its own, where somebody claims what is not theirs.
namespace zelkovanta::store {
namespace {

using namespace std::chrono_literals;

class SeededBytes final : public office::RandomBytes {
public:
    void fill(std::span<std::byte> bytes) override {
        for (std::byte& byte : bytes) {
            byte = static_cast<std::byte>(engine_() >> 56U);
        }
    }

private:
    std::mt19937_64 engine_{7};
};

struct JoiningOfficeTest : testing::Test {
    office::MemoryStorage storage;
    SeededBytes random;
    std::unique_ptr<office::Office> desk;
    std::array<support::Computer, 2> computers;
    support::Computer& owner = computers[0];
    support::Computer& thief = computers[1];
    /// Until then requests reach the office, and connections find it.
    std::array<bool, 2> hasConnection{true, true};
    /// What the thief asks for in place of its own claim.
    std::string stolenPath;

    JoiningOfficeTest() {
        auto opened = office::Office::open(
            storage, random, [](std::string_view) { return std::string{"data:image/png;base64,aW1hZ2U="}; });
        desk = std::move(*opened);
        EXPECT_EQ(desk->addSample("harbour", now()).status, 200);
        for (std::size_t index = 0; index < computers.size(); ++index) {
            connect(index);
        }
    }

    office::WallTime now() const { return owner.clock.wallNow(); }

    void connect(std::size_t index) {
        support::Computer& computer = computers[index];
        computer.hostInfo.name = index == 0 ? "owner" : "thief";
        computer.urlLoading.setResponder([this, index](support::Computer::Exchange& exchange) {
            if (hasConnection[index]) {
                pass(index, exchange);
            }
        });
        computer.webSocketLoading.setServer([this, index](support::Computer::SocketTask& task) {
            if (!hasConnection[index]) {
                return;
            }
            const auto answer = desk->socketOpened(task.header("Authorization").value_or("").substr(7), now());
            if (answer.status == 101) {
                task.deliver(answer.frame);
            } else {
                task.fail({.closeCode = {}, .httpStatus = answer.status});
            }
        });
    }

    void pass(std::size_t index, support::Computer::Exchange& exchange) {
        const std::string& url = exchange.request.url;
        std::string path = url.substr(url.find("/api/"));
        if (index == 1 && !stolenPath.empty() && path.starts_with("/api/v1/pair/request/")) {
            path = stolenPath;
        }
        const auto bearer = exchange.header("Authorization");
        office::Answer answer = desk->handle({.method = exchange.request.method,
                                              .path = path,
                                              .token = bearer ? bearer->substr(7) : "",
                                              .body = exchange.request.body.value_or(""),
                                              .peer = computers[index].hostInfo.name},
                                             now());
        exchange.answer(answer.status, answer.body);
    }

    /// Both show a code, and the thief polls with the owner's claim from now on.
    void launchBoth() {
        owner.launchUnpaired();
        thief.launchUnpaired();
        advance(2s);
        for (const auto* exchange : owner.urlLoading.exchanges()) {
            const std::string& url = exchange->request.url;
            if (url.find("/pair/request/") != std::string::npos) {
                stolenPath = url.substr(url.find("/api/"));
            }
        }
        ASSERT_FALSE(stolenPath.empty());
        ASSERT_TRUE(owner.state().setupQrImage && thief.state().setupQrImage);
    }

    void advance(platform::Duration time) {
        for (platform::Duration passed{}; passed < time; passed += 100ms) {
            owner.loop.advance(100ms);
            thief.loop.advance(100ms);
        }
    }

    const std::string& requestOf(const std::string& name) const {
        for (const auto& [id, request] : desk->state().all<office::SetupRequest>()) {
            if (request.name == name && !request.deviceId) {
                return id;
            }
        }
        throw std::logic_error("nobody of this name waits");
    }

    int approve(const std::string& request) {
        office::Placement placement;
        placement.role = office::DeviceRole::shared;
        return desk->approve(request, placement, now()).status;
    }

    std::ptrdiff_t computersAtWork() const {
        return std::ranges::count_if(computers, [](const support::Computer& computer) {
            return computer.state().isPaired && computer.state().hasAuthenticatedSnapshot;
        });
    }
};

TEST_F(JoiningOfficeTest, aClaimThatTwoComputersPollWithLetsOneIn) {
    launchBoth();
    EXPECT_EQ(approve(requestOf("owner")), 200);
    advance(10s);
    EXPECT_EQ(computersAtWork(), 1);
    EXPECT_EQ(desk->state().all<office::Device>().size(), 1U);
    support::Computer& other = owner.state().isPaired ? thief : owner;
    EXPECT_FALSE(other.state().isPaired);
    EXPECT_EQ(other.keyStore.memory.peek(deviceTokenItem()), std::nullopt);

    // It does not stick: its next code is its own, and can be approved.
    stolenPath.clear();
    advance(271s);
    EXPECT_TRUE(other.state().setupQrImage);
    EXPECT_EQ(approve(requestOf(other.hostInfo.name)), 200);
    advance(4s);
    EXPECT_EQ(computersAtWork(), 2);
    EXPECT_EQ(desk->state().all<office::Device>().size(), 2U);
}

TEST_F(JoiningOfficeTest, aTokenThatWasCollectedAnewByAnotherComputerIsDead) {
    launchBoth();
    EXPECT_EQ(approve(requestOf("owner")), 200);
    // The thief collects the result and then cannot come in; meanwhile the owner collects it, too.
    hasConnection = {false, true};
    std::size_t polls = 0;
    thief.urlLoading.setResponder([this, &polls](support::Computer::Exchange& exchange) {
        if (exchange.request.url.find("/pair/request/") != std::string::npos && ++polls == 1) {
            pass(1, exchange);
        }
    });
    hasConnection[1] = false;
    advance(2s);
    ASSERT_TRUE(thief.state().isPaired);
    ASSERT_FALSE(thief.state().hasAuthenticatedSnapshot);
    hasConnection[0] = true;
    advance(20s);
    EXPECT_TRUE(owner.state().hasAuthenticatedSnapshot);

    connect(1);
    hasConnection[1] = true;
    advance(2min);
    EXPECT_FALSE(thief.state().isPaired);
    EXPECT_EQ(thief.keyStore.memory.peek(deviceTokenItem()), std::nullopt);
    EXPECT_EQ(computersAtWork(), 1);
    EXPECT_TRUE(owner.state().isPaired);
}

TEST_F(JoiningOfficeTest, anOfficeThatIsToldToApproveTwiceDoesItOnce) {
    launchBoth();
    stolenPath.clear();
    const std::string request = requestOf("owner");
    EXPECT_EQ(approve(request), 200);
    EXPECT_EQ(approve(request), 409);
    advance(5s);
    EXPECT_EQ(approve(request), 409);
    EXPECT_EQ(desk->state().all<office::Device>().size(), 1U);
    EXPECT_TRUE(owner.state().isPaired);
    EXPECT_FALSE(thief.state().isPaired);
}

}  // namespace
}  // namespace zelkovanta::store
