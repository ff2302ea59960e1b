#include "app/single_instance.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

#include <QEventLoop>
#include <QFile>
#include <QLocalSocket>
#include <QTimer>

namespace zelkovanta::app {

namespace {

constexpr int handOverLimit = 3000;  // milliseconds, as below
constexpr int connectAgainAfter = 20;
constexpr qsizetype longestToken = 1000;
constexpr auto shownAnswer = "shown\n";

}  // namespace

SingleInstance::SingleInstance(QString folder, QString name)
    : lockFile_(folder + "/" + name + ".lock"), socketFile_(folder + "/" + name + ".socket") {}

SingleInstance::~SingleInstance() {
    if (server_.isListening()) {
        server_.close();
        QFile::remove(socketFile_);
    }
    if (lock_ >= 0) {
        ::close(lock_);
    }
}

SingleInstance::Start SingleInstance::begin(const QString& activationToken) {
    if (!takeLock()) {
        return handOver(activationToken);
    }
    listen();
    return Start::first;
}

/// False only if another process holds it. A folder that cannot be written gives no lock, and no reason not to run.
bool SingleInstance::takeLock() {
    lock_ = ::open(QFile::encodeName(lockFile_).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    return lock_ < 0 || ::flock(lock_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void SingleInstance::listen() {
    if (lock_ < 0) {
        return;
    }
    // The lock is ours, so a socket of this name is left over from a process that was killed.
    QFile::remove(socketFile_);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] { answer(); });
    server_.listen(socketFile_);
}

void SingleInstance::answer() {
    while (QLocalSocket* const second = server_.nextPendingConnection()) {
        QObject::connect(second, &QLocalSocket::disconnected, second, &QObject::deleteLater);
        QObject::connect(second, &QLocalSocket::readyRead, second, [this, second] {
            if (!second->canReadLine()) {
                if (second->bytesAvailable() > longestToken) {
                    second->abort();
                }
                return;
            }
            const QString token = QString::fromUtf8(second->readLine(longestToken)).trimmed();
            if (onSecondStart) {
                onSecondStart(token);
            }
            second->write(shownAnswer);
        });
    }
}

SingleInstance::Start SingleInstance::handOver(const QString& activationToken) const {
    QEventLoop waiting;
    QLocalSocket first;
    auto result = Start::unanswered;
    QTimer again;
    again.setSingleShot(true);
    const auto connectToFirst = [&] { first.connectToServer(socketFile_); };
    QObject::connect(&again, &QTimer::timeout, &waiting, connectToFirst);
    QObject::connect(&first, &QLocalSocket::connected, &waiting,
                     [&] { first.write(activationToken.left(longestToken / 4).toUtf8() + "\n"); });
    // The first one may hold the lock and not listen yet.
    QObject::connect(&first, &QLocalSocket::errorOccurred, &waiting, [&] { again.start(connectAgainAfter); });
    QObject::connect(&first, &QLocalSocket::readyRead, &waiting, [&] {
        if (first.readAll() == shownAnswer) {
            result = Start::handedOver;
            waiting.quit();
        }
    });
    QTimer::singleShot(handOverLimit, &waiting, &QEventLoop::quit);
    connectToFirst();
    waiting.exec();
    return result;
}

}  // namespace zelkovanta::app
