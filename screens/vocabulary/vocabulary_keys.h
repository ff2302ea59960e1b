#pragma once

#include <array>
#include <string_view>

/// Every key of the vocabulary that is no English text itself. `tools/check_strings` reads the literals of this file:
/// each shipped language holds each of them.
namespace zelkovanta::screens::vocabulary {

inline constexpr std::array<std::string_view, 15> signalKeys{
    "signal-ready",
    "signal-ready-medical",
    "signal-ready-veterinary",
    "signal-ready-eyecare",
    "signal-ready-dermatology",
    "signal-ready-therapy",
    "signal-ready-other",
    "signal-patient-seated",
    "signal-seated-medical",
    "signal-seated-veterinary",
    "signal-seated-eyecare",
    "signal-seated-dermatology",
    "signal-seated-therapy",
    "signal-step-out",
    "signal-urgent",
};

inline constexpr std::array<std::string_view, 19> departmentKeys{
    "dept-provider-dental",
    "dept-provider-medical",
    "dept-provider-veterinary",
    "dept-provider-eyecare",
    "dept-provider-dermatology",
    "dept-provider-therapy",
    "dept-provider-other",
    "dept-hygienist",
    "dept-assistant",
    "dept-frontdesk",
    "dept-nurse",
    "dept-ma",
    "dept-tech-vet",
    "dept-tech-eye",
    "dept-scribe",
    "dept-optician",
    "dept-esthetician",
    "dept-aide",
    "dept-clinical",
};

/// The same departments, more than one person of each: a department's key with "-plural" behind it.
inline constexpr std::array<std::string_view, 19> pluralDepartmentKeys{
    "dept-provider-dental-plural",
    "dept-provider-medical-plural",
    "dept-provider-veterinary-plural",
    "dept-provider-eyecare-plural",
    "dept-provider-dermatology-plural",
    "dept-provider-therapy-plural",
    "dept-provider-other-plural",
    "dept-hygienist-plural",
    "dept-assistant-plural",
    "dept-frontdesk-plural",
    "dept-nurse-plural",
    "dept-ma-plural",
    "dept-tech-vet-plural",
    "dept-tech-eye-plural",
    "dept-scribe-plural",
    "dept-optician-plural",
    "dept-esthetician-plural",
    "dept-aide-plural",
    "dept-clinical-plural",
};

inline constexpr std::array<std::string_view, 5> statusKeys{
    "status-waiting", "status-acknowledged-short", "status-done", "ui-status-canceled", "ui-status-expired",
};

inline constexpr std::array<std::string_view, 3> memberKeys{
    "member-available",
    "member-busy",
    "member-dnd",
};

/// Their texts hold "{room}".
inline constexpr std::array<std::string_view, 3> roomKeys{
    "hint-home-room-signed-in",
    "hint-home-room-by-admin",
    "label-home-room-option",
};

}  // namespace zelkovanta::screens::vocabulary
