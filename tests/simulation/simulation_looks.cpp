#include "records/json_codec.h"
#include "tests/simulation/checks.h"
#include "tests/simulation/simulation.h"

namespace zelkovanta::simulation {

using namespace std::chrono_literals;

namespace {

/// A request moves within 15 s or fails; the slowest reply that the network makes takes 40 s more.
constexpr auto longestSending = 75s;
/// A launched program has read its key store and shows what it is.
constexpr auto launchTime = 5s;

}  // namespace

/// The office's record of the computer that this one was last paired as; null if the office holds it no more.
const office::Device* Simulation::deviceHeldFor(const Computer& computer) const {
    const auto& token = pairedWith_[static_cast<std::size_t>(computer.number())];
    const auto id = token ? office_->deviceOf(*token) : std::nullopt;
    return id ? office_->state().find<office::Device>(*id) : nullptr;
}

void Simulation::look(Computer& computer) {
    if (!verdict_.holds() || !computer.isResponsive() || loop_.now() - computer.responsiveSince() < launchTime) {
        return;
    }
    lookAtPairing(computer);
    lookAtSending(computer);
    lookAtView(computer);
    lookAtNotifications(computer);
}

/// A pairing ends by the office's word or the person's wish, and by nothing else.
void Simulation::lookAtPairing(Computer& computer) {
    if (!computer.state().isPaired && !computer.isKeyStoreLocked() && deviceHeldFor(computer) != nullptr &&
        !computer.watch().unlinkAnswered()) {
        verdict_.fail(loop_.now(), computer.number(), "lost its pairing, though the office holds it");
    }
}

void Simulation::lookAtSending(const Computer& computer) {
    const auto since = computer.sendingSince();
    if (since && loop_.now() - std::max(*since, computer.responsiveSince()) > longestSending) {
        verdict_.fail(loop_.now(), computer.number(), "is sending for ever");
    }
}

/// With nothing on its way a computer shows what the office holds, even without a new snapshot; unless an overtaken
/// reply was merged since the last one.
void Simulation::lookAtView(Computer& computer) {
    const store::StoreState& state = computer.state();
    if (!office_->isUp() || !state.isPaired || !state.hasAuthenticatedSnapshot ||
        state.connectionState != server::ConnectionState::connected || !computer.process().port().isQuiet()) {
        return;
    }
    const office::Device* device = deviceHeldFor(computer);
    const auto text = device == nullptr ? std::nullopt : office_->office().snapshot(device->id);
    const auto expected = text ? records::decodeJson<records::StateSnapshot>(*text)
                               : std::unexpected{records::DecodingError{"the office knows no such computer"}};
    if (!expected) {
        verdict_.fail(loop_.now(), computer.number(), "stays connected, but " + expected.error().reason);
        return;
    }
    ++looks_;
    auto complaint = difference(state, *expected, Order::any,
                                computer.watch().mayDifferInSignIn() ? SignIn::mayBeGone : SignIn::same);
    if (!complaint && !computer.watch().mayDifferInSignIn()) {
        complaint = queueDifference(state, office_->state(), *device);
    }
    if (!complaint) {
        return;
    }
    if (computer.watch().mayDiffer()) {
        computer.watch().divergenceSeen();
    } else {
        verdict_.fail(loop_.now(), computer.number(), "differs from the office with nothing on its way: " + *complaint);
    }
}

void Simulation::lookAtNotifications(Computer& computer) {
    const auto& center = computer.notifications();
    if (!center.isQuiet()) {
        return;
    }
    if (auto complaint = computer.notificationWatch().complaint(computer.state(), center)) {
        verdict_.fail(loop_.now(), computer.number(), std::move(*complaint));
    }
    alertsSeen_ += center.delivered().size();
}

void Simulation::lookWhetherAllAreBack() {
    for (const auto& computer : computers_) {
        const store::StoreState& state = computer->state();
        const office::Device* device = deviceHeldFor(*computer);
        std::string fault;
        if (state.isPaired && device == nullptr) {
            fault = "was revoked and does not show the setup screen";
        } else if (state.isPaired && state.connectionState != server::ConnectionState::connected) {
            fault = "is not connected long after the last fault";
        } else if (state.isPaired && !state.hasAuthenticatedSnapshot) {
            fault = "has no snapshot long after the last fault";
        } else if (!state.isPaired && (!state.setupQrImage || state.setupQrError)) {
            fault = "shows no setup code long after the last fault";
        } else if (state.isSending) {
            fault = "is sending long after the last fault";
        }
        if (!fault.empty()) {
            verdict_.fail(loop_.now(), computer->number(), std::move(fault));
        }
    }
}

/// After one more snapshot there is no excuse left.
void Simulation::lookAtEverything() {
    for (const auto& computer : computers_) {
        if (!computer->notifications().isQuiet()) {
            verdict_.fail(loop_.now(), computer->number(), "never leaves its notification centre alone");
        }
        lookAtNotifications(*computer);
        const store::StoreState& state = computer->state();
        if (!state.isPaired) {
            continue;
        }
        const office::Device* device = deviceHeldFor(*computer);
        if (device == nullptr) {
            verdict_.fail(loop_.now(), computer->number(), "is paired, but not with the office");
            continue;
        }
        if (state.connectionState != server::ConnectionState::connected ||
            computer->process().port().exchangesInFlight() > 0) {
            verdict_.fail(loop_.now(), computer->number(), "has not settled after the last snapshot");
            continue;
        }
        const auto expected = records::decodeJson<records::StateSnapshot>(*office_->office().snapshot(device->id));
        ++looks_;
        auto complaint = expected ? difference(state, *expected, Order::same, SignIn::same)
                                  : Complaint{"the office's state does not decode: " + expected.error().reason};
        if (!complaint) {
            complaint = queueDifference(state, office_->state(), *device);
        }
        if (complaint) {
            verdict_.fail(loop_.now(), computer->number(), "differs from the office after a snapshot: " + *complaint);
        }
        if (isSignInOfAnotherBoot(state, computer->bootTime())) {
            verdict_.fail(loop_.now(), computer->number(), "shows a sign-in from before its clock was set");
        }
    }
}

}  // namespace zelkovanta::simulation
