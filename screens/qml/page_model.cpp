#include "screens/qml/page_model.h"

#include "platform/task.h"
#include "screens/theme/code_refresh.h"

#include <utility>
#include <variant>

#include <QPointer>

namespace zelkovanta::screens::qml {

PageModel::PageModel(std::shared_ptr<store::AppStore> store, const PagePorts& ports)
    : store_(std::move(store)),
      ports_(ports),
      queue_(store_, ports.main, ports.clock, ports.strings),
      unlinkDoubt_(ports.doubleClick) {
    refresh();
    observation_ = store_->observe([this](const store::StoreChanges&) { refresh(); });
}

void PageModel::refresh() {
    PlainPage page = plainPage(store_->state(), ports_.strings, store_->lastUsedFlexibleRoom());
    if (compose_ != nullptr) {
        followForm(page.canSend);
    }
    if (page == page_) {
        return;
    }
    std::swap(page, page_);
    const PlainPage& before = page;
    if (before.setupImage != page_.setupImage) {
        Q_EMIT setupImageChanged();
    }
    if (before.signIn.image != page_.signIn.image) {
        Q_EMIT signInImageChanged();
    }
    if (before.isPaired != page_.isPaired) {
        setPairingForm({.code = {}, .isBusy = pairingForm_.isBusy, .error = {}});
        forgetUnlinking();
    }
    rooms_.setChoices(page_.rooms);
    Q_EMIT pageChanged();
}

void PageModel::followForm(bool canSend) {
    if (!canSend) {
        closeCompose();
        return;
    }
    PlainFormPlace place = formPlace(store_->state());
    if (place.key != composePlace_.key) {
        closeCompose();
        openCompose();
    } else if (place != composePlace_) {
        composePlace_ = std::move(place);
        compose_->setPlace(composePlace_.place);
    }
}

QByteArray PageModel::setupImage() const {
    return QByteArray::fromStdString(page_.setupImage.value_or(""));
}

void PageModel::openCompose() {
    if (compose_ != nullptr || !page_.canSend) {
        return;
    }
    composePlace_ = formPlace(store_->state());
    const ComposePorts ports{.main = ports_.main,
                             .defaults = ports_.defaults,
                             .notes = ports_.notes,
                             .crash = ports_.crash,
                             .strings = ports_.strings};
    compose_ = new ComposeModel(store_, ports, composePlace_.place);
    compose_->setParent(this);
    connect(compose_, &ComposeModel::closed, this, &PageModel::closeCompose);
    Q_EMIT composeChanged();
}

void PageModel::closeCompose() {
    ComposeModel* const gone = std::exchange(compose_, nullptr);
    // Before another one reports that it is there.
    gone->leave();
    // It may be what is calling.
    gone->deleteLater();
    Q_EMIT composeChanged();
}

void PageModel::typePairingCode(const QString& typed) {
    setPairingForm(withTyped(pairingForm_, typed.toStdString()));
}

int PageModel::pairingCodeCursor(const QString& typedBefore) const {
    return static_cast<int>(shown(pairingCodeText(typedBefore.toStdString())).size());
}

void PageModel::pair() {
    if (!pairingForm_.mayPair()) {
        return;
    }
    setPairingForm(whenBegun(pairingForm_));
    platform::startTask(
        ports_.main, [self = QPointer{this}, store = store_, code = pairingForm_.code]() -> platform::Awaitable<void> {
            const auto result = co_await store->redeemPairingCode(code);
            if (!self) {
                co_return;
            }
            const auto* failure = result ? nullptr : std::get_if<server::APIError>(&result.error());
            self->setPairingForm(whenEnded(self->pairingForm_, failure ? store->describe(*failure) : ""));
        });
}

void PageModel::setPairingForm(PairingForm form) {
    pairingForm_ = std::move(form);
    // Also where nothing has changed: the field may show what was typed, and not the code.
    Q_EMIT pairingFormChanged();
}

void PageModel::lookAtSignInCode(bool looking) {
    signInCodeViewer_ = looking ? store_->showSignInCode() : nullptr;
}

QString PageModel::codeRefreshText(const QString& expiresAt) const {
    return shown(theme::codeRefreshText(expiresAt.toStdString(), ports_.clock.wallNow(), ports_.strings).value_or(""));
}

QByteArray PageModel::signInImage() const {
    return QByteArray::fromStdString(page_.signIn.image.value_or(""));
}

void PageModel::chooseRoom(const QString& roomId) {
    store_->confirmFlexibleRoom(roomId.toStdString());
}

void PageModel::signOut() {
    platform::startTask(ports_.main, [store = store_] { return store->signOutStation(); });
}

void PageModel::pressUnlink() {
    const auto now = ports_.clock.steadyNow();
    if (unlinkDoubt_.press(now)) {
        unlinkTimer_.reset();
        platform::startTask(ports_.main, [store = store_] { return store->unlinkComputer(); });
    } else {
        unlinkTimer_ =
            ports_.clock.callAfter(unlinkDoubt_.left(now), ports_.main, [this] { Q_EMIT asksToUnlinkChanged(); });
    }
    Q_EMIT asksToUnlinkChanged();
}

void PageModel::forgetUnlinking() {
    unlinkTimer_.reset();
    unlinkDoubt_ = UnlinkDoubt{ports_.doubleClick};
    Q_EMIT asksToUnlinkChanged();
}

}  // namespace zelkovanta::screens::qml
