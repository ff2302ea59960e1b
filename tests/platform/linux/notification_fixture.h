#pragma once

#include "platform/linux/boottime_clock.h"
#include "platform/linux/desktop_notification_center.h"
#include "platform/linux/network_thread.h"
#include "platform/linux/qt_main_thread.h"
#include "tests/platform/linux/qt_loop.h"
#include "tests/support/temporary_folder.h"

#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {

inline NotificationRequest signalRequest(const std::string& signal, const std::string& title = "Room 3 · Ready",
                                         const std::string& body = "Alice") {
    NotificationRequest request;
    request.identifier = "zelkovanta.signal." + signal;
    request.content = {.title = title,
                       .body = body,
                       .sound = std::nullopt,
                       .threadIdentifier = "r3",
                       .categoryIdentifier = "READY_SIGNAL",
                       .userInfo = {{"signalId", signal}, {"memberId", "alice"}}};
    return request;
}

/// A notification centre on the test's own bus; clips are "played" by a script that notes their names.
struct NotificationTest : testing::Test {
    struct Delegate final : UserNotificationCenterDelegate {
        std::vector<NotificationResponse> responses;
        PresentationOptions willPresent(const NotificationRequest&) override {
            return {.banner = true, .list = true, .sound = true};
        }
        void didReceive(NotificationResponse response, Completion completion) override {
            responses.push_back(std::move(response));
            completion();
        }
    };

    int count = 0;
    QCoreApplication application{count, nullptr};
    LastDeletions lastDeletions;
    support::TemporaryFolder folder;
    QtMainThread mainThread;
    NetworkThread network;
    BoottimeClock clock{network.context()};
    std::shared_ptr<Delegate> delegate = std::make_shared<Delegate>();
    std::vector<std::string> raised;
    int completed = 0;
    std::optional<DesktopNotificationCenter> center;

    NotificationTest() {
        std::filesystem::create_directory(folder.path() / "sounds");
        for (const auto* const clip : {"chime.caf", "bell.caf"}) {
            std::ofstream(folder.path() / "sounds" / clip) << "clip";
        }
    }
    ~NotificationTest() override {
        center.reset();
        network.stop();
        mainThread.end();
    }

    void begin() {
        center.emplace(
            DesktopNotificationCenter::Settings{
                .file = folder.path() / "state" / "notifications.json",
                .sounds = folder.path() / "sounds",
                .players = {{QStringLiteral("/bin/sh"),
                             {QStringLiteral("-c"), QStringLiteral("basename \"$1\" >>\"$0\""),
                              QString::fromStdString((folder.path() / "played").string())}}}},
            clock, mainThread.executor(), network.makeWorkerQueue(), network.makeWorkerQueue());
        center->setDelegate(delegate);
        center->setNotificationCategories({{"READY_SIGNAL", {{"ONMYWAY", "On my way"}, {"DONE", "Done"}}}});
        center->setRaiseHandler([this](const std::string& token) { raised.push_back(token); });
    }

    void add(NotificationRequest request) {
        center->add(std::move(request), [this] { ++completed; });
    }
    [[nodiscard]] bool addAndWait(NotificationRequest request) {
        const int before = completed;
        add(std::move(request));
        return runUntil([&] { return completed > before; });
    }

    using List = void (UserNotificationCenter::*)(UserNotificationCenter::Completion<NotificationRequests>);
    std::vector<std::string> listed(List list) {
        std::optional<std::vector<std::string>> identifiers;
        ((*center).*list)([&](const NotificationRequests& requests) {
            identifiers.emplace();
            for (const auto& request : requests) {
                identifiers->push_back(request->identifier);
            }
        });
        EXPECT_TRUE(runUntil([&] { return identifiers.has_value(); }));
        return identifiers.value_or(std::vector<std::string>{"no answer"});
    }
    std::vector<std::string> pending() { return listed(&UserNotificationCenter::getPendingRequests); }
    std::vector<std::string> delivered() { return listed(&UserNotificationCenter::getDeliveredNotifications); }

    std::string contentOf(const char* name) {
        std::ifstream file(folder.path() / name);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }
    std::string played() { return contentOf("played"); }
    std::string kept() { return contentOf("state/notifications.json"); }
};

}  // namespace zelkovanta::platform::linux_host
