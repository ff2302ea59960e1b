#include "platform/linux/gettext_string_table.h"

#include "platform/linux/atomic_file.h"
#include "platform/linux/locale_name.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace zelkovanta::platform::linux_host {

namespace {

constexpr std::string_view sourceLanguage = "en";
constexpr auto catalogueFile = "LC_MESSAGES/zelkovanta.mo";
constexpr std::size_t largestCatalogue = std::size_t{4} * 1024 * 1024;
constexpr std::size_t shortestTag = 2;
constexpr std::size_t longestTag = 8;
constexpr std::size_t mostLanguages = 16;

bool isTag(std::string_view text) {
    return text.size() >= shortestTag && text.size() <= longestTag && std::ranges::all_of(text, [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
           });
}

/// "de" or "de_AT" of a locale's name; none for "C", "POSIX" and what names no language.
std::optional<std::string> languageOf(std::string_view locale) {
    const LocaleName name = localeName(locale);
    if (!isTag(name.language) || name.language == "POSIX") {
        return std::nullopt;
    }
    std::string language{name.language};
    return isTag(name.territory) ? language + '_' + std::string{name.territory} : language;
}

bool isSource(std::string_view language) {
    return language.substr(0, language.find('_')) == sourceLanguage;
}

/// What msgfmt writes: numbers of four bytes, the low one first; the place of a text is its length and its offset, and
/// a zero byte follows it (GNU gettext manual, "The Format of GNU MO Files"). Nothing beyond the end is ever looked at.
class CatalogueBytes {
public:
    explicit CatalogueBytes(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] std::optional<std::uint32_t> number(std::size_t offset) const {
        if (offset > bytes_.size() || bytes_.size() - offset < numberSize) {
            return std::nullopt;
        }
        std::uint32_t value = 0;
        for (std::size_t i = numberSize; i-- > 0;) {
            value = (value << 8U) | static_cast<std::uint8_t>(bytes_[offset + i]);
        }
        return value;
    }

    /// The text of one row of a table of places.
    [[nodiscard]] std::optional<std::string_view> text(std::size_t table, std::size_t row) const {
        const std::size_t place = table + row * 2 * numberSize;
        const auto length = number(place);
        const auto offset = number(place + numberSize);
        if (!length || !offset || *offset >= bytes_.size() || bytes_.size() - *offset <= *length ||
            bytes_[std::size_t{*offset} + *length] != '\0') {
            return std::nullopt;
        }
        return bytes_.substr(*offset, *length);
    }

private:
    static constexpr std::size_t numberSize = 4;
    std::string_view bytes_;
};

/// None if these are no bytes of a catalogue, or not all of them.
std::optional<std::map<std::string, std::string, std::less<>>> textsOf(const CatalogueBytes& bytes) {
    constexpr std::uint32_t magic = 0x950412de;
    const auto count = bytes.number(8);
    const auto keys = bytes.number(12);
    const auto translations = bytes.number(16);
    if (bytes.number(0) != magic || !count || !keys || !translations) {
        return std::nullopt;
    }
    std::map<std::string, std::string, std::less<>> texts;
    for (std::size_t row = 0; row < *count; ++row) {
        const auto key = bytes.text(*keys, row);
        const auto translation = bytes.text(*translations, row);
        if (!key || !translation) {
            return std::nullopt;
        }
        // The empty key is the catalogue's own header.
        if (!key->empty() && !translation->empty()) {
            texts.emplace_hint(texts.end(), *key, *translation);
        }
    }
    return texts;
}

}  // namespace

std::vector<std::string> messageLanguages(const Environment& environment) {
    std::vector<std::string> languages;
    const std::string locale = messageLocale(environment);
    if (languageOf(locale)) {
        const std::string list = environment("LANGUAGE").value_or(locale);
        std::string_view rest = list;
        while (!rest.empty() && languages.size() < mostLanguages && std::ranges::none_of(languages, isSource)) {
            const auto end = std::min(rest.find(':'), rest.size());
            if (auto language = languageOf(rest.substr(0, end))) {
                languages.push_back(std::move(*language));
            }
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    if (std::ranges::none_of(languages, isSource)) {
        languages.emplace_back(sourceLanguage);
    }
    return languages;
}

GettextStringTable::GettextStringTable(const std::filesystem::path& resources, const Environment& environment) {
    for (const std::string& language : messageLanguages(environment)) {
        // "de_AT" reads "de_AT" where there is one, and "de".
        for (std::size_t end = language.size(); end != std::string::npos; end = language.rfind('_', end - 1)) {
            const auto file =
                readFile(resources / "locale" / language.substr(0, end) / catalogueFile, largestCatalogue);
            if (auto texts = file ? textsOf(CatalogueBytes{*file}) : std::nullopt) {
                catalogues_.push_back(std::move(*texts));
            }
        }
    }
}

std::string GettextStringTable::localized(std::string_view key) const {
    for (const Texts& texts : catalogues_) {
        if (const auto found = texts.find(key); found != texts.end()) {
            return found->second;
        }
    }
    return std::string{key};
}

}  // namespace zelkovanta::platform::linux_host
