#include "app/single_instance.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QEventLoop>
#include <QFile>
#include <QLocalSocket>
#include <QTimer>

namespace zelkovanta::app {

namespace {

constexpr int answerLimit = 3000;  // milliseconds, as below
constexpr int handOverLimit = 6000;
constexpr int connectAgainAfter = 20;
constexpr qsizetype longestToken = 1000;
constexpr auto shownAnswer = "shown\n";

QString fileIn(int folder, const QString& name) {
    return QStringLiteral("/proc/self/fd/%1/%2").arg(folder).arg(name);
}

/// A socket's address holds 107 bytes, fewer than a folder's path or a profile's name may need: the folder goes by its
/// number, and the name by its digest.
QString shortNameOf(const QString& name) {
    return QString::fromLatin1(QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha256).toHex().left(32));
}

void closeIfOpen(int descriptor) {
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

}  // namespace

SingleInstance::SingleInstance(const QString& folder, const QString& name)
    : folder_(::open(QFile::encodeName(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      lockFile_(fileIn(folder_, name + ".lock")),
      socketFile_(fileIn(folder_, shortNameOf(name) + ".socket")) {}

SingleInstance::~SingleInstance() {
    stopAnswering();
    closeIfOpen(lock_);
    closeIfOpen(folder_);
}

SingleInstance::Start SingleInstance::begin(const QString& activationToken) {
    const Start start = takeLock() ? Start::first : handOver(activationToken);
    if (start == Start::first) {
        listen();
    }
    return start;
}

void SingleInstance::stopAnswering() {
    onSecondStart = {};
    server_.reset();
}

/// False only if another process holds it. A folder that cannot be written gives no lock, and no reason not to run.
bool SingleInstance::takeLock() {
    if (lock_ < 0) {
        lock_ = ::open(QFile::encodeName(lockFile_).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    }
    return lock_ < 0 || ::flock(lock_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void SingleInstance::listen() {
    if (lock_ < 0) {
        return;
    }
    // The lock is ours, so a socket of this name is left over from a process that was killed.
    QFile::remove(socketFile_);
    server_ = std::make_unique<QLocalServer>();
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(server_.get(), &QLocalServer::newConnection, server_.get(), [this] { answer(); });
    if (!server_->listen(socketFile_)) {
        std::fprintf(stderr, "Another start cannot show this window: %s.\n", qPrintable(server_->errorString()));
    }
}

void SingleInstance::answer() {
    while (QLocalSocket* const second = server_->nextPendingConnection()) {
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
                second->write(shownAnswer);
            }
        });
    }
}

SingleInstance::Start SingleInstance::handOver(const QString& activationToken) {
    QEventLoop waiting;
    auto result = Start::unanswered;
    QTimer again;
    again.setSingleShot(true);
    QTimer unanswered;
    unanswered.setSingleShot(true);
    QLocalSocket first;
    const auto connectToFirst = [&] { first.connectToServer(socketFile_); };
    QObject::connect(&again, &QTimer::timeout, &waiting, connectToFirst);
    QObject::connect(&first, &QLocalSocket::connected, &waiting, [&] {
        unanswered.start(answerLimit);
        first.write(activationToken.left(longestToken / 4).toUtf8() + "\n");
    });
    // The first one may hold the lock and not listen yet, or no longer.
    QObject::connect(&first, &QLocalSocket::errorOccurred, &waiting, [&] {
        unanswered.stop();
        if (takeLock()) {
            result = Start::first;
            waiting.quit();
        } else {
            again.start(connectAgainAfter);
        }
    });
    QObject::connect(&first, &QLocalSocket::readyRead, &waiting, [&] {
        if (first.readAll() == shownAnswer) {
            result = Start::handedOver;
            waiting.quit();
        }
    });
    QObject::connect(&unanswered, &QTimer::timeout, &waiting, &QEventLoop::quit);
    QTimer::singleShot(handOverLimit, &waiting, &QEventLoop::quit);
    again.start(0);
    waiting.exec();
    return result;
}

}  // namespace zelkovanta::app
