#include "screens/compose_form.h"

#include "platform/task.h"
#include "records/text.h"
#include "store/settings.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace zelkovanta::screens {

using records::SignalType;

namespace {

constexpr std::string_view builtInReadyKey = "ready";
constexpr std::string_view typeSuffix = ".typeId";
constexpr std::string_view recipientSuffix = ".recipient";

bool holds(const store::SignalTypeList& types, const std::string& id) {
    return std::ranges::find(types, id, &SignalType::id) != types.end();
}

}  // namespace

std::shared_ptr<ComposeView> ComposeView::make(std::shared_ptr<store::AppStore> store, const ComposePorts& ports,
                                               ComposePlace place, std::function<void()> onClose) {
    return std::make_shared<ComposeView>(Private{}, std::move(store), ports, std::move(place), std::move(onClose));
}

ComposeView::ComposeView(Private, std::shared_ptr<store::AppStore> store, ComposePorts ports, ComposePlace place,
                         std::function<void()> onClose)
    : store_(std::move(store)), ports_(std::move(ports)), place_(std::move(place)), onClose_(std::move(onClose)) {}

ComposeView::~ComposeView() {
    disappear();
}

void ComposeView::appear() {
    if (isShown_) {
        return;
    }
    isShown_ = true;
    isClosed_ = false;
    store_->clearLastError();
    loadDefaults();
    dropUnselectable();
    observer_ = store_->observe([weak = weak_from_this()](const store::StoreChanges& changes) {
        const auto self = weak.lock();
        if (self && changes.contains(store::StoreField::members)) {
            self->dropUnselectable();
        }
    });
    registerNote();
    ports_.crash.setScreen("send");
    tellChange();
}

void ComposeView::disappear() {
    if (!isShown_) {
        return;
    }
    isShown_ = false;
    observer_.reset();
    if (!isClosed_) {
        ports_.notes.retireNotes(store::note_key::composeNote);
    }
    ports_.crash.setScreen(state().isPaired ? "queue" : "pairing");
}

void ComposeView::setPlace(ComposePlace place) {
    if (place != place_) {
        place_ = std::move(place);
        tellChange();
    }
}

store::SignalTypeList ComposeView::availableTypes() const {
    auto types = store::activeSignalTypes(state());
    if (const records::Member* me = store::activeMember(state())) {
        std::erase_if(types, [me](const SignalType* type) {
            const auto& senders = type->senderDepartments;
            return senders && !senders->empty() && std::ranges::find(*senders, me->department) == senders->end();
        });
    }
    return types;
}

const SignalType* ComposeView::defaultType() const {
    const auto types = availableTypes();
    const auto ready = std::ranges::find(state().signalTypes, builtInReadyKey, &SignalType::key);
    if (ready != state().signalTypes.end() && holds(types, ready->id)) {
        return &*ready;
    }
    return types.empty() ? nullptr : types.front();
}

const SignalType* ComposeView::selectedType() const {
    const auto types = availableTypes();
    const auto chosen =
        choice_.selectedTypeId ? std::ranges::find(types, *choice_.selectedTypeId, &SignalType::id) : types.end();
    return chosen == types.end() ? defaultType() : *chosen;
}

std::optional<std::string> ComposeView::typeTarget() const {
    const SignalType* type = selectedType();
    return type ? type->targetDepartment : std::nullopt;
}

std::optional<std::string> ComposeView::room() const {
    return place_.fixedRoomId ? place_.fixedRoomId : choice_.selectedRoomId;
}

std::string ComposeView::defaultKey(std::string_view plain, std::string_view suffix) const {
    if (belongsToNoRoom()) {
        return std::string{plain};
    }
    const records::Member* me = store::activeMember(state());
    std::string prefix{me ? compose_default::memberPrefix : compose_default::autonomousPrefix};
    return prefix + (me ? me->id : "") + std::string{suffix};
}

void ComposeView::loadDefaults() {
    if (belongsToNoRoom() && !choice_.selectedRoomId) {
        const auto lastUsed = ports_.defaults.text(store::settings_key::lastUsedRoomId);
        const auto rooms = store::activeRooms(state());
        if (lastUsed && std::ranges::find(rooms, *lastUsed, &records::Room::id) != rooms.end()) {
            selectRoom(lastUsed);
        }
    }
    const auto typeId = ports_.defaults.text(defaultKey(compose_default::lastSendTypeId, typeSuffix));
    const auto recipient = ports_.defaults.text(defaultKey(compose_default::lastSendRecipient, recipientSuffix));
    if (typeId && holds(availableTypes(), *typeId)) {
        choice_.selectedTypeId = typeId;
    } else if (!choice_.selectedTypeId) {
        if (const SignalType* type = defaultType()) {
            choice_.selectedTypeId = type->id;
        }
    }
    if (choice_.who == WhoSelection{}) {
        choice_.who = defaultRecipient(state(), recipient.value_or(""), typeTarget());
    }
}

void ComposeView::saveDefaults(const Sending& sending) {
    if (sending.remembersRoom) {
        ports_.defaults.setText(store::settings_key::lastUsedRoomId, sending.roomId);
    }
    ports_.defaults.setText(sending.typeKey, sending.typeId);
    ports_.defaults.setText(sending.recipientKey, encodeRecipient(sending.recipient));
}

void ComposeView::dropUnselectable() {
    std::unordered_set<std::string_view> selectable;
    for (const records::Member* member : store::selectableRecipients(state())) {
        selectable.insert(member->id);
    }
    const auto dropped = std::erase_if(choice_.who.selectedProviderIds,
                                       [&selectable](const std::string& id) { return !selectable.contains(id); });
    if (dropped > 0) {
        tellChange();
    }
}

void ComposeView::registerNote() {
    const std::string_view note = choice_.note;
    ports_.notes.addNotesToHistory({&note, 1}, store::note_key::composeNote);
    ports_.notes.setNotes({&note, 1}, store::note_key::composeNote);
}

void ComposeView::tellChange() const {
    if (onChange_) {
        onChange_();
    }
}

void ComposeView::selectRoom(std::optional<std::string> roomId) {
    const records::Room* room = roomId ? store::roomById(state(), *roomId) : nullptr;
    selectedRoomName_ = room ? room->name : "";
    choice_.selectedRoomId = std::move(roomId);
}

void ComposeView::chooseRoom(std::optional<std::string> roomId) {
    selectRoom(std::move(roomId));
    tellChange();
}

void ComposeView::chooseType(const std::string& typeId) {
    choice_.selectedTypeId = typeId;
    tellChange();
}

void ComposeView::choose(WhoSelection who) {
    choice_.who = std::move(who);
    tellChange();
}

void ComposeView::pressPerson(const std::string& memberId) {
    choose(togglePerson(choice_.who, memberId));
}

void ComposeView::pressGroup(const std::string& department) {
    choose(toggleGroup(state(), choice_.who, department));
}

void ComposeView::pressAny() {
    choose(toggleAny(choice_.who));
}

void ComposeView::editNote(const std::string& text) {
    choice_.note = records::scalarPrefix(noteLimit, text);
    if (isOpen()) {
        registerNote();
    }
    tellChange();
}

bool ComposeView::canSend() const {
    if (isSending_ || state().isSending || !room()) {
        return false;
    }
    const SignalType* type = selectedType();
    return type && (choice_.who != WhoSelection{} || type->targetDepartment);
}

void ComposeView::send() {
    if (!isOpen() || !canSend()) {
        return;
    }
    // The keys name who sends and from where, and that is who presses: were they taken at the end, somebody who has
    // signed in meanwhile would find another person's choice as their own.
    Sending sending{.typeId = selectedType()->id,
                    .roomId = *room(),
                    .note = choice_.note,
                    .recipient = resolveRecipient(state(), choice_.who, typeTarget()),
                    .remembersRoom = belongsToNoRoom(),
                    .typeKey = defaultKey(compose_default::lastSendTypeId, typeSuffix),
                    .recipientKey = defaultKey(compose_default::lastSendRecipient, recipientSuffix)};
    isSending_ = true;
    platform::startTask(ports_.main,
                        [self = shared_from_this(), sending = std::move(sending)] { return run(self, sending); });
    tellChange();
}

platform::Awaitable<void> ComposeView::run(std::shared_ptr<ComposeView> self, Sending sending) {
    auto work = self->store_->sendSignal(sending.typeId, sending.note, sending.roomId, sending.recipient.ids,
                                         sending.recipient.department);
    co_await std::move(work);
    self->finish(sending);
}

void ComposeView::finish(const Sending& sending) {
    isSending_ = false;
    if (state().lastError) {
        tellChange();
        return;
    }
    saveDefaults(sending);
    close();
}

void ComposeView::cancel() {
    close();
}

void ComposeView::close() {
    if (isOpen()) {
        isClosed_ = true;
        ports_.notes.retireNotes(store::note_key::composeNote);
        onClose_();
    }
}

}  // namespace zelkovanta::screens
