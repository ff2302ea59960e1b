#pragma once

#include "platform/async.h"
#include "platform/string_table.h"
#include "platform/user_defaults.h"
#include "screens/choice.h"
#include "screens/theme/color.h"
#include "screens/who_picker.h"
#include "store/app_store.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zelkovanta::screens {

/// The keys under which a form remembers what was sent last.
namespace compose_default {
inline constexpr std::string_view lastSendTypeId = "lastSendTypeId";
inline constexpr std::string_view lastSendRecipient = "lastSendRecipient";
inline constexpr std::string_view autonomousPrefix = "roomSendDefaults.autonomous";
inline constexpr std::string_view memberPrefix = "roomSendDefaults.member.";  ///< and the member's id
}  // namespace compose_default

/// What a form needs beside the store. The references must outlive it and the sending that it began.
struct ComposePorts {
    platform::Executor main;
    platform::UserDefaults& defaults;
    store::NoteRegistry& notes;
    store::CrashSession& crash;
    const platform::StringTable& strings;
};

/// Where a form is opened from.
struct ComposePlace {
    std::optional<std::string> fixedRoomId;  ///< the room cannot be changed
    std::optional<std::string> homeRoomId;   ///< the room of this signed-in session
    bool operator==(const ComposePlace&) const = default;
};

/// What was chosen and typed.
struct ComposeChoice {
    std::optional<std::string> selectedRoomId;
    std::optional<std::string> selectedTypeId;
    WhoSelection who;
    std::string note;
    bool operator==(const ComposeChoice&) const = default;
};

struct ComposeType {
    std::string id;
    std::string label;
    theme::Color color;
    bool selected = false;
    bool operator==(const ComposeType&) const = default;
};

/// The form as it is shown.
struct ComposeScreen {
    std::string title;
    std::string roomTitle;
    bool choosesRoom = false;
    std::string fixedRoom;  ///< the name of a room that cannot be changed; empty while it is not known
    std::vector<Choice> rooms;
    std::optional<std::string> selectedRoomId;
    std::string roomPrompt;  ///< while none of `rooms` is selected; a selected room that is no longer offered is named
    std::string roomHint;    ///< may be empty
    std::string typeTitle;
    std::vector<ComposeType> types;
    WhoPickerSection who;
    std::string notePlaceholder;
    std::string note;
    std::string noteWarning;
    std::string error;  ///< may be empty
    std::string sendLabel;
    bool canSend = false;
    bool isSending = false;
    std::string cancelLabel;
    bool operator==(const ComposeScreen&) const = default;
};

/// The form in which a signal is made. It opens with what was sent last from here, and what is chosen is remembered
/// once it has been sent. Main thread only.
///
/// `appear` when it is first shown, `disappear` when it is gone, whatever took it away; destroying it does the same.
/// While it is shown the crash reporter knows its note, so that it can keep it out of a report.
class ComposeView : public std::enable_shared_from_this<ComposeView> {
public:
    static constexpr std::size_t noteLimit = 200;  ///< Unicode scalars

    /// `onClose` is called when the form is done with, by a sending that worked or by `cancel`; not once it is gone.
    [[nodiscard]] static std::shared_ptr<ComposeView> make(std::shared_ptr<store::AppStore> store,
                                                           const ComposePorts& ports, ComposePlace place,
                                                           std::function<void()> onClose);
    ~ComposeView();
    ComposeView(const ComposeView&) = delete;
    ComposeView& operator=(const ComposeView&) = delete;

    /// Called whenever what the form itself holds has changed; changes of the store are the store's to tell.
    void setChangeHandler(std::function<void()> handler) { onChange_ = std::move(handler); }

    void appear();
    void disappear();

    /// Where the form stands has changed; what was chosen and typed stays.
    void setPlace(ComposePlace place);

    [[nodiscard]] const ComposeChoice& choice() const { return choice_; }
    [[nodiscard]] ComposeScreen screen() const;

    // The lists point into the store's state and hold until it changes.
    /// The active types that the active member's department may send, all without an active member.
    [[nodiscard]] store::SignalTypeList availableTypes() const;
    /// The built-in type "ready", else the first; null if there are none.
    [[nodiscard]] const records::SignalType* defaultType() const;
    /// The chosen type while it is available, else the default one.
    [[nodiscard]] const records::SignalType* selectedType() const;

    void chooseRoom(std::optional<std::string> roomId);
    void chooseType(const std::string& typeId);  ///< the recipients stay
    void pressPerson(const std::string& memberId);
    void pressGroup(const std::string& department);
    void pressAny();
    /// What the field holds now; it keeps the first `noteLimit` scalars of it.
    void editNote(const std::string& text);

    /// A room, a type and somebody to send to are there, and nothing is being sent.
    [[nodiscard]] bool canSend() const;
    /// Sends if it may and the form is open. A failure leaves everything as it is and shows as the store's `lastError`.
    void send();
    void cancel();

private:
    struct Private {};

public:
    ComposeView(Private, std::shared_ptr<store::AppStore> store, ComposePorts ports, ComposePlace place,
                std::function<void()> onClose);

private:
    /// What a sending began with.
    struct Sending {
        std::string typeId;
        std::string roomId;
        std::string note;
        Recipient recipient;
        bool remembersRoom = false;  ///< the form belonged to no room
        std::string typeKey;         ///< where the type is remembered
        std::string recipientKey;    ///< where the recipient is
    };
    static platform::Awaitable<void> run(std::shared_ptr<ComposeView> self, Sending sending);
    void finish(const Sending& sending);

    [[nodiscard]] const store::StoreState& state() const { return store_->state(); }
    [[nodiscard]] std::optional<std::string> room() const;
    [[nodiscard]] std::string roomPrompt() const;
    void selectRoom(std::optional<std::string> roomId);
    [[nodiscard]] std::optional<std::string> typeTarget() const;
    [[nodiscard]] bool belongsToNoRoom() const { return !place_.fixedRoomId && !place_.homeRoomId; }
    /// It is shown and not done with.
    [[nodiscard]] bool isOpen() const { return isShown_ && !isClosed_; }
    [[nodiscard]] std::string defaultKey(std::string_view plain, std::string_view suffix) const;
    void loadDefaults();
    void saveDefaults(const Sending& sending);
    void dropUnselectable();
    void registerNote();
    void close();
    void choose(WhoSelection who);
    void tellChange() const;

    const std::shared_ptr<store::AppStore> store_;
    const ComposePorts ports_;
    ComposePlace place_;
    const std::function<void()> onClose_;
    std::function<void()> onChange_;
    ComposeChoice choice_;
    std::string selectedRoomName_;  ///< as it was when the room was selected
    bool isShown_ = false;
    bool isClosed_ = false;   ///< `onClose` was called
    bool isSending_ = false;  ///< from the press on, while the store has not begun yet
    std::shared_ptr<void> observer_;
};

}  // namespace zelkovanta::screens
