#include "screens/qml/shown_choice.h"

#include "screens/qml/shown_text.h"
#include "screens/qml/theme.h"

#include <unordered_set>
#include <utility>
#include <variant>

#include <QColor>
#include <QString>

namespace zelkovanta::screens::qml {

namespace {

std::string keyOfRow(const WhoRow& row) {
    struct Namer {
        std::string operator()(const AnyRow&) const { return "any"; }
        std::string operator()(const GroupRow& group) const { return "group " + group.department; }
        std::string operator()(const PersonRow& person) const { return "person " + person.memberId; }
    };
    return std::visit(Namer{}, row);
}

/// One field of a row of any kind.
class FieldOf {
public:
    explicit FieldOf(int role) : role_(role) {}

    QVariant operator()(const AnyRow& row) const { return ofCall(row, AnyRow::symbol); }
    QVariant operator()(const GroupRow& row) const { return ofCall(row, GroupRow::symbol); }
    QVariant operator()(const PersonRow& row) const {
        switch (role_) {
            case WhoModel::label:
                return shown(row.avatar.name);
            case WhoModel::spokenName: {
                QStringList parts{shown(row.avatar.name)};
                for (const std::string& part : {row.queue, row.doNotDisturb}) {
                    if (!part.empty()) {
                        parts.push_back(shown(part));
                    }
                }
                return parts.join(QStringLiteral(", "));
            }
            case WhoModel::chosen:
                return row.chosen;
            case WhoModel::tint:
                return QVariant::fromValue(ShownColor{theme::blueText});
            case WhoModel::initials:
                return shown(row.avatar.initials());
            case WhoModel::disc: {
                const auto disc = row.avatar.disc();
                return disc ? toColor(*disc) : QColor{Qt::transparent};
            }
            case WhoModel::diameter:
                return row.avatar.diameter;
            case WhoModel::ring:
                return QVariant::fromValue(ShownColor{row.avatar.ringColor});
            case WhoModel::queue:
                return shown(row.queue);
            case WhoModel::doNotDisturb:
                return shown(row.doNotDisturb);
            default:
                return nothing();
        }
    }

private:
    template <class Row>
    QVariant ofCall(const Row& row, std::string_view symbol) const {
        switch (role_) {
            case WhoModel::spokenName:
            case WhoModel::label:
                return shown(row.text);
            case WhoModel::symbol:
                return shown(symbol);
            case WhoModel::chosen:
                return row.chosen;
            case WhoModel::tint:
                return QVariant::fromValue(ShownColor{row.tint});
            default:
                return nothing();
        }
    }

    [[nodiscard]] QVariant nothing() const {
        switch (role_) {
            case WhoModel::disc:
                return QColor{Qt::transparent};
            case WhoModel::diameter:
                return 0.0;
            case WhoModel::ring:
                return QVariant::fromValue(ShownColor{});
            case WhoModel::symbol:
            case WhoModel::initials:
            case WhoModel::queue:
            case WhoModel::doNotDisturb:
                return QString{};
            default:
                return {};
        }
    }

    int role_;
};

}  // namespace

QVariant TypeModel::valueOf(const ComposeType& row, int role) const {
    switch (role) {
        case typeId:
            return shown(row.id);
        case label:
            return shown(row.label);
        case tint:
            return toColor(row.color);
        case chosen:
            return row.selected;
        default:
            return {};
    }
}

QHash<int, QByteArray> TypeModel::roleNames() const {
    return {{typeId, "typeId"}, {label, "label"}, {tint, "tint"}, {chosen, "chosen"}};
}

void WhoModel::setRows(std::vector<WhoRow> rows) {
    std::vector<WhoEntry> entries;
    entries.reserve(rows.size());
    std::unordered_set<std::string> keys;
    for (WhoRow& row : rows) {
        std::string key = keyOfRow(row);
        // An office may list a department twice; each of its rows is one of its own.
        while (!keys.insert(key).second) {
            key += " again";
        }
        entries.push_back({.key = std::move(key), .row = std::move(row)});
    }
    replaceRows(std::move(entries));
}

const WhoRow* WhoModel::at(int index) const {
    return index >= 0 && index < count() ? &row(index).row : nullptr;
}

QVariant WhoModel::valueOf(const WhoEntry& entry, int role) const {
    return std::visit(FieldOf{role}, entry.row);
}

QHash<int, QByteArray> WhoModel::roleNames() const {
    return {
        {spokenName, "spokenName"},    {label, "label"}, {symbol, "symbol"},     {chosen, "chosen"}, {tint, "tint"},
        {initials, "initials"},        {disc, "disc"},   {diameter, "diameter"}, {ring, "ring"},     {queue, "queue"},
        {doNotDisturb, "doNotDisturb"}};
}

}  // namespace zelkovanta::screens::qml
