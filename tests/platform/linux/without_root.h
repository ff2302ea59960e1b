#pragma once

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace zelkovanta::platform::linux_host {

/// Permissions bind this process while this lives, even where the tests run as root.
class WithoutRoot {
public:
    WithoutRoot() : isRoot_(::geteuid() == 0) {
        if (isRoot_) {
            [[maybe_unused]] const int failed = ::seteuid(nobody);
        }
    }
    ~WithoutRoot() {
        if (isRoot_) {
            [[maybe_unused]] const int failed = ::seteuid(0);
        }
    }
    WithoutRoot(const WithoutRoot&) = delete;
    WithoutRoot& operator=(const WithoutRoot&) = delete;

private:
    static constexpr uid_t nobody = 65534;
    bool isRoot_;
};

/// Every write to a file fails while this lives, as on a disk without room.
class WithoutRoom {
public:
    WithoutRoom() {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit none{.rlim_cur = 0, .rlim_max = before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~WithoutRoom() { ::setrlimit(RLIMIT_FSIZE, &before_); }
    WithoutRoom(const WithoutRoom&) = delete;
    WithoutRoom& operator=(const WithoutRoom&) = delete;

private:
    rlimit before_{};
};

/// No file can be opened while this lives, as when too many are open.
class WithoutDescriptors {
public:
    WithoutDescriptors() {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit none{.rlim_cur = 0, .rlim_max = before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~WithoutDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    WithoutDescriptors(const WithoutDescriptors&) = delete;
    WithoutDescriptors& operator=(const WithoutDescriptors&) = delete;

private:
    rlimit before_{};
};

}  // namespace zelkovanta::platform::linux_host
