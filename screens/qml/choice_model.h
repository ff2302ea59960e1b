#pragma once

#include "screens/plain_page.h"

#include <vector>

#include <QAbstractListModel>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// Entries of a drop-down list, by id and name.
class ChoiceModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to the page.")

public:
    enum Role : int { choiceId = Qt::UserRole, name };

    using QAbstractListModel::QAbstractListModel;

    /// Tells nothing if the entries are the same.
    void setChoices(const std::vector<PlainChoice>& choices);

    /// Position of an id; -1 if there is none of it.
    Q_INVOKABLE [[nodiscard]] int indexOf(const QString& id) const;
    /// The id at a position; empty outside the list.
    Q_INVOKABLE [[nodiscard]] QString idAt(int index) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void choicesReplaced();

private:
    std::vector<PlainChoice> choices_;
};

}  // namespace zelkovanta::screens::qml
