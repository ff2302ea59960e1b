#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace zelkovanta::platform::linux_host {

/// Puts a file in its place whole or not at all, and on the disk before it is in its place. Missing folders are made,
/// for this person alone, and so is the file. A link is followed. Blocks.
[[nodiscard]] std::error_code writeFileAtomically(std::filesystem::path file, std::string_view content);

/// The beginning of a regular file, at most `maximumSize` bytes; none if it is missing, no file, or unreadable. Blocks.
[[nodiscard]] std::optional<std::string> readFile(const std::filesystem::path& file, std::size_t maximumSize);

/// A regular file whole. `no_such_file_or_directory` or `not_a_directory` if it is missing, `file_too_large` beyond
/// `maximumSize` bytes, `invalid_argument` if it is no file, else what the system says. Blocks.
[[nodiscard]] std::expected<std::string, std::error_code> readWholeFile(const std::filesystem::path& file,
                                                                        std::size_t maximumSize);

}  // namespace zelkovanta::platform::linux_host
