#include "records/url.h"
#include "tests/fuzz/finding.h"
#include "tests/fuzz/targets.h"

namespace zelkovanta::fuzz {

void url(std::string_view input) {
    using records::Url;
    const Url base = Url::parse("https://host.example:8787/base/?query").value();
    const Url appended = base.appendingPath(input);
    require(Url::parse(appended.text()) == appended);
    require(appended.host() == "host.example");

    const auto parsed = Url::parse(input);
    if (!parsed)
        return;
    require(parsed->text() == input);
    require(input.starts_with(parsed->scheme()));
    require(input.find(parsed->host()) != std::string_view::npos);
    const Url longer = parsed->appendingPath("api/v1");
    require(longer.text().ends_with("/api/v1"));
    const Url other = parsed->withScheme("wss");
    require(other.text().starts_with("wss:"));
    if (!parsed->scheme().empty()) {
        require(Url::parse(longer.text()).has_value());
        require(longer.host() == parsed->host());
        require(Url::parse(other.text()).has_value());
        require(other.host() == parsed->host());
    }
}

}  // namespace zelkovanta::fuzz
