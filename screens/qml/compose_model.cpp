#include "screens/qml/compose_model.h"

#include <optional>
#include <utility>
#include <variant>

namespace zelkovanta::screens::qml {

ComposeModel::ComposeModel(std::shared_ptr<store::AppStore> store, const ComposePorts& ports, const ComposePlace& place)
    : view_(ComposeView::make(store, ports, place, [this] { Q_EMIT closed(); })) {
    view_->appear();
    refresh();
    view_->setChangeHandler([this] { refresh(); });
    observation_ = store->observe([this](const store::StoreChanges&) { refresh(); });
}

ComposeModel::~ComposeModel() {
    leave();
}

void ComposeModel::leave() {
    // A sending may keep the form for a while yet.
    view_->setChangeHandler([] {});
    observation_.reset();
    view_->disappear();
}

void ComposeModel::refresh() {
    ComposeScreen screen = view_->screen();
    if (screen == screen_) {
        return;
    }
    screen_ = std::move(screen);
    rooms_.setChoices(screen_.rooms);
    types_.setTypes(screen_.types);
    who_.setRows(screen_.who.rows);
    Q_EMIT changed();
}

void ComposeModel::chooseRoom(const QString& roomId) {
    view_->chooseRoom(roomId.isEmpty() ? std::nullopt : std::optional{roomId.toStdString()});
}

void ComposeModel::pressWho(int index) {
    const WhoRow* const found = who_.at(index);
    if (found == nullptr) {
        return;
    }
    struct Presser {
        ComposeView& view;
        void operator()(const AnyRow&) const { view.pressAny(); }
        void operator()(const GroupRow& group) const { view.pressGroup(group.department); }
        void operator()(const PersonRow& person) const { view.pressPerson(person.memberId); }
    };
    // A copy, since the press changes the rows.
    const WhoRow row = *found;
    std::visit(Presser{*view_}, row);
}

}  // namespace zelkovanta::screens::qml
