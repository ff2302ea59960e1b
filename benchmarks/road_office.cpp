#include "benchmarks/road_office.h"

#include "benchmarks/monotonic.h"
#include "office/host.h"
#include "office/qr_picture.h"
#include "office/server.h"
#include "office/sqlite_storage.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <expected>
#include <filesystem>
#include <thread>
#include <utility>

#include <boost/asio/post.hpp>
#include <boost/json/parse.hpp>

namespace zelkovanta::benchmarks {

namespace {

template <class Value, class Error>
Value orGiveUp(std::expected<Value, Error> result, const char* sentence) {
    if (!result) {
        std::fprintf(stderr, "%s\n", sentence);
        std::exit(1);
    }
    return std::move(*result);
}

std::filesystem::path emptyFolder(const std::string& name) {
    auto folder = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

}  // namespace

class RoadOffice::Running {
public:
    explicit Running(const std::string& name) : folder_(emptyFolder(name)) {
        static_cast<void>(office_->addSample("harbour", office::wallNow()));
        const auto& rooms = office_->state().all<office::Room>();
        const auto& room =
            std::ranges::find_if(rooms, [](const auto& entry) { return entry.second.name == "Room 3"; })->second;
        const auto& members = office_->state().all<office::Member>();
        const std::string provider = std::ranges::find_if(members, [&](const auto& entry) {
                                         const office::Member& member = entry.second;
                                         return member.practiceId == room.practiceId &&
                                                member.department == "provider" && member.onShift.value_or(true);
                                     })->first;
        sendOrder = "send " + room.id + " " + provider;
        roomCode = pairingCode({.practice = room.practiceId,
                                .role = office::DeviceRole::room,
                                .room = room.id,
                                .member = {},
                                .computerName = {}});
        memberCode = pairingCode({.practice = room.practiceId,
                                  .role = office::DeviceRole::member,
                                  .room = {},
                                  .member = provider,
                                  .computerName = {}});
        thread_ = std::thread([this] { context_.run(); });
    }
    ~Running() {
        boost::asio::post(context_, [this] { server_->stop(); });
        thread_.join();
        server_.reset();
        office_.reset();
        storage_.reset();
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    [[nodiscard]] std::uint16_t port() const { return server_->port(); }

    std::atomic<std::int64_t> acceptedAt = 0;
    std::string roomCode;
    std::string memberCode;
    std::string sendOrder;

private:
    std::string pairingCode(const office::Placement& placement) {
        const office::Answer answer = office_->makePairingCode(placement, office::wallNow());
        return boost::json::parse(answer.body).at("code").as_string().c_str();
    }

    const std::filesystem::path folder_;
    std::unique_ptr<office::SqliteStorage> storage_ =
        orGiveUp(office::SqliteStorage::open(folder_ / "office.sqlite"), "The office's file did not open.");
    office::SystemRandomBytes random_;
    std::unique_ptr<office::Office> office_ =
        orGiveUp(office::Office::open(*storage_, random_, office::qrPicture), "The office did not open.");
    boost::asio::io_context context_;
    std::unique_ptr<office::Server> server_ =
        orGiveUp(office::Server::listen(context_, *office_,
                                        {.address = "127.0.0.1",
                                         .port = 0,
                                         .adminToken = "none",
                                         .now = office::wallNow,
                                         .log = [this](const std::string&) { acceptedAt = monotonicNow(); }}),
                 "The office did not listen.");
    std::thread thread_;
};

RoadOffice::RoadOffice(const std::string& name) : running_(std::make_unique<Running>(name)) {}
RoadOffice::~RoadOffice() = default;

std::string RoadOffice::url() const {
    return "http://127.0.0.1:" + std::to_string(running_->port());
}
std::int64_t RoadOffice::acceptedAt() const {
    return running_->acceptedAt;
}
const std::string& RoadOffice::roomCode() const {
    return running_->roomCode;
}
const std::string& RoadOffice::memberCode() const {
    return running_->memberCode;
}
const std::string& RoadOffice::sendOrder() const {
    return running_->sendOrder;
}

}  // namespace zelkovanta::benchmarks
