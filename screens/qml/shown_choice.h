#pragma once

#include "screens/compose_form.h"
#include "screens/qml/keyed_rows.h"
#include "screens/who_picker.h"

#include <string>
#include <vector>

#include <QHash>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// The types of signals that can be sent, one of them chosen.
class TypeModel : public KeyedRows<ComposeType> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to a form.")

public:
    enum Role : int { typeId = Qt::UserRole, label, tint, chosen };

    using KeyedRows::KeyedRows;
    void setTypes(std::vector<ComposeType> types) { replaceRows(std::move(types)); }
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] const std::string& keyOf(const ComposeType& row) const override { return row.id; }
    [[nodiscard]] QVariant valueOf(const ComposeType& row, int role) const override;
};

/// A row of the who picker, and what tells it from the others.
struct WhoEntry {
    std::string key;
    WhoRow row;
    bool operator==(const WhoEntry&) const = default;
};

/// Those whom a signal can be sent to: whoever is next, departments, and people.
class WhoModel : public KeyedRows<WhoEntry> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to a form.")

public:
    enum Role : int {
        spokenName = Qt::UserRole,
        label,
        symbol,
        chosen,
        tint,
        initials,
        disc,
        diameter,
        ring,
        queue,
        doNotDisturb
    };

    using KeyedRows::KeyedRows;
    void setRows(std::vector<WhoRow> rows);
    /// The row at this place; null outside the list.
    [[nodiscard]] const WhoRow* at(int index) const;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

protected:
    [[nodiscard]] const std::string& keyOf(const WhoEntry& entry) const override { return entry.key; }
    [[nodiscard]] QVariant valueOf(const WhoEntry& entry, int role) const override;
};

}  // namespace zelkovanta::screens::qml
