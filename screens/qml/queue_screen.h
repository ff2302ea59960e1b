#pragma once

#include "platform/async.h"
#include "platform/clock.h"
#include "platform/string_table.h"
#include "screens/qml/choice_model.h"
#include "screens/qml/queue_model.h"
#include "screens/qml/shown_row.h"
#include "screens/queue_row_sections.h"
#include "store/app_store.h"

#include <memory>
#include <optional>

#include <QObject>
#include <QString>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// Both lists of signals of this computer, and what stands around them. Main thread. The clock and the texts must
/// outlive it.
class QueueScreen : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to the page.")
    Q_PROPERTY(zelkovanta::screens::qml::QueueModel* received READ received CONSTANT)
    Q_PROPERTY(zelkovanta::screens::qml::QueueModel* sent READ sent CONSTANT)
    Q_PROPERTY(zelkovanta::screens::qml::ShownTab receivedTab READ receivedTab NOTIFY tabsChanged)
    Q_PROPERTY(zelkovanta::screens::qml::ShownTab sentTab READ sentTab NOTIFY tabsChanged)
    Q_PROPERTY(bool sentChosen READ sentChosen WRITE chooseSent NOTIFY tabsChanged)
    /// Empty while everything is well.
    Q_PROPERTY(QString bannerText READ bannerText NOTIFY bannerChanged)
    Q_PROPERTY(bool bannerSpins READ bannerSpins NOTIFY bannerChanged)
    Q_PROPERTY(bool hasStatus READ hasStatus NOTIFY statusChanged)
    Q_PROPERTY(zelkovanta::screens::qml::ShownColor statusDot READ statusDot NOTIFY statusChanged)
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusChanged)
    /// The entry that is current; empty if none is.
    Q_PROPERTY(QString statusId READ statusId NOTIFY statusChanged)
    Q_PROPERTY(zelkovanta::screens::qml::ChoiceModel* statuses READ statuses CONSTANT)

public:
    QueueScreen(std::shared_ptr<store::AppStore> store, platform::Executor main, const platform::Clock& clock,
                const platform::StringTable& strings);

    [[nodiscard]] QueueModel* received() { return &received_; }
    [[nodiscard]] QueueModel* sent() { return &sent_; }
    [[nodiscard]] ShownTab receivedTab() const;
    [[nodiscard]] ShownTab sentTab() const;
    [[nodiscard]] bool sentChosen() const { return tab_ == SignalTab::sent; }
    void chooseSent(bool chosen);
    [[nodiscard]] QString bannerText() const;
    [[nodiscard]] bool bannerSpins() const { return banner_ && banner_->hasSpinner; }
    [[nodiscard]] bool hasStatus() const { return status_.has_value(); }
    [[nodiscard]] ShownColor statusDot() const { return status_ ? ShownColor{status_->dot} : ShownColor{}; }
    [[nodiscard]] QString statusText() const;
    [[nodiscard]] QString statusId() const;
    [[nodiscard]] ChoiceModel* statuses() { return &statuses_; }

    Q_INVOKABLE void chooseStatus(const QString& id);

Q_SIGNALS:
    void tabsChanged();
    void bannerChanged();
    void statusChanged();

private:
    void refresh();
    void refreshLists();
    void refreshStatus();
    [[nodiscard]] std::array<QueueTabButton, 2> tabs() const;

    const std::shared_ptr<store::AppStore> store_;
    const platform::Executor main_;
    const platform::StringTable& strings_;

    QueueModel received_;
    QueueModel sent_;
    SignalTab tab_ = SignalTab::received;
    std::optional<ConnectionBanner> banner_;
    std::optional<MemberStatusControl> status_;
    ChoiceModel statuses_;
    std::shared_ptr<void> observation_;  ///< last: ends first
};

}  // namespace zelkovanta::screens::qml
