#pragma once

#include "platform/string_table.h"
#include "screens/choice.h"
#include "screens/compose_form.h"
#include "store/store_state.h"

#include <optional>
#include <string>
#include <vector>

/// The one page of the window, as plain values: everything that it shows follows from the store's state.
namespace zelkovanta::screens {

/// The code with which a person signs in here, as it is shown.
struct PlainSignIn {
    bool isShown = false;  ///< in place of everything else that this computer does
    std::string heading;
    std::string hint;
    std::optional<std::string> image;  ///< bytes of the image file
    std::string placeholder;           ///< where the image would be; empty while there is one
    std::string error;
    std::string expiresAt;  ///< as the server would write it; empty without a code
    bool operator==(const PlainSignIn&) const = default;
};

struct PlainPage {
    bool isPaired = false;

    // While not paired.
    std::optional<std::string> setupImage;  ///< bytes of the image file
    std::string setupNotice;
    std::string setupError;
    std::string setupPlaceholder;  ///< where the image would be; empty while there is one

    // Once paired.
    std::string title;     ///< the room, the person or the station
    std::string subtitle;  ///< what this computer is, and in which office
    std::string error;
    std::string hint;      ///< what has to happen before there is something to do here; may be empty
    std::string signedIn;  ///< who is, at a computer where people sign in; may be empty

    PlainSignIn signIn;

    bool asksForRoom = false;  ///< somebody at a shared workstation has to say where they are
    std::string confirmedRoomId;
    std::vector<Choice> rooms;  ///< the active ones

    bool showsReceived = false;
    bool showsSent = false;

    bool canSend = false;

    bool operator==(const PlainPage&) const = default;
};

/// `lastUsedRoom` is the room that was last chosen at this shared workstation, if it can still be chosen.
[[nodiscard]] PlainPage plainPage(const store::StoreState& state, const platform::StringTable& strings,
                                  const records::Room* lastUsedRoom = nullptr);

/// Where a form stands that is opened here, and whose it is: with another key it is another form, and what was typed
/// into the one before is gone.
struct PlainFormPlace {
    ComposePlace place;
    std::string key;
    bool operator==(const PlainFormPlace&) const = default;
};
[[nodiscard]] PlainFormPlace formPlace(const store::StoreState& state);

/// A pairing code as it is shown while it is typed: letters and digits, upper case, "XXXX-XXXX".
[[nodiscard]] std::string pairingCodeText(const std::string& typed);

/// The field for a pairing code, and what became of the last one.
struct PairingForm {
    std::string code;
    bool isBusy = false;
    std::string error;

    [[nodiscard]] bool mayPair() const { return !code.empty() && !isBusy; }
    bool operator==(const PairingForm&) const = default;
};

[[nodiscard]] PairingForm withTyped(PairingForm form, const std::string& typed);
[[nodiscard]] PairingForm whenBegun(PairingForm form);
/// `failure` is empty after a success, and where this computer was paired in another way meanwhile.
[[nodiscard]] PairingForm whenEnded(PairingForm form, std::string failure);

}  // namespace zelkovanta::screens
