#pragma once

#include "screens/compose_form.h"
#include "store/settings.h"
#include "tests/support/store_fixture.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::screens {

/// A form over a real store on one simulated computer. The office has the providers "member-1" and "member-2", the
/// assistant "member-3", the rooms "room-1" and "room-2", and the types "xray", "ready" and, meant for assistants,
/// "lab".
struct ComposeTest : testing::Test, support::Computer {
    using Lines = std::vector<std::string>;

    // A sending that nobody answers holds its form for longer than the collaborators live.
    ~ComposeTest() override {
        if (form) {
            form->disappear();
        }
    }

    static records::SignalType typeOf(std::string id, std::string key, std::int64_t order) {
        return support::makeType(std::move(id), 0, [&](records::SignalType& type) {
            type.key = std::move(key);
            type.sortOrder = order;
        });
    }

    static records::StateSnapshot officeSnapshot() {
        return support::makeSnapshot([](records::StateSnapshot& snapshot) {
            snapshot.office = support::makeOffice("office-1", [](records::Office& office) {
                office.departments = {{.key = "provider", .label = "Doctors", .labelPlural = {}},
                                      {.key = "assistant", .label = "Assistants", .labelPlural = {}}};
            });
            snapshot.signalTypes = {typeOf("type-xray", "xray", 1), typeOf("type-ready", "ready", 2),
                                    typeOf("type-lab", "lab", 3)};
            snapshot.signalTypes[2].targetDepartment = "assistant";
        });
    }

    /// The computer of room 1, where nobody is signed in.
    void launchRoom() { launchWith("room", officeSnapshot()); }
    /// The computer of room 1 with somebody signed in.
    void launchRoomWith(const std::string& memberId) {
        launchRoom();
        signIn(memberId);
    }
    void signIn(const std::string& memberId) {
        records::Device device = *state().device;
        device.signedInMemberId = memberId;
        const records::Member member = *store::memberById(state(), memberId);
        deliverSessionStarted(device, member);
        journal.take();
    }
    /// The personal computer of somebody.
    void launchMember(const std::string& memberId) {
        records::StateSnapshot snapshot = officeSnapshot();
        snapshot.device = support::makeDeviceOfMember(memberId);
        launchWith("member", snapshot);
    }

    /// A shared workstation where somebody has signed in and said that they are in room 1.
    void launchStationWith(const std::string& memberId) {
        records::StateSnapshot snapshot = officeSnapshot();
        snapshot.device = support::makeDeviceWithSignIn(memberId);
        // The sign-in is of this run of the computer, and not an old one.
        defaults.memory.setNumber("stationSignInBootTime", hostInfo.bootTime());
        defaults.memory.setText("stationSignInAuditSessionId", hostInfo.auditSessionId());
        launchWith("shared", snapshot);
        store->confirmFlexibleRoom("room-1");
        settle();
        journal.take();
    }

    /// A form that was not shown yet.
    void make(ComposePlace place) {
        form = ComposeView::make(
            store, {.main = main.executor(), .defaults = defaults, .notes = notes, .crash = crash, .strings = strings},
            std::move(place), [this] { ++closed; });
    }
    void open(ComposePlace place = {}) {
        make(std::move(place));
        form->appear();
        settle();
    }
    static ComposePlace fixedRoom() { return {.fixedRoomId = "room-1", .homeRoomId = "room-1"}; }
    static ComposePlace homeRoom() { return {.fixedRoomId = {}, .homeRoomId = "room-1"}; }

    void pressSend() {
        form->send();
        settle();
    }
    /// What the server was asked to create.
    [[nodiscard]] std::string sentBody() const {
        const Exchange* exchange = openRequest("POST", "/signals");
        return exchange ? exchange->request.body.value_or("") : "nothing";
    }
    void answerCreated() { answerWith("POST", "/signals", support::makeSignal("signal-1")); }

    /// The lines of the journal that begin with one of these words; the journal begins anew.
    Lines takeLinesOf(const std::vector<std::string_view>& beginnings) {
        Lines lines;
        for (std::string& line : journal.take()) {
            for (const std::string_view beginning : beginnings) {
                if (line.starts_with(beginning)) {
                    lines.push_back(std::move(line));
                    break;
                }
            }
        }
        return lines;
    }
    /// What the collaborators heard.
    Lines takeReports() { return takeLinesOf({"notes.", "crash.setScreen"}); }

    int closed = 0;
    std::shared_ptr<ComposeView> form;
};

}  // namespace zelkovanta::screens
