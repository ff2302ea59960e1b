#pragma once

#include "screens/plain_page.h"

#include <vector>

#include <QAbstractListModel>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// Rows of a list of signals. What changes is told row by row, so that every other row keeps its place on screen, its
/// focus and its state.
class RowModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to the page.")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role : int {
        signalId = Qt::UserRole,
        room,
        type,
        color,
        detail,
        note,
        status,
        statusText,
        since,  ///< milliseconds since 1970; not a number for none
        mayAcknowledge,
        mayFinish,
        mayCancel,
    };

    using QAbstractListModel::QAbstractListModel;

    void setRows(const std::vector<PlainRow>& rows);

    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    void removeAbsent(const std::vector<PlainRow>& rows);
    void insertAndMove(const std::vector<PlainRow>& rows);
    void replaceChanged(const std::vector<PlainRow>& rows);

    std::vector<PlainRow> rows_;
};

}  // namespace zelkovanta::screens::qml
