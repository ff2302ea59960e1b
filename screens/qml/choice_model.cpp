#include "screens/qml/choice_model.h"

#include "screens/qml/shown_text.h"

#include <algorithm>
#include <utility>

#include <QString>

namespace zelkovanta::screens::qml {

void ChoiceModel::setChoices(std::vector<Choice> choices) {
    if (choices == rows()) {
        return;
    }
    Q_EMIT choicesAboutToChange();
    replaceRows(std::move(choices));
    Q_EMIT choicesChanged();
}

int ChoiceModel::indexOf(const QString& id) const {
    const auto found = std::ranges::find(rows(), id.toStdString(), &Choice::id);
    return found == rows().end() ? -1 : static_cast<int>(found - rows().begin());
}

QString ChoiceModel::idAt(int index) const {
    return index >= 0 && index < count() ? shown(row(index).id) : QString{};
}

QVariant ChoiceModel::valueOf(const Choice& choice, int role) const {
    switch (role) {
        case choiceId:
            return shown(choice.id);
        case name:
        case Qt::DisplayRole:
            return shown(choice.name);
        default:
            return {};
    }
}

QHash<int, QByteArray> ChoiceModel::roleNames() const {
    return {{choiceId, "choiceId"}, {name, "name"}};
}

}  // namespace zelkovanta::screens::qml
