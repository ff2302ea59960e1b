#pragma once

#include "office/administration.h"
#include "office/json_text.h"
#include "office/state.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How records look to the computers: keys as named here, absent fields left out.
namespace zelkovanta::office {

[[nodiscard]] std::string_view roleWord(DeviceRole role);
[[nodiscard]] std::string_view statusWord(SignalStatus status);
/// Nothing for a word that names no action.
[[nodiscard]] std::optional<SignalAction> actionNamed(std::string_view word);

void write(JsonText& json, const Practice& practice);
void write(JsonText& json, const Member& member);
void write(JsonText& json, const Room& room);
void write(JsonText& json, const SignalType& type);
void write(JsonText& json, const Signal& signal);
void write(JsonText& json, const Device& device);
void write(JsonText& json, const Release& release);

template <class T>
void write(JsonText& json, const std::vector<const T*>& records) {
    json.array();
    for (const T* record : records) {
        write(json, *record);
    }
    json.endArray();
}

template <class T>
[[nodiscard]] std::string jsonOf(const T& record) {
    JsonText json;
    write(json, record);
    return json.take();
}

/// {"type": type, "data": {name: record}}
template <class T>
[[nodiscard]] std::string frameOf(std::string_view type, std::string_view name, const T& record) {
    JsonText json;
    json.object().field("type", type).key("data").object().key(name);
    write(json, record);
    json.endObject().endObject();
    return json.take();
}

[[nodiscard]] std::string snapshotFrame(std::string_view snapshot);
[[nodiscard]] std::string sessionStartedFrame(const Device& device, const Member& member);
[[nodiscard]] std::string sessionEndedFrame();

}  // namespace zelkovanta::office
