#pragma once

#include "office/command_line.h"
#include "tests/support/temporary_folder.h"

#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace zelkovanta::office {

/// The office's program, running on a database in a folder of its own and on a free port. Ended with the object.
class OfficeProcess {
public:
    OfficeProcess();
    /// With other arguments than the sample's. They may name files in `folder`.
    using Arguments = std::function<std::vector<std::string>(const std::filesystem::path& folder)>;
    explicit OfficeProcess(const Arguments& more);
    ~OfficeProcess();
    OfficeProcess(const OfficeProcess&) = delete;
    OfficeProcess& operator=(const OfficeProcess&) = delete;

    /// Starts it (again) and waits for its line.
    void start(std::vector<std::string> more = {});
    /// Sends the signal and waits for the end; gives the exit status, or minus the signal that ended it.
    int end(int signal);

    [[nodiscard]] unsigned short port() const { return port_; }
    [[nodiscard]] std::filesystem::path database() const { return folder_.path() / "office.db"; }
    [[nodiscard]] std::string log() const;

    /// Runs a control command against it in this process; gives what it printed. Throws when it fails.
    std::string command(std::vector<std::string> words) const;

    /// What a start of the program says on standard error before it ends by itself, and its exit status.
    struct Refusal {
        int status = 0;
        std::string sentence;
    };
    [[nodiscard]] static Refusal refusalOf(std::vector<std::string> arguments);

private:
    support::TemporaryFolder folder_;
    pid_t process_ = 0;
    unsigned short port_ = 0;
};

}  // namespace zelkovanta::office
