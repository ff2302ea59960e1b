#include "platform/linux/atomic_file.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zelkovanta::platform::linux_host {

namespace fs = std::filesystem;

namespace {

std::error_code lastError() {
    return {errno, std::system_category()};
}

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] std::error_code closeNow() {
        return ::close(std::exchange(number_, -1)) == 0 ? std::error_code{} : lastError();
    }

private:
    int number_;
};

std::error_code writeAll(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const auto size = ::write(descriptor, content.data(), content.size());
        if (size < 0 && errno != EINTR) {
            return lastError();
        }
        content.remove_prefix(size < 0 ? 0 : static_cast<std::size_t>(size));
    }
    return ::fsync(descriptor) == 0 ? std::error_code{} : lastError();
}

std::error_code makeFolders(const fs::path& folder) {
    std::error_code failed;
    if (folder.empty() || fs::is_directory(folder, failed)) {
        return {};
    }
    if (auto parent = makeFolders(folder.parent_path())) {
        return parent;
    }
    return ::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST ? std::error_code{} : lastError();
}

void syncFolder(const fs::path& folder) {
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.number() >= 0) {
        ::fsync(descriptor.number());
    }
}

std::expected<std::string, std::error_code> readBeginning(const fs::path& file, std::size_t maximumSize) {
    // Never waits for the other end of a pipe that somebody put there.
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status{};
    if (descriptor.number() < 0 || ::fstat(descriptor.number(), &status) != 0) {
        return std::unexpected(lastError());
    }
    if (!S_ISREG(status.st_mode)) {
        return std::unexpected(std::make_error_code(std::errc::invalid_argument));
    }
    std::string content;
    while (content.size() < maximumSize) {
        const std::size_t before = content.size();
        content.resize(std::min(maximumSize, before + 16384));
        const auto size = ::read(descriptor.number(), content.data() + before, content.size() - before);
        const auto error = lastError();
        content.resize(before + (size > 0 ? static_cast<std::size_t>(size) : 0));
        if (size < 0 && error.value() != EINTR) {
            return std::unexpected(error);
        }
        if (size == 0) {
            break;
        }
    }
    return content;
}

}  // namespace

std::error_code writeFileAtomically(fs::path file, std::string_view content) {
    std::error_code missing;
    std::error_code failed;
    if (fs::is_symlink(file, missing)) {
        file = fs::weakly_canonical(file, failed);
    }
    if (!failed) {
        failed = makeFolders(file.parent_path());
    }
    if (failed) {
        return failed;
    }
    std::string unfinished = file.string() + ".XXXXXX";
    Descriptor descriptor(::mkostemp(unfinished.data(), O_CLOEXEC));
    if (descriptor.number() < 0) {
        return lastError();
    }
    failed = writeAll(descriptor.number(), content);
    if (const auto late = descriptor.closeNow(); !failed) {
        failed = late;
    }
    if (!failed && ::rename(unfinished.c_str(), file.c_str()) != 0) {
        failed = lastError();
    }
    if (failed) {
        ::unlink(unfinished.c_str());
        return failed;
    }
    syncFolder(file.parent_path());
    return {};
}

std::optional<std::string> readFile(const fs::path& file, std::size_t maximumSize) {
    auto content = readBeginning(file, maximumSize);
    return content ? std::optional{std::move(*content)} : std::nullopt;
}

std::expected<std::string, std::error_code> readWholeFile(const fs::path& file, std::size_t maximumSize) {
    auto content = readBeginning(file, maximumSize + 1);
    if (content && content->size() > maximumSize) {
        return std::unexpected(std::make_error_code(std::errc::file_too_large));
    }
    return content;
}

}  // namespace zelkovanta::platform::linux_host
