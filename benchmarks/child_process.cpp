#include "benchmarks/child_process.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelkovanta::benchmarks {

namespace {

[[noreturn]] void giveUp(const char* sentence) {
    std::fprintf(stderr, "%s\n", sentence);
    std::exit(1);
}

}  // namespace

ChildProcess::ChildProcess(std::vector<std::string> arguments) {
    std::array<int, 2> down{};
    std::array<int, 2> up{};
    if (pipe(down.data()) != 0 || pipe(up.data()) != 0) {
        giveUp("No pipe to be had.");
    }
    pid_ = fork();
    if (pid_ < 0) {
        giveUp("No process to be had.");
    }
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(down[0], STDIN_FILENO);
        dup2(up[1], STDOUT_FILENO);
        for (const int descriptor : {down[0], down[1], up[0], up[1]}) {
            close(descriptor);
        }
        std::string self = "/proc/self/exe";
        std::vector<char*> pointers{self.data()};
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        execv(self.c_str(), pointers.data());
        _exit(127);
    }
    close(down[0]);
    close(up[1]);
    toChild_ = fdopen(down[1], "w");
    fromChild_ = fdopen(up[0], "r");
}

ChildProcess::~ChildProcess() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    std::fclose(toChild_);
    std::fclose(fromChild_);
}

void ChildProcess::writeLine(const std::string& line) {
    std::fprintf(toChild_, "%s\n", line.c_str());
    std::fflush(toChild_);
}

std::string ChildProcess::readLine() {
    std::array<char, 256> buffer{};
    if (!std::fgets(buffer.data(), static_cast<int>(buffer.size()), fromChild_)) {
        giveUp("A process of the measurement ended early.");
    }
    std::string line = buffer.data();
    line.resize(line.find('\n') == std::string::npos ? line.size() : line.find('\n'));
    return line;
}

}  // namespace zelkovanta::benchmarks
