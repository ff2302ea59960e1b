#include "screens/compose_form.h"
#include "screens/theme/office_color.h"
#include "screens/vocabulary/vocabulary.h"

#include <algorithm>

namespace zelkovanta::screens {

std::string ComposeView::roomPrompt() const {
    std::string prompt = ports_.strings.localized("Choose a room…");
    const auto& selected = choice_.selectedRoomId;
    const auto offered = store::activeRooms(state());
    if (!selected || std::ranges::find(offered, *selected, &records::Room::id) != offered.end()) {
        return prompt;
    }
    // The signal still goes there, so the form still says so.
    const records::Room* room = store::roomById(state(), *selected);
    const std::string& name = room ? room->name : selectedRoomName_;
    return name.empty() ? prompt : name;
}

ComposeScreen ComposeView::screen() const {
    const platform::StringTable& strings = ports_.strings;
    ComposeScreen screen;
    screen.title = strings.localized("Send a request");
    screen.roomTitle = strings.localized("Room");
    screen.choosesRoom = !place_.fixedRoomId;
    if (place_.fixedRoomId) {
        const records::Room* room = store::roomById(state(), *place_.fixedRoomId);
        screen.fixedRoom = room ? room->name : "";
    } else {
        for (const records::Room* room : store::activeRooms(state())) {
            const bool isHome = room->id == place_.homeRoomId;
            screen.rooms.push_back(
                {.id = room->id,
                 .name = isHome ? vocabulary::roomText(vocabulary::RoomText::homeRoomOption, room->name, strings)
                                : room->name});
        }
        screen.selectedRoomId = choice_.selectedRoomId;
        screen.roomPrompt = roomPrompt();
        const records::Room* home = place_.homeRoomId ? store::roomById(state(), *place_.homeRoomId) : nullptr;
        if (home) {
            screen.roomHint = vocabulary::roomText(vocabulary::RoomText::hintSignedIn, home->name, strings);
        }
    }

    screen.typeTitle = strings.localized("Signal");
    const auto vertical = state().office ? state().office->vertical : std::nullopt;
    const records::SignalType* selected = selectedType();
    for (const records::SignalType* type : availableTypes()) {
        screen.types.push_back({.id = type->id,
                                .label = vocabulary::signalTypeLabel(type->key, type->label, vertical, strings),
                                .color = theme::officeColor(type->color),
                                .selected = selected && type->id == selected->id});
    }

    screen.who = whoPickerSection(state(), choice_.who, typeTarget(), strings);
    screen.notePlaceholder = strings.localized("Short note (optional)");
    screen.note = choice_.note;
    screen.noteWarning = strings.localized(
        "Say what needs doing, never who it is for. No patient names or info. This is not a medical record.");
    screen.error = state().lastError.value_or("");
    screen.sendLabel = strings.localized("Send signal");
    screen.canSend = canSend();
    screen.isSending = isSending_ || state().isSending;
    screen.cancelLabel = strings.localized("Cancel");
    return screen;
}

}  // namespace zelkovanta::screens
