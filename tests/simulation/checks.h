#pragma once

#include "records/snapshot.h"
#include "tests/simulation/computer.h"

#include <optional>
#include <string>

/// What must hold in a store, whatever happens. Each gives what does not, in words.
namespace zelkovanta::simulation {

using Complaint = std::optional<std::string>;

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
