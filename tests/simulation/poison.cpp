#include "tests/simulation/network.h"

#include <array>

namespace zelkovanta::simulation::poison {

namespace {

constexpr std::string_view officeText = R"({"id":"poison","name":"poison"})";
constexpr std::string_view memberText = R"({"id":"poison","name":"poison","department":"provider"})";
constexpr std::string_view roomsText = R"([{"id":"poison","name":"poison"}])";
constexpr std::string_view typesText =
    R"([{"id":"poison","key":"poison","label":"poison","color":"#000","priority":1}])";
constexpr std::string_view signalText =
    R"({"id":"poison","roomId":"poison","typeId":"poison","status":"waiting","createdAt":"2000-01-01T00:00:00.000Z"})";
constexpr std::string_view deviceText = R"({"id":"poison","kind":"desktop_mac"})";

std::string snapshotText() {
    return std::string{R"({"office":)"}.append(officeText) + R"(,"members":[)" + std::string{memberText} +
           R"(],"rooms":)" + std::string{roomsText} + R"(,"signalTypes":)" + std::string{typesText} +
           R"(,"signals":[)" + std::string{signalText} + R"(],"device":)" + std::string{deviceText} + "}";
}

std::string framed(std::string_view type, std::string_view key, std::string_view record) {
    return std::string{R"({"type":")"}.append(type) + R"(","data":{")" + std::string{key} + R"(":)" +
           std::string{record} + "}}";
}

}  // namespace

std::string frame(Chance& chance) {
    switch (chance.below(7)) {
        case 0:
            return R"({"type":"snapshot","data":)" + snapshotText() + "}";
        case 1:
            return framed("signal.created", "signal", signalText);
        case 2:
            return framed("member.updated", "member", memberText);
        case 3:
            return framed("office.updated", "office", officeText);
        case 4:
            return framed("rooms.updated", "rooms", roomsText);
        case 5:
            return framed("types.updated", "signalTypes", typesText);
        default:
            return R"({"type":"session.started","data":{"device":)" + std::string{deviceText} + R"(,"member":)" +
                   std::string{memberText} + "}}";
    }
}

std::string body(Route route) {
    switch (route) {
        case Route::state:
            return snapshotText();
        case Route::createSignal:
        case Route::act:
            return std::string{signalText};
        case Route::status:
            return std::string{memberText};
        case Route::redeem:
        case Route::pollSetup:
            return R"({"status":"approved","deviceToken":"poison","device":)" + std::string{deviceText} +
                   R"(,"office":)" + std::string{officeText} + R"(,"role":"room"})";
        default:
            return {};
    }
}

}  // namespace zelkovanta::simulation::poison
