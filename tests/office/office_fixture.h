#pragma once

#include "office/memory_storage.h"
#include "office/office.h"

#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::office {

namespace json = boost::json;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

/// Chance that repeats itself.
class SeededBytes final : public RandomBytes {
public:
    explicit SeededBytes(std::uint64_t seed) : engine_(seed) {}
    void fill(std::span<std::byte> bytes) override {
        for (std::byte& byte : bytes) {
            byte = static_cast<std::byte>(engine_() >> 56);
        }
    }

private:
    std::mt19937_64 engine_;
};

struct Computer {
    std::string id;
    std::string token;
};

/// Text at a dotted path, "<none>" where there is none.
inline std::string at(const json::value& value, std::string_view path) {
    const json::value* found = &value;
    while (found != nullptr && !path.empty()) {
        const auto dot = path.find('.');
        const std::string_view step = path.substr(0, dot);
        path = dot == std::string_view::npos ? std::string_view() : path.substr(dot + 1);
        found = found->is_object() ? found->get_object().if_contains(json::string_view(step)) : nullptr;
    }
    if (found == nullptr) {
        return "<none>";
    }
    return found->is_string() ? std::string(found->get_string()) : json::serialize(*found);
}

/// What an effect sends, parsed; null for a closing.
inline json::value frameIn(const Effect& effect) {
    const auto* send = std::get_if<SendFrame>(&effect);
    return send == nullptr ? json::value() : json::parse(send->frame);
}

/// An office with the sample practices, in memory and in a time of its own.
class OfficeTest : public testing::Test {
protected:
    OfficeTest() {
        restart();
        EXPECT_EQ(office->addSample("harbour", now).status, 200);
    }

    /// Opens the office anew on what was stored.
    void restart() {
        auto opened = Office::open(storage, random, picture);
        ASSERT_TRUE(opened.has_value());
        office = std::move(*opened);
    }

    json::value keep(Answer given) {
        answer = std::move(given);
        return answer.body.empty() ? json::value() : json::parse(answer.body);
    }

    json::value call(std::string method, std::string path, const Computer& computer, std::string body = {}) {
        return keep(office->handle({.method = std::move(method),
                                    .path = "/api/v1/" + std::move(path),
                                    .token = computer.token,
                                    .body = std::move(body),
                                    .peer = peer},
                                   now));
    }

    json::value redeem(const std::string& code, const std::string& name = "Front Mac") {
        return call("POST", "pair/redeem", {},
                    json::serialize(json::object{{"code", code}, {"device", introduction(name)}}));
    }

    json::value requestSetup(const std::string& name = "Front Mac") {
        return call("POST", "pair/request", {}, json::serialize(json::object{{"device", introduction(name)}}));
    }

    static json::object introduction(const std::string& name) {
        return {{"kind", "desktop_mac"},
                {"name", name},
                {"model", "Mac14,3"},
                {"appVersion", "1.0.1"},
                {"locale", "en-US"}};
    }

    Computer pair(const Placement& placement, const std::string& name = "Front Mac") {
        const json::value code = keep(office->makePairingCode(placement, now));
        const json::value paired = redeem(at(code, "code"), name);
        EXPECT_EQ(answer.status, 200) << answer.body;
        return {at(paired, "device.id"), at(paired, "deviceToken")};
    }
    Computer pairRoom(const std::string& room, const std::string& practice = {}) {
        return pair({.practice = practice,
                     .role = DeviceRole::room,
                     .room = room,
                     .member = {},
                     .computerName = room + " Mac"});
    }
    Computer pairMember(const std::string& member, const std::string& practice = {}) {
        return pair({.practice = practice,
                     .role = DeviceRole::member,
                     .room = {},
                     .member = member,
                     .computerName = member + "'s Mac"});
    }
    Computer pairShared(const std::string& name = "Hallway Mac") {
        return pair({.practice = {}, .role = DeviceRole::shared, .room = {}, .member = {}, .computerName = name});
    }

    template <class T>
    const T& named(std::string_view name, std::string_view practice = "Harbour Dental") const {
        const std::string practiceId = practiceNamed(practice).id;
        for (const auto& [id, record] : office->state().all<T>()) {
            if (record.practiceId == practiceId && nameOf(record) == name) {
                return record;
            }
        }
        throw std::out_of_range(std::string(name));
    }
    const Practice& practiceNamed(std::string_view name) const {
        for (const auto& [id, practice] : office->state().all<Practice>()) {
            if (practice.name == name) {
                return practice;
            }
        }
        throw std::out_of_range(std::string(name));
    }

    /// A signal of the type "ready", sent from a computer.
    json::value sendReady(const Computer& from, json::object more = {}) {
        more["typeId"] = named<SignalType>("ready").id;
        if (!more.contains("note")) {
            more["note"] = "";
        }
        return call("POST", "signals", from, json::serialize(more));
    }

    json::value act(const Computer& from, const std::string& signal, std::string_view action) {
        return call("PATCH", "signals/" + signal, from, json::serialize(json::object{{"action", action}}));
    }

    json::value stateAt(const Computer& computer) { return call("GET", "state", computer); }

    /// Status and code of the last answer, such as "404 invalid_code"; "200" for a success.
    std::string verdict() const {
        const json::value body = answer.body.empty() ? json::value() : json::parse(answer.body);
        return std::to_string(answer.status) + (answer.status < 300 ? "" : " " + at(body, "error"));
    }

    /// The types of the frames that the last answer sends, in order; "close 4001" for a closing.
    static std::vector<std::string> kinds(const std::vector<Effect>& effects) {
        std::vector<std::string> words;
        for (const Effect& effect : effects) {
            const auto* close = std::get_if<CloseSockets>(&effect);
            words.push_back(close == nullptr ? at(frameIn(effect), "type") : "close " + std::to_string(close->code));
        }
        return words;
    }
    std::vector<std::string> kinds() const { return kinds(answer.effects); }

    static std::vector<std::string> receivers(const Effect& effect) { return std::get<SendFrame>(effect).deviceIds; }

    static std::string picture(std::string_view text) { return "data:image/png;base64," + std::string(text); }

    MemoryStorage storage;
    SeededBytes random{1};
    std::unique_ptr<Office> office;
    WallTime now = std::chrono::sys_days{std::chrono::year{2026} / 3 / 9} + hours{8};
    std::string peer = "127.0.0.1";
    Answer answer;

private:
    static const std::string& nameOf(const SignalType& type) { return type.key; }
    template <class T>
    static const std::string& nameOf(const T& record) {
        return record.name;
    }
};

}  // namespace zelkovanta::office
