#include "tests/simulation/simulated_office.h"

#include <algorithm>
#include <variant>

namespace zelkovanta::simulation {

using namespace std::chrono_literals;

namespace {

constexpr auto tickInterval = 5s;
constexpr auto clearedSignalKept = std::chrono::days{7};

std::string pictureOf(std::string_view) {
    return "data:image/png;base64,iVBORw0KGgo=";
}

/// How far on a signal is: an end is never left again.
int progressOf(std::string_view status) {
    return status == "waiting" ? 0 : status == "acknowledged" ? 1 : 2;
}

int progressOf(office::SignalStatus status) {
    return status == office::SignalStatus::waiting ? 0 : status == office::SignalStatus::acknowledged ? 1 : 2;
}

OfficeFramePointer makeFrame(std::string text, std::uint64_t sequence) {
    OfficeFrame frame{.text = std::move(text), .type = {}, .recordId = {}, .sequence = sequence};
    frame.type = jsonText(frame.text, "type");
    if (frame.type.starts_with("signal.") || frame.type.starts_with("member.")) {
        frame.recordId = jsonText(frame.text, "id");
    }
    return std::make_shared<const OfficeFrame>(std::move(frame));
}

}  // namespace

std::string_view jsonText(std::string_view json, std::string_view key, std::size_t from) {
    while (true) {
        const auto found = json.find(key, from);
        if (found == std::string_view::npos) {
            return {};
        }
        const auto behind = found + key.size();
        if (found > 0 && json[found - 1] == '"' && json.substr(behind, 3) == R"(":")") {
            const auto start = behind + 3;
            return json.substr(start, json.find('"', start) - start);
        }
        from = behind;
    }
}

SimulatedOffice::SimulatedOffice(const Surroundings& surroundings, Chance chance, office::MemoryStorage& memory,
                                 office::Storage& storage)
    : surroundings_(surroundings), memory_(memory), storage_(storage), random_(chance) {
    comeUp();
    scheduleTick();
}

SimulatedOffice::~SimulatedOffice() = default;

void SimulatedOffice::scheduleTick() {
    surroundings_.loop.schedule(surroundings_.loop.now() + tickInterval, [this] {
        if (isUp_ && isExpiring_) {
            // Only a call of the office moves its deadline.
            if (deadlineAsOf_ != sequence_) {
                deadline_ = office_->nextDeadline();
                deadlineAsOf_ = sequence_;
            }
            if (deadline_ && *deadline_ <= surroundings_.loop.wallNow()) {
                ++sequence_;
                office::Answer due;
                due.effects = office_->tick(surroundings_.loop.wallNow());
                static_cast<void>(carryOut("tick", due));
            }
        }
        scheduleTick();
    });
}

office::Answer SimulatedOffice::handle(const office::Request& request) {
    ++sequence_;
    office::Answer answer = office_->handle(request, surroundings_.loop.wallNow());
    remember(request, answer);
    static_cast<void>(carryOut(request.method, answer));
    return answer;
}

void SimulatedOffice::remember(const office::Request& request, const office::Answer& answer) {
    if (answer.status < 200 || answer.status > 299) {
        return;
    }
    const std::string_view body = answer.body;
    if (request.path.starts_with("/api/v1/pair/")) {
        if (const auto token = jsonText(body, "deviceToken"); !token.empty()) {
            deviceByToken_.insert_or_assign(std::string{token},
                                            std::string{jsonText(body, "id", body.find(R"("device":)"))});
        }
    } else if (request.path.starts_with("/api/v1/signals")) {
        const std::string id{jsonText(body, "id")};
        const int progress = progressOf(jsonText(body, "status"));
        const auto [known, isNew] = acceptedAt_.try_emplace(id, accepted_.size());
        if (isNew) {
            accepted_.emplace_back(id, progress);
        }
        accepted_[known->second].second = std::max(accepted_[known->second].second, progress);
    }
}

office::SocketAnswer SimulatedOffice::open(std::string_view token,
                                           const std::shared_ptr<OfficeConnection>& connection) {
    ++sequence_;
    office::SocketAnswer answer = office_->socketOpened(token, surroundings_.loop.wallNow());
    surroundings_.trace.note(surroundings_.loop.now(), -1, "socket", answer.deviceId);
    if (answer.status == 101) {
        connections_[answer.deviceId].push_back(connection);
        connection->send(makeFrame(answer.frame, sequence_));
    }
    return answer;
}

void SimulatedOffice::closed(const OfficeConnection& connection) {
    for (auto& [deviceId, open] : connections_) {
        std::erase_if(open, [&](const auto& each) { return each.get() == &connection; });
    }
}

bool SimulatedOffice::carryOut(std::string_view what, const office::Answer& answer) {
    surroundings_.trace.note(surroundings_.loop.now(), -1, what, answer.route);
    for (const office::Effect& effect : answer.effects) {
        if (const auto* frame = std::get_if<office::SendFrame>(&effect)) {
            send(*frame);
        } else {
            close(std::get<office::CloseSockets>(effect));
        }
    }
    lastBody_ = answer.body;
    return answer.status >= 200 && answer.status <= 299;
}

void SimulatedOffice::send(const office::SendFrame& effect) {
    const OfficeFramePointer frame = makeFrame(effect.frame, sequence_);
    for (const std::string& deviceId : effect.deviceIds) {
        if (const auto open = connections_.find(deviceId); open != connections_.end()) {
            for (const auto& connection : open->second) {
                connection->send(frame);
            }
        }
    }
}

void SimulatedOffice::close(const office::CloseSockets& effect) {
    const auto open = connections_.find(effect.deviceId);
    if (open == connections_.end()) {
        return;
    }
    for (const auto& connection : std::exchange(open->second, {})) {
        connection->closeFromOffice(effect.code);
    }
}

void SimulatedOffice::goDown() {
    isUp_ = false;
    // In the order of the computers' ids, since a hash table's order may differ between libraries.
    std::vector<std::string> ids;
    for (const auto& [deviceId, open] : connections_) {
        ids.push_back(deviceId);
    }
    std::ranges::sort(ids);
    for (const std::string& id : ids) {
        for (const auto& connection : std::exchange(connections_[id], {})) {
            connection->officeDied();
        }
    }
    connections_.clear();
    surroundings_.trace.note(surroundings_.loop.now(), -1, "office down");
}

void SimulatedOffice::comeUp() {
    auto opened = office::Office::open(storage_, random_, pictureOf);
    if (!opened) {
        surroundings_.verdict.fail(surroundings_.loop.now(), -1, "the office does not open: " + opened.error().reason);
        return;
    }
    if (office_ && office_->state() != (*opened)->state()) {
        surroundings_.verdict.fail(surroundings_.loop.now(), -1,
                                   "a restarted office does not hold what it held before");
    }
    office_ = std::move(*opened);
    isUp_ = true;
    ++incarnation_;
    surroundings_.trace.note(surroundings_.loop.now(), -1, "office up");
    checkNothingLost();
}

std::optional<std::string> SimulatedOffice::deviceOf(std::string_view token) const {
    const auto found = deviceByToken_.find(std::string{token});
    return found == deviceByToken_.end() ? std::nullopt : std::optional{found->second};
}

void SimulatedOffice::checkNothingLost() {
    const auto now = office::timestamp(surroundings_.loop.wallNow());
    std::erase_if(accepted_, [&](const auto& entry) {
        const office::Signal* signal = state().find<office::Signal>(entry.first);
        if (signal == nullptr) {
            surroundings_.verdict.fail(surroundings_.loop.now(), -1, "accepted signal " + entry.first + " is gone");
            return true;
        }
        if (progressOf(signal->status) < entry.second) {
            surroundings_.verdict.fail(surroundings_.loop.now(), -1,
                                       "accepted change of signal " + entry.first + " is gone");
        }
        // From here on the office may forget it.
        return signal->clearedAt && *signal->clearedAt + clearedSignalKept - std::chrono::days{1} <= now;
    });
    acceptedAt_.clear();
    for (std::size_t index = 0; index < accepted_.size(); ++index) {
        acceptedAt_.emplace(accepted_[index].first, index);
    }
}

}  // namespace zelkovanta::simulation
