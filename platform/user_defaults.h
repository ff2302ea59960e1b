#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::platform {

/// Settings that are kept between launches, as typed values by key. Main thread only; a read sees what was set before,
/// whether or not it has reached the disk. What cannot be written is kept for this run. A value of another type, or one
/// that cannot be read, is absent.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    [[nodiscard]] virtual std::optional<bool> boolean(std::string_view key) const = 0;
    [[nodiscard]] virtual std::optional<double> number(std::string_view key) const = 0;
    [[nodiscard]] virtual std::optional<std::string> text(std::string_view key) const = 0;
    /// Whether a value of any type is stored.
    [[nodiscard]] virtual bool hasValue(std::string_view key) const = 0;

    virtual void setBoolean(std::string_view key, bool value) = 0;
    virtual void setNumber(std::string_view key, double value) = 0;
    virtual void setText(std::string_view key, std::string_view value) = 0;
    virtual void remove(std::string_view key) = 0;
};

}  // namespace zelkovanta::platform
