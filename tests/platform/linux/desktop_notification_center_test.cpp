#include "tests/platform/linux/notification_daemon_on_bus.h"
#include "tests/platform/linux/notification_fixture.h"

#include <algorithm>
#include <random>
#include <set>
#include <utility>

#include <QDBusArgument>
#include <QDBusVariant>
#include <gmock/gmock.h>

namespace zelkovanta::platform::linux_host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::string a = "zelkovanta.signal.a";

/// The quirks of one of the eight.
DaemonQuirks quirksOf(const std::string& name) {
    for (auto& quirks : eightDaemons()) {
        if (quirks.name == name) {
            return quirks;
        }
    }
    return {};
}

QVariantMap hintsOf(const QDBusMessage& post) {
    return qdbus_cast<QVariantMap>(post.arguments().at(6));
}

struct DesktopNotificationCenterTest : NotificationTest {
    std::optional<NotificationDaemonOnBus> daemon;

    void beginWith(const DaemonQuirks& quirks) {
        daemon.emplace(quirks);
        begin();
    }
    NotificationRequest withSound(NotificationSound sound) {
        auto request = signalRequest("a");
        request.content.sound = std::move(sound);
        return request;
    }
};

TEST_F(DesktopNotificationCenterTest, aSignalIsShownWithItsButtonsAndStaysUntilItIsWithdrawn) {
    beginWith(quirksOf("dunst"));
    ASSERT_TRUE(addAndWait(signalRequest("a", "Room <3>", "5 > 3 & 2")));
    ASSERT_EQ(daemon->daemon.shown().size(), 1U);
    const auto& [number, shown] = *daemon->daemon.shown().begin();
    EXPECT_EQ(shown.title, "Room <3>");
    EXPECT_EQ(shown.body, "5 &gt; 3 &amp; 2");
    EXPECT_THAT(shown.actions, ElementsAre("default", "ZelkoVanta", "ONMYWAY", "On my way", "DONE", "Done"));
    const auto hints = hintsOf(daemon->posts[0]);
    EXPECT_EQ(hints["desktop-entry"].toString(), "com.zelkovanta.Desktop");
    EXPECT_EQ(hints["category"].toString(), "im.received");
    EXPECT_EQ(hints["urgency"].userType(), QMetaType::UChar);
    EXPECT_EQ(hints["urgency"].toInt(), 1);
    EXPECT_TRUE(hints["suppress-sound"].toBool());
    EXPECT_EQ(daemon->posts[0].arguments().at(7).toInt(), 0);
    EXPECT_THAT(delivered(), ElementsAre(a));
    EXPECT_THAT(pending(), IsEmpty());
    center->removeDeliveredNotifications({a});
    EXPECT_TRUE(runUntil([&] { return daemon->daemon.shown().empty(); }));
    EXPECT_THAT(delivered(), IsEmpty());
}

TEST_F(DesktopNotificationCenterTest, whatTheDaemonCannotDoIsNotAskedOfIt) {
    beginWith({.name = "plain", .capabilities = {"body"}});
    ASSERT_TRUE(addAndWait(signalRequest("a", "Room", "5 > 3 & 2")));
    EXPECT_EQ(daemon->daemon.shown().begin()->second.body, "5 > 3 & 2");
    EXPECT_THAT(daemon->daemon.shown().begin()->second.actions, IsEmpty());
}

TEST_F(DesktopNotificationCenterTest, noneLeavesTheScreenByItselfButForAList) {
    auto notice = signalRequest("b");
    notice.content.categoryIdentifier.clear();
    beginWith(quirksOf("GNOME Shell"));
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    ASSERT_TRUE(addAndWait(notice));
    EXPECT_EQ(daemon->posts[0].arguments().at(7).toInt(), -1);
    EXPECT_EQ(daemon->posts[1].arguments().at(7).toInt(), -1);
    daemon.emplace(DaemonQuirks{});
    ASSERT_TRUE(runUntil([&] { return daemon->posts.size() == 2; }));
    EXPECT_EQ(daemon->posts[0].arguments().at(7).toInt(), 0);
    EXPECT_EQ(daemon->posts[1].arguments().at(7).toInt(), 0);
}

TEST_F(DesktopNotificationCenterTest, theSameIdentifierReplacesItself) {
    beginWith({});
    ASSERT_TRUE(addAndWait(signalRequest("a", "first")));
    ASSERT_TRUE(addAndWait(signalRequest("a", "second")));
    ASSERT_EQ(daemon->daemon.shown().size(), 1U);
    EXPECT_EQ(daemon->daemon.shown().begin()->second.title, "second");
    EXPECT_EQ(daemon->posts[1].arguments().at(1).toUInt(), daemon->daemon.shown().begin()->first);
}

TEST_F(DesktopNotificationCenterTest, aPressedButtonIsTheDelegatesAndTakesTheNotificationAway) {
    beginWith(quirksOf("SwayNC"));
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    daemon->daemon.press(daemon->daemon.shown().begin()->first, "ONMYWAY");
    ASSERT_TRUE(runUntil([&] { return delegate->responses.size() == 1; }));
    EXPECT_EQ(delegate->responses[0].actionIdentifier, "ONMYWAY");
    EXPECT_EQ(*delegate->responses[0].request, signalRequest("a"));
    EXPECT_TRUE(runUntil([&] { return daemon->daemon.shown().empty(); }));
    EXPECT_THAT(raised, IsEmpty());
}

TEST_F(DesktopNotificationCenterTest, aClickOnTheBodyRaisesTheProgramWithTheDesktopsLeave) {
    beginWith({});
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    EXPECT_THAT(raised, IsEmpty());
    daemon->daemon.press(daemon->daemon.shown().begin()->first, "default");
    ASSERT_TRUE(runUntil([&] { return delegate->responses.size() == 1; }));
    EXPECT_THAT(raised, ElementsAre("token"));
    EXPECT_EQ(delegate->responses[0].actionIdentifier, "default");
}

TEST_F(DesktopNotificationCenterTest, nobodyButTheDaemonIsBelieved) {
    beginWith({});
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    const auto number = daemon->daemon.shown().begin()->first;
    auto forged =
        QDBusMessage::createSignal("/org/freedesktop/Notifications", "org.freedesktop.Notifications", "ActionInvoked");
    forged.setArguments({number, QStringLiteral("DONE")});
    QDBusConnection::sessionBus().send(forged);
    daemon->daemon.press(number, "ONMYWAY");
    ASSERT_TRUE(runUntil([&] { return !delegate->responses.empty(); }));
    EXPECT_EQ(delegate->responses[0].actionIdentifier, "ONMYWAY");
}

TEST_F(DesktopNotificationCenterTest, aClipIsPlayedOnceForEachRequestThatAsksForOne) {
    beginWith({});
    ASSERT_TRUE(addAndWait(withSound(SoundFile{"bell.caf"})));
    EXPECT_TRUE(runUntil([&] { return played() == "bell.caf\n"; }));
    daemon.emplace(DaemonQuirks{});
    EXPECT_TRUE(runUntil([&] { return daemon->daemon.shown().size() == 1; }));
    ASSERT_TRUE(addAndWait(signalRequest("b")));
    ASSERT_TRUE(addAndWait(withSound(DefaultSound{})));
    EXPECT_TRUE(runUntil([&] { return played() == "bell.caf\nchime.caf\n"; }));
}

TEST_F(DesktopNotificationCenterTest, theDaemonPlaysItsOwnSoundForMessagesWhereItHasOne) {
    beginWith({.name = "with sound", .capabilities = {"body", "sound"}});
    ASSERT_TRUE(addAndWait(withSound(DefaultSound{})));
    EXPECT_EQ(hintsOf(daemon->posts[0])["sound-name"].toString(), "message-new-instant");
    EXPECT_FALSE(hintsOf(daemon->posts[0]).contains("suppress-sound"));
    ASSERT_TRUE(addAndWait(withSound(SoundFile{"bell.caf"})));
    EXPECT_TRUE(runUntil([&] { return played() == "bell.caf\n"; }));
}

TEST_F(DesktopNotificationCenterTest, nothingIsHeardWhileThePersonWantsNoDisturbance) {
    beginWith({});
    daemon->isInhibited = true;
    ASSERT_TRUE(addAndWait(withSound(SoundFile{"bell.caf"})));
    ASSERT_TRUE(runUntil([&] { return daemon->silenceQuestions == 1; }));
    daemon->isInhibited = false;
    auto other = signalRequest("b");
    other.content.sound = SoundFile{"chime.caf"};
    ASSERT_TRUE(addAndWait(other));
    EXPECT_TRUE(runUntil([&] { return !played().empty(); }));
    EXPECT_EQ(played(), "chime.caf\n");
}

/// Xfce's settings, on a bus connection of their own.
struct XfceSettings final : QDBusVirtualObject {
    QDBusConnection bus{QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("xfce settings"))};
    bool isUndisturbed = true;
    int questions = 0;

    XfceSettings() {
        bus.registerVirtualObject(QStringLiteral("/org/xfce/Xfconf"), this);
        bus.registerService(QStringLiteral("org.xfce.Xfconf"));
    }
    ~XfceSettings() override {
        bus.unregisterObject(QStringLiteral("/org/xfce/Xfconf"));
        QDBusConnection::disconnectFromBus(bus.name());
    }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const QVariantList notifications{QStringLiteral("xfce4-notifyd"), QStringLiteral("/do-not-disturb")};
        if (message.member() != QStringLiteral("GetProperty") || message.arguments() != notifications) {
            return false;
        }
        ++questions;
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(isUndisturbed))));
    }
};

TEST_F(DesktopNotificationCenterTest, nothingIsHeardWhileXfceIsSetToNoDisturbance) {
    XfceSettings settings;
    beginWith({});
    ASSERT_TRUE(addAndWait(withSound(SoundFile{"bell.caf"})));
    ASSERT_TRUE(runUntil([&] { return settings.questions == 1; }));
    settings.isUndisturbed = false;
    auto other = signalRequest("b");
    other.content.sound = SoundFile{"chime.caf"};
    ASSERT_TRUE(addAndWait(other));
    EXPECT_TRUE(runUntil([&] { return !played().empty(); }));
    EXPECT_EQ(played(), "chime.caf\n");
}

TEST_F(DesktopNotificationCenterTest, aRestartedDaemonShowsWhatIsDueOnce) {
    beginWith({});
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    ASSERT_TRUE(addAndWait(signalRequest("b")));
    daemon->vanish();
    EXPECT_TRUE(runUntil([&] { return pending().size() == 2; }));
    center->removePendingRequests({a});
    daemon.emplace(DaemonQuirks{});
    EXPECT_TRUE(runUntil([&] { return delivered().size() == 1; }));
    EXPECT_EQ(daemon->posts.size(), 1U);
    EXPECT_EQ(daemon->posts[0].arguments().at(1).toUInt(), 0U);
    EXPECT_THAT(daemon->closings, IsEmpty());
}

TEST_F(DesktopNotificationCenterTest, withoutADaemonARequestWaitsForOne) {
    begin();
    ASSERT_TRUE(addAndWait(withSound(SoundFile{"chime.caf"})));
    EXPECT_THAT(pending(), ElementsAre(a));
    EXPECT_TRUE(runUntil([&] { return played() == "chime.caf\n"; }));
    daemon.emplace(DaemonQuirks{});
    EXPECT_TRUE(runUntil([&] { return delivered().size() == 1; }));
    EXPECT_EQ(played(), "chime.caf\n");
}

TEST_F(DesktopNotificationCenterTest, aDaemonThatNeverAnswersHoldsUpNobodyAndIsHeardLate) {
    beginWith({});
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    daemon->behaviour = NotificationDaemonOnBus::Behaviour::isSilent;
    ASSERT_TRUE(addAndWait(signalRequest("b")));
    EXPECT_THAT(pending(), ElementsAre("zelkovanta.signal.b"));
    center->removePendingRequests({"zelkovanta.signal.b"});
    daemon->answerNow();
    EXPECT_TRUE(runUntil([&] { return daemon->closings.size() == 1; }));
    EXPECT_EQ(daemon->daemon.shown().size(), 1U);
}

TEST_F(DesktopNotificationCenterTest, aDaemonThatRefusesIsAskedAgain) {
    beginWith({});
    daemon->behaviour = NotificationDaemonOnBus::Behaviour::refuses;
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    EXPECT_THAT(pending(), ElementsAre(a));
    daemon->behaviour = NotificationDaemonOnBus::Behaviour::answers;
    EXPECT_TRUE(runUntil([&] { return daemon->daemon.shown().size() == 1; }));
}

TEST_F(DesktopNotificationCenterTest, theNextRunWithdrawsWhatTheLastOneLeftAndNothingShownIsOnTheDisk) {
    beginWith({});
    ASSERT_TRUE(addAndWait(signalRequest("a", "Room of Mrs Smith", "Zebra note")));
    center.reset();
    EXPECT_EQ(daemon->daemon.shown().size(), 1U);
    EXPECT_THAT(kept(), HasSubstr(a));
    EXPECT_THAT(kept(), Not(HasSubstr("Smith")));
    EXPECT_THAT(kept(), Not(HasSubstr("Zebra")));
    begin();
    EXPECT_THAT(delivered(), ElementsAre(a));
    daemon->daemon.press(daemon->daemon.shown().begin()->first, "default");
    ASSERT_TRUE(runUntil([&] { return delegate->responses.size() == 1; }));
    EXPECT_EQ(delegate->responses[0].request->content.categoryIdentifier, "READY_SIGNAL");
    ASSERT_TRUE(addAndWait(signalRequest("b")));
    center.reset();
    begin();
    center->removeDeliveredNotifications({"zelkovanta.signal.b"});
    EXPECT_THAT(delivered(), Not(IsEmpty()));
    center->removeDeliveredNotifications({a, "zelkovanta.signal.b"});
    EXPECT_TRUE(runUntil([&] { return daemon->daemon.shown().empty(); }));
}

TEST_F(DesktopNotificationCenterTest, hostileTextsAreShownAndTheBusStaysConnected) {
    beginWith({.name = "any", .capabilities = {"actions", "body", "body-markup"}});
    std::mt19937 chance(4);
    const std::vector<std::string> pieces{
        "<b>",           "</b>", "&",       "&#0;",        "\xed\xa0\xbd",     "\xff", std::string(1, '\0'),
        "\u202E",        "\n",   "\x1b",    "\uFFFF",      "\xf4\x90\x80\x80", "]]>",  "€",
        "👩‍⚕️", "%s",   "\\u0000", "<img src=x>", "\u0001",           "a"};
    const auto upTo = [&](std::size_t end) { return std::uniform_int_distribution<std::size_t>{0, end - 1}(chance); };
    const auto text = [&] {
        std::string joined;
        for (std::size_t left = upTo(20); left > 0; --left) {
            joined += pieces[upTo(pieces.size())];
        }
        return joined;
    };
    constexpr int cases = 10'000;
    for (int number = 0; number < cases; ++number) {
        std::string body = text();
        if (number % 1000 == 0) {
            body.resize(std::size_t{1} << 20U, '<');
        }
        add(signalRequest(std::to_string(number % 50), text(), body));
        if (number % 100 == 99) {
            ASSERT_TRUE(runUntil([&] { return completed == number + 1; })) << number;
        }
    }
    EXPECT_TRUE(QDBusConnection::sessionBus().isConnected());
    EXPECT_EQ(delivered().size(), 50U);
    for (const auto& [number, shown] : daemon->daemon.shown()) {
        EXPECT_THAT(shown.body, Not(HasSubstr("<")));
        EXPECT_THAT(shown.title, Not(IsEmpty()));
    }
}

struct NotificationDaemonsTest : DesktopNotificationCenterTest, testing::WithParamInterface<DaemonQuirks> {};

TEST_P(NotificationDaemonsTest, onceTheBusIsQuietOnlyWhatIsOpenIsThereAndNothingElseWasClosed) {
    beginWith(GetParam());
    std::mt19937 chance(7);
    const auto upTo = [&](int end) { return std::uniform_int_distribution<int>{0, end - 1}(chance); };
    constexpr int operations = 500;
    std::set<std::string> open;
    std::vector<std::pair<std::string, std::string>> pressed;
    const auto randomNumber = [&](const std::vector<ledger::DaemonId>& numbers) {
        return numbers.empty() ? 0U : numbers[static_cast<std::size_t>(upTo(static_cast<int>(numbers.size())))];
    };
    const std::string us = QDBusConnection::sessionBus().baseService().toStdString();
    int titles = 0;
    for (int operation = 0; operation < operations; ++operation) {
        if (operation % 20 == 0) {
            ASSERT_TRUE(runUntil([&] { return completed == titles; }));
        }
        auto& fake = daemon->daemon;
        const auto number = randomNumber(fake.numbersOf(us));
        const std::string signal = std::to_string(upTo(6));
        switch (upTo(14)) {
            case 0:
            case 1:
            case 2:
                open.insert("zelkovanta.signal." + signal);
                add(signalRequest(signal, signal + "#" + std::to_string(++titles)));
                break;
            case 3:
                open.erase("zelkovanta.signal." + signal);
                center->removePendingRequests({"zelkovanta.signal." + signal});
                center->removeDeliveredNotifications({"zelkovanta.signal." + signal});
                break;
            case 4:
                if (number != 0) {
                    pressed.emplace_back(fake.shown().at(number).title, "DONE");
                    fake.press(number, "DONE");
                }
                break;
            case 5:
                fake.dismiss(number);
                break;
            case 6:
                fake.notify({.program = "others", .title = "mail", .body = std::to_string(operation), .actions = {}}, 0,
                            SteadyTime{} + std::chrono::hours{operation});
                break;
            default:
                QCoreApplication::processEvents();
        }
        if (upTo(200) == 0) {
            EXPECT_EQ(fake.foreignClosings(), 0);
            daemon.emplace(GetParam());
        }
    }
    ASSERT_TRUE(runUntil([&] { return completed == titles; }));
    ASSERT_TRUE(runUntil([&] { return pending().empty(); }));
    for (const auto& identifier : delivered()) {
        EXPECT_TRUE(open.contains(identifier)) << identifier;
    }
    const auto shownSignals = [&] {
        std::vector<std::string> names;
        for (const auto number : daemon->daemon.numbersOf(us)) {
            const std::string& title = daemon->daemon.shown().at(number).title;
            names.push_back("zelkovanta.signal." + title.substr(0, title.find('#')));
        }
        std::ranges::sort(names);
        return names;
    };
    // What is being withdrawn reaches the daemon a moment later.
    EXPECT_TRUE(runUntil([&] {
        const auto names = shownSignals();
        return std::ranges::adjacent_find(names) == names.end() && std::ranges::includes(open, names);
    })) << testing::PrintToString(shownSignals());
    EXPECT_EQ(daemon->daemon.foreignClosings(), 0);
    for (const auto& response : delegate->responses) {
        const auto found =
            std::ranges::find(pressed, std::pair{response.request->content.title, response.actionIdentifier});
        ASSERT_NE(found, pressed.end()) << response.request->content.title;
        pressed.erase(found);
    }
    EXPECT_FALSE(delegate->responses.empty());
}

std::string nameOf(const testing::TestParamInfo<DaemonQuirks>& daemon) {
    std::string name = daemon.param.name;
    std::erase(name, ' ');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Daemons, NotificationDaemonsTest, testing::ValuesIn(eightDaemons()), nameOf);

}  // namespace
}  // namespace zelkovanta::platform::linux_host
