#pragma once

#include "office/refusal.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::office {

/// Reads the fields of a JSON object. The first fault is kept, and everything read from then on is empty, so that a
/// caller reads all that it wants and asks for the fault once.
class RequestBody {
public:
    explicit RequestBody(std::string_view text);
    ~RequestBody();
    RequestBody(RequestBody&&) noexcept;

    [[nodiscard]] const std::optional<Refusal>& fault() const { return fault_; }

    /// Present, a text, and not longer than `longest` Unicode scalars. May be empty.
    [[nodiscard]] std::string requiredText(std::string_view name, std::size_t longest);
    /// Absent and null give no value.
    [[nodiscard]] std::optional<std::string> text(std::string_view name, std::size_t longest);
    [[nodiscard]] std::optional<std::vector<std::string>> texts(std::string_view name, std::size_t most);
    [[nodiscard]] std::optional<bool> truth(std::string_view name);
    [[nodiscard]] std::optional<std::int64_t> integer(std::string_view name, std::int64_t lowest, std::int64_t highest);
    [[nodiscard]] RequestBody requiredObject(std::string_view name);
    /// The elements of an array of objects, each as JSON text.
    [[nodiscard]] std::vector<std::string> requiredObjects(std::string_view name, std::size_t most);
    /// The object `name` as JSON text.
    [[nodiscard]] std::optional<std::string> objectText(std::string_view name);

    /// Takes the fault of an inner object over.
    void adoptFault(const RequestBody& inner);

private:
    struct Document;
    RequestBody();
    void fail(std::string message);

    std::shared_ptr<const Document> document_;
    std::optional<Refusal> fault_;
};

/// Number of Unicode scalars in a valid UTF-8 text.
[[nodiscard]] std::size_t scalarCount(std::string_view text);

}  // namespace zelkovanta::office
