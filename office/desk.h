#pragma once

#include "office/attempts.h"
#include "office/json_text.h"
#include "office/ledger.h"
#include "office/office.h"
#include "office/refusal.h"
#include "office/request_body.h"

#include <chrono>
#include <expected>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zelkovanta::office {

/// What stands behind `Office`. An operation changes the ledger and notes its effects, and gives the body of its
/// answer; `finish` makes the changes durable, or undoes them and drops the effects.
class Office::Desk {
public:
    using Outcome = std::expected<std::string, Refusal>;

    Desk(Storage& storage, State state, RandomBytes& random, QrPicture qrPicture);

    [[nodiscard]] const State& state() const { return ledger_.state(); }
    void requireAppCheck(std::string token) { appCheck_ = std::move(token); }
    [[nodiscard]] Answer finish(Outcome outcome, int status = 200);

    // desk_requests.cpp
    [[nodiscard]] Answer handle(const Request& request, Timestamp now);
    [[nodiscard]] SocketAnswer socketOpened(std::string_view token, Timestamp now);
    [[nodiscard]] std::string snapshot(const Device& device);

    // desk_administration.cpp
    [[nodiscard]] Answer administer(const Request& request, Timestamp now);

    // desk_overview.cpp
    [[nodiscard]] std::string overview(Timestamp now) const;

    // desk_time.cpp
    [[nodiscard]] std::vector<Effect> tick(Timestamp now);
    [[nodiscard]] std::optional<Timestamp> nextDeadline() const;

    // desk_pairing.cpp
    [[nodiscard]] Outcome approve(std::string_view setupRequest, const Placement& placement, Timestamp now);
    [[nodiscard]] Outcome makePairingCode(const Placement& placement, Timestamp now);
    [[nodiscard]] std::string waitingList(Timestamp now) const;

    // desk_stations.cpp
    [[nodiscard]] Outcome signIn(const Device& device, std::string_view member);
    [[nodiscard]] Outcome signInWithCode(std::string_view code, std::string_view member, Timestamp now);
    [[nodiscard]] Outcome scanSignInCode(const Device& device, std::string_view member, Timestamp now);
    [[nodiscard]] Outcome signOut(Device device);
    [[nodiscard]] Outcome revoke(const Device& device);
    [[nodiscard]] Outcome move(Device device, const Practice& practice, std::optional<std::string> room,
                               std::optional<std::string> member, MoveNotice notice);
    [[nodiscard]] Outcome setNotificationSettings(Device device, std::string_view settings);

    // desk_signals.cpp
    [[nodiscard]] Outcome send(const SendOrder& order, Timestamp now);
    [[nodiscard]] Outcome act(Signal signal, SignalAction action, const std::optional<std::string>& by, Timestamp now);
    [[nodiscard]] Outcome walkIn(const Practice& practice, std::string_view member, std::string_view room,
                                 Timestamp now);
    void end(Signal signal, SignalStatus status, std::optional<std::string> by, Timestamp now);

    // desk_staff.cpp
    [[nodiscard]] Outcome setStatus(Member member, std::string_view status, Timestamp now);
    [[nodiscard]] Outcome changeMember(Member member, const MemberChange& change, Timestamp now);
    [[nodiscard]] Outcome addMember(const Practice& practice, std::string_view name, std::string_view department,
                                    Timestamp now);
    [[nodiscard]] Outcome changeRoom(Room room, const RoomChange& change);
    [[nodiscard]] Outcome addRoom(const Practice& practice, std::string_view name);
    [[nodiscard]] Outcome changeType(SignalType type, const TypeChange& change);
    [[nodiscard]] Outcome changePractice(Practice practice, const PracticeChange& change);
    [[nodiscard]] Outcome announce(Release release);

    // sample_practice.cpp
    [[nodiscard]] Outcome addSample(std::string_view name, Timestamp now);

    // desk_records.cpp: finding what was named, in a practice or (for an empty practice) everywhere.
    template <class T>
    using Found = std::expected<const T*, Refusal>;
    [[nodiscard]] Found<Practice> practiceNamed(std::string_view name) const;
    [[nodiscard]] Found<Member> memberNamed(std::string_view practiceId, std::string_view name) const;
    [[nodiscard]] Found<Room> roomNamed(std::string_view practiceId, std::string_view name) const;
    [[nodiscard]] Found<SignalType> typeNamed(std::string_view practiceId, std::string_view name) const;
    [[nodiscard]] Found<Device> deviceNamed(std::string_view name) const;
    [[nodiscard]] Found<Signal> signalNamed(std::string_view id) const;

private:
    struct Call;
    struct Administration;

    // desk_requests.cpp
    [[nodiscard]] Answer route(const Call& call);
    [[nodiscard]] Answer routePaired(const Call& call, const Device& device);
    [[nodiscard]] const Device* deviceOfToken(std::string_view token) const;
    [[nodiscard]] Outcome acceptCrashReports(const Device& device, std::string_view body, Timestamp now);

    // desk_pairing.cpp
    [[nodiscard]] bool isOurProgram(const Request& request) const;
    [[nodiscard]] Outcome redeem(const Request& request, Timestamp now);
    [[nodiscard]] Outcome requestSetup(const Request& request, Timestamp now);
    [[nodiscard]] Outcome pollSetup(std::string_view claimToken, Timestamp now);
    [[nodiscard]] std::expected<Device, Refusal> place(const Placement& placement, Device device) const;
    [[nodiscard]] std::string handOver(Device device, bool withStatus);

    // desk_stations.cpp
    [[nodiscard]] bool isStation(const Device& device) const;
    void forgetSignInCodes(std::string_view deviceId);
    [[nodiscard]] Outcome makeSignInCode(const Device& device, Timestamp now);
    [[nodiscard]] std::string qrToken(std::string_view token, std::string_view claimToken, std::string_view data,
                                      Timestamp expiresAt) const;

    // desk_signals.cpp
    struct Draft;
    [[nodiscard]] Outcome place(Draft draft, Timestamp now);
    [[nodiscard]] Outcome createSignal(const Device& device, std::string_view body, Timestamp now);
    [[nodiscard]] Outcome actOnSignal(const Device& device, std::string_view signalId, std::string_view body,
                                      Timestamp now);

    // desk_staff.cpp
    [[nodiscard]] Outcome setStatus(const Device& device, std::string_view body, Timestamp now);

    // desk_records.cpp
    template <class T>
    [[nodiscard]] std::vector<const T*> inOrder(std::string_view practiceId) const;
    template <class T>
    [[nodiscard]] std::string unusedIdentifier(std::string_view prefix);
    /// A practice with its members, rooms and types, as fields of an object.
    void writePractice(JsonText& json, const Practice& practice) const;
    /// The member who acts at this computer.
    [[nodiscard]] const Member* memberAt(const Device& device) const;
    void tell(std::string_view practiceId, std::string frame);
    void tellAll(std::string frame);
    void tellDevice(std::string_view deviceId, std::string frame);
    void tellRooms(std::string_view practiceId);
    void tellTypes(std::string_view practiceId);

    struct PracticeText {
        std::uint64_t revision = 0;
        std::string json;
    };

    Ledger ledger_;
    RandomBytes& random_;
    QrPicture qrPicture_;
    std::string appCheck_;
    std::vector<Effect> effects_;
    std::map<std::string, PracticeText, std::less<>> practiceTexts_;
    Attempts wrongCodes_{10, std::chrono::seconds{60}};
    Attempts setups_{120, std::chrono::seconds{60}};
    Attempts signInCodes_{30, std::chrono::seconds{60}};
};

}  // namespace zelkovanta::office
