#pragma once

#include "office/memory_storage.h"
#include "office/office.h"
#include "platform/simulated/event_loop.h"
#include "tests/simulation/chance.h"
#include "tests/simulation/fault.h"
#include "tests/simulation/trace.h"
#include "tests/simulation/verdict.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zelkovanta::simulation {

/// A frame on its way to computers, with what tells it apart.
struct OfficeFrame {
    std::string text;
    std::string type;
    std::string recordId;        ///< of the signal or member that it is about, else empty
    std::uint64_t sequence = 0;  ///< number of the call of the office that made it
};
using OfficeFramePointer = std::shared_ptr<const OfficeFrame>;

/// The office's end of a real-time connection.
class OfficeConnection {
public:
    virtual ~OfficeConnection() = default;
    virtual void send(OfficeFramePointer frame) = 0;
    virtual void closeFromOffice(std::uint16_t code) = 0;
    virtual void officeDied() = 0;
};

/// The value behind `"key":"` in a compact JSON text, at its first occurrence behind `from`.
[[nodiscard]] std::string_view jsonText(std::string_view json, std::string_view key, std::size_t from = 0);

/// The real office with its open connections, on a storage that outlives its restarts. Every call of it has a number,
/// so that what it made can be told older from newer.
class SimulatedOffice {
public:
    struct Surroundings {
        platform::simulated::EventLoop& loop;
        Trace& trace;
        FaultCounts& faults;
        Verdict& verdict;
    };
    /// `storage` holds the practices already, and outlives this; null for a storage of its own.
    SimulatedOffice(const Surroundings& surroundings, Chance chance, office::MemoryStorage& memory,
                    office::Storage& storage);
    ~SimulatedOffice();

    [[nodiscard]] bool isUp() const { return isUp_; }
    /// Raised by each restart.
    [[nodiscard]] std::uint64_t incarnation() const { return incarnation_; }
    [[nodiscard]] std::uint64_t sequence() const { return sequence_; }

    // While it is up.
    [[nodiscard]] office::Answer handle(const office::Request& request);
    [[nodiscard]] office::SocketAnswer open(std::string_view token,
                                            const std::shared_ptr<OfficeConnection>& connection);
    void closed(const OfficeConnection& connection);

    /// An admin or a phone. Gives whether the office took the order; nothing happens while it is down.
    template <class Call>
    bool order(std::string_view what, Call&& call) {
        if (!isUp_) {
            return false;
        }
        ++sequence_;
        return carryOut(what, std::forward<Call>(call)(*office_, surroundings_.loop.wallNow()));
    }
    /// The answer to the last order or request.
    [[nodiscard]] const std::string& lastBody() const { return lastBody_; }

    void goDown();
    /// Opens the office anew on its storage, and looks whether everything is still there.
    void comeUp();
    /// From here on nothing expires, so that nothing is under way once everybody is done.
    void stopExpiring() { isExpiring_ = false; }
    void refuseCommits(bool refuse) { memory_.refuseCommits(refuse); }

    /// What the office holds; while it is down, what it held last.
    [[nodiscard]] const office::Office& office() const { return *office_; }
    [[nodiscard]] const office::State& state() const { return office_->state(); }
    /// The computer to which a token was ever given, whether or not it is still paired.
    [[nodiscard]] std::optional<std::string> deviceOf(std::string_view token) const;

    /// Whatever was accepted is still there, at least as far on as it was.
    void checkNothingLost();

    /// Signals that were accepted from computers so far.
    [[nodiscard]] std::size_t acceptedSignals() const { return accepted_.size(); }

private:
    bool carryOut(std::string_view what, const office::Answer& answer);
    void send(const office::SendFrame& effect);
    void close(const office::CloseSockets& effect);
    void remember(const office::Request& request, const office::Answer& answer);
    void scheduleTick();

    Surroundings surroundings_;
    office::MemoryStorage& memory_;
    office::Storage& storage_;
    ChanceBytes random_;
    std::unique_ptr<office::Office> office_;
    bool isUp_ = false;
    bool isExpiring_ = true;
    std::uint64_t incarnation_ = 0;
    std::uint64_t sequence_ = 0;
    std::optional<office::Timestamp> deadline_;
    std::uint64_t deadlineAsOf_ = 0;
    std::string lastBody_;
    std::unordered_map<std::string, std::vector<std::shared_ptr<OfficeConnection>>> connections_;
    std::unordered_map<std::string, std::string> deviceByToken_;
    std::vector<std::pair<std::string, int>> accepted_;  ///< signal and how far on it was
    std::unordered_map<std::string, std::size_t> acceptedAt_;
};

}  // namespace zelkovanta::simulation
