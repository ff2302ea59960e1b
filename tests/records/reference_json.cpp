#include "tests/records/reference_json.h"

#include <set>

namespace zelkovanta::records::reference {
namespace {

/// Looks at a text event by event for what the libraries may differ about.
class Differences : public nlohmann::json_sax<Json> {
public:
    [[nodiscard]] bool any() const { return any_; }

    bool null() override { return true; }
    bool boolean(bool /*value*/) override { return true; }
    bool number_integer(number_integer_t /*value*/) override { return true; }
    bool number_unsigned(number_unsigned_t /*value*/) override { return true; }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
    bool string(string_t& /*value*/) override { return true; }
    bool binary(binary_t& /*value*/) override { return true; }
    bool start_object(std::size_t /*size*/) override { return enter(); }
    bool start_array(std::size_t /*size*/) override { return enter(); }
    bool end_object() override { return leave(); }
    bool end_array() override { return leave(); }
    bool key(string_t& key) override {
        any_ = any_ || !keys_.back().insert(key).second;
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        constexpr int outOfRange = 406;
        any_ = any_ || error.id == outOfRange;
        return false;
    }

private:
    bool enter() {
        constexpr std::size_t deep = 1'000;
        keys_.emplace_back();
        any_ = any_ || keys_.size() > deep;
        return true;
    }
    bool leave() {
        keys_.pop_back();
        return true;
    }

    std::vector<std::set<std::string>> keys_;
    bool any_ = false;
};

}  // namespace

Parsed parse(std::string_view text) {
    Parsed parsed;
    Differences differences;
    const bool valid = Json::sax_parse(text, &differences);
    if (differences.any() || text.find('\0') != std::string_view::npos || text.starts_with('\xEF')) {
        parsed.verdict = Parsed::Verdict::undecided;
    } else if (valid) {
        parsed.verdict = Parsed::Verdict::json;
        parsed.document = Json::parse(text);
    }
    return parsed;
}

}  // namespace zelkovanta::records::reference
