#include "office/attempts.h"

#include <algorithm>

namespace zelkovanta::office {

void Attempts::forget(Timestamp now) {
    for (auto entry = attempts_.begin(); entry != attempts_.end();) {
        // Times ahead of now come from before a clock was set back.
        std::erase_if(entry->second, [&](Timestamp then) { return then > now || then + span_ <= now; });
        entry = entry->second.empty() ? attempts_.erase(entry) : std::next(entry);
    }
}

bool Attempts::exhausted(std::string_view who, Timestamp now) {
    forget(now);
    const auto found = attempts_.find(who);
    return found != attempts_.end() && found->second.size() >= most_;
}

void Attempts::add(std::string_view who, Timestamp now) {
    attempts_[std::string(who)].push_back(now);
}

}  // namespace zelkovanta::office
