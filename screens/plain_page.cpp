#include "screens/plain_page.h"

#include "records/text.h"
#include "screens/vocabulary/vocabulary.h"
#include "store/queues.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace zelkovanta::screens {

namespace {

using records::DeviceRole;
using store::StoreState;

constexpr std::size_t pairingCodeLength = 8;

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
        writeSession(page);
        writeLists(page);
        return page;
    }

private:
    [[nodiscard]] std::string word(std::string_view english) const { return strings_.localized(english); }

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
                kind = member ? vocabulary::departmentLabel(state_.office, member->department, vocabulary::Count::one,
                                                            strings_)
                              : "";
                break;
            }
            case DeviceRole::shared:
                page.title = state_.device && state_.device->name ? *state_.device->name : word("Flexible workstation");
                kind = word("Flexible workstation");
                break;
        }
        joinPart(page.subtitle, kind);
        joinPart(page.subtitle, records::isolated(office));
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
            page.signedIn = platform::filled(word("Signed in · %@"), {member->name});
        }
        if (waitsForSomebody()) {
            page.signIn = signIn(page.title);
        } else if (state_.role == DeviceRole::shared) {
            page.asksForRoom = true;
            page.confirmedRoomId = store::confirmedFlexibleRoomId(state_).value_or("");
            page.hint = waitsForRoom() ? roomHint() : "";
        }
        if (const records::Member* member = store::activeMember(state_)) {
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
                .expiresAt = code.expiresAt.value_or("")};
    }

    void writeLists(PlainPage& page) const {
        if (waitsForSomebody() || waitsForRoom()) {
            return;
        }
        page.showsReceived = store::activeMember(state_) != nullptr;
        page.showsSent = true;
        page.canSend = true;
    }

    const StoreState& state_;
    const platform::StringTable& strings_;
    const records::Room* const lastUsedRoom_;
};

}  // namespace

PlainPage plainPage(const StoreState& state, const platform::StringTable& strings, const records::Room* lastUsedRoom) {
    return PageWriter{state, strings, lastUsedRoom}.write();
}

PlainFormPlace formPlace(const StoreState& state) {
    const auto& person = state.device ? state.device->signedInMemberId : std::nullopt;
    const auto homeRoomId = state.device ? state.device->roomId : std::nullopt;
    switch (state.role) {
        case DeviceRole::room:
            return {.place = {.fixedRoomId = person ? std::nullopt : homeRoomId, .homeRoomId = homeRoomId},
                    .key = person.value_or("autonomous-room")};
        case DeviceRole::shared:
            return {.place = {.fixedRoomId = store::confirmedFlexibleRoomId(state), .homeRoomId = std::nullopt},
                    .key = person.value_or("workstation")};
        case DeviceRole::member:
            break;
    }
    return {};
}

std::string pairingCodeText(const std::string& typed) {
    std::string code =
        records::characterPrefix(pairingCodeLength, records::alphanumericsOnly(records::uppercased(typed)));
    const std::string head = records::characterPrefix(pairingCodeLength / 2, code);
    return head.size() == code.size() ? code : head + "-" + code.substr(head.size());
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
