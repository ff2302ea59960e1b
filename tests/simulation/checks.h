#pragma once

#include "records/snapshot.h"
#include "tests/simulation/computer.h"

#include <cstddef>
#include <optional>
#include <string>

/// What must hold in a store, whatever happens. Each gives what does not, in words.
namespace zelkovanta::simulation {

using Complaint = std::optional<std::string>;

/// The logins of a computer, counted: the one in which somebody last signed in, and the one that runs.
struct Logins {
    int ofSignIn = 0;
    int now = 0;
};
/// What a station answers when it is asked for the room that counts, and for whom signals are.
struct StationView {
    std::optional<std::string> confirmedRoomId;
    std::size_t received = 0;
    std::size_t count = 0;  ///< at the badge
};
[[nodiscard]] StationView viewOf(const store::StoreState& state);
/// What does not hold of a station: whoever is signed in, and the room that counts as theirs.
[[nodiscard]] Complaint brokenStation(const store::StoreState& state, const StationView& view, Logins logins);

/// Whether somebody is shown as signed in for whom this is another start of the machine than the one of the sign-in.
/// The next snapshot ends such a sign-in, so it may be shown until then: a clock that is set takes the start along.
[[nodiscard]] bool isSignInOfAnotherBoot(const store::StoreState& state, double bootTime);

/// The store's own invariants, and that nothing poisoned and nothing of another office is in it. Only the parts that
/// changed are looked at.
[[nodiscard]] Complaint brokenInvariant(const Computer& computer, const store::StoreChanges& changes,
                                        const office::State& office);

/// After a snapshot the store has the office's order; after further events it may have another.
enum class Order : std::uint8_t { same, any };
/// Whether a store may show nobody signed in where the office still counts somebody.
enum class SignIn : std::uint8_t { same, mayBeGone };

/// What the store shows otherwise than the office, in all lists and records.
[[nodiscard]] Complaint difference(const store::StoreState& state, const records::StateSnapshot& expected, Order order,
                                   SignIn signIn);

/// What the queues of a computer show otherwise than the office's own records say, by rules that are written down here
/// a second time.
[[nodiscard]] Complaint queueDifference(const store::StoreState& state, const office::State& office,
                                        const office::Device& device);

}  // namespace zelkovanta::simulation
