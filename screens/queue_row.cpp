#include "screens/queue_row.h"

#include "records/server_date.h"
#include "records/text.h"
#include "screens/theme/office_color.h"
#include "screens/vocabulary/vocabulary.h"

#include <cstdint>

namespace zelkovanta::screens {

namespace {

using theme::fixed;
using theme::withOpacity;

constexpr double chipFillOpacity = 0.16;

std::string detailLine(const QueueRow& row, const platform::StringTable& strings) {
    std::vector<std::string> parts;
    if (row.requester) {
        parts.push_back(records::isolated(row.requester->name));
        if (row.requesterDepartment) {
            parts.push_back(records::isolated(*row.requesterDepartment));
        }
    }
    if (row.showTarget && row.signal.providerIds) {
        const auto count = static_cast<std::int64_t>(row.signal.providerIds->size());
        parts.push_back(platform::filled(strings.localized("for %lld doctors"), {count}));
    } else if (row.showTarget && row.provider) {
        parts.push_back(platform::filled(strings.localized("for %@"), {records::isolated(row.provider->name)}));
    }
    std::string line;
    for (const std::string& part : parts) {
        line += &part == parts.data() ? part : " · " + part;
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
    const auto known = status ? records::memberStatusFromRawValue(*status) : std::nullopt;
    if (!known) {
        return theme::textTertiary;
    }
    switch (*known) {
        case records::MemberStatus::available:
            return fixed(theme::brandGreen);
        case records::MemberStatus::busy:
            return fixed(place == DotPlace::onSelectedBackground ? theme::ink : theme::brandYellow);
        case records::MemberStatus::dnd:
            break;
    }
    return fixed(theme::stone);
}

}  // namespace zelkovanta::screens
