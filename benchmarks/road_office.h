#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace zelkovanta::benchmarks {

/// The office with its sample practice, on a port of loopback and a thread of this process. Ends the program with a
/// sentence if it cannot be opened.
class RoadOffice {
public:
    /// `name` is that of a folder for its file.
    explicit RoadOffice(const std::string& name);
    ~RoadOffice();
    RoadOffice(const RoadOffice&) = delete;
    RoadOffice& operator=(const RoadOffice&) = delete;

    [[nodiscard]] std::string url() const;
    /// When the latest request had been committed.
    [[nodiscard]] std::int64_t acceptedAt() const;

    // For a computer of "Room 3", and for that of a provider on shift.
    [[nodiscard]] const std::string& roomCode() const;
    [[nodiscard]] const std::string& memberCode() const;
    /// Has the room's `RoadClient` call the provider.
    [[nodiscard]] const std::string& sendOrder() const;

private:
    class Running;
    std::unique_ptr<Running> running_;
};

}  // namespace zelkovanta::benchmarks
