#pragma once

#include "office/random_bytes.h"
#include "office/time_text.h"

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

// The few things that the office's program takes from its host.
namespace zelkovanta::office {

/// The operating system's random bytes. Ends the process if the system has none to give.
class SystemRandomBytes final : public RandomBytes {
public:
    void fill(std::span<std::byte> bytes) override;
};

[[nodiscard]] WallTime wallNow();

/// Replaces a file by one that only its owner can read. Fails with a sentence.
[[nodiscard]] std::expected<void, std::string> writePrivateFile(const std::filesystem::path& file,
                                                                std::string_view content);
/// The lines of a small file. Fails with a sentence.
[[nodiscard]] std::expected<std::vector<std::string>, std::string> readLines(const std::filesystem::path& file);
/// The first of them. Fails with a sentence where there is none.
[[nodiscard]] std::expected<std::string, std::string> readLine(const std::filesystem::path& file);

}  // namespace zelkovanta::office
