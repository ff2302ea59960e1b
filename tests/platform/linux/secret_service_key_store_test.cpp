#include "platform/linux/secret_service_key_store.h"

#include "platform/linux/network_thread.h"
#include "platform/linux/qt_main_thread.h"
#include "platform/linux/secret_cipher.h"
#include "platform/task.h"
#include "tests/platform/linux/fake_secret_service.h"
#include "tests/platform/linux/qt_loop.h"

#include <chrono>
#include <optional>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QFile>
#include <QProcess>
#include <boost/asio/io_context.hpp>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;

const KeyStoreItem token{.service = "com.zelkovanta.macos", .account = "deviceToken"};
const KeyStoreItem otherProfilesToken{.service = "com.zelkovanta.macos.room-3", .account = "deviceToken"};

bool isServicePresent() {
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(QStringLiteral("org.freedesktop.secrets"));
}

struct SecretServiceKeyStoreTest : testing::Test {
    int count = 0;
    QCoreApplication application{count, nullptr};
    QtMainThread mainThread;
    NetworkThread workers;
    std::optional<SecretServiceKeyStore> store{std::in_place, mainThread.executor(), workers.makeWorkerQueue(), 10s};

    struct Reading {
        bool isDone = false;
        std::optional<std::string> value;
    };

    std::shared_ptr<Reading> beginRead(const KeyStoreItem& item) {
        auto reading = std::make_shared<Reading>();
        startTask(mainThread.executor(), [this, reading, item]() -> Awaitable<void> {
            reading->value = co_await store->read(item);
            reading->isDone = true;
        });
        return reading;
    }
    /// The reply to the call that shows it comes before the reply to a later call.
    static void waitUntilThePromptIsOpen() {
        const auto bus = QDBusConnection::sessionBus();
        QDBusPendingCallWatcher later(bus.asyncCall(QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
            QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("ReadAlias"))));
        EXPECT_TRUE(runUntil([&] { return later.isFinished(); }));
        QCoreApplication::processEvents();
    }
    std::string read(const KeyStoreItem& item) {
        const auto reading = beginRead(item);
        EXPECT_TRUE(runUntil([&] { return reading->isDone; }));
        return reading->value.value_or("no token");
    }
};

struct GnomeKeyringTest : SecretServiceKeyStoreTest {
    QProcess daemon;

    GnomeKeyringTest() { startDaemon(); }
    ~GnomeKeyringTest() override { stopDaemon(); }

    void startDaemon() {
        daemon.setProcessChannelMode(QProcess::MergedChannels);
        daemon.start(
            QStringLiteral("gnome-keyring-daemon"),
            {QStringLiteral("--unlock"), QStringLiteral("--components=secrets"), QStringLiteral("--foreground")});
        daemon.write("password");
        daemon.closeWriteChannel();
        EXPECT_TRUE(runUntil(isServicePresent)) << "gnome-keyring-daemon did not start";
    }
    void stopDaemon() {
        daemon.kill();
        daemon.waitForFinished();
        EXPECT_TRUE(runUntil([] { return !isServicePresent(); }));
    }

    static std::string lookUp(const KeyStoreItem& item) {
        QProcess tool;
        tool.start(QStringLiteral("secret-tool"),
                   {QStringLiteral("lookup"), QStringLiteral("service"), QString::fromStdString(item.service),
                    QStringLiteral("account"), QString::fromStdString(item.account)});
        EXPECT_TRUE(tool.waitForFinished());
        return tool.readAllStandardOutput().toStdString();
    }

    /// In any collection, locked or not.
    static int itemCount(const KeyStoreItem& item) {
        auto call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
            QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("SearchItems"));
        call.setArguments({QVariant::fromValue(
            QMap<QString, QString>{{QStringLiteral("service"), QString::fromStdString(item.service)},
                                   {QStringLiteral("account"), QString::fromStdString(item.account)}})});
        int found = 0;
        const auto lists = QDBusConnection::sessionBus().call(call).arguments();
        for (const auto& list : lists) {
            found += static_cast<int>(qdbus_cast<QList<QDBusObjectPath>>(list).size());
        }
        return found;
    }
};

TEST_F(GnomeKeyringTest, aTokenIsKeptReadUpdatedAndRemovedInTheOrderOfAsking) {
    store->remove(token);
    EXPECT_EQ(read(token), "no token");
    store->write(token, "first");
    store->write(token, "second");
    EXPECT_EQ(read(token), "second");
    EXPECT_EQ(lookUp(token), "second");
    store->remove(token);
    EXPECT_EQ(read(token), "no token");
    EXPECT_EQ(lookUp(token), "");
}

TEST_F(GnomeKeyringTest, profilesHaveTokensOfTheirOwn) {
    store->write(token, "plain");
    store->write(otherProfilesToken, "room");
    EXPECT_EQ(read(token), "plain");
    EXPECT_EQ(read(otherProfilesToken), "room");
    store->remove(otherProfilesToken);
    EXPECT_EQ(read(token), "plain");
    store->remove(token);
    EXPECT_EQ(read(token), "no token");
}

TEST_F(GnomeKeyringTest, anEmptyTokenIsNone) {
    store->write(token, "");
    EXPECT_EQ(read(token), "no token");
    store->remove(token);
    EXPECT_EQ(read(token), "no token");
}

TEST_F(GnomeKeyringTest, whatWasWrittenLastIsKeptWhenTheProgramEnds) {
    store->write(token, "kept");
    store->finishChanges(10s);
    store.reset();
    EXPECT_EQ(lookUp(token), "kept");
    store.emplace(mainThread.executor(), workers.makeWorkerQueue());
    store->remove(token);
    store->finishChanges(10s);
    EXPECT_EQ(lookUp(token), "");
}

TEST_F(GnomeKeyringTest, aTokenIsUpdatedWhereItIsWhenAnotherCollectionHasBecomeTheDefaultOne) {
    const auto becomesDefault = [](const char* collection) {
        auto call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
            QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("SetAlias"));
        call.setArguments({QStringLiteral("default"), QVariant::fromValue(QDBusObjectPath(collection))});
        EXPECT_EQ(QDBusConnection::sessionBus().call(call).type(), QDBusMessage::ReplyMessage);
    };
    store->write(token, "first");
    store->finishChanges(10s);
    becomesDefault("/org/freedesktop/secrets/collection/session");
    store->write(token, "second");
    EXPECT_EQ(read(token), "second");
    EXPECT_EQ(itemCount(token), 1);
    becomesDefault("/org/freedesktop/secrets/collection/login");
    EXPECT_EQ(read(token), "second");
    EXPECT_EQ(lookUp(token), "second");
    store->remove(token);
    EXPECT_EQ(read(token), "no token");
    EXPECT_EQ(itemCount(token), 0);
}

TEST_F(GnomeKeyringTest, theRealDaemonsLockHoldsTheTokenBackAndLosesNothing) {
    store->write(token, "behind the lock");
    store->finishChanges(10s);
    auto lock = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
        QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("Lock"));
    lock.setArguments({QVariant::fromValue(
        QList<QDBusObjectPath>{QDBusObjectPath(QStringLiteral("/org/freedesktop/secrets/collection/login"))})});
    ASSERT_EQ(QDBusConnection::sessionBus().call(lock).type(), QDBusMessage::ReplyMessage);
    // Nobody can be asked here, which the daemon takes for a refusal.
    EXPECT_EQ(read(token), "no token");
    stopDaemon();
    startDaemon();
    EXPECT_EQ(read(token), "behind the lock");
    store->remove(token);
    EXPECT_EQ(read(token), "no token");
}

TEST_F(SecretServiceKeyStoreTest, withoutAServiceThereIsNoTokenAndAWriteIsIgnored) {
    ASSERT_FALSE(isServicePresent());
    const auto start = std::chrono::steady_clock::now();
    store->write(token, "lost");
    EXPECT_EQ(read(token), "no token");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

TEST_F(SecretServiceKeyStoreTest, aServiceThatNeverAnswersIsGivenUpWhileTheLoopGoesOn) {
    const FakeSecretService fake(FakeSecretService::Behaviour::isSilent);
    store.emplace(mainThread.executor(), workers.makeWorkerQueue(), 200ms);
    int turns = 0;
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout, [&] { ++turns; });
    beat.start(10ms);
    EXPECT_EQ(read(token), "no token");
    EXPECT_GE(turns, 5);
}

TEST_F(SecretServiceKeyStoreTest, aServiceThatRefusesToEncryptOrTalksNonsenseKeepsNothing) {
    for (const auto behaviour :
         {FakeSecretService::Behaviour::knowsNoEncryption, FakeSecretService::Behaviour::givesNonsense}) {
        const FakeSecretService fake(behaviour, "secret");
        store->write(token, "x");
        EXPECT_EQ(read(token), "no token");
        EXPECT_EQ(std::ranges::count(fake.calls, "CreateItem") + std::ranges::count(fake.calls, "SetSecret"), 0);
    }
}

TEST_F(SecretServiceKeyStoreTest, aLockedServiceIsWaitedForUntilItIsUnlocked) {
    FakeSecretService fake(FakeSecretService::Behaviour::answers, "behind the lock");
    fake.isLocked = true;
    fake.isPromptSilent = true;
    // Waiting for the person has no limit, unlike waiting for an answer of the service.
    store.emplace(mainThread.executor(), workers.makeWorkerQueue(), 1s);
    const auto reading = beginRead(token);
    EXPECT_TRUE(runUntil([&] { return std::ranges::count(fake.calls, "Prompt") == 1; }));
    EXPECT_FALSE(runUntil([&] { return reading->isDone; }, 1500ms));
    fake.answerPrompt(false);
    EXPECT_TRUE(runUntil([&] { return reading->isDone; }));
    EXPECT_EQ(reading->value, "behind the lock");
}

TEST_F(SecretServiceKeyStoreTest, anAnswerThatComesBeforeThePromptsReplyIsNotMissed) {
    FakeSecretService fake(FakeSecretService::Behaviour::answers, "behind the lock");
    fake.isLocked = true;
    EXPECT_EQ(read(token), "behind the lock");
}

TEST_F(SecretServiceKeyStoreTest, aDeclinedPromptIsNoToken) {
    FakeSecretService fake(FakeSecretService::Behaviour::answers, "behind the lock");
    fake.isLocked = true;
    fake.isPromptDismissed = true;
    EXPECT_EQ(read(token), "no token");
    EXPECT_EQ(std::ranges::count(fake.calls, "GetSecret"), 0);
}

TEST_F(SecretServiceKeyStoreTest, aServiceThatGoesAwayBehindItsPromptEndsTheWait) {
    FakeSecretService fake(FakeSecretService::Behaviour::answers, "behind the lock");
    fake.isLocked = true;
    fake.isPromptSilent = true;
    const auto reading = beginRead(token);
    EXPECT_TRUE(runUntil([&] { return std::ranges::count(fake.calls, "Prompt") == 1; }));
    fake.vanish();
    EXPECT_TRUE(runUntil([&] { return reading->isDone; }));
    EXPECT_EQ(reading->value, std::nullopt);
}

TEST_F(SecretServiceKeyStoreTest, aReadThatIsStillWaitingEndsWithTheStore) {
    FakeSecretService fake(FakeSecretService::Behaviour::answers, "behind the lock");
    fake.isLocked = true;
    fake.isPromptSilent = true;
    const auto reading = beginRead(token);
    ASSERT_TRUE(runUntil([&] { return std::ranges::count(fake.calls, "Prompt") == 1; }));
    waitUntilThePromptIsOpen();
    store.reset();
    // The person answers after all, and nobody is there to hear it.
    fake.answerPrompt(false);
    EXPECT_TRUE(runUntil([&] { return reading.use_count() == 1; }, 5s)) << "the task that read is still there";
    EXPECT_FALSE(runUntil([&] { return reading->isDone; }, 100ms));
}

TEST_F(SecretServiceKeyStoreTest, aWriteWhosePromptIsOpenIsWaitedForAsLongAsIsAllowedAndThenEndsWithTheStore) {
    FakeSecretService fake(FakeSecretService::Behaviour::answers, "behind the lock");
    fake.isLocked = true;
    fake.isPromptSilent = true;
    store->write(token, "never");
    const auto reading = beginRead(token);
    ASSERT_TRUE(runUntil([&] { return std::ranges::count(fake.calls, "Prompt") == 1; }));
    waitUntilThePromptIsOpen();
    const auto start = std::chrono::steady_clock::now();
    store->finishChanges(200ms);
    const auto waited = std::chrono::steady_clock::now() - start;
    // A timer of the event loop may be early by a twentieth.
    EXPECT_GE(waited, 180ms);
    EXPECT_LT(waited, 5s);
    store.reset();
    EXPECT_TRUE(runUntil([&] { return reading.use_count() == 1; }, 5s)) << "the task that read is still there";
    fake.answerPrompt(false);
    EXPECT_FALSE(runUntil([&] { return reading->isDone; }, 100ms));
    EXPECT_EQ(std::ranges::count(fake.calls, "SetSecret"), 0);
}

TEST_F(SecretServiceKeyStoreTest, aWriteEndsTheWaitAtTheEndAsSoonAsThePersonAnswers) {
    FakeSecretService fake(FakeSecretService::Behaviour::answers, "old");
    fake.isLocked = true;
    fake.isPromptSilent = true;
    store->write(token, "new");
    ASSERT_TRUE(runUntil([&] { return std::ranges::count(fake.calls, "Prompt") == 1; }));
    QTimer::singleShot(0, &fake, [&] { fake.answerPrompt(false); });
    store->finishChanges(30s);
    EXPECT_EQ(std::ranges::count(fake.calls, "SetSecret"), 1);
    EXPECT_EQ(read(token), "new");
}

TEST_F(SecretServiceKeyStoreTest, aStoreThatEndsWhileItConnectsLetsGoOfWhoAsked) {
    const FakeSecretService fake(FakeSecretService::Behaviour::answers, "secret");
    boost::asio::io_context connecting;
    store.emplace(mainThread.executor(), connecting.get_executor(), 10s);
    const auto reading = beginRead(token);
    store->write(token, "never");
    // The read runs up to its wait for the bus, whose answer then finds no store.
    QCoreApplication::processEvents();
    store.reset();
    EXPECT_EQ(connecting.run(), 1U);
    EXPECT_TRUE(runUntil([&] { return reading.use_count() == 1; }, 5s)) << "the task that read is still there";
    EXPECT_FALSE(reading->isDone);
    EXPECT_EQ(fake.calls, std::vector<std::string>{});
}

TEST_F(SecretServiceKeyStoreTest, aStoreThatEndsWithAnAnswerOnItsWayAsksNothingMore) {
    const FakeSecretService fake(FakeSecretService::Behaviour::answers, "secret");
    const auto reading = beginRead(token);
    ASSERT_TRUE(runUntil([&] { return !fake.calls.empty(); }));
    store.reset();
    EXPECT_TRUE(runUntil([&] { return reading.use_count() == 1; }, 5s)) << "the task that read is still there";
    EXPECT_EQ(reading->value, std::nullopt);
    EXPECT_EQ(fake.calls, std::vector<std::string>{"OpenSession"});
}

TEST(SecretCipherTest, whatOneSideSealsTheOtherOpensAndNobodyElse) {
    SecretCipher one;
    SecretCipher other;
    SecretCipher third;
    ASSERT_TRUE(one.agree(other.publicKey()));
    ASSERT_TRUE(other.agree(one.publicKey()));
    ASSERT_TRUE(third.agree(one.publicKey()));
    for (const std::size_t size : {0U, 1U, 15U, 16U, 17U, 1000U}) {
        const std::string secret(size, 's');
        const auto sealed = one.seal(secret).value();
        EXPECT_EQ(other.open(sealed), secret);
        EXPECT_NE(third.open(sealed), std::optional{secret});
        EXPECT_EQ(sealed.value.find("ss"), std::string::npos);
    }
    EXPECT_EQ(other.open({.parameters = "short", .value = "x"}), std::nullopt);
}

TEST(SecretCipherTest, keysThatGiveTheSecretAwayAreRefused) {
    SecretCipher cipher;
    EXPECT_FALSE(cipher.agree(""));
    EXPECT_FALSE(cipher.agree(std::string(128, '\0')));
    EXPECT_FALSE(cipher.agree("\x01"));
    EXPECT_FALSE(cipher.agree(std::string(128, '\xff')));
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
