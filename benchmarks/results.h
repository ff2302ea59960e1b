#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::benchmarks {

/// The figures of one benchmark program, printed as they come, and joined into a file that several programs share: a
/// JSON list of objects with `name`, `value`, `unit`, `peer`, `peerValue` and `ratio` (value over peerValue; the last
/// three null where there is no peer).
class Results {
public:
    /// Nothing is read or written yet. An empty path is no file: the figures are printed only.
    explicit Results(std::filesystem::path file) : file_(std::move(file)) {}

    void add(std::string_view name, double value, std::string_view unit);
    /// One figure beside one peer of the same run; call it once for each peer.
    void add(std::string_view name, double value, std::string_view unit, std::string_view peer, double peerValue);
    /// A figure that is a curve: the value is a list.
    void add(std::string_view name, const std::vector<double>& values, std::string_view unit);

    /// Puts the figures into the file, in place of older ones with the same name and peer. False, and a line on
    /// standard error, if the file holds something else or cannot be written.
    [[nodiscard]] bool write() const;

private:
    struct Entry {
        std::string name;
        std::vector<double> values;
        bool isList = false;
        std::string unit;
        std::string peer;  ///< empty for none
        double peerValue = 0;
    };
    std::filesystem::path file_;
    std::vector<Entry> entries_;
};

}  // namespace zelkovanta::benchmarks
