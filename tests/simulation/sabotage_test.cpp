#include "tests/simulation/simulation.h"

#include <deque>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// A check that cannot fail proves nothing: here the client, or what it stands on, is broken on purpose.
namespace zelkovanta::simulation {
namespace {

using namespace std::chrono_literals;
using platform::WebSocketFailure;
using platform::WebSocketFrame;
using ::testing::AnyOf;
using ::testing::HasSubstr;

using Received = std::expected<WebSocketFrame, WebSocketFailure>;
/// What a socket hands over in place of one frame: none, it, or more.
using Meddler = std::function<std::vector<std::string>(std::string frame)>;

class MeddledTask final : public platform::WebSocketTask {
public:
    MeddledTask(std::shared_ptr<platform::WebSocketTask> task, Meddler& meddler)
        : task_(std::move(task)), meddler_(meddler) {}

    void resume() override { task_->resume(); }
    platform::Awaitable<Received> receive() override {
        while (frames_.empty()) {
            auto received = co_await task_->receive();
            if (!received) {
                co_return received;
            }
            for (std::string& frame : meddler_(std::move(received->payload))) {
                frames_.push_back(std::move(frame));
            }
        }
        WebSocketFrame frame{.kind = WebSocketFrame::Kind::text, .payload = std::move(frames_.front())};
        frames_.pop_front();
        co_return frame;
    }
    platform::Awaitable<bool> send(std::string text) override { return task_->send(std::move(text)); }
    void cancel(std::uint16_t closeCode) override { task_->cancel(closeCode); }

private:
    std::shared_ptr<platform::WebSocketTask> task_;
    Meddler& meddler_;
    std::deque<std::string> frames_;
};

class MeddledLoading final : public platform::WebSocketLoading {
public:
    MeddledLoading(platform::WebSocketLoading& loading, Meddler meddler)
        : loading_(loading), meddler_(std::move(meddler)) {}

    std::unique_ptr<platform::WebSocketSession> makeSession(platform::Executor executor) override {
        class Session final : public platform::WebSocketSession {
        public:
            Session(std::unique_ptr<platform::WebSocketSession> session, Meddler& meddler)
                : session_(std::move(session)), meddler_(meddler) {}
            std::shared_ptr<platform::WebSocketTask> makeTask(platform::WebSocketRequest request) override {
                return std::make_shared<MeddledTask>(session_->makeTask(std::move(request)), meddler_);
            }
            void invalidateAndCancel() override { session_->invalidateAndCancel(); }

        private:
            std::unique_ptr<platform::WebSocketSession> session_;
            Meddler& meddler_;
        };
        return std::make_unique<Session>(loading_.makeSession(std::move(executor)), meddler_);
    }

private:
    platform::WebSocketLoading& loading_;
    Meddler meddler_;
};

Sabotage meddling(const std::function<Meddler()>& makeMeddler) {
    Sabotage sabotage;
    sabotage.webSockets = [makeMeddler](platform::WebSocketLoading& loading) {
        return std::make_unique<MeddledLoading>(loading, makeMeddler());
    };
    return sabotage;
}

Scenario calm(std::uint64_t seed) {
    Scenario scenario = scenarioOf(seed);
    scenario.computers = 6;
    scenario.span = 30min;
    scenario.meanBetweenActions = 5s;
    scenario.meanBetweenMischiefs = 4min;
    scenario.roughness = 0;
    scenario.highestLatency = 50ms;
    return scenario;
}

std::string firstComplaint(const Sabotage& sabotage, std::uint64_t seeds = 10) {
    for (std::uint64_t seed = 1; seed <= seeds; ++seed) {
        const Report report = runScenario(calm(seed), sabotage);
        if (report.violation) {
            return report.violation->what;
        }
    }
    return "none";
}

TEST(Sabotage, withoutAnyNothingIsFound) {
    EXPECT_EQ(firstComplaint({}), "none");
}

TEST(Sabotage, aLostEventIsFound) {
    const auto complaint = firstComplaint(meddling([] {
        return [count = 0](std::string frame) mutable -> std::vector<std::string> {
            const bool isEvent = frame.starts_with(R"({"type":"signal.)");
            if (isEvent && ++count % 20 == 0) {
                return {};
            }
            return {std::move(frame)};
        };
    }));
    EXPECT_THAT(complaint, HasSubstr("differs from the office with nothing on its way: signals differ"));
}

TEST(Sabotage, aFrameThatComesAgainLateIsFound) {
    const auto complaint = firstComplaint(meddling([] {
        return [old = std::optional<std::string>{}](std::string frame) mutable -> std::vector<std::string> {
            std::vector<std::string> frames{frame};
            if (!old && frame.starts_with(R"({"type":"signal.created)")) {
                old = frame;
            } else if (old && frame == R"({"type":"pong"})") {
                frames.push_back(*std::exchange(old, std::nullopt));
            }
            return frames;
        };
    }));
    EXPECT_THAT(complaint, HasSubstr("signals differ: shows"));
}

TEST(Sabotage, aMessageOfTheOfficeBeforeAMoveIsFound) {
    const auto complaint = firstComplaint(meddling([] {
        return [rooms = std::optional<std::string>{}](std::string frame) mutable -> std::vector<std::string> {
            std::vector<std::string> frames{frame};
            if (!rooms && frame.starts_with(R"({"type":"rooms.updated)")) {
                rooms = frame;
            } else if (rooms && frame.starts_with(R"({"type":"snapshot)")) {
                frames.push_back(*rooms);
            }
            return frames;
        };
    }));
    EXPECT_THAT(complaint, AnyOf(HasSubstr("of another office"), HasSubstr("rooms differ")));
}

TEST(Sabotage, aFrameOfADeadSocketThatGetsThroughIsFound) {
    const auto complaint = firstComplaint(meddling([] {
        return [chance = Chance{1}](std::string frame) mutable -> std::vector<std::string> {
            std::vector<std::string> frames{std::move(frame)};
            if (chance.happens(0.01)) {
                frames.push_back(poison::frame(chance));
            }
            return frames;
        };
    }));
    EXPECT_THAT(complaint, HasSubstr("holds what came from a dead socket"));
}

TEST(Sabotage, aClientThatHearsNothingAnyMoreIsFound) {
    // Frames are swallowed for good after a while, so that it never counts as connected again.
    const auto complaint = firstComplaint(meddling([] {
        return [count = 0](std::string frame) mutable -> std::vector<std::string> {
            if (++count > 100) {
                return {};
            }
            return {std::move(frame)};
        };
    }));
    EXPECT_THAT(complaint, AnyOf(HasSubstr("is not connected long after the last fault"), HasSubstr("differs")));
}

TEST(Sabotage, anImpatientClientIsFound) {
    class HastyClock final : public platform::Clock {
    public:
        explicit HastyClock(platform::Clock& clock) : clock_(clock) {}
        platform::SteadyTime steadyNow() const override { return clock_.steadyNow(); }
        platform::WallTime wallNow() const override { return clock_.wallNow(); }
        platform::Timer callAfter(platform::Duration delay, platform::Executor executor,
                                  std::move_only_function<void()> call) override {
            return clock_.callAfter(delay / 4, std::move(executor), std::move(call));
        }

    private:
        platform::Clock& clock_;
    };
    Sabotage sabotage;
    sabotage.clock = [](platform::Clock& clock) { return std::make_unique<HastyClock>(clock); };
    EXPECT_THAT(firstComplaint(sabotage), HasSubstr("hammers"));
}

TEST(Sabotage, aForgottenTokenIsFound) {
    class ForgetfulKeyStore final : public platform::KeyStore {
    public:
        explicit ForgetfulKeyStore(platform::KeyStore& keyStore) : keyStore_(keyStore) {}
        platform::Awaitable<std::optional<std::string>> read(platform::KeyStoreItem item) override {
            const auto value = co_await keyStore_.read(std::move(item));
            ++reads_;
            co_return reads_ > 1 ? std::nullopt : value;
        }
        void write(platform::KeyStoreItem item, std::string value) override {
            keyStore_.write(std::move(item), std::move(value));
        }
        void remove(platform::KeyStoreItem item) override { keyStore_.remove(std::move(item)); }

    private:
        platform::KeyStore& keyStore_;
        int reads_ = 0;
    };
    Sabotage sabotage;
    sabotage.keyStore = [](platform::KeyStore& keyStore) { return std::make_unique<ForgetfulKeyStore>(keyStore); };
    EXPECT_THAT(firstComplaint(sabotage), HasSubstr("lost its pairing"));
}

TEST(Sabotage, aSignInThatOutlivesItsLoginIsFound) {
    class SameLogin final : public platform::HostInfo {
    public:
        explicit SameLogin(platform::HostInfo& host) : host_(host) {}
        std::string localizedName() const override { return host_.localizedName(); }
        std::string hardwareModel() const override { return host_.hardwareModel(); }
        std::string localeIdentifier() const override { return host_.localeIdentifier(); }
        double bootTime() const override { return 1'700'000'000; }
        std::string auditSessionId() const override { return "always the same"; }

    private:
        platform::HostInfo& host_;
    };
    Sabotage sabotage;
    sabotage.hostInfo = [](platform::HostInfo& host) { return std::make_unique<SameLogin>(host); };
    EXPECT_THAT(firstComplaint(sabotage), HasSubstr("a sign-in that was made in another login"));
}

TEST(Sabotage, aSignInThatOutlivesTheSettingOfTheClockIsFound) {
    class SameStart final : public platform::HostInfo {
    public:
        explicit SameStart(platform::HostInfo& host) : host_(host), start_(host.bootTime()) {}
        std::string localizedName() const override { return host_.localizedName(); }
        std::string hardwareModel() const override { return host_.hardwareModel(); }
        std::string localeIdentifier() const override { return host_.localeIdentifier(); }
        double bootTime() const override { return start_; }
        std::string auditSessionId() const override { return host_.auditSessionId(); }

    private:
        platform::HostInfo& host_;
        double start_;
    };
    Sabotage sabotage;
    sabotage.hostInfo = [](platform::HostInfo& host) { return std::make_unique<SameStart>(host); };
    EXPECT_THAT(firstComplaint(sabotage), HasSubstr("a sign-in from before its clock was set"));
}

/// A notification centre between the alerts and the real one.
class MeddledCenter : public platform::UserNotificationCenter {
public:
    explicit MeddledCenter(platform::UserNotificationCenter& center) : center_(center) {}

    void setDelegate(std::weak_ptr<platform::UserNotificationCenterDelegate> delegate) override {
        center_.setDelegate(std::move(delegate));
    }
    void setNotificationCategories(std::vector<platform::NotificationCategory> categories) override {
        center_.setNotificationCategories(std::move(categories));
    }
    void requestAuthorization(platform::AuthorizationOptions options,
                              Completion<platform::Authorization> completion) override {
        center_.requestAuthorization(options, std::move(completion));
    }
    void add(platform::NotificationRequest request, Completion<> completion) override {
        center_.add(std::move(request), std::move(completion));
    }
    void getPendingRequests(Completion<platform::NotificationRequests> completion) override {
        center_.getPendingRequests(std::move(completion));
    }
    void getDeliveredNotifications(Completion<platform::NotificationRequests> completion) override {
        center_.getDeliveredNotifications(std::move(completion));
    }
    void removePendingRequests(std::vector<std::string> identifiers) override {
        center_.removePendingRequests(std::move(identifiers));
    }
    void removeDeliveredNotifications(std::vector<std::string> identifiers) override {
        center_.removeDeliveredNotifications(std::move(identifiers));
    }

private:
    platform::UserNotificationCenter& center_;
};

template <class Center>
std::string firstComplaintWith() {
    Sabotage sabotage;
    sabotage.notifications = [](platform::UserNotificationCenter& center) { return std::make_unique<Center>(center); };
    return firstComplaint(sabotage);
}

TEST(Sabotage, aNotificationThatStaysTooLongIsFound) {
    class Clinging final : public MeddledCenter {
    public:
        using MeddledCenter::MeddledCenter;
        void removeDeliveredNotifications(std::vector<std::string> identifiers) override {
            if (++removals_ % 10 != 0) {
                MeddledCenter::removeDeliveredNotifications(std::move(identifiers));
            }
        }

    private:
        int removals_ = 0;
    };
    EXPECT_THAT(firstComplaintWith<Clinging>(), AnyOf(HasSubstr("which is over"), HasSubstr("who is not here")));
}

TEST(Sabotage, aNotificationThatIsTakenBackTooEarlyIsFound) {
    class Hasty final : public MeddledCenter {
    public:
        using MeddledCenter::MeddledCenter;
        void add(platform::NotificationRequest request, Completion<> completion) override {
            std::vector<std::string> identifiers{request.identifier};
            MeddledCenter::add(std::move(request), std::move(completion));
            if (++added_ % 10 == 0) {
                MeddledCenter::removePendingRequests(std::move(identifiers));
            }
        }

    private:
        int added_ = 0;
    };
    EXPECT_THAT(firstComplaintWith<Hasty>(), AnyOf(HasSubstr("alerts no more of"), HasSubstr("notices to the room")));
}

TEST(Sabotage, aNotificationThatNobodyAskedForIsFound) {
    class Haunted final : public MeddledCenter {
    public:
        using MeddledCenter::MeddledCenter;
        void removeDeliveredNotifications(std::vector<std::string> identifiers) override {
            platform::NotificationRequest ghost{.identifier = identifiers.front(), .content = {}};
            MeddledCenter::removeDeliveredNotifications(std::move(identifiers));
            ghost.identifier += "'s ghost";
            MeddledCenter::add(std::move(ghost), [] {});
        }
    };
    EXPECT_THAT(firstComplaintWith<Haunted>(), HasSubstr("which no event created"));
}

TEST(Sabotage, anOfficeThatKeepsNotEverythingIsFound) {
    class ForgetfulStorage final : public office::Storage {
    public:
        explicit ForgetfulStorage(office::Storage& storage) : storage_(storage) {}
        std::expected<office::State, office::StorageFailure> load() override { return storage_.load(); }
        std::expected<void, office::StorageFailure> commit(std::span<const office::Change> changes) override {
            if (++commits_ % 25 == 0) {
                return {};
            }
            return storage_.commit(changes);
        }

    private:
        office::Storage& storage_;
        int commits_ = 0;
    };
    Sabotage sabotage;
    sabotage.storage = [](office::Storage& storage) { return std::make_unique<ForgetfulStorage>(storage); };
    EXPECT_THAT(firstComplaint(sabotage), HasSubstr("does not hold what it held before"));
}

}  // namespace
}  // namespace zelkovanta::simulation
