#include "platform/linux/sound_player.h"

#include <system_error>
#include <utility>

#include <QProcess>
#include <QTimer>

namespace zelkovanta::platform::linux_host {

/// A player is let go of from within its own signals, so it goes later than that.
struct SoundPlayer::Stopped {
    void operator()(QProcess* process) const {
        process->disconnect();
        process->kill();
        process->deleteLater();
    }
};

SoundPlayer::SoundPlayer(std::filesystem::path folder, std::vector<Player> players)
    : folder_(std::move(folder)), players_(std::move(players)) {}

SoundPlayer::~SoundPlayer() {
    for (auto& [name, process] : playing_) {
        // Nothing runs the loop any more that would delete it later.
        const std::unique_ptr<QProcess> ended(process.release());
        ended->disconnect();
        ended->kill();
        ended->waitForFinished();
    }
}

std::vector<SoundPlayer::Player> SoundPlayer::hostPlayers() {
    return {{QStringLiteral("paplay"), {}}, {QStringLiteral("pw-play"), {}}};
}

void SoundPlayer::play(const std::string& name) {
    std::error_code failed;
    const bool isPlainName = std::filesystem::path(name).filename() == name;
    if (isPlainName && !playing_.contains(name) && std::filesystem::is_regular_file(folder_ / name, failed)) {
        begin(name, 0);
    }
}

void SoundPlayer::begin(const std::string& name, std::size_t player) {
    if (player == players_.size()) {
        return;
    }
    auto* const process = new QProcess;
    playing_[name].reset(process);
    const auto ended = [this, name, player](bool hasPlayed) {
        playing_.erase(name);
        if (!hasPlayed) {
            begin(name, player + 1);
        }
    };
    QObject::connect(process, &QProcess::finished, process, [ended = ended](int code, QProcess::ExitStatus status) {
        // One that was ended from outside may have been heard.
        ended(status == QProcess::CrashExit || code == 0);
    });
    QObject::connect(process, &QProcess::errorOccurred, process, [ended = ended](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            ended(false);
        }
    });
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    QTimer::singleShot(longestClip, process, &QProcess::kill);
    process->start(players_[player].program,
                   players_[player].arguments + QStringList{QString::fromStdString((folder_ / name).string())});
}

}  // namespace zelkovanta::platform::linux_host
