#pragma once

#include "platform/string_table.h"
#include "records/device_role.h"
#include "records/office.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The words that depend on an office's trade: the one place that turns a department, a signal type, a status or a
/// room's part into what a person reads. Which key applies is decided here; what it reads is in the table of texts.
/// Where no key applies, the office's own text stands. Pure, nothing fails, any thread.
///
/// Keys, names and statuses compare exactly; verticals, and names of departments, in lower case.
namespace zelkovanta::screens::vocabulary {

enum class Count : std::uint8_t { one, many };

/// "dental", "medical", "veterinary", "eyecare", "dermatology" or "therapy"; "other" for everything else.
[[nodiscard]] std::string normalizedVertical(const std::optional<std::string>& vertical);

/// The key of a department by the letters and digits of its name, in lower case. A closed list of spellings, with the
/// plurals of some of them; none for any other name.
[[nodiscard]] std::optional<std::string> departmentVocabularyKey(std::string_view name,
                                                                 const std::optional<std::string>& vertical);

/// The word for a department of the office. The vocabulary beats the office's own label; a department that neither
/// knows reads as its key, capitalised.
[[nodiscard]] std::string departmentLabel(const std::optional<records::Office>& office, const std::string& key,
                                          Count count, const platform::StringTable& strings);

/// The word for a type of signal; `fallback`, the office's own label, for a type that the office made.
[[nodiscard]] std::string signalTypeLabel(std::string_view key, const std::string& fallback,
                                          const std::optional<std::string>& vertical,
                                          const platform::StringTable& strings);

/// The word for a signal's status; one that is not known reads as it is, capitalised.
[[nodiscard]] std::string statusLabel(std::string_view status, const platform::StringTable& strings);

[[nodiscard]] std::string memberStatusLabel(records::MemberStatus status, const platform::StringTable& strings);

/// What a computer says of its own room.
enum class RoomText : std::uint8_t {
    hintSignedIn,    ///< while somebody is signed in, and below the choice of a room
    hintByAdmin,     ///< while nobody is
    homeRoomOption,  ///< the own room among the rooms to choose from
};

/// The text with the room's name in place of every "{room}".
[[nodiscard]] std::string roomText(RoomText text, std::string_view roomName, const platform::StringTable& strings);

}  // namespace zelkovanta::screens::vocabulary
