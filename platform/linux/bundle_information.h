#pragma once

#include "platform/information_dictionary.h"

#include <filesystem>

namespace zelkovanta::platform::linux_host {

/// The entries of `Info.json` in the resources folder. The file is read at each use.
class BundleInformation final : public InformationDictionary {
public:
    explicit BundleInformation(const std::filesystem::path& resources) : file_(resources / "Info.json") {}

    [[nodiscard]] std::optional<std::string> text(std::string_view key) const override;

private:
    std::filesystem::path file_;
};

}  // namespace zelkovanta::platform::linux_host
