#pragma once

#include "platform/background.h"
#include "platform/clock.h"
#include "platform/host_info.h"
#include "platform/information_dictionary.h"
#include "platform/key_store.h"
#include "platform/login_item.h"
#include "platform/notification_center.h"
#include "platform/observer_list.h"
#include "platform/power_off.h"
#include "platform/random_source.h"
#include "platform/string_table.h"
#include "platform/task.h"
#include "platform/url_session.h"
#include "platform/user_defaults.h"
#include "platform/web_socket.h"
#include "records/requests.h"
#include "screens/vocabulary/vocabulary.h"
#include "server/api_client.h"
#include "server/web_socket_client.h"
#include "store/collaborators.h"
#include "store/store_state.h"

#include <cstdint>
#include <deque>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace zelkovanta::store {

/// What the store needs of its host. The references must outlive the store and the work that it began.
struct StorePorts {
    platform::Executor main;
    platform::Background& background;
    platform::Clock& clock;
    platform::RandomSource& random;
    platform::UrlLoading& urlLoading;
    platform::WebSocketLoading& webSocketLoading;
    platform::KeyStore& keyStore;
    platform::UserDefaults& defaults;
    const platform::InformationDictionary& information;
    platform::LoginItem& loginItem;
    const platform::HostInfo& hostInfo;
    platform::PowerOffNotifications& powerOff;
    platform::NotificationCenter& notificationCenter;
    const platform::StringTable& strings;
    records::Url defaultServerURL;  ///< asked while no session exists
};

/// Redeeming a code came too late: this computer was paired or reset meanwhile. Nothing was changed.
struct PairingCancelled {
    bool operator==(const PairingCancelled&) const = default;
};
using PairingFailure = std::variant<server::APIError, PairingCancelled>;

/// Counts the steps that make the results of earlier work meaningless: a reset, or a change of office.
struct SessionPublicationGeneration {
    std::uint64_t current = 0;
    bool operator==(const SessionPublicationGeneration&) const = default;
};

/// The one object that holds everything the program knows: settings, the office, this computer's registration, the
/// active signals and the state of the connection. There is one for the life of the process.
///
/// Main thread only. Asynchronous operations resume there; whoever starts one keeps the store until it has begun. What
/// an asynchronous operation brings back is compared, on arrival, with the generation and the client that it started
/// with, and dropped in silence if they are not current. The state changes by whole main-thread turns, and observers
/// are told once, after the turn.
class AppStore : public std::enable_shared_from_this<AppStore> {
public:
    /// A store that has begun to start: settings are bound, collaborators are prepared, and the saved session is being
    /// resumed.
    [[nodiscard]] static std::shared_ptr<AppStore> start(const StorePorts& ports,
                                                         const StoreCollaborators& collaborators);
    ~AppStore();
    AppStore(const AppStore&) = delete;
    AppStore& operator=(const AppStore&) = delete;

    [[nodiscard]] const StoreState& state() const { return state_; }

    using Observer = std::function<void(const StoreChanges&)>;
    /// Ends with the returned guard, which may outlive the store.
    [[nodiscard]] std::shared_ptr<void> observe(Observer observer);

    // Sending and acting. Failures end in `lastError`.
    platform::Awaitable<void> sendSignal(std::string typeId, std::string note, std::optional<std::string> roomId,
                                         std::vector<std::string> providerIds, std::optional<std::string> toDepartment);
    platform::Awaitable<void> actOnSignal(records::Signal signal, std::string action);
    platform::Awaitable<void> setMemberStatus(records::MemberStatus status);
    /// For a form that opens: an old failure is not shown over a fresh form.
    void clearLastError();
    /// A press in a desktop notification; it may come before there is anything to act on.
    platform::Awaitable<void> enqueueNotificationAction(DesktopSignalNotificationAction action);

    // Pairing.
    platform::Awaitable<std::expected<void, PairingFailure>> redeemPairingCode(std::string code);
    /// A new setup code, in place of the one that is shown.
    void restartSetupQr();
    platform::Awaitable<void> unlinkComputer();

    // Station sign-in.
    platform::Awaitable<void> signOutStation();
    void confirmFlexibleRoom(const std::string& roomId);
    /// Has the server give a code to sign in with, and a new one before each runs out, for as long as somebody keeps
    /// what this returns: `state().signInCode`. All viewers look at the same code. The result may outlive the store.
    [[nodiscard]] std::shared_ptr<void> showSignInCode();
    /// The active room that was confirmed last on this workstation; null if there is none. Holds until the state
    /// changes.
    [[nodiscard]] const records::Room* lastUsedFlexibleRoom() const;

    /// The words of a failure.
    [[nodiscard]] std::string describe(const server::APIError& error) const;
    /// The word for a department of the present office.
    [[nodiscard]] std::string departmentLabel(const std::string& key, screens::vocabulary::Count count) const;

private:
    struct Private {};

public:
    AppStore(Private, StorePorts ports, const StoreCollaborators& collaborators);

private:
    using ClientHandle = std::shared_ptr<server::APIClient>;

    /// What a request started with. A reply counts only while all of it is still current.
    struct ReplyGuard {
        SessionPublicationGeneration generation;
        ClientHandle client;
    };
    [[nodiscard]] ReplyGuard captureGuard() const { return {publicationGeneration_, apiClient_}; }
    [[nodiscard]] bool holds(const ReplyGuard& guard) const;

    // app_store.cpp
    void begin();
    void bindCollaborators();
    static platform::Awaitable<void> handleNotificationAction(std::weak_ptr<AppStore> weak,
                                                              DesktopSignalNotificationAction action);
    void markChanged(StoreField field);
    void tellObservers();
    template <class Value>
    void assign(StoreField field, Value& target, std::type_identity_t<Value> value) {
        target = std::move(value);
        markChanged(field);
    }
    void setLastError(std::optional<std::string> text);
    /// Ends an operation that a person asked for: its failure becomes `lastError`, its success is applied and clears
    /// it. A reply that came too late does nothing.
    template <class Reply, class Apply>
    void conclude(const ReplyGuard& guard, const std::expected<Reply, server::APIError>& reply, Apply&& apply) {
        if (!holds(guard)) {
            return;
        }
        if (!reply) {
            setLastError(describe(reply.error()));
            return;
        }
        std::forward<Apply>(apply)(*reply);
        setLastError(std::nullopt);
    }
    [[nodiscard]] ClientHandle makeClient(const records::Url& baseURL, std::optional<std::string> token) const;

    // app_store_events.cpp
    void applyServerMessage(server::ServerMessage message);
    void apply(records::StateSnapshot&& snapshot);
    void apply(const server::server_message::SignalCreated& message);
    void apply(const server::server_message::SignalUpdated& message);
    void apply(const server::server_message::MemberUpdated& message);
    void apply(const server::server_message::OfficeUpdated& message);
    void apply(const server::server_message::RoomsUpdated& message);
    void apply(const server::server_message::TypesUpdated& message);
    void apply(const records::DesktopRelease& release);
    void apply(const server::server_message::Pong& message);
    void applySnapshot(records::StateSnapshot snapshot);
    void mergeSignal(const records::Signal& signal);
    void setSignals(std::vector<records::Signal> list);
    /// The only writer of `signals`.
    void changeSignals(const std::function<void(std::vector<records::Signal>&)>& change);
    void upsertMember(const records::Member& member);
    void moveToOffice(const records::Office& office);
    void refreshDerivedState();
    void publishActiveQueueNotes();

    // app_store_session.cpp
    static platform::Awaitable<void> resumeSavedSession(std::weak_ptr<AppStore> weak);
    void resumeWithToken(const std::optional<std::string>& token);
    void startSession(const records::Url& baseURL, const std::string& token);
    void dropSocket();
    void dropClient();
    void startSocket();
    void installUnauthorizedHandler();
    void installCrashSender();
    static platform::Awaitable<std::expected<std::int64_t, server::APIError>> sendReports(
        std::weak_ptr<AppStore> weak, ReplyGuard guard, std::vector<std::string> reports);
    enum class Refetch : std::uint8_t { no, yes };
    void restartRealtime(Refetch refetch);
    void fetchState();
    void revalidateState();
    void resetToUnpaired();
    void handleRevoked();

    // app_store_defaults.cpp
    void applyDesktopDefaults();
    static platform::Awaitable<void> registerAtFirstLaunch(std::weak_ptr<AppStore> weak);
    enum class LoginItemVerdict : std::uint8_t { settled, open };
    LoginItemVerdict checkLoginItem();

    // app_store_pairing.cpp
    [[nodiscard]] records::PairDeviceInfo currentPairDeviceInfo() const;
    static platform::Awaitable<void> runSetupQr(std::weak_ptr<AppStore> weak, platform::CancellationToken token);
    void completePairing(const records::PairRedeemResponse& response, const records::Url& baseURL);

    // app_store_signals.cpp
    platform::Awaitable<void> drainPendingNotificationActions();

    // app_store_sign_in_code.cpp
    void stopSignInCode();
    void restartSignInCode();
    static platform::Awaitable<void> rotateSignInCode(std::weak_ptr<AppStore> weak, platform::CancellationToken token);

    // app_store_station.cpp
    void apply(const server::server_message::SessionStarted& message);
    void apply(const server::server_message::SessionEnded& message);
    void handlePowerOff();
    void reconcileFlexibleRoomSession();
    void clearFlexibleRoomSession();
    void adoptSignedInMember(const std::string& memberId);
    void setSignInScope(const LoginScope& scope);
    void clearSignInScope();
    void forgetSignIn();
    void clearSignedInMember();
    void endSignIn();
    [[nodiscard]] LoginScope currentLogin() const;
    void verifyLoginScope();

    const StorePorts ports_;
    const StoreCollaborators collaborators_;
    StoreState state_;

    ClientHandle apiClient_;
    std::shared_ptr<server::WebSocketClient> socket_;
    std::optional<records::Url> sessionBaseURL_;
    std::optional<std::string> sessionToken_;
    SessionPublicationGeneration publicationGeneration_;
    std::optional<platform::SteadyTime> lastRevalidateAt_;  ///< none: never
    bool loginScopeSignOutInFlight_ = false;
    platform::Observation powerOffObserver_;
    platform::TaskHandle setupQrTask_;
    platform::TaskHandle signInCodeTask_;
    std::weak_ptr<void> signInCodeViewer_;
    std::deque<DesktopSignalNotificationAction> pendingNotificationActions_;
    bool notificationActionInFlight_ = false;

    StoreChanges changes_;
    platform::ObserverList<const StoreChanges&> observers_;
};

/// Whether a press in a notification may still act: the notification was for this member, the signal is still one that
/// this member receives, and its status allows the action.
[[nodiscard]] bool canApplyAction(const DesktopSignalNotificationAction& action, const records::Signal& signal,
                                  const records::Member& member);

}  // namespace zelkovanta::store
