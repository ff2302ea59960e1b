#include "screens/queue_row.h"

#include "records/server_date.h"
#include "screens/theme/office_color.h"
#include "screens/vocabulary/vocabulary.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace zelkovanta::screens {

namespace {

using theme::fixed;
using theme::withOpacity;

constexpr double chipFillOpacity = 0.16;

char32_t scalarOf(std::string_view bytes) {
    const auto byteAt = [bytes](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    char32_t scalar = byteAt(0);
    if (scalar >= 0x80) {
        scalar &= bytes.size() == 2 ? 0x1FU : bytes.size() == 3 ? 0x0FU : 0x07U;
    }
    for (std::size_t index = 1; index < bytes.size(); ++index) {
        scalar = scalar << 6U | (byteAt(index) & 0x3FU);
    }
    return scalar;
}

/// The blocks of the scripts that are written from right to left.
bool isWrittenFromRight(char32_t scalar) {
    constexpr std::array<std::pair<char32_t, char32_t>, 5> blocks{{
        {0x0590, 0x08FF},
        {0xFB1D, 0xFDFF},
        {0xFE70, 0xFEFF},
        {0x10800, 0x10FFF},
        {0x1E800, 0x1EFFF},
    }};
    return std::ranges::any_of(blocks,
                               [scalar](const auto& block) { return scalar >= block.first && scalar <= block.second; });
}

/// A name within a line of several parts. One that is written from right to left keeps its direction to itself, or it
/// would turn its neighbours round.
std::string isolated(const std::string& name) {
    for (std::string_view rest = name; !rest.empty();) {
        std::size_t length = 1;
        while (length < rest.size() && length < 4 && (static_cast<unsigned char>(rest[length]) & 0xC0U) == 0x80) {
            ++length;
        }
        if (isWrittenFromRight(scalarOf(rest.substr(0, length)))) {
            return "\u2068" + name + "\u2069";
        }
        rest.remove_prefix(length);
    }
    return name;
}

std::string detailLine(const QueueRow& row, const platform::StringTable& strings) {
    std::string line;
    const auto add = [&line](const std::string& part) { line += line.empty() ? part : " · " + part; };
    if (row.requester) {
        add(isolated(row.requester->name));
        if (row.requesterDepartment) {
            add(isolated(*row.requesterDepartment));
        }
    }
    if (row.showTarget && row.signal.providerIds) {
        const auto count = static_cast<std::int64_t>(row.signal.providerIds->size());
        add(platform::filled(strings.localized("for %lld doctors"), {count}));
    } else if (row.showTarget && row.provider) {
        add(platform::filled(strings.localized("for %@"), {isolated(row.provider->name)}));
    }
    return line;
}

std::vector<RowButton> buttonsOf(const QueueRow& row, const platform::StringTable& strings) {
    std::vector<RowButton> buttons;
    if (row.onAcknowledge && row.signal.status == records::signal_status::waiting) {
        const std::string text = strings.localized("On my way");
        buttons.push_back({.action = *row.onAcknowledge,
                           .text = text,
                           .symbol = {},
                           .accessibleName = text,
                           .foreground = fixed(theme::white),
                           .fill = theme::brandBlue,
                           .outline = {},
                           .padding = {.horizontal = 12, .vertical = 8}});
    }
    if (row.onDone) {
        buttons.push_back(
            {.action = *row.onDone,
             .text = {},
             .symbol = "checkmark",
             .accessibleName = row.completionLabel.empty() ? strings.localized("Done") : row.completionLabel,
             .foreground = fixed(theme::white),
             .fill = theme::brandGreen,
             .outline = {},
             .padding = {.horizontal = 7, .vertical = 7}});
    }
    if (row.onCancel) {
        const std::string text = strings.localized("Cancel");
        buttons.push_back({.action = *row.onCancel,
                           .text = text,
                           .symbol = {},
                           .accessibleName = text,
                           .foreground = theme::redText,
                           .fill = withOpacity(theme::brandRed, 0.10),
                           .outline = withOpacity(theme::brandRed, 0.28),
                           .padding = {.horizontal = 12, .vertical = 7}});
    }
    return buttons;
}

struct ChipColors {
    theme::ColorPair text;
    theme::ColorPair fill;
};

ChipColors chipColors(std::string_view status) {
    if (status == records::signal_status::waiting) {
        return {fixed(theme::ink), fixed(theme::brandYellow)};
    }
    if (status == records::signal_status::acknowledged) {
        return {theme::blueText, withOpacity(fixed(theme::brandBlue), chipFillOpacity)};
    }
    if (status == records::signal_status::done) {
        return {theme::greenText, withOpacity(fixed(theme::brandGreen), chipFillOpacity)};
    }
    return {theme::stoneText, withOpacity(theme::textTertiary, chipFillOpacity)};
}

}  // namespace

std::string_view rawValue(RowAction action) {
    switch (action) {
        case RowAction::acknowledge:
            return records::signal_action::acknowledge;
        case RowAction::done:
            return records::signal_action::done;
        case RowAction::cancel:
            return records::signal_action::cancel;
    }
    return "";
}

StatusChip statusChip(const std::string& status, bool prominent, const platform::StringTable& strings) {
    const ChipColors colors = chipColors(status);
    return {.status = status,
            .prominent = prominent,
            .text = vocabulary::statusLabel(status, strings),
            .textColor = colors.text,
            .fill = colors.fill};
}

CombinedBadge combinedBadge(std::size_t count, const platform::StringTable& strings) {
    return {.count = count,
            .text = platform::filled(strings.localized("Combined · %lld"), {static_cast<std::int64_t>(count)})};
}

DrawnRow drawn(const QueueRow& row, const platform::StringTable& strings) {
    DrawnRow result;
    result.id = row.signal.id;
    result.mark = row.type ? theme::officeColor(row.type->color) : theme::brandOrange;
    result.outline = row.highlighted ? fixed(theme::highlightYellow) : theme::hairline;
    result.room = row.room ? row.room->name : strings.localized("Room");
    result.type =
        row.type ? vocabulary::signalTypeLabel(row.type->key, row.type->label, row.vertical, strings) : std::string{};
    result.typeColor = row.type ? theme::adaptiveOfficeColor(row.type->color) : fixed(theme::brandOrange);
    result.since = records::parseServerDate(row.signal.createdAt);
    result.detail = detailLine(row, strings);
    result.note = row.signal.note.value_or("");
    result.buttons = buttonsOf(row, strings);
    result.chip = statusChip(row.signal.status, !result.buttons.empty(), strings);
    if (row.signal.providerIds) {
        result.combined = combinedBadge(row.signal.providerIds->size(), strings);
    }
    if (row.position) {
        result.position = platform::filled(strings.localized("#%lld"), {static_cast<std::int64_t>(*row.position)});
    }
    return result;
}

theme::ColorPair statusDotColor(const std::optional<std::string>& status, DotPlace place) {
    if (status == "available") {
        return fixed(theme::brandGreen);
    }
    if (status == "busy") {
        return fixed(place == DotPlace::onSelectedBackground ? theme::ink : theme::brandYellow);
    }
    return status == "dnd" ? fixed(theme::stone) : theme::textTertiary;
}

}  // namespace zelkovanta::screens
