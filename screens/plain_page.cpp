#include "screens/plain_page.h"

#include "records/server_date.h"
#include "records/text.h"
#include "store/queues.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string_view>
#include <utility>

namespace zelkovanta::screens {

namespace {

using records::DeviceRole;
using store::StoreState;

constexpr std::string_view fallbackColor = "#FF8C28";
constexpr std::size_t pairingCodeLength = 8;

bool isHexColor(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdefABCDEF";
    return text.size() == 7 && text.front() == '#' && text.find_first_not_of(digits, 1) == std::string_view::npos;
}

/// A name within a line of several parts: it keeps its own direction of writing and leaves its neighbours theirs.
std::string isolated(std::string_view name) {
    return "\u2068" + std::string{name} + "\u2069";
}

void joinPart(std::string& line, std::string_view part) {
    if (!part.empty()) {
        line += line.empty() ? "" : " · ";
        line += part;
    }
}

/// Writes what the store holds in the words of the page.
class PageWriter {
public:
    PageWriter(const StoreState& state, const platform::StringTable& strings, const records::Room* lastUsedRoom)
        : state_(state), strings_(strings), lastUsedRoom_(lastUsedRoom) {}

    [[nodiscard]] PlainPage write() const {
        PlainPage page;
        page.isPaired = state_.isPaired;
        page.error = state_.lastError.value_or("");
        if (!state_.isPaired) {
            page.setupImage = state_.setupQrImage;
            page.setupNotice = state_.setupQrNotice.value_or("");
            page.setupError = state_.setupQrError.value_or("");
            page.setupPlaceholder = setupPlaceholder();
            return page;
        }
        writeHeader(page);
        writeConnection(page);
        writeSession(page);
        writeLists(page);
        writeForm(page);
        return page;
    }

private:
    [[nodiscard]] std::string word(std::string_view english) const { return strings_.localized(english); }

    [[nodiscard]] std::string departmentLabel(const std::string& key) const {
        const auto departments = store::officeDepartments(state_);
        const auto found = std::ranges::find(departments, key, &records::OfficeDepartment::key);
        return found == departments.end() ? key : found->label;
    }

    [[nodiscard]] std::string setupPlaceholder() const {
        if (state_.setupQrImage || state_.setupQrError) {
            return "";
        }
        return state_.setupQrExpiresAt ? word("The code can't be shown. Type a pairing code instead.")
                                       : word("Getting a code…");
    }

    void writeHeader(PlainPage& page) const {
        const std::string office = state_.office ? state_.office->name : "";
        std::string kind;
        switch (state_.role) {
            case DeviceRole::room: {
                const records::Room* room = store::pairedRoom(state_);
                page.title = room ? room->name : word("This room");
                kind = word("Room computer");
                break;
            }
            case DeviceRole::member: {
                const records::Member* member = store::pairedMember(state_);
                page.title = member ? member->name : word("Provider");
                kind = member ? departmentLabel(member->department) : "";
                break;
            }
            case DeviceRole::shared:
                page.title = state_.device && state_.device->name ? *state_.device->name : word("Flexible workstation");
                kind = word("Flexible workstation");
                break;
        }
        joinPart(page.subtitle, kind);
        joinPart(page.subtitle, office.empty() ? "" : isolated(office));
    }

    void writeConnection(PlainPage& page) const {
        switch (state_.connectionState) {
            case server::ConnectionState::disconnected:
                page.connection = PlainConnection::lost;
                page.connectionText = word("No connection. Retrying…");
                break;
            case server::ConnectionState::connecting:
                page.connection = PlainConnection::connecting;
                page.connectionText = word("Connecting…");
                break;
            case server::ConnectionState::connected:
                page.connection = PlainConnection::connected;
                page.connectionText = word("Connected");
                break;
            case server::ConnectionState::stopped:
                page.connection = PlainConnection::lost;
                page.connectionText = word("Not connected");
                break;
        }
    }

    [[nodiscard]] bool waitsForSomebody() const { return store::needsSignIn(state_); }
    [[nodiscard]] bool waitsForRoom() const {
        return state_.role == DeviceRole::shared && !store::confirmedFlexibleRoomId(state_);
    }

    void writeSession(PlainPage& page) const {
        for (const records::Room* room : store::activeRooms(state_)) {
            page.rooms.push_back({room->id, room->name});
        }
        const bool isPersonal = state_.device && state_.device->memberId;
        if (const records::Member* member = store::signedInMember(state_); member && !isPersonal) {
            page.signedInName = member->name;
        }
        if (waitsForSomebody()) {
            page.signIn = signIn(page.title);
        } else if (state_.role == DeviceRole::shared) {
            page.asksForRoom = true;
            page.confirmedRoomId = store::confirmedFlexibleRoomId(state_).value_or("");
            page.hint = waitsForRoom() ? roomHint() : "";
        }
        if (const records::Member* member = store::activeMember(state_)) {
            page.hasStatus = true;
            const auto known = records::memberStatusFromRawValue(member->status.value_or(""));
            page.memberStatus = records::rawValue(known.value_or(records::MemberStatus::available));
            if (member->onShift == false) {
                page.hint = word("You're off shift. You won't receive new signals.");
            }
        }
    }

    [[nodiscard]] std::string roomHint() const {
        const std::string hint = word("Choose a room for this sign-in before sending.");
        return lastUsedRoom_ == nullptr
                   ? hint
                   : hint + " " +
                         platform::filled(word("Last used: %@. Choose it or another room for this sign-in."),
                                          {lastUsedRoom_->name});
    }

    [[nodiscard]] std::string signInPlaceholder() const {
        const store::SignInCode& code = state_.signInCode;
        if (code.image || code.error) {
            return "";
        }
        return code.expiresAt ? word("The code can't be shown.") : word("Getting a code…");
    }

    [[nodiscard]] PlainSignIn signIn(std::string_view station) const {
        const store::SignInCode& code = state_.signInCode;
        return {.isShown = true,
                .heading = platform::filled(word("Sign in to %@"), {station}),
                .hint = state_.role == DeviceRole::shared
                            ? word("Sign in first. After signing in, choose the current room.")
                            : word("Scan with the ZelkoVanta app to sign in."),
                .image = code.image,
                .placeholder = signInPlaceholder(),
                .error = code.error.value_or(""),
                .expiresAt = code.expiresAt ? records::parseServerDate(*code.expiresAt) : std::nullopt};
    }

    void writeLists(PlainPage& page) const {
        if (waitsForSomebody() || waitsForRoom()) {
            return;
        }
        const auto roomId = store::confirmedFlexibleRoomId(state_);
        page.showsReceived = store::activeMember(state_) != nullptr;
        page.showsSent = true;
        for (const records::Signal* signal : store::receivedSignals(state_, roomId)) {
            PlainRow row = rowOf(*signal);
            row.mayAcknowledge = signal->status == records::signal_status::waiting;
            row.mayFinish = true;
            page.received.push_back(std::move(row));
        }
        for (const records::Signal* signal : store::sentSignals(state_, roomId)) {
            PlainRow row = rowOf(*signal);
            row.mayFinish = true;
            row.mayCancel = true;
            joinPart(row.detail, targetOf(*signal));
            page.sent.push_back(std::move(row));
        }
    }

    void writeForm(PlainPage& page) const {
        page.isSending = state_.isSending;
        page.canSend = !waitsForSomebody() && !waitsForRoom();
        page.choosesRoom =
            state_.role != DeviceRole::shared && !(state_.device && state_.device->roomId) && page.canSend;
        const records::Member* me = store::activeMember(state_);
        for (const records::SignalType* type : store::activeSignalTypes(state_)) {
            const bool isOpenToAll = !me || !type->senderDepartments || type->senderDepartments->empty();
            if (isOpenToAll ||
                std::ranges::find(*type->senderDepartments, me->department) != type->senderDepartments->end()) {
                page.types.push_back({type->id, type->label});
            }
        }
        page.recipients.push_back({"", word("Anyone")});
        for (const records::Member* member : store::selectableRecipients(state_)) {
            page.recipients.push_back({member->id, member->name});
        }
    }

    [[nodiscard]] PlainRow rowOf(const records::Signal& signal) const {
        PlainRow row;
        row.id = signal.id;
        const records::Room* room = store::roomById(state_, signal.roomId);
        row.room = room ? room->name : word("Room");
        const records::SignalType* type = store::signalTypeById(state_, signal.typeId);
        row.type = type ? type->label : "";
        row.color = type && isHexColor(type->color) ? type->color : std::string{fallbackColor};
        if (const records::Member* requester = store::memberById(state_, signal.requesterId)) {
            joinPart(row.detail, isolated(requester->name));
            joinPart(row.detail, departmentLabel(requester->department));
        }
        row.note = signal.note.value_or("");
        row.status = signal.status;
        row.statusText = statusText(signal);
        row.since = records::parseServerDate(signal.createdAt);
        return row;
    }

    [[nodiscard]] std::string statusText(const records::Signal& signal) const {
        if (signal.status == records::signal_status::waiting) {
            return word("Waiting");
        }
        return signal.status == records::signal_status::acknowledged ? word("On the way") : signal.status;
    }

    [[nodiscard]] std::string targetOf(const records::Signal& signal) const {
        std::string names;
        const auto add = [&](const std::string& memberId) {
            if (const records::Member* member = store::memberById(state_, std::string_view{memberId})) {
                names += (names.empty() ? "" : ", ") + isolated(member->name);
            }
        };
        if (signal.providerIds) {
            std::ranges::for_each(*signal.providerIds, add);
        } else if (signal.providerId) {
            add(*signal.providerId);
        }
        return names.empty() ? "" : platform::filled(word("for %@"), {names});
    }

    const StoreState& state_;
    const platform::StringTable& strings_;
    const records::Room* const lastUsedRoom_;
};

}  // namespace

PlainPage plainPage(const StoreState& state, const platform::StringTable& strings, const records::Room* lastUsedRoom) {
    return PageWriter{state, strings, lastUsedRoom}.write();
}

std::optional<std::string> sendingRoom(const StoreState& state, const std::string& chosenRoomId) {
    if (state.role == DeviceRole::shared) {
        return store::confirmedFlexibleRoomId(state);
    }
    const bool hasOwnRoom = state.device && state.device->roomId;
    return hasOwnRoom || chosenRoomId.empty() ? std::nullopt : std::optional{chosenRoomId};
}

std::string pairingCodeText(const std::string& typed) {
    std::string code =
        records::characterPrefix(pairingCodeLength, records::alphanumericsOnly(records::uppercased(typed)));
    const std::string head = records::characterPrefix(pairingCodeLength / 2, code);
    return head.size() == code.size() ? code : head + "-" + code.substr(head.size());
}

std::string signInCountdown(const PlainSignIn& signIn, platform::WallTime now, const platform::StringTable& strings) {
    if (!signIn.expiresAt || !signIn.error.empty()) {
        return "";
    }
    const auto left = std::clamp(std::chrono::ceil<std::chrono::seconds>(*signIn.expiresAt - now),
                                 std::chrono::seconds{0}, store::signInCodeLifetime);
    return platform::filled(strings.localized("Code refreshes in %lld"), {std::int64_t{left.count()}});
}

PairingForm withTyped(PairingForm form, const std::string& typed) {
    form.code = pairingCodeText(typed);
    return form;
}

PairingForm whenBegun(PairingForm form) {
    form.isBusy = true;
    form.error.clear();
    return form;
}

PairingForm whenEnded(PairingForm form, std::string failure) {
    form.isBusy = false;
    form.error = std::move(failure);
    return form;
}

}  // namespace zelkovanta::screens
