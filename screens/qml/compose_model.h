#pragma once

#include "screens/compose_form.h"
#include "screens/qml/choice_model.h"
#include "screens/qml/shown_choice.h"
#include "screens/qml/shown_text.h"
#include "store/app_store.h"

#include <memory>

#include <QObject>
#include <QString>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// A form in which a signal is made, from its appearing to its end. Main thread. What the ports name must outlive it
/// and the sending that it began.
class ComposeModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Opened by a page.")
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString roomTitle READ roomTitle NOTIFY changed)
    Q_PROPERTY(bool choosesRoom READ choosesRoom NOTIFY changed)
    Q_PROPERTY(QString fixedRoom READ fixedRoom NOTIFY changed)
    Q_PROPERTY(zelkovanta::screens::qml::ChoiceModel* rooms READ rooms CONSTANT)
    Q_PROPERTY(QString selectedRoomId READ selectedRoomId NOTIFY changed)
    Q_PROPERTY(QString roomPrompt READ roomPrompt NOTIFY changed)
    Q_PROPERTY(QString roomHint READ roomHint NOTIFY changed)
    Q_PROPERTY(QString typeTitle READ typeTitle NOTIFY changed)
    Q_PROPERTY(zelkovanta::screens::qml::TypeModel* types READ types CONSTANT)
    Q_PROPERTY(QString whoTitle READ whoTitle NOTIFY changed)
    Q_PROPERTY(QString whoExplanation READ whoExplanation NOTIFY changed)
    Q_PROPERTY(zelkovanta::screens::qml::WhoModel* who READ who CONSTANT)
    Q_PROPERTY(QString whoHint READ whoHint NOTIFY changed)
    Q_PROPERTY(QString notePlaceholder READ notePlaceholder NOTIFY changed)
    Q_PROPERTY(QString note READ note NOTIFY changed)
    Q_PROPERTY(QString noteWarning READ noteWarning NOTIFY changed)
    Q_PROPERTY(QString error READ error NOTIFY changed)
    Q_PROPERTY(QString sendLabel READ sendLabel NOTIFY changed)
    Q_PROPERTY(bool canSend READ canSend NOTIFY changed)
    Q_PROPERTY(bool sending READ sending NOTIFY changed)
    Q_PROPERTY(QString cancelLabel READ cancelLabel NOTIFY changed)

public:
    ComposeModel(std::shared_ptr<store::AppStore> store, const ComposePorts& ports, const ComposePlace& place);
    ~ComposeModel() override;

    /// What was chosen and typed stays.
    void setPlace(const ComposePlace& place) { view_->setPlace(place); }
    /// The form is over at once, while its fields can still be read. Its end does the same.
    void leave();

    [[nodiscard]] QString title() const { return shown(screen_.title); }
    [[nodiscard]] QString roomTitle() const { return shown(screen_.roomTitle); }
    [[nodiscard]] bool choosesRoom() const { return screen_.choosesRoom; }
    [[nodiscard]] QString fixedRoom() const { return shown(screen_.fixedRoom); }
    [[nodiscard]] ChoiceModel* rooms() { return &rooms_; }
    [[nodiscard]] QString selectedRoomId() const { return shown(screen_.selectedRoomId.value_or("")); }
    [[nodiscard]] QString roomPrompt() const { return shown(screen_.roomPrompt); }
    [[nodiscard]] QString roomHint() const { return shown(screen_.roomHint); }
    [[nodiscard]] QString typeTitle() const { return shown(screen_.typeTitle); }
    [[nodiscard]] TypeModel* types() { return &types_; }
    [[nodiscard]] QString whoTitle() const { return shown(screen_.who.title); }
    [[nodiscard]] QString whoExplanation() const { return shown(screen_.who.explanation); }
    [[nodiscard]] WhoModel* who() { return &who_; }
    [[nodiscard]] QString whoHint() const { return shown(screen_.who.hint.value_or("")); }
    [[nodiscard]] QString notePlaceholder() const { return shown(screen_.notePlaceholder); }
    [[nodiscard]] QString note() const { return shown(screen_.note); }
    [[nodiscard]] QString noteWarning() const { return shown(screen_.noteWarning); }
    [[nodiscard]] QString error() const { return shown(screen_.error); }
    [[nodiscard]] QString sendLabel() const { return shown(screen_.sendLabel); }
    [[nodiscard]] bool canSend() const { return screen_.canSend; }
    [[nodiscard]] bool sending() const { return screen_.isSending; }
    [[nodiscard]] QString cancelLabel() const { return shown(screen_.cancelLabel); }

    Q_INVOKABLE void chooseRoom(const QString& roomId);
    Q_INVOKABLE void chooseType(const QString& typeId) { view_->chooseType(typeId.toStdString()); }
    /// A press on a row of `who`.
    Q_INVOKABLE void pressWho(int index);
    Q_INVOKABLE void editNote(const QString& text) { view_->editNote(text.toStdString()); }
    Q_INVOKABLE void send() { view_->send(); }
    Q_INVOKABLE void cancel() { view_->cancel(); }

Q_SIGNALS:
    void changed();
    /// The form is done with: what was made was sent, or given up.
    void closed();

private:
    void refresh();

    ComposeScreen screen_;
    ChoiceModel rooms_;
    TypeModel types_;
    WhoModel who_;
    std::shared_ptr<ComposeView> view_;
    std::shared_ptr<void> observation_;  ///< last: ends first
};

}  // namespace zelkovanta::screens::qml
