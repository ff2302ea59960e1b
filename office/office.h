#pragma once

#include "office/administration.h"
#include "office/exchange.h"
#include "office/random_bytes.h"
#include "office/storage.h"
#include "office/time_text.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::office {

/// Turns the text of a code into a picture, as a data URL.
using QrPicture = std::function<std::string(std::string_view text)>;

/// What a real-time connection gets when it asks to be opened.
struct SocketAnswer {
    int status = 101;      ///< 101: go ahead. 401: the token is none of ours
    std::string body;      ///< JSON, for a refusal
    std::string deviceId;  ///< whose connection it is
    std::string frame;     ///< the first frame, "snapshot"
};

/// The office: everything that its computers and its admins may ask, decided without sockets, threads or a clock.
///
/// One thread. Every call carries the time of day; it may jump in either direction. What a call changes is committed to
/// the storage before the call returns; if that fails the answer has the status 500, nothing has changed, and there are
/// no effects. (`tick` has no answer: it gives no effects then, and what was due stays due. `socketOpened` notes when
/// a computer was last seen, and opens the connection whether that could be kept or not.) With the same storage
/// content, the same random bytes and the same calls, the answers are the same byte for byte.
class Office {
public:
    /// Reads the storage. `storage` and `random` must outlive the office.
    [[nodiscard]] static std::expected<std::unique_ptr<Office>, StorageFailure> open(Storage& storage,
                                                                                     RandomBytes& random,
                                                                                     QrPicture qrPicture);
    ~Office();

    /// From now on only programs that know this text can pair. Empty, as at first: all of them can.
    void requireAppCheck(std::string token);

    // The computers' side.

    /// Any request below /api/v1 except the real-time connection.
    [[nodiscard]] Answer handle(const Request& request, WallTime now);
    /// A real-time connection is about to open: judges the token and gives the first frame.
    [[nodiscard]] SocketAnswer socketOpened(std::string_view token, WallTime now);
    /// The answer to a frame that a computer sent, if it wants one. A pure function.
    [[nodiscard]] static std::optional<std::string> replyToFrame(std::string_view frame);
    /// What "GET state" holds for this computer at the moment; nothing if it is not paired.
    [[nodiscard]] std::optional<std::string> snapshot(std::string_view deviceId) const;

    // Time.

    /// Expires signals, codes, setup requests and cooldowns that are due.
    [[nodiscard]] std::vector<Effect> tick(WallTime now);
    /// When `tick` has something to do next. May be earlier than that, never later; may lie in the past.
    [[nodiscard]] std::optional<Timestamp> nextDeadline() const;

    // The admins' side. Answers are as told in office/README.md; a failure has an error envelope. From `administer` it
    // always has a sentence; the operations by themselves leave it out where every computer has words of its own for
    // the code.

    /// Any request below /admin/v1. The caller has made sure that it comes from an admin.
    [[nodiscard]] Answer administer(const Request& request, WallTime now);

    /// Adds the sample practices of this name; on a storage that holds a practice it changes nothing.
    [[nodiscard]] Answer addSample(std::string_view name, WallTime now);
    [[nodiscard]] Answer approve(std::string_view setupRequest, const Placement& placement, WallTime now);
    /// Answers with "code" in the form "ABCD-2345".
    [[nodiscard]] Answer makePairingCode(const Placement& placement, WallTime now);
    [[nodiscard]] Answer signIn(std::string_view device, std::string_view member, WallTime now);
    /// As a phone does it: `code` is the "token" of the sign-in code.
    [[nodiscard]] Answer signInWithCode(std::string_view code, std::string_view member, WallTime now);
    /// As a phone does it that is held before the station's screen: with the code that the station shows.
    [[nodiscard]] Answer scanSignInCode(std::string_view device, std::string_view member, WallTime now);
    [[nodiscard]] Answer signOut(std::string_view device, WallTime now);
    [[nodiscard]] Answer revoke(std::string_view device, WallTime now);
    /// Without a room or member for a computer that needs one: the one of the same name there, else the first room.
    [[nodiscard]] Answer move(std::string_view device, std::string_view practice, std::optional<std::string> room,
                              std::optional<std::string> member, MoveNotice notice, WallTime now);
    /// `settings` is a JSON object; empty takes the settings away.
    [[nodiscard]] Answer setNotificationSettings(std::string_view device, std::string_view settings, WallTime now);
    [[nodiscard]] Answer send(const SendOrder& order, WallTime now);
    [[nodiscard]] Answer act(std::string_view signal, SignalAction action, std::optional<std::string> by, WallTime now);
    /// As a phone does it: refused in a cooldown.
    [[nodiscard]] Answer setStatus(std::string_view practice, std::string_view member, std::string_view status,
                                   WallTime now);
    /// A member with a phone walks into a room, and its beacon clears what called for the member there. Answers with
    /// the signals' ids in "cleared".
    [[nodiscard]] Answer walkIn(std::string_view practice, std::string_view member, std::string_view room,
                                WallTime now);
    [[nodiscard]] Answer changeMember(std::string_view practice, std::string_view member, const MemberChange& change,
                                      WallTime now);
    [[nodiscard]] Answer addMember(std::string_view practice, std::string_view name, std::string_view department,
                                   WallTime now);
    [[nodiscard]] Answer changeRoom(std::string_view practice, std::string_view room, const RoomChange& change,
                                    WallTime now);
    [[nodiscard]] Answer addRoom(std::string_view practice, std::string_view name, WallTime now);
    [[nodiscard]] Answer changeType(std::string_view practice, std::string_view type, const TypeChange& change,
                                    WallTime now);
    [[nodiscard]] Answer changePractice(std::string_view practice, const PracticeChange& change, WallTime now);
    /// Replaces the announced release. One without any version withdraws it.
    [[nodiscard]] Answer announce(const Release& release, WallTime now);

    /// Everything that an admin may see, as JSON; the same as "GET state" of the admin's addresses.
    [[nodiscard]] std::string overview(WallTime now) const;
    /// For looking, not for keeping: references into it last until the next call.
    [[nodiscard]] const State& state() const;

private:
    class Desk;
    explicit Office(std::unique_ptr<Desk> desk);
    std::unique_ptr<Desk> desk_;
};

}  // namespace zelkovanta::office
