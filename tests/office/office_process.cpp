#include "tests/office/office_process.h"

#include "office/control.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace zelkovanta::office {
namespace {

constexpr int patience = 20'000;  // milliseconds

struct Child {
    pid_t process = 0;
    int output = -1;
};

/// Runs the program; its standard output can be read, its standard error goes to a file.
Child spawn(std::vector<std::string> arguments, const std::filesystem::path& errors) {
    std::string program = ZELKOVANTA_OFFICE_PROGRAM;
    std::vector<char*> pointers{program.data()};
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);

    int ends[2] = {};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    Child child{.process = 0, .output = ends[0]};
    const int failed = ::posix_spawn(&child.process, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    if (failed != 0) {
        throw std::runtime_error("the office's program cannot be started");
    }
    return child;
}

/// One line, or what came until the end.
std::string readLine(int output) {
    std::string line;
    for (;;) {
        pollfd waiting{.fd = output, .events = POLLIN, .revents = 0};
        char letter = 0;
        if (::poll(&waiting, 1, patience) <= 0) {
            throw std::runtime_error("the office's program says nothing");
        }
        if (::read(output, &letter, 1) <= 0 || letter == '\n') {
            return line;
        }
        line += letter;
    }
}

int statusOf(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string textOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

}  // namespace

OfficeProcess::OfficeProcess() {
    start({"--sample", "harbour"});
}

OfficeProcess::OfficeProcess(const Arguments& more) {
    start(more(folder_.path()));
}

OfficeProcess::~OfficeProcess() {
    if (process_ != 0) {
        end(SIGKILL);
    }
}

void OfficeProcess::start(std::vector<std::string> more) {
    std::vector<std::string> arguments = {"serve", "--database", database().string(), "--port", std::to_string(port_)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const Child child = spawn(std::move(arguments), folder_.path() / "log");
    process_ = child.process;
    const std::string line = readLine(child.output);
    ::close(child.output);
    constexpr std::string_view promise = "listening on http";
    constexpr std::string_view place = "://127.0.0.1:";
    const auto at = line.find(place);
    if (!line.starts_with(promise) || at == std::string::npos) {
        throw std::runtime_error("the office did not start: " + log());
    }
    port_ = static_cast<unsigned short>(std::stoi(line.substr(at + place.size())));
}

int OfficeProcess::end(int signal) {
    ::kill(process_, signal);
    return statusOf(std::exchange(process_, 0));
}

std::string OfficeProcess::log() const {
    return textOf(folder_.path() / "log");
}

std::string OfficeProcess::command(std::vector<std::string> words) const {
    words.insert(words.end(), {"--database", database().string()});
    const auto parsed = parseCommandLine(words);
    if (!parsed) {
        throw std::runtime_error(parsed.error());
    }
    std::ostringstream output;
    std::ostringstream errors;
    const auto* approval = std::get_if<Approve>(&*parsed);
    const int status =
        approval != nullptr ? approve(*approval, output, errors) : control(std::get<Control>(*parsed), output, errors);
    if (status != 0) {
        throw std::runtime_error(errors.str());
    }
    std::string text = output.str();
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    return text;
}

OfficeProcess::Refusal OfficeProcess::refusalOf(std::vector<std::string> arguments) {
    const support::TemporaryFolder folder;
    const Child child = spawn(std::move(arguments), folder.path() / "errors");
    readLine(child.output);
    ::close(child.output);
    const int status = statusOf(child.process);
    return {.status = status, .sentence = textOf(folder.path() / "errors")};
}

}  // namespace zelkovanta::office
