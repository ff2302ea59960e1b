#pragma once

#include "platform/async.h"
#include "platform/clock.h"
#include "platform/string_table.h"
#include "screens/plain_page.h"
#include "screens/qml/choice_model.h"
#include "screens/qml/compose_model.h"
#include "screens/qml/queue_screen.h"
#include "screens/qml/shown_text.h"
#include "screens/unlink_doubt.h"
#include "store/app_store.h"

#include <memory>

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// What the page needs of the host and of what stands beside the store. The references must outlive it.
struct PagePorts {
    platform::Executor main;
    platform::Clock& clock;
    const platform::StringTable& strings;
    platform::UserDefaults& defaults;
    store::NoteRegistry& notes;
    store::CrashSession& crash;
    platform::Duration doubleClick;  ///< how fast two presses follow each other that are meant as one
};

/// The page as QML reads it, and the presses on it as operations of the store. Main thread.
class PageModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The program makes the one that there is.")

    Q_PROPERTY(bool paired READ paired NOTIFY pageChanged)
    Q_PROPERTY(QByteArray setupImage READ setupImage NOTIFY setupImageChanged)
    Q_PROPERTY(bool hasSetupImage READ hasSetupImage NOTIFY setupImageChanged)
    Q_PROPERTY(QString setupNotice READ setupNotice NOTIFY pageChanged)
    Q_PROPERTY(QString setupError READ setupError NOTIFY pageChanged)
    Q_PROPERTY(QString title READ title NOTIFY pageChanged)
    Q_PROPERTY(QString subtitle READ subtitle NOTIFY pageChanged)
    Q_PROPERTY(QString error READ error NOTIFY pageChanged)
    Q_PROPERTY(QString hint READ hint NOTIFY pageChanged)
    Q_PROPERTY(QString signedIn READ signedIn NOTIFY pageChanged)
    Q_PROPERTY(QString setupPlaceholder READ setupPlaceholder NOTIFY pageChanged)
    Q_PROPERTY(bool asksForSignIn READ asksForSignIn NOTIFY pageChanged)
    Q_PROPERTY(QString signInHeading READ signInHeading NOTIFY pageChanged)
    Q_PROPERTY(QString signInHint READ signInHint NOTIFY pageChanged)
    Q_PROPERTY(QString signInError READ signInError NOTIFY pageChanged)
    Q_PROPERTY(QString signInPlaceholder READ signInPlaceholder NOTIFY pageChanged)
    Q_PROPERTY(QString signInExpiresAt READ signInExpiresAt NOTIFY pageChanged)
    Q_PROPERTY(QByteArray signInImage READ signInImage NOTIFY signInImageChanged)
    Q_PROPERTY(bool hasSignInImage READ hasSignInImage NOTIFY signInImageChanged)
    Q_PROPERTY(bool asksForRoom READ asksForRoom NOTIFY pageChanged)
    Q_PROPERTY(QString confirmedRoomId READ confirmedRoomId NOTIFY pageChanged)
    Q_PROPERTY(bool showsReceived READ showsReceived NOTIFY pageChanged)
    Q_PROPERTY(bool showsSent READ showsSent NOTIFY pageChanged)
    Q_PROPERTY(bool canSend READ canSend NOTIFY pageChanged)
    Q_PROPERTY(QString pairingCode READ pairingCode NOTIFY pairingFormChanged)
    Q_PROPERTY(bool mayPair READ mayPair NOTIFY pairingFormChanged)
    Q_PROPERTY(bool pairing READ pairing NOTIFY pairingFormChanged)
    Q_PROPERTY(QString pairingError READ pairingError NOTIFY pairingFormChanged)
    /// The next press on the button that unlinks will be meant.
    Q_PROPERTY(bool asksToUnlink READ asksToUnlink NOTIFY asksToUnlinkChanged)
    Q_PROPERTY(zelkovanta::screens::qml::QueueScreen* queue READ queue CONSTANT)
    /// Null while no form is open.
    Q_PROPERTY(zelkovanta::screens::qml::ComposeModel* compose READ compose NOTIFY composeChanged)
    Q_PROPERTY(zelkovanta::screens::qml::ChoiceModel* rooms READ rooms CONSTANT)

public:
    PageModel(std::shared_ptr<store::AppStore> store, const PagePorts& ports);

    [[nodiscard]] bool paired() const { return page_.isPaired; }
    [[nodiscard]] QByteArray setupImage() const;
    [[nodiscard]] bool hasSetupImage() const { return page_.setupImage.has_value(); }
    [[nodiscard]] QString setupNotice() const { return shown(page_.setupNotice); }
    [[nodiscard]] QString setupError() const { return shown(page_.setupError); }
    [[nodiscard]] QString title() const { return shown(page_.title); }
    [[nodiscard]] QString subtitle() const { return shown(page_.subtitle); }
    [[nodiscard]] QString error() const { return shown(page_.error); }
    [[nodiscard]] QString hint() const { return shown(page_.hint); }
    [[nodiscard]] QString signedIn() const { return shown(page_.signedIn); }
    [[nodiscard]] QString setupPlaceholder() const { return shown(page_.setupPlaceholder); }
    [[nodiscard]] bool asksForSignIn() const { return page_.signIn.isShown; }
    [[nodiscard]] QString signInHeading() const { return shown(page_.signIn.heading); }
    [[nodiscard]] QString signInHint() const { return shown(page_.signIn.hint); }
    [[nodiscard]] QString signInError() const { return shown(page_.signIn.error); }
    [[nodiscard]] QString signInPlaceholder() const { return shown(page_.signIn.placeholder); }
    [[nodiscard]] QString signInExpiresAt() const { return shown(page_.signIn.expiresAt); }
    [[nodiscard]] QByteArray signInImage() const;
    [[nodiscard]] bool hasSignInImage() const { return page_.signIn.image.has_value(); }
    [[nodiscard]] bool asksForRoom() const { return page_.asksForRoom; }
    [[nodiscard]] QString confirmedRoomId() const { return shown(page_.confirmedRoomId); }
    [[nodiscard]] bool showsReceived() const { return page_.showsReceived; }
    [[nodiscard]] bool showsSent() const { return page_.showsSent; }
    [[nodiscard]] bool canSend() const { return page_.canSend; }
    [[nodiscard]] QString pairingCode() const { return shown(pairingForm_.code); }
    [[nodiscard]] bool mayPair() const { return pairingForm_.mayPair(); }
    [[nodiscard]] bool pairing() const { return pairingForm_.isBusy; }
    [[nodiscard]] QString pairingError() const { return shown(pairingForm_.error); }
    [[nodiscard]] bool asksToUnlink() const { return unlinkDoubt_.isAsking(ports_.clock.steadyNow()); }
    [[nodiscard]] QueueScreen* queue() { return &queue_; }
    [[nodiscard]] ComposeModel* compose() const { return compose_; }
    [[nodiscard]] ChoiceModel* rooms() { return &rooms_; }

    /// Opens a form, where one can be sent from here and none is open.
    Q_INVOKABLE void openCompose();
    Q_INVOKABLE void typePairingCode(const QString& typed);
    /// Where the cursor stands in the code's own form, when it stood behind `typedBefore`.
    Q_INVOKABLE [[nodiscard]] int pairingCodeCursor(const QString& typedBefore) const;
    Q_INVOKABLE void pair();
    /// Whether the place of the sign-in code is in sight; only then is there one.
    Q_INVOKABLE void lookAtSignInCode(bool looking);
    /// How long a code that ends then will still be there, as of now; empty for an end that cannot be read.
    Q_INVOKABLE [[nodiscard]] QString codeRefreshText(const QString& expiresAt) const;
    Q_INVOKABLE void chooseRoom(const QString& roomId);
    Q_INVOKABLE void signOut();
    /// The first one asks, a second one takes this computer out of its office.
    Q_INVOKABLE void pressUnlink();

Q_SIGNALS:
    void pageChanged();
    void setupImageChanged();
    void signInImageChanged();
    void pairingFormChanged();
    void asksToUnlinkChanged();
    void composeChanged();

private:
    void refresh();
    /// The open form keeps to whoever and wherever it was opened for.
    void followForm(bool canSend);
    void closeCompose();
    void setPairingForm(PairingForm form);
    void forgetUnlinking();

    const std::shared_ptr<store::AppStore> store_;
    const PagePorts ports_;

    PlainPage page_;
    PairingForm pairingForm_;
    std::shared_ptr<void> signInCodeViewer_;
    QueueScreen queue_;
    ComposeModel* compose_ = nullptr;  ///< a child of this
    PlainFormPlace composePlace_;
    ChoiceModel rooms_;
    UnlinkDoubt unlinkDoubt_;
    platform::Timer unlinkTimer_;
    std::shared_ptr<void> observation_;  ///< last: ends first
};

}  // namespace zelkovanta::screens::qml
