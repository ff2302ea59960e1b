#pragma once

#include <span>
#include <string_view>

namespace zelkovanta::office {

/// A file of the web console, as it lies in office/console/.
struct ConsoleFile {
    std::string_view path;  ///< where it is asked for, for example "/console/page.css"
    std::string_view type;  ///< its media type
    std::string_view content;
};

/// All of them; they are part of the program.
[[nodiscard]] std::span<const ConsoleFile> consoleFiles();

/// The style that the page holds, byte for byte.
[[nodiscard]] std::string_view consoleStyle();

/// Null for a path at which there is none. The page itself is at "/".
[[nodiscard]] const ConsoleFile* consoleFileAt(std::string_view path);

}  // namespace zelkovanta::office
