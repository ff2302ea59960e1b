#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QLocalServer>
#include <QString>

namespace zelkovanta::app {

/// One process for each profile of a person: the first start holds a lock and listens, a second one hands over to it.
/// Needs no session bus. Main thread.
class SingleInstance {
public:
    enum class Start {
        first,       ///< nobody else runs, or nothing can be known about it: go on
        handedOver,  ///< the one that runs has shown its window
        unanswered,  ///< one runs, and does not answer
    };

    /// `folder` is private to the person; `name` tells profiles apart.
    SingleInstance(QString folder, QString name);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Takes the lock, or else hands over, for which it may wait up to three seconds. `activationToken` is what the
    /// desktop gave this start.
    [[nodiscard]] Start begin(const QString& activationToken);

    /// A second start: its activation token, empty for none.
    std::function<void(const QString& activationToken)> onSecondStart;

private:
    [[nodiscard]] bool takeLock();
    void listen();
    void answer();
    [[nodiscard]] Start handOver(const QString& activationToken) const;

    const QString lockFile_;
    const QString socketFile_;
    int lock_ = -1;
    QLocalServer server_;
};

}  // namespace zelkovanta::app
