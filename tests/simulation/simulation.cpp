#include "tests/simulation/simulation.h"

#include "tests/simulation/checks.h"

#include <utility>

namespace zelkovanta::simulation {

using namespace std::chrono_literals;

namespace {

/// Within this time after the last fault every paired computer is connected again.
constexpr auto recoveryLimit = 120s;
/// A broken socket comes back within 2 s; then a sign-in that must not last is signed out, and the state fetched.
constexpr auto settlingTime = 30s;
constexpr auto step = 10s;

}  // namespace

Simulation::Simulation(const Scenario& scenario, Sabotage sabotage, std::FILE* traceFile)
    : scenario_(scenario), sabotage_(std::move(sabotage)), trace_(traceFile), chance_(scenario.seed) {
    foundPractices(memory_, chance_);
    if (sabotage_.storage) {
        wrappedStorage_ = sabotage_.storage(memory_);
    }
    office_ =
        std::make_unique<SimulatedOffice>(SimulatedOffice::Surroundings{loop_, trace_, faults_, verdict_},
                                          chance_.branch(), memory_, wrappedStorage_ ? *wrappedStorage_ : memory_);
    network_ = std::make_unique<Network>(Network{loop_, trace_, faults_, chance_.branch(), *office_});
    const ComputerSurroundings surroundings{loop_, *network_, verdict_, overtaken_, sabotage_};
    for (int number = 0; number < scenario_.computers; ++number) {
        auto& computer = *computers_.emplace_back(std::make_unique<Computer>(surroundings, number, chance_.branch()));
        computer.onChange = [this](Computer& changed, const store::StoreChanges& changes) {
            noteChange(changed, changes);
        };
    }
    pairedWith_.resize(computers_.size());
    people_ = std::make_unique<People>(People::Surroundings{loop_, *office_, computers_, faults_, scenario_},
                                       chance_.branch());
    mischief_ = std::make_unique<Mischief>(
        Mischief::Surroundings{loop_, *office_, computers_, faults_, scenario_, *people_}, chance_.branch());
}

Simulation::~Simulation() {
    for (const auto& computer : computers_) {
        computer->kill();
        computer->setKeyStoreLocked(false);  // Lets go of reads that wait.
    }
}

void Simulation::advance(platform::Duration span) {
    const auto until = loop_.now() + span;
    while (verdict_.holds() && loop_.now() < until) {
        loop_.advance(std::min(platform::Duration{step}, until - loop_.now()));
    }
}

Report Simulation::run() {
    for (const auto& computer : computers_) {
        computer->launch();
        scheduleLook(*computer, chance_.between(0s, scenario_.betweenLooks));
    }
    // Most are paired soon, while nothing goes wrong yet.
    advance(5s);
    for (const auto& computer : computers_) {
        people_->pair(*computer);
    }
    advance(15s);
    people_->start();
    mischief_->start();
    advance(scenario_.span);

    people_->stop();
    mischief_->stop();
    advance(recoveryLimit);
    if (verdict_.holds()) {
        lookWhetherAllAreBack();
    }
    for (const auto& computer : computers_) {
        look(*computer);
    }
    if (verdict_.holds()) {
        office_->stopExpiring();
        for (const auto& computer : computers_) {
            computer->process().port().breakSockets();
        }
        advance(settlingTime);
    }
    if (verdict_.holds()) {
        lookAtEverything();
        office_->goDown();
        office_->comeUp();
    }
    return {.violation = verdict_.violation(),
            .simulated = loop_.now().time_since_epoch(),
            .faults = faults_,
            .overtaken = overtaken_,
            .traceHash = trace_.hash(),
            .traceEntries = trace_.entries(),
            .actions = people_->actions(),
            .accepted = office_->acceptedSignals(),
            .looks = looks_,
            .alertsSeen = alertsSeen_};
}

void Simulation::scheduleLook(Computer& computer, platform::Duration delay) {
    loop_.schedule(loop_.now() + delay, [this, &computer] {
        look(computer);
        scheduleLook(computer, scenario_.betweenLooks);
    });
}

void Simulation::noteChange(Computer& computer, const store::StoreChanges& changes) {
    const store::StoreState& state = computer.state();
    trace_.note(loop_.now(), computer.number(), "changed", state.lastError ? *state.lastError : std::string{});
    if (changes.contains(store::StoreField::isPaired) && state.isPaired) {
        pairedWith_[static_cast<std::size_t>(computer.number())] = computer.token();
        computer.watch().setUnlinkAnswered(false);
    }
    if (auto complaint = brokenInvariant(computer, changes, office_->state())) {
        verdict_.fail(loop_.now(), computer.number(), std::move(*complaint));
    }
}

}  // namespace zelkovanta::simulation
