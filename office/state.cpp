#include "office/state.h"

#include <array>
#include <utility>

namespace zelkovanta::office {
namespace {

template <std::size_t Kind>
void eraseOf(State& state, const std::string& id) {
    std::get<Kind>(state.tables).erase(id);
}

template <std::size_t... Kinds>
void eraseAny(State& state, const Erase& erase, std::index_sequence<Kinds...>) {
    using Step = void (*)(State&, const std::string&);
    static constexpr std::array<Step, sizeof...(Kinds)> steps{&eraseOf<Kinds>...};
    steps.at(erase.kind)(state, erase.id);
}

}  // namespace

void carryOut(State& state, const Change& change) {
    if (const auto* put = std::get_if<Put>(&change)) {
        std::visit([&state]<class T>(const T& record) { state.all<T>().insert_or_assign(record.id, record); },
                   put->record);
    } else {
        eraseAny(state, std::get<Erase>(change), std::make_index_sequence<std::variant_size_v<Record>>());
    }
}

}  // namespace zelkovanta::office
