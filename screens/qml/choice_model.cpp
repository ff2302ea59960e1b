#include "screens/qml/choice_model.h"

#include <algorithm>
#include <cstddef>

#include <QString>

namespace zelkovanta::screens::qml {

void ChoiceModel::setChoices(const std::vector<PlainChoice>& choices) {
    if (choices == choices_) {
        return;
    }
    beginResetModel();
    choices_ = choices;
    endResetModel();
    Q_EMIT choicesReplaced();
}

int ChoiceModel::indexOf(const QString& id) const {
    const auto found = std::ranges::find(choices_, id.toStdString(), &PlainChoice::id);
    return found == choices_.end() ? -1 : static_cast<int>(found - choices_.begin());
}

QString ChoiceModel::idAt(int index) const {
    const bool isInside = index >= 0 && index < static_cast<int>(choices_.size());
    return isInside ? QString::fromStdString(choices_[static_cast<std::size_t>(index)].id) : QString{};
}

int ChoiceModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(choices_.size());
}

QVariant ChoiceModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const PlainChoice& choice = choices_[static_cast<std::size_t>(index.row())];
    switch (role) {
        case choiceId:
            return QString::fromStdString(choice.id);
        case name:
        case Qt::DisplayRole:
            return QString::fromStdString(choice.name);
        default:
            return {};
    }
}

QHash<int, QByteArray> ChoiceModel::roleNames() const {
    return {{choiceId, "choiceId"}, {name, "name"}};
}

}  // namespace zelkovanta::screens::qml
