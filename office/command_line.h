#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <variant>

namespace zelkovanta::office {

/// Run the office.
struct Serve {
    std::filesystem::path database;
    std::string address = "127.0.0.1";
    std::uint16_t port = 8787;
    std::optional<std::string> sample;
    bool quiet = false;  ///< no line for each request
    bool console = true;
    std::optional<std::filesystem::path> certificate = {};   ///< PEM, with the authorities' between it and the root
    std::optional<std::filesystem::path> key = {};           ///< the certificate's
    std::optional<std::filesystem::path> appCheckFile = {};  ///< its first line is what programs have to know to pair
    bool operator==(const Serve&) const = default;
};

/// Where a running office is found, by one of the two ways.
struct Whereabouts {
    std::optional<std::filesystem::path> database;  ///< its address and admin token lie beside it
    std::optional<std::string> server;              ///< "http://127.0.0.1:8787"
    std::optional<std::filesystem::path> adminTokenFile;
    bool operator==(const Whereabouts&) const = default;
};

/// Ask a running office for something.
struct Control {
    Whereabouts office;
    std::string method;
    std::string path;
    std::string body;
    /// The key of the answer whose text is printed: "" for the whole answer, "-" for nothing.
    std::string print = "-";
    bool operator==(const Control&) const = default;
};

/// Approve a waiting computer, which may have to appear first.
struct Approve {
    Control order;                       ///< its body lacks the request
    std::optional<std::string> request;  ///< a request's code, or a computer's name; none: the oldest
    std::chrono::seconds wait{0};
    bool operator==(const Approve&) const = default;
};

struct Help {
    bool operator==(const Help&) const = default;
};

using Command = std::variant<Serve, Control, Approve, Help>;

/// Fails with one sentence for the person who typed it.
[[nodiscard]] std::expected<Command, std::string> parseCommandLine(std::span<const std::string> arguments);

[[nodiscard]] std::string usageText();

/// Files beside a database.
[[nodiscard]] std::filesystem::path adminTokenFileOf(const std::filesystem::path& database);
[[nodiscard]] std::filesystem::path addressFileOf(const std::filesystem::path& database);

}  // namespace zelkovanta::office
