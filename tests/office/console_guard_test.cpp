#include "office/console_guard.h"

#include "office/console_files.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::office {
namespace {

/// An order as the page gives it.
ConsoleVisit orderFromThePage() {
    return {.fromThisMachine = true,
            .encrypted = false,
            .reads = false,
            .hasBody = true,
            .host = "127.0.0.1:8787",
            .origin = "http://127.0.0.1:8787",
            .fetchSite = "same-origin",
            .contentType = "application/json"};
}

int verdictOn(const ConsoleVisit& visit) {
    const auto refusal = refusedAtConsole(visit);
    return refusal ? refusal->status : 200;
}

TEST(ConsoleGuard, thePageOfThisMachineIsObeyed) {
    ConsoleVisit visit = orderFromThePage();
    EXPECT_EQ(verdictOn(visit), 200);
    visit.fetchSite.reset();
    EXPECT_EQ(verdictOn(visit), 200) << "an older browser does not say from which site it asks";
    visit.contentType = "Application/JSON; charset=utf-8";
    EXPECT_EQ(verdictOn(visit), 200);
    for (const char* host : {"localhost:8787", "LOCALHOST", "[::1]:8787", "127.0.0.1"}) {
        visit.host = host;
        visit.origin = "http://" + std::string(host);
        EXPECT_EQ(verdictOn(visit), 200) << host;
    }
}

TEST(ConsoleGuard, anotherSiteIsNotObeyed) {
    for (const char* origin :
         {"http://evil.example", "null", "", "http://127.0.0.1:9999", "https://127.0.0.1:8787", "http://localhost:8787",
          "http://127.0.0.1:8787.evil.example", "http://127.0.0.1:87871", "http://127.0.0.1:8787/"}) {
        ConsoleVisit visit = orderFromThePage();
        visit.origin = origin;
        EXPECT_EQ(verdictOn(visit), 403) << origin;
    }
    ConsoleVisit silent = orderFromThePage();
    silent.origin.reset();
    EXPECT_EQ(verdictOn(silent), 403);
    for (const char* site : {"cross-site", "same-site", "none", ""}) {
        ConsoleVisit visit = orderFromThePage();
        visit.fetchSite = site;
        EXPECT_EQ(verdictOn(visit), 403) << site;
    }
}

TEST(ConsoleGuard, aForeignNameThatLeadsHereIsNotObeyed) {
    for (const char* host : {"evil.example", "evil.example:8787", "127.0.0.1.evil.example", "localhost.evil.example:80",
                             "", "127.0.0.1:", "127.0.0.1:80a", "127.0.0.1:123456", "0.0.0.0:8787", "127.0.0.12"}) {
        ConsoleVisit visit = orderFromThePage();
        visit.host = host;
        visit.origin = "http://" + std::string(host);
        EXPECT_EQ(verdictOn(visit), 403) << host;
        visit.reads = true;
        EXPECT_EQ(verdictOn(visit), 403) << host << ", for reading";
    }
}

TEST(ConsoleGuard, anotherMachineIsNeitherObeyedNorShownThePage) {
    ConsoleVisit visit = orderFromThePage();
    visit.fromThisMachine = false;
    EXPECT_EQ(verdictOn(visit), 403);
    visit.reads = true;
    EXPECT_EQ(verdictOn(visit), 403);
}

TEST(ConsoleGuard, thePageIsShownToWhoeverFollowsALink) {
    const ConsoleVisit visit{.fromThisMachine = true,
                             .encrypted = false,
                             .reads = true,
                             .hasBody = false,
                             .host = "127.0.0.1:8787",
                             .origin = {},
                             .fetchSite = "cross-site",
                             .contentType = {}};
    EXPECT_EQ(verdictOn(visit), 200);
}

TEST(ConsoleGuard, aFormOfAnotherKindIsNoOrder) {
    for (const char* type : {"text/plain", "application/x-www-form-urlencoded", "multipart/form-data", "",
                             "application/jsonp", "text/plain; application/json"}) {
        ConsoleVisit visit = orderFromThePage();
        visit.contentType = type;
        EXPECT_EQ(verdictOn(visit), 415) << type;
    }
    ConsoleVisit untyped = orderFromThePage();
    untyped.contentType.reset();
    EXPECT_EQ(verdictOn(untyped), 415);
    untyped.hasBody = false;
    EXPECT_EQ(verdictOn(untyped), 200) << "the web socket brings no body";
}

TEST(ConsoleGuard, anEncryptedOfficeIsAnOriginOfItsOwn) {
    ConsoleVisit visit = orderFromThePage();
    visit.encrypted = true;
    EXPECT_EQ(verdictOn(visit), 403);
    visit.origin = "https://127.0.0.1:8787";
    EXPECT_EQ(verdictOn(visit), 200);
}

TEST(ConsoleFiles, thePageAndAllThatItNamesIsThere) {
    const ConsoleFile* page = consoleFileAt("/");
    ASSERT_NE(page, nullptr);
    EXPECT_THAT(page->type, testing::StartsWith("text/html"));
    EXPECT_NE(page->content.find("<style>" + std::string(consoleStyle()) + "</style>"), std::string_view::npos);
    EXPECT_EQ(consoleFileAt("/console/index.html"), nullptr);
    EXPECT_EQ(consoleFileAt("/console/../office.db"), nullptr);

    std::size_t weight = 0;
    for (const ConsoleFile& file : consoleFiles()) {
        weight += file.content.size();
        for (std::size_t at = file.content.find("\"/console/"); at != std::string_view::npos;
             at = file.content.find("\"/console/", at + 1)) {
            const std::string_view path = file.content.substr(at + 1, file.content.find('"', at + 1) - at - 1);
            EXPECT_NE(consoleFileAt(path), nullptr) << path;
        }
        for (std::size_t at = file.content.find("from \"./"); at != std::string_view::npos;
             at = file.content.find("from \"./", at + 1)) {
            const std::size_t begin = at + 8;
            const std::string name(file.content.substr(begin, file.content.find('"', begin) - begin));
            EXPECT_NE(consoleFileAt("/console/" + name), nullptr) << name;
        }
    }
    EXPECT_LE(weight, 100'000U);
}

}  // namespace
}  // namespace zelkovanta::office
