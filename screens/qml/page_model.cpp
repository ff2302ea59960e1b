#include "screens/qml/page_model.h"

#include "platform/task.h"
#include "records/device_role.h"
#include "screens/wait_time.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include <QPointer>

namespace zelkovanta::screens::qml {

namespace {

platform::WallTime momentOf(double milliseconds) {
    using namespace std::chrono;
    return platform::WallTime{round<microseconds>(duration<double, std::milli>(milliseconds))};
}

std::optional<platform::WallTime> beginningOf(double milliseconds) {
    return std::isnan(milliseconds) ? std::nullopt : std::optional{momentOf(milliseconds)};
}

}  // namespace

PageModel::PageModel(std::shared_ptr<store::AppStore> store, platform::Executor main, const platform::Clock& clock,
                     const platform::StringTable& strings)
    : store_(std::move(store)), main_(std::move(main)), clock_(clock), strings_(strings) {
    statuses_.setChoices(
        {{std::string{records::rawValue(records::MemberStatus::available)}, strings_.localized("Available")},
         {std::string{records::rawValue(records::MemberStatus::busy)}, strings_.localized("Busy")},
         {std::string{records::rawValue(records::MemberStatus::dnd)}, strings_.localized("Do not disturb")}});
    refresh();
    observation_ = store_->observe([this](const store::StoreChanges&) { refresh(); });
}

void PageModel::refresh() {
    PlainPage page = plainPage(store_->state(), strings_, store_->lastUsedFlexibleRoom());
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
    }
    types_.setChoices(page_.types);
    recipients_.setChoices(page_.recipients);
    rooms_.setChoices(page_.rooms);
    Q_EMIT pageChanged();
    received_.setRows(page_.received);
    sent_.setRows(page_.sent);
}

QByteArray PageModel::setupImage() const {
    return QByteArray::fromStdString(page_.setupImage.value_or(""));
}

void PageModel::act(const QString& signalId, std::string_view action) {
    const auto& signalList = store_->state().signals;
    const auto found = std::ranges::find(signalList, signalId.toStdString(), &records::Signal::id);
    if (found == signalList.end()) {
        return;
    }
    platform::startTask(main_, [store = store_, signal = *found, action = std::string{action}] {
        return store->actOnSignal(signal, action);
    });
}

void PageModel::send(const QString& typeId, const QString& recipientId, const QString& roomId, const QString& note) {
    std::vector<std::string> recipients;
    if (!recipientId.isEmpty()) {
        recipients.push_back(recipientId.toStdString());
    }
    platform::startTask(main_,
                        [self = QPointer{this}, store = store_, type = typeId.toStdString(), text = note.toStdString(),
                         recipients = std::move(recipients),
                         room = sendingRoom(store_->state(), roomId.toStdString())]() -> platform::Awaitable<void> {
                            co_await store->sendSignal(type, text, room, recipients, std::nullopt);
                            if (self && !store->state().lastError) {
                                Q_EMIT self->signalSent();
                            }
                        });
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
        main_, [self = QPointer{this}, store = store_, code = pairingForm_.code]() -> platform::Awaitable<void> {
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

QString PageModel::signInCountdown(double now) const {
    return shown(screens::signInCountdown(page_.signIn, momentOf(now), strings_));
}

QByteArray PageModel::signInImage() const {
    return QByteArray::fromStdString(page_.signIn.image.value_or(""));
}

void PageModel::setStatus(const QString& status) {
    if (const auto known = records::memberStatusFromRawValue(status.toStdString())) {
        platform::startTask(main_, [store = store_, value = *known] { return store->setMemberStatus(value); });
    }
}

void PageModel::chooseRoom(const QString& roomId) {
    store_->confirmFlexibleRoom(roomId.toStdString());
}

void PageModel::signOut() {
    platform::startTask(main_, [store = store_] { return store->signOutStation(); });
}

void PageModel::unlink() {
    platform::startTask(main_, [store = store_] { return store->unlinkComputer(); });
}

double PageModel::now() const {
    using namespace std::chrono;
    return duration<double, std::milli>(clock_.wallNow().time_since_epoch()).count();
}

QString PageModel::waitTime(double since, double now) const {
    return shown(waitTimeText(beginningOf(since), momentOf(now)));
}

bool PageModel::isLongWait(double since, double now) const {
    return screens::isLongWait(beginningOf(since), momentOf(now));
}

}  // namespace zelkovanta::screens::qml
