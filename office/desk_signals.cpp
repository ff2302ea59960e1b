#include "office/desk.h"
#include "office/wire.h"

#include <algorithm>

namespace zelkovanta::office {
namespace {

constexpr std::size_t longestNote = 200;
constexpr std::size_t longestIdentifier = 100;
constexpr std::size_t mostRecipients = 200;
constexpr std::string_view provider = "provider";
constexpr std::string_view clearedByBeacon = "ble";

bool sameCall(const Signal& left, const Signal& right) {
    return left.roomId == right.roomId && left.typeId == right.typeId && left.providerId == right.providerId &&
           left.providerIds == right.providerIds && left.toDepartment == right.toDepartment;
}

/// Whoever is on the way; before that everybody who is addressed, and for an open call the providers.
bool callsFor(const Signal& signal, const Member& member) {
    if (signal.acknowledgedBy) {
        return *signal.acknowledgedBy == member.id;
    }
    if (signal.providerIds) {
        return std::ranges::find(*signal.providerIds, member.id) != signal.providerIds->end();
    }
    return signal.providerId ? *signal.providerId == member.id : member.department == provider;
}

}  // namespace

/// A signal as somebody wants it, all identifiers as they came.
struct Office::Desk::Draft {
    std::string practiceId;
    std::string roomId;
    std::string typeId;
    const Member* sender = nullptr;
    std::vector<std::string> recipients;
    std::optional<std::string> toDepartment;
    std::string note;
};

Office::Desk::Outcome Office::Desk::place(Draft draft, Timestamp now) {
    const Practice& practice = *ledger_.find<Practice>(draft.practiceId);
    const auto ours = [&](const auto* record) { return record != nullptr && record->practiceId == practice.id; };

    const SignalType* type = ledger_.find<SignalType>(draft.typeId);
    if (!ours(type)) {
        return std::unexpected(refusals::notFound("unknown_type", "There is no such kind of signal."));
    }
    if (!type->active.value_or(true)) {
        return std::unexpected(refusals::conflict("type_inactive", "This kind of signal is not in use."));
    }
    const Room* room = ledger_.find<Room>(draft.roomId);
    if (!ours(room)) {
        return std::unexpected(refusals::notFound("unknown_room", "There is no such room."));
    }
    if (!room->active.value_or(true)) {
        return std::unexpected(refusals::conflict("room_inactive", "This room is not in use."));
    }
    if (draft.sender != nullptr && type->senderDepartments && !type->senderDepartments->empty() &&
        std::ranges::find(*type->senderDepartments, draft.sender->department) == type->senderDepartments->end()) {
        return std::unexpected(
            Refusal{403, "sender_not_allowed", "This kind of signal is not sent by your department.", std::nullopt});
    }

    if (draft.toDepartment) {
        const auto departments = std::ranges::find(practice.departments, *draft.toDepartment, &Department::key);
        if (departments == practice.departments.end()) {
            return std::unexpected(refusals::notFound("unknown_department", "There is no such department."));
        }
        // An open call reaches the providers already. Everybody else is addressed by name, those who are there now.
        if (*draft.toDepartment != provider) {
            for (const Member* member : inOrder<Member>(practice.id)) {
                if (member->department == *draft.toDepartment && member->active.value_or(true) &&
                    member->onShift.value_or(true) && member != draft.sender) {
                    draft.recipients.push_back(member->id);
                }
            }
            if (draft.recipients.empty()) {
                return std::unexpected(
                    refusals::conflict("nobody_on_shift", "Nobody of that department is on shift right now."));
            }
        }
    } else if (draft.recipients.empty() && !practice.allowAnyProvider.value_or(true)) {
        return std::unexpected(refusals::badRequest("Choose who should come."));
    }
    for (const std::string& id : draft.recipients) {
        const Member* member = ledger_.find<Member>(id);
        if (!ours(member) || !member->active.value_or(true)) {
            return std::unexpected(refusals::notFound("unknown_member", "There is no such member."));
        }
        if (!member->onShift.value_or(true)) {
            return std::unexpected(refusals::conflict("provider_off_shift", {}));
        }
    }

    Signal signal{.id = unusedIdentifier<Signal>("sig_"),
                  .practiceId = practice.id,
                  .roomId = room->id,
                  .requesterId = draft.sender == nullptr ? std::nullopt : std::optional(draft.sender->id),
                  .providerId = std::nullopt,
                  .providerIds = std::nullopt,
                  .toDepartment = std::move(draft.toDepartment),
                  .typeId = type->id,
                  .note = draft.note.empty() ? std::nullopt : std::optional(std::move(draft.note)),
                  .status = SignalStatus::waiting,
                  .createdAt = now,
                  .acknowledgedAt = std::nullopt,
                  .acknowledgedBy = std::nullopt,
                  .clearedAt = std::nullopt,
                  .clearedBy = std::nullopt};
    if (draft.recipients.size() == 1) {
        signal.providerId = std::move(draft.recipients.front());
    } else if (!draft.recipients.empty()) {
        signal.providerIds = std::move(draft.recipients);
    }
    for (const auto& [createdAt, id] : ledger_.activeSignals(practice.id)) {
        if (sameCall(*ledger_.find<Signal>(id), signal)) {
            return std::unexpected(refusals::conflict("duplicate_active_signal", {}));
        }
    }
    std::string body = jsonOf(signal);
    tell(practice.id, frameOf("signal.created", "signal", signal));
    ledger_.put(std::move(signal));
    return body;
}

Office::Desk::Outcome Office::Desk::createSignal(const Device& device, std::string_view body, Timestamp now) {
    RequestBody in(body);
    const std::string typeId = in.requiredText("typeId", longestIdentifier);
    std::string note = in.requiredText("note", longestNote);
    const std::optional<std::string> roomId = in.text("roomId", longestIdentifier);
    const std::optional<std::string> providerId = in.text("providerId", longestIdentifier);
    std::optional<std::vector<std::string>> providerIds = in.texts("providerIds", mostRecipients);
    std::optional<std::string> toDepartment = in.text("toDepartment", longestIdentifier);
    if (in.fault()) {
        return std::unexpected(*in.fault());
    }
    if (providerId.has_value() + providerIds.has_value() + toDepartment.has_value() > 1) {
        return std::unexpected(
            refusals::badRequest("A signal is addressed to one member, to several, or to a department."));
    }
    const Member* sender = memberAt(device);
    if (sender == nullptr && isStation(device)) {
        return std::unexpected(refusals::signInRequired());
    }
    const std::optional<std::string>& where = roomId ? roomId : device.roomId;
    if (!where) {
        return std::unexpected(Refusal{400, "room_required", {}, std::nullopt});
    }

    Draft draft{.practiceId = device.practiceId,
                .roomId = *where,
                .typeId = typeId,
                .sender = sender,
                .recipients = {},
                .toDepartment = std::move(toDepartment),
                .note = std::move(note)};
    if (providerId) {
        draft.recipients = {*providerId};
    } else if (providerIds) {
        // Named twice is named once; the first mention gives the place.
        for (std::string& id : *providerIds) {
            if (std::ranges::find(draft.recipients, id) == draft.recipients.end()) {
                draft.recipients.push_back(std::move(id));
            }
        }
    }
    return place(std::move(draft), now);
}

Office::Desk::Outcome Office::Desk::send(const SendOrder& order, Timestamp now) {
    const auto practice = practiceNamed(order.practice);
    if (!practice) {
        return std::unexpected(practice.error());
    }
    const std::string& practiceId = (*practice)->id;
    const auto room = roomNamed(practiceId, order.room);
    if (!room) {
        return std::unexpected(room.error());
    }
    const auto type = typeNamed(practiceId, order.type);
    if (!type) {
        return std::unexpected(type.error());
    }
    if (scalarCount(order.note) > longestNote) {
        return std::unexpected(refusals::badRequest("The note is longer than 200 characters."));
    }
    if (!order.to.empty() && order.toDepartment) {
        return std::unexpected(refusals::badRequest("A signal is addressed to members or to a department."));
    }
    Draft draft{.practiceId = practiceId,
                .roomId = (*room)->id,
                .typeId = (*type)->id,
                .sender = nullptr,
                .recipients = {},
                .toDepartment = order.toDepartment,
                .note = order.note};
    if (order.from) {
        const auto sender = memberNamed(practiceId, *order.from);
        if (!sender) {
            return std::unexpected(sender.error());
        }
        draft.sender = *sender;
    }
    for (const std::string& name : order.to) {
        const auto recipient = memberNamed(practiceId, name);
        if (!recipient) {
            return std::unexpected(recipient.error());
        }
        if (std::ranges::find(draft.recipients, (*recipient)->id) == draft.recipients.end()) {
            draft.recipients.push_back((*recipient)->id);
        }
    }
    return place(std::move(draft), now);
}

void Office::Desk::end(Signal signal, SignalStatus status, std::optional<std::string> by, Timestamp now) {
    signal.status = status;
    signal.clearedAt = now;
    signal.clearedBy = std::move(by);
    tell(signal.practiceId, frameOf("signal.updated", "signal", signal));
    ledger_.put(std::move(signal));
}

Office::Desk::Outcome Office::Desk::act(Signal signal, SignalAction action, const std::optional<std::string>& by,
                                        Timestamp now) {
    if (!isActive(signal)) {
        return std::unexpected(refusals::conflict("already_cleared", {}));
    }
    const std::string id = signal.id;
    if (action == SignalAction::acknowledge) {
        if (signal.status == SignalStatus::acknowledged) {
            if (signal.acknowledgedBy != by) {
                return std::unexpected(refusals::conflict("already_acknowledged", "Somebody is on the way already."));
            }
            return jsonOf(signal);
        }
        signal.status = SignalStatus::acknowledged;
        signal.acknowledgedAt = now;
        signal.acknowledgedBy = by;
        tell(signal.practiceId, frameOf("signal.updated", "signal", signal));
        ledger_.put(std::move(signal));
    } else if (action == SignalAction::arrived) {
        end(std::move(signal), SignalStatus::done, std::string(clearedByBeacon), now);
    } else {
        end(std::move(signal), action == SignalAction::done ? SignalStatus::done : SignalStatus::canceled, by, now);
    }
    return jsonOf(*ledger_.find<Signal>(id));
}

Office::Desk::Outcome Office::Desk::walkIn(const Practice& practice, std::string_view memberName,
                                           std::string_view roomName, Timestamp now) {
    const auto member = memberNamed(practice.id, memberName);
    if (!member) {
        return std::unexpected(member.error());
    }
    const auto room = roomNamed(practice.id, roomName);
    if (!room) {
        return std::unexpected(room.error());
    }
    std::vector<std::string> cleared;
    for (const auto& [createdAt, id] : ledger_.activeSignals(practice.id)) {
        const Signal& signal = *ledger_.find<Signal>(id);
        if (signal.roomId == (*room)->id && callsFor(signal, **member)) {
            cleared.push_back(id);
        }
    }
    for (const std::string& id : cleared) {
        end(*ledger_.find<Signal>(id), SignalStatus::done, std::string(clearedByBeacon), now);
    }
    JsonText json;
    json.object().field("cleared", cleared).endObject();
    return json.take();
}

Office::Desk::Outcome Office::Desk::actOnSignal(const Device& device, std::string_view signalId, std::string_view body,
                                                Timestamp now) {
    RequestBody in(body);
    const std::string word = in.requiredText("action", longestIdentifier);
    if (in.fault()) {
        return std::unexpected(*in.fault());
    }
    const std::optional<SignalAction> action = actionNamed(word);
    // A computer cannot speak for the beacon.
    if (!action || *action == SignalAction::arrived) {
        return std::unexpected(refusals::badRequest("\"action\" must be acknowledge, done or cancel."));
    }
    const auto signal = signalNamed(signalId);
    if (!signal || (*signal)->practiceId != device.practiceId) {
        return std::unexpected(refusals::notFound("unknown_signal", "There is no such signal."));
    }
    const Member* member = memberAt(device);
    if (member == nullptr && device.role == DeviceRole::shared) {
        return std::unexpected(refusals::signInRequired());
    }
    return act(**signal, *action, member == nullptr ? std::nullopt : std::optional(member->id), now);
}

}  // namespace zelkovanta::office
