#include "screens/vocabulary/vocabulary.h"

#include "records/text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zelkovanta::screens::vocabulary {

namespace {

constexpr std::string_view anyTechnician{};

struct Spelling {
    std::string_view name;
    std::string_view key;  ///< "dept-provider-" goes on with the vertical
};

constexpr std::string_view providerKey = "dept-provider-";
constexpr std::string_view veterinaryTechnicianKey = "dept-tech-vet";
constexpr std::string_view eyeTechnicianKey = "dept-tech-eye";

// Not every plural is in it: what is missing is what the office calls by its own words.
constexpr std::array spellings{
    Spelling{"provider", providerKey},
    Spelling{"doctor", providerKey},
    Spelling{"dr", providerKey},
    Spelling{"hygienist", "dept-hygienist"},
    Spelling{"hygiene", "dept-hygienist"},
    Spelling{"rdh", "dept-hygienist"},
    Spelling{"assistant", "dept-assistant"},
    Spelling{"assistants", "dept-assistant"},
    Spelling{"da", "dept-assistant"},
    Spelling{"frontdesk", "dept-frontdesk"},
    Spelling{"front", "dept-frontdesk"},
    Spelling{"reception", "dept-frontdesk"},
    Spelling{"receptionist", "dept-frontdesk"},
    Spelling{"nurse", "dept-nurse"},
    Spelling{"nursing", "dept-nurse"},
    Spelling{"rn", "dept-nurse"},
    Spelling{"ma", "dept-ma"},
    Spelling{"medicalassistant", "dept-ma"},
    Spelling{"vettech", veterinaryTechnicianKey},
    Spelling{"techvet", veterinaryTechnicianKey},
    Spelling{"techeye", eyeTechnicianKey},
    Spelling{"eyetech", eyeTechnicianKey},
    Spelling{"technician", anyTechnician},
    Spelling{"tech", anyTechnician},
    Spelling{"scribe", "dept-scribe"},
    Spelling{"optician", "dept-optician"},
    Spelling{"opticians", "dept-optician"},
    Spelling{"esthetician", "dept-esthetician"},
    Spelling{"aesthetician", "dept-esthetician"},
    Spelling{"aide", "dept-aide"},
    Spelling{"aides", "dept-aide"},
    Spelling{"clinical", "dept-clinical"},
    Spelling{"clinicalstaff", "dept-clinical"},
};

constexpr std::array<std::string_view, 6> knownVerticals{"dental",  "medical",     "veterinary",
                                                         "eyecare", "dermatology", "therapy"};

using KeysByWord = std::pair<std::string_view, std::string_view>;

constexpr std::array<KeysByWord, 6> readyKeys{{
    {"medical", "signal-ready-medical"},
    {"veterinary", "signal-ready-veterinary"},
    {"eyecare", "signal-ready-eyecare"},
    {"dermatology", "signal-ready-dermatology"},
    {"therapy", "signal-ready-therapy"},
    {"other", "signal-ready-other"},
}};

// "other" has no words of its own here, unlike above.
constexpr std::array<KeysByWord, 5> seatedKeys{{
    {"medical", "signal-seated-medical"},
    {"veterinary", "signal-seated-veterinary"},
    {"eyecare", "signal-seated-eyecare"},
    {"dermatology", "signal-seated-dermatology"},
    {"therapy", "signal-seated-therapy"},
}};

constexpr std::array<KeysByWord, 5> statusKeysByWord{{
    {"waiting", "status-waiting"},
    {"acknowledged", "status-acknowledged-short"},
    {"done", "status-done"},
    {"canceled", "ui-status-canceled"},
    {"expired", "ui-status-expired"},
}};

template <std::size_t size>
std::optional<std::string_view> keyOf(const std::array<KeysByWord, size>& keys, std::string_view word) {
    const auto* const found = std::ranges::find(keys, word, &KeysByWord::first);
    return found == keys.end() ? std::nullopt : std::optional{found->second};
}

std::optional<std::string_view> signalTypeKey(std::string_view key, std::string_view vertical) {
    if (key == "ready") {
        return keyOf(readyKeys, vertical).value_or("signal-ready");
    }
    if (key == "patient_seated") {
        return keyOf(seatedKeys, vertical).value_or("signal-patient-seated");
    }
    if (key == "step_out") {
        return "signal-step-out";
    }
    if (key == "urgent") {
        return "signal-urgent";
    }
    return std::nullopt;
}

std::string_view memberStatusKey(records::MemberStatus status) {
    switch (status) {
        case records::MemberStatus::available:
            return "member-available";
        case records::MemberStatus::busy:
            return "member-busy";
        case records::MemberStatus::dnd:
            return "member-dnd";
    }
    std::unreachable();
}

std::string_view roomTextKey(RoomText text) {
    switch (text) {
        case RoomText::hintSignedIn:
            return "hint-home-room-signed-in";
        case RoomText::hintByAdmin:
            return "hint-home-room-by-admin";
        case RoomText::homeRoomOption:
            return "label-home-room-option";
    }
    std::unreachable();
}

/// The office's own word, where it has one.
std::string ownDepartmentLabel(const std::optional<records::Office>& office, const std::string& key, Count count) {
    if (!office || !office->departments) {
        return {};
    }
    const auto found = std::ranges::find(*office->departments, key, &records::OfficeDepartment::key);
    if (found == office->departments->end()) {
        return {};
    }
    return count == Count::many ? found->labelPlural.value_or(found->label) : found->label;
}

}  // namespace

std::string normalizedVertical(const std::optional<std::string>& vertical) {
    std::string lower = records::lowercased(vertical.value_or(""));
    return std::ranges::find(knownVerticals, lower) == knownVerticals.end() ? "other" : lower;
}

std::optional<std::string> departmentVocabularyKey(std::string_view name, const std::optional<std::string>& vertical) {
    const std::string normalized = records::alphanumericsOnly(records::lowercased(name));
    const auto* const found = std::ranges::find(spellings, std::string_view{normalized}, &Spelling::name);
    if (found == spellings.end()) {
        return std::nullopt;
    }
    if (found->key == providerKey) {
        return std::string{providerKey} + normalizedVertical(vertical);
    }
    if (found->key == anyTechnician) {
        const bool isVeterinary = records::lowercased(vertical.value_or("")) == "veterinary";
        return std::string{isVeterinary ? veterinaryTechnicianKey : eyeTechnicianKey};
    }
    return std::string{found->key};
}

std::string departmentLabel(const std::optional<records::Office>& office, const std::string& key, Count count,
                            const platform::StringTable& strings) {
    if (const auto known = departmentVocabularyKey(key, office ? office->vertical : std::nullopt)) {
        return strings.localized(count == Count::many ? *known + "-plural" : *known);
    }
    const std::string own = ownDepartmentLabel(office, key, count);
    return own.empty() ? records::capitalized(key) : own;
}

std::string signalTypeLabel(std::string_view key, const std::string& fallback,
                            const std::optional<std::string>& vertical, const platform::StringTable& strings) {
    const auto known = signalTypeKey(key, records::lowercased(vertical.value_or("")));
    return known ? strings.localized(*known) : fallback;
}

std::string statusLabel(std::string_view status, const platform::StringTable& strings) {
    const auto known = keyOf(statusKeysByWord, status);
    return known ? strings.localized(*known) : records::capitalized(status);
}

std::string memberStatusLabel(records::MemberStatus status, const platform::StringTable& strings) {
    return strings.localized(memberStatusKey(status));
}

std::string roomText(RoomText text, std::string_view roomName, const platform::StringTable& strings) {
    constexpr std::string_view placeholder = "{room}";
    const std::string pattern = strings.localized(roomTextKey(text));
    std::string result;
    std::string_view rest = pattern;
    for (auto at = rest.find(placeholder); at != std::string_view::npos; at = rest.find(placeholder)) {
        result += rest.substr(0, at);
        result += roomName;
        rest.remove_prefix(at + placeholder.size());
    }
    return result += rest;
}

}  // namespace zelkovanta::screens::vocabulary
