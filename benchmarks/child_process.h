#pragma once

#include <cstdio>
#include <string>
#include <sys/types.h>
#include <vector>

namespace zelkovanta::benchmarks {

/// This same program in a process of its own, spoken to line by line. Ends the program with a sentence if the child
/// cannot be begun or ends unasked.
class ChildProcess {
public:
    explicit ChildProcess(std::vector<std::string> arguments);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void writeLine(const std::string& line);
    [[nodiscard]] std::string readLine();

private:
    pid_t pid_ = -1;
    std::FILE* toChild_ = nullptr;
    std::FILE* fromChild_ = nullptr;
};

}  // namespace zelkovanta::benchmarks
