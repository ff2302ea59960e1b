#pragma once

#include <functional>
#include <memory>

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

    /// `folder` is private to the person, and its path may be of any length; `name` tells profiles apart.
    SingleInstance(const QString& folder, const QString& name);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Takes the lock, or else hands over to the one that holds it, or takes it once that one has ended. It may wait
    /// up to three seconds for an answer, and up to six for an end.
    [[nodiscard]] Start begin(const QString& activationToken);
    /// Shows nothing any more, and answers nobody: whoever starts now waits for the end of this process. The lock is
    /// held until then.
    void stopAnswering();

    /// A second start: its activation token, empty for none.
    std::function<void(const QString& activationToken)> onSecondStart;

private:
    [[nodiscard]] bool takeLock();
    void listen();
    void answer();
    [[nodiscard]] Start handOver(const QString& activationToken);

    const int folder_;
    const QString lockFile_;
    const QString socketFile_;
    int lock_ = -1;
    std::unique_ptr<QLocalServer> server_;
};

}  // namespace zelkovanta::app
