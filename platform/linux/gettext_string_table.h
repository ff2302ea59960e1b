#pragma once

#include "platform/linux/environment.h"
#include "platform/string_table.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::platform::linux_host {

/// The languages that a person wants to read, the first one first, as "de" or "de_AT": those of LANGUAGE where the
/// locale (LC_ALL, else LC_MESSAGES, else LANG) names a language at all, else that of the locale. English stands at
/// the end, and nothing behind it. What is no name of a language is passed over.
[[nodiscard]] std::vector<std::string> messageLanguages(const Environment& environment);

/// The texts of "locale/<language>/LC_MESSAGES/zelkovanta.mo" below the resources folder, as msgfmt writes them.
///
/// The C library reads such catalogues only where the locale is installed on this computer, and in one language for the
/// whole process. So they are read here, once, when the table is made: about 20 KB a language, well below a
/// millisecond. A text that the first language lacks is looked for in the next one. A catalogue that is missing or
/// damaged counts as empty, and a key that is in none reads as itself. Any thread.
class GettextStringTable final : public StringTable {
public:
    GettextStringTable(const std::filesystem::path& resources, const Environment& environment);

    [[nodiscard]] std::string localized(std::string_view key) const override;

private:
    using Texts = std::map<std::string, std::string, std::less<>>;
    std::vector<Texts> catalogues_;  ///< the first language's comes first
};

}  // namespace zelkovanta::platform::linux_host
