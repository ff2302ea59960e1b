#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QString>
#include <QStringList>

class QProcess;

namespace zelkovanta::platform::linux_host {

/// Plays short clips through the desktop's sound server, by way of the server's own player program: nothing of it is
/// loaded here, and one that hangs is ended. A computer without sound stays silent, at once and without a word.
///
/// Main thread; no call waits. Clips that play end with this object.
class SoundPlayer {
public:
    /// A program and what comes before the name of the file.
    struct Player {
        QString program;
        QStringList arguments;
    };
    static constexpr std::chrono::seconds longestClip{10};

    /// `players` are tried one after the other until one has played.
    SoundPlayer(std::filesystem::path folder, std::vector<Player> players);
    ~SoundPlayer();
    SoundPlayer(const SoundPlayer&) = delete;
    SoundPlayer& operator=(const SoundPlayer&) = delete;

    /// The players of the sound servers of this host.
    [[nodiscard]] static std::vector<Player> hostPlayers();

    /// `name` is that of a file in the folder, which need not be there. A clip that is heard at this moment does not
    /// begin a second time.
    void play(const std::string& name);

private:
    struct Stopped;
    void begin(const std::string& name, std::size_t player);

    std::filesystem::path folder_;
    std::vector<Player> players_;
    std::map<std::string, std::unique_ptr<QProcess, Stopped>> playing_;
};

}  // namespace zelkovanta::platform::linux_host
