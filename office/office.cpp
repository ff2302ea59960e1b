#include "office/office.h"

#include "office/desk.h"
#include "office/wire.h"

#include <boost/json.hpp>

namespace zelkovanta::office {

std::expected<std::unique_ptr<Office>, StorageFailure> Office::open(Storage& storage, RandomBytes& random,
                                                                    QrPicture qrPicture) {
    std::expected<State, StorageFailure> state = storage.load();
    if (!state) {
        return std::unexpected(state.error());
    }
    return std::unique_ptr<Office>(
        new Office(std::make_unique<Desk>(storage, std::move(*state), random, std::move(qrPicture))));
}

Office::Office(std::unique_ptr<Desk> desk) : desk_(std::move(desk)) {}
Office::~Office() = default;

void Office::requireAppCheck(std::string token) {
    desk_->requireAppCheck(std::move(token));
}

Answer Office::handle(const Request& request, WallTime now) {
    return desk_->handle(request, timestamp(now));
}

SocketAnswer Office::socketOpened(std::string_view token, WallTime now) {
    return desk_->socketOpened(token, timestamp(now));
}

std::optional<std::string> Office::replyToFrame(std::string_view frame) {
    boost::system::error_code error;
    const boost::json::value value = boost::json::parse(boost::json::string_view(frame.data(), frame.size()), error);
    const boost::json::object* object = error ? nullptr : value.if_object();
    const boost::json::value* type = object == nullptr ? nullptr : object->if_contains("type");
    if (type == nullptr || !type->is_string() || type->get_string() != "ping") {
        return std::nullopt;
    }
    return R"({"type":"pong"})";
}

std::optional<std::string> Office::snapshot(std::string_view deviceId) const {
    const Device* device = state().find<Device>(deviceId);
    return device == nullptr ? std::nullopt : std::optional(desk_->snapshot(*device));
}

std::vector<Effect> Office::tick(WallTime now) {
    return desk_->tick(timestamp(now));
}

std::optional<Timestamp> Office::nextDeadline() const {
    return desk_->nextDeadline();
}

Answer Office::administer(const Request& request, WallTime now) {
    return desk_->administer(request, timestamp(now));
}

Answer Office::addSample(std::string_view name, WallTime now) {
    return desk_->finish(desk_->addSample(name, timestamp(now)));
}

Answer Office::approve(std::string_view setupRequest, const Placement& placement, WallTime now) {
    return desk_->finish(desk_->approve(setupRequest, placement, timestamp(now)));
}

Answer Office::makePairingCode(const Placement& placement, WallTime now) {
    return desk_->finish(desk_->makePairingCode(placement, timestamp(now)));
}

Answer Office::signIn(std::string_view device, std::string_view member, WallTime) {
    const auto found = desk_->deviceNamed(device);
    return found ? desk_->finish(desk_->signIn(Device(**found), member)) : refuse(found.error());
}

Answer Office::signInWithCode(std::string_view code, std::string_view member, WallTime now) {
    return desk_->finish(desk_->signInWithCode(code, member, timestamp(now)));
}

Answer Office::scanSignInCode(std::string_view device, std::string_view member, WallTime now) {
    const auto found = desk_->deviceNamed(device);
    return found ? desk_->finish(desk_->scanSignInCode(Device(**found), member, timestamp(now)))
                 : refuse(found.error());
}

Answer Office::signOut(std::string_view device, WallTime) {
    const auto found = desk_->deviceNamed(device);
    return found ? desk_->finish(desk_->signOut(**found)) : refuse(found.error());
}

Answer Office::revoke(std::string_view device, WallTime) {
    const auto found = desk_->deviceNamed(device);
    return found ? desk_->finish(desk_->revoke(Device(**found))) : refuse(found.error());
}

Answer Office::move(std::string_view device, std::string_view practice, std::optional<std::string> room,
                    std::optional<std::string> member, MoveNotice notice, WallTime) {
    const auto found = desk_->deviceNamed(device);
    if (!found) {
        return refuse(found.error());
    }
    const auto target = desk_->practiceNamed(practice);
    return target ? desk_->finish(desk_->move(**found, **target, std::move(room), std::move(member), notice))
                  : refuse(target.error());
}

Answer Office::setNotificationSettings(std::string_view device, std::string_view settings, WallTime) {
    const auto found = desk_->deviceNamed(device);
    return found ? desk_->finish(desk_->setNotificationSettings(**found, settings)) : refuse(found.error());
}

Answer Office::send(const SendOrder& order, WallTime now) {
    return desk_->finish(desk_->send(order, timestamp(now)));
}

Answer Office::act(std::string_view signal, SignalAction action, std::optional<std::string> by, WallTime now) {
    const auto found = desk_->signalNamed(signal);
    if (!found) {
        return refuse(found.error());
    }
    if (by) {
        const auto member = desk_->memberNamed((*found)->practiceId, *by);
        if (!member) {
            return refuse(member.error());
        }
        by = (*member)->id;
    }
    return desk_->finish(desk_->act(**found, action, by, timestamp(now)));
}

Answer Office::walkIn(std::string_view practice, std::string_view member, std::string_view room, WallTime now) {
    const auto where = desk_->practiceNamed(practice);
    return where ? desk_->finish(desk_->walkIn(**where, member, room, timestamp(now))) : refuse(where.error());
}

Answer Office::setStatus(std::string_view practice, std::string_view member, std::string_view status, WallTime now) {
    const auto where = desk_->practiceNamed(practice);
    if (!where) {
        return refuse(where.error());
    }
    const auto found = desk_->memberNamed((*where)->id, member);
    return found ? desk_->finish(desk_->setStatus(**found, status, timestamp(now))) : refuse(found.error());
}

Answer Office::changeMember(std::string_view practice, std::string_view member, const MemberChange& change,
                            WallTime now) {
    const auto where = desk_->practiceNamed(practice);
    if (!where) {
        return refuse(where.error());
    }
    const auto found = desk_->memberNamed((*where)->id, member);
    return found ? desk_->finish(desk_->changeMember(**found, change, timestamp(now))) : refuse(found.error());
}

Answer Office::addMember(std::string_view practice, std::string_view name, std::string_view department, WallTime now) {
    const auto where = desk_->practiceNamed(practice);
    return where ? desk_->finish(desk_->addMember(**where, name, department, timestamp(now))) : refuse(where.error());
}

Answer Office::changeRoom(std::string_view practice, std::string_view room, const RoomChange& change, WallTime) {
    const auto where = desk_->practiceNamed(practice);
    if (!where) {
        return refuse(where.error());
    }
    const auto found = desk_->roomNamed((*where)->id, room);
    return found ? desk_->finish(desk_->changeRoom(**found, change)) : refuse(found.error());
}

Answer Office::addRoom(std::string_view practice, std::string_view name, WallTime) {
    const auto where = desk_->practiceNamed(practice);
    return where ? desk_->finish(desk_->addRoom(**where, name)) : refuse(where.error());
}

Answer Office::changeType(std::string_view practice, std::string_view type, const TypeChange& change, WallTime) {
    const auto where = desk_->practiceNamed(practice);
    if (!where) {
        return refuse(where.error());
    }
    const auto found = desk_->typeNamed((*where)->id, type);
    return found ? desk_->finish(desk_->changeType(**found, change)) : refuse(found.error());
}

Answer Office::changePractice(std::string_view practice, const PracticeChange& change, WallTime) {
    const auto where = desk_->practiceNamed(practice);
    return where ? desk_->finish(desk_->changePractice(**where, change)) : refuse(where.error());
}

Answer Office::announce(const Release& release, WallTime) {
    return desk_->finish(desk_->announce(release));
}

std::string Office::overview(WallTime now) const {
    return desk_->overview(timestamp(now));
}

const State& Office::state() const {
    return desk_->state();
}

}  // namespace zelkovanta::office
