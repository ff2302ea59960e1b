#include "office/sqlite_storage.h"
#include "tests/office/office_fixture.h"
#include "tests/support/temporary_folder.h"

#include <rapidcheck.h>

namespace zelkovanta::office {
namespace {

/// What one computer has put together from its first snapshot and the frames since.
class Replica {
public:
    explicit Replica(json::value snapshot) : state_(std::move(snapshot)) {}

    void receive(const json::value& frame) {
        const std::string type = at(frame, "type");
        const json::value* data = frame.get_object().if_contains("data");
        json::object& state = state_.get_object();
        if (type == "snapshot") {
            state_ = *data;
        } else if (type == "signal.created" || type == "signal.updated") {
            merge("signals", data->at("signal"));
            const std::string status = at(data->at("signal"), "status");
            if (status != "waiting" && status != "acknowledged") {
                drop("signals", at(data->at("signal"), "id"));
            }
        } else if (type == "member.updated") {
            merge("members", data->at("member"));
        } else if (type == "rooms.updated") {
            state["rooms"] = data->at("rooms");
        } else if (type == "types.updated") {
            state["signalTypes"] = data->at("signalTypes");
        } else if (type == "office.updated") {
            state["office"] = data->at("office");
        } else if (type == "session.started") {
            state["device"] = data->at("device");
            merge("members", data->at("member"));
        } else if (type == "session.ended") {
            state["device"].get_object().erase("signedInMemberId");
        }
    }

    [[nodiscard]] const json::value& state() const { return state_; }

private:
    json::array& list(std::string_view name) { return state_.get_object()[json::string_view(name)].get_array(); }

    void merge(std::string_view name, const json::value& record) {
        for (json::value& each : list(name)) {
            if (at(each, "id") == at(record, "id")) {
                each = record;
                return;
            }
        }
        list(name).push_back(record);
    }

    void drop(std::string_view name, const std::string& id) {
        json::array& records = list(name);
        for (auto each = records.begin(); each != records.end(); ++each) {
            if (at(*each, "id") == id) {
                records.erase(each);
                return;
            }
        }
    }

    json::value state_;
};

/// The order of signals means nothing.
json::value inOrder(json::value state) {
    json::array& signals = state.at("signals").get_array();
    std::ranges::sort(
        signals, [](const json::value& left, const json::value& right) { return at(left, "id") < at(right, "id"); });
    return state;
}

/// Turns numbers into a day at an office, and checks after every step what must always hold.
class Day {
public:
    Day(Storage& storage, MemoryStorage* refusable) : storage_(storage), refusable_(refusable) {
        open();
        (void)office_->addSample("harbour", now_);
        for (const auto& [id, practice] : office_->state().all<Practice>()) {
            practices_.push_back(id);
        }
    }

    void live(const std::vector<std::uint32_t>& numbers) {
        for (std::size_t index = 0; index + 2 < numbers.size(); index += 3) {
            step(numbers[index], numbers[index + 1], numbers[index + 2]);
            check();
        }
        reopen();
    }

    [[nodiscard]] const State& state() const { return office_->state(); }
    [[nodiscard]] std::size_t accepted() const { return accepted_; }

private:
    void open() {
        auto opened = Office::open(storage_, random_, [](std::string_view) { return std::string("picture"); });
        RC_ASSERT(opened.has_value());
        office_ = std::move(*opened);
    }

    void reopen() {
        const State before = office_->state();
        office_.reset();
        open();
        RC_ASSERT(office_->state() == before);
    }

    template <class T>
    std::string any(std::uint32_t number) const {
        const auto& all = office_->state().all<T>();
        return all.empty() ? "none" : std::next(all.begin(), static_cast<std::ptrdiff_t>(number % all.size()))->first;
    }

    void step(std::uint32_t what, std::uint32_t first, std::uint32_t second) {
        now_ += std::chrono::milliseconds(first % 60'000);
        const bool refusing = refusable_ != nullptr && what % 11 == 7;
        if (refusing) {
            refusable_->refuseCommits(true);
        }
        const State before = refusing ? office_->state() : State();
        const Answer answer = carryOut(what % 20, first, second);
        if (refusing) {
            refusable_->refuseCommits(false);
            RC_ASSERT(answer.status == 500 || answer.effects.empty());
            RC_ASSERT(office_->state() == before);
        }
        if (answer.status >= 400) {
            RC_ASSERT(at(json::parse(answer.body), "error") != "<none>");
            RC_ASSERT(answer.effects.empty());
        } else {
            ++accepted_;
        }
        deliver(answer.effects);
    }

    Answer carryOut(std::uint32_t what, std::uint32_t first, std::uint32_t second) {
        const bool even = second % 2 == 0;
        switch (what) {
            case 0:
                return pair(first, second);
            case 1:
            case 2:
            case 3:
                return send(first, second);
            case 4:
            case 5:
                return act(first, second);
            case 6:
                return office_->signIn(any<Device>(first), any<Member>(second), now_);
            case 7:
                return request("POST", "devices/me/signout", {}, first);
            case 8:
                return request("POST", "members/me/status", R"({"status":"busy"})", first);
            case 9:
                return office_->changeMember(practiceOf<Member>(first), any<Member>(first),
                                             {.onShift = even, .cooldownMinutes = second % 3}, now_);
            case 10:
                return office_->changeRoom(practiceOf<Room>(first), any<Room>(first), {.active = even}, now_);
            case 11:
                return office_->changePractice(practices_[first % practices_.size()],
                                               {.autoExpireMinutes = second % 90, .requireSignedInSender = even}, now_);
            case 12:
                return office_->move(any<Device>(first), practices_[second % practices_.size()], {}, {},
                                     MoveNotice::snapshot, now_);
            case 13:
                return revokeSometimes(first, second);
            case 14: {
                now_ += minutes{second % 60};
                return {.status = 200, .body = {}, .route = {}, .effects = office_->tick(now_)};
            }
            case 15:
                reopen();
                return {};
            case 16:
                return office_->walkIn(practiceOf<Member>(first), any<Member>(first), any<Room>(second), now_);
            case 17:
                return office_->setStatus(practiceOf<Member>(first), any<Member>(first), even ? "dnd" : "available",
                                          now_);
            case 18:
                (void)request("POST", "devices/me/signin-qr", {}, second);
                return office_->scanSignInCode(any<Device>(first), any<Member>(second), now_);
            default:
                return office_->changeType(practiceOf<SignalType>(first), any<SignalType>(first),
                                           {.priority = second % 100, .active = even}, now_);
        }
    }

    template <class T>
    std::string practiceOf(std::uint32_t number) const {
        const T* record = office_->state().find<T>(any<T>(number));
        return record == nullptr ? std::string() : record->practiceId;
    }

    Answer request(std::string method, std::string path, std::string body, std::uint32_t number) {
        if (tokens_.empty()) {
            return {};
        }
        const auto token = std::next(tokens_.begin(), static_cast<std::ptrdiff_t>(number % tokens_.size()))->second;
        return office_->handle({.method = std::move(method),
                                .path = "/api/v1/" + std::move(path),
                                .token = token,
                                .body = std::move(body),
                                .peer = "peer"},
                               now_);
    }

    Answer pair(std::uint32_t first, std::uint32_t second) {
        const auto role = static_cast<DeviceRole>(second % 3);
        Placement placement{.practice = practices_[first % practices_.size()], .role = role};
        if (role == DeviceRole::room) {
            placement.room = any<Room>(first);
        } else if (role == DeviceRole::member) {
            placement.member = any<Member>(first);
        }
        const Answer code = office_->makePairingCode(placement, now_);
        if (code.status != 200) {
            return code;
        }
        const Answer paired =
            office_->handle({.method = "POST",
                             .path = "/api/v1/pair/redeem",
                             .token = {},
                             .body = R"({"code":")" + at(json::parse(code.body), "code") +
                                     R"(","device":{"kind":"desktop_mac","name":"Mac","model":"m","appVersion":"1"}})",
                             .peer = "peer"},
                            now_);
        if (paired.status == 200) {
            const json::value body = json::parse(paired.body);
            tokens_[at(body, "device.id")] = at(body, "deviceToken");
            const SocketAnswer opened = office_->socketOpened(at(body, "deviceToken"), now_);
            RC_ASSERT(opened.status == 101);
            replicas_.insert_or_assign(opened.deviceId, Replica(json::parse(opened.frame).at("data")));
        }
        return paired;
    }

    Answer send(std::uint32_t first, std::uint32_t second) {
        json::object body{{"typeId", any<SignalType>(second)}, {"note", std::string(second % 5, 'n')}};
        if (first % 3 != 0) {
            body["roomId"] = any<Room>(first);
        }
        if (second % 4 == 1) {
            body["providerId"] = any<Member>(second / 4);
        } else if (second % 4 == 2) {
            body["providerIds"] = json::array{any<Member>(first / 3), any<Member>(second / 4)};
        } else if (second % 4 == 3) {
            body["toDepartment"] = "assistant";
        }
        return request("POST", "signals", json::serialize(body), first);
    }

    Answer act(std::uint32_t first, std::uint32_t second) {
        static constexpr const char* actions[] = {"acknowledge", "done", "cancel"};
        return request("PATCH", "signals/" + any<Signal>(first),
                       R"({"action":")" + std::string(actions[second % 3]) + "\"}", second / 3);
    }

    Answer revokeSometimes(std::uint32_t first, std::uint32_t second) {
        return second % 4 == 0 ? office_->revoke(any<Device>(first), now_) : Answer{};
    }

    void deliver(const std::vector<Effect>& effects) {
        for (const Effect& effect : effects) {
            if (const auto* close = std::get_if<CloseSockets>(&effect)) {
                RC_ASSERT(close->code == revokedCloseCode);
                RC_ASSERT(office_->state().find<Device>(close->deviceId) == nullptr);
                RC_ASSERT(office_->socketOpened(tokens_[close->deviceId], now_).status == 401);
                replicas_.erase(close->deviceId);
                tokens_.erase(close->deviceId);
                continue;
            }
            const json::value frame = frameIn(effect);
            for (const std::string& deviceId : std::get<SendFrame>(effect).deviceIds) {
                if (const auto replica = replicas_.find(deviceId); replica != replicas_.end()) {
                    replica->second.receive(frame);
                }
            }
        }
    }

    /// Nothing that the office holds is unknown to a computer that heard everything, and nothing contradicts itself.
    void check() const {
        for (const auto& [deviceId, replica] : replicas_) {
            const auto snapshot = office_->snapshot(deviceId);
            RC_ASSERT(snapshot.has_value());
            RC_ASSERT(inOrder(replica.state()) == inOrder(json::parse(*snapshot)));
        }
        RC_ASSERT(json::parse(office_->overview(now_)).at("practices").as_array().size() == practices_.size());
        std::set<std::string> calls;
        for (const auto& [id, signal] : office_->state().all<Signal>()) {
            RC_ASSERT(isActive(signal) != signal.clearedAt.has_value());
            if (isActive(signal)) {
                std::string call =
                    signal.roomId + signal.typeId + signal.providerId.value_or("-") + signal.toDepartment.value_or("-");
                for (const std::string& recipient : signal.providerIds.value_or(std::vector<std::string>())) {
                    call += recipient;
                }
                RC_ASSERT(calls.insert(call).second);
            }
        }
    }

    Storage& storage_;
    MemoryStorage* refusable_;
    SeededBytes random_{5};
    std::unique_ptr<Office> office_;
    WallTime now_ = std::chrono::sys_days{std::chrono::year{2026} / 3 / 9} + hours{8};
    std::vector<std::string> practices_;
    std::map<std::string, std::string> tokens_;
    std::map<std::string, Replica> replicas_;
    std::size_t accepted_ = 0;
};

TEST(RandomOperations, loseNothingOverRestartsAndReachEveryComputer) {
    std::size_t accepted = 0;
    EXPECT_TRUE(rc::check([&accepted] {
        const auto numbers = *rc::gen::resize(240, rc::gen::arbitrary<std::vector<std::uint32_t>>());
        MemoryStorage storage;
        Day day(storage, &storage);
        day.live(numbers);
        accepted += day.accepted();
    }));
    EXPECT_GT(accepted, 1000U);
}

TEST(RandomOperations, endAlikeInMemoryAndOnDisk) {
    std::mt19937 engine(11);
    std::vector<std::uint32_t> numbers(600);
    for (std::uint32_t& number : numbers) {
        number = static_cast<std::uint32_t>(engine());
    }
    MemoryStorage memory;
    Day inMemory(memory, nullptr);
    inMemory.live(numbers);

    const support::TemporaryFolder folder;
    class Reopening final : public Storage {
    public:
        explicit Reopening(std::filesystem::path file) : file_(std::move(file)) {}
        std::expected<State, StorageFailure> load() override {
            storage_.reset();
            auto opened = SqliteStorage::open(file_);
            if (!opened) {
                return std::unexpected(opened.error());
            }
            storage_ = std::move(*opened);
            return storage_->load();
        }
        std::expected<void, StorageFailure> commit(std::span<const Change> changes) override {
            return storage_->commit(changes);
        }

    private:
        std::filesystem::path file_;
        std::unique_ptr<SqliteStorage> storage_;
    };
    Reopening disk(folder.path() / "office.db");
    Day onDisk(disk, nullptr);
    onDisk.live(numbers);

    EXPECT_EQ(inMemory.state(), onDisk.state());
    EXPECT_EQ(*memory.load(), *disk.load());
    EXPECT_GT(inMemory.accepted(), 60U);
}

}  // namespace
}  // namespace zelkovanta::office
