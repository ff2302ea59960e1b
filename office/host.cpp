#include "office/host.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/random.h>
#include <unistd.h>

namespace zelkovanta::office {

void SystemRandomBytes::fill(std::span<std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::getrandom(bytes.data(), bytes.size(), 0);
        if (count < 0 && errno != EINTR) {
            std::abort();
        }
        if (count > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
    }
}

WallTime wallNow() {
    return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
}

std::expected<void, std::string> writePrivateFile(const std::filesystem::path& file, std::string_view content) {
    std::filesystem::path beside = file;
    beside += ".new";
    const auto failed = [&file] {
        return std::unexpected("The file " + file.string() + " cannot be written: " + std::strerror(errno) + ".");
    };
    const int descriptor = ::open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        return failed();
    }
    const bool written = ::write(descriptor, content.data(), content.size()) == static_cast<ssize_t>(content.size());
    if (::close(descriptor) != 0 || !written || ::rename(beside.c_str(), file.c_str()) != 0) {
        return failed();
    }
    return {};
}

std::expected<std::vector<std::string>, std::string> readLines(const std::filesystem::path& file) {
    std::ifstream stream(file);
    if (!stream) {
        return std::unexpected("The file " + file.string() + " cannot be read.");
    }
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(std::move(line));
    }
    return lines;
}

std::expected<std::string, std::string> readLine(const std::filesystem::path& file) {
    auto lines = readLines(file);
    if (!lines || lines->empty()) {
        return std::unexpected("The file " + file.string() + " cannot be read.");
    }
    return std::move(lines->front());
}

}  // namespace zelkovanta::office
