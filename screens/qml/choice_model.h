#pragma once

#include "screens/choice.h"
#include "screens/qml/keyed_rows.h"

#include <string>
#include <vector>

#include <QHash>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// Entries of a drop-down list, by id and name.
class ChoiceModel : public KeyedRows<Choice> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to the page.")

public:
    enum Role : int { choiceId = Qt::UserRole, name };

    using KeyedRows::KeyedRows;

    /// Tells nothing if the entries are the same.
    void setChoices(std::vector<Choice> choices);

    /// Position of an id; -1 if there is none of it.
    Q_INVOKABLE [[nodiscard]] int indexOf(const QString& id) const;
    /// The id at a position; empty outside the list.
    Q_INVOKABLE [[nodiscard]] QString idAt(int index) const;

    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    /// Around all that is told of one change.
    void choicesAboutToChange();
    void choicesChanged();

protected:
    [[nodiscard]] const std::string& keyOf(const Choice& choice) const override { return choice.id; }
    [[nodiscard]] QVariant valueOf(const Choice& choice, int role) const override;
};

}  // namespace zelkovanta::screens::qml
