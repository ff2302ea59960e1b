#pragma once

#include "platform/string_table.h"

#include <string>

namespace zelkovanta::screens::vocabulary {

/// A table that shows which key was looked up: "<key>".
class MarkingTable final : public platform::StringTable {
public:
    [[nodiscard]] std::string localized(std::string_view key) const override { return "<" + std::string{key} + ">"; }
};

}  // namespace zelkovanta::screens::vocabulary
