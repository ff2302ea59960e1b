#include "office/serve.h"

#include "office/host.h"
#include "office/qr_picture.h"
#include "office/secrets.h"
#include "office/server.h"
#include "office/sqlite_storage.h"

#include <csignal>
#include <ostream>

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>

namespace zelkovanta::office {
namespace {

constexpr std::chrono::seconds farewellLimit{2};

/// The token that the control commands show; made at the first start.
std::expected<std::string, std::string> adminToken(const std::filesystem::path& file, RandomBytes& random) {
    if (std::filesystem::exists(file)) {
        auto token = readLine(file);
        if (!token || !token->empty()) {
            return token;
        }
    }
    std::string token = newToken(random, "zva_");
    if (const auto written = writePrivateFile(file, token + "\n"); !written) {
        return std::unexpected(written.error());
    }
    return token;
}

}  // namespace

int serve(const Serve& order, std::ostream& output, std::ostream& errors) {
    const auto failed = [&errors](const std::string& sentence) {
        errors << sentence << "\n";
        return 1;
    };
    auto storage = SqliteStorage::open(order.database);
    if (!storage) {
        return failed(storage.error().reason);
    }
    SystemRandomBytes random;
    auto office = Office::open(**storage, random, qrPicture);
    if (!office) {
        return failed(office.error().reason);
    }
    if (order.sample) {
        if (const Answer added = (*office)->addSample(*order.sample, wallNow()); added.status != 200) {
            return failed(added.status == 404
                              ? "There is no sample practice \"" + *order.sample + "\"; there is harbour."
                              : "The sample practice cannot be kept in " + order.database.string() + ".");
        }
    }
    if (order.appCheckFile) {
        auto appCheck = readLine(*order.appCheckFile);
        if (!appCheck || appCheck->empty()) {
            return failed(appCheck ? "The file " + order.appCheckFile->string() + " is empty." : appCheck.error());
        }
        (*office)->requireAppCheck(std::move(*appCheck));
    }
    const auto token = adminToken(adminTokenFileOf(order.database), random);
    if (!token) {
        return failed(token.error());
    }

    std::optional<Certificate> certificate;
    std::string digest;
    if (order.certificate && order.key) {
        certificate = {*order.certificate, *order.key};
        const auto found = digestOf(*certificate);
        if (!found) {
            return failed(found.error());
        }
        digest = *found + "\n";
    }

    // A log that nobody reads any more is no reason to end.
    std::signal(SIGPIPE, SIG_IGN);
    boost::asio::io_context context(1);
    auto server = Server::listen(context, **office,
                                 {.address = order.address,
                                  .port = order.port,
                                  .adminToken = *token,
                                  .certificate = certificate,
                                  .console = order.console,
                                  .now = wallNow,
                                  .log = [&errors, quiet = order.quiet](const std::string& line) {
                                      if (!quiet) {
                                          errors << line << '\n';
                                      }
                                  }});
    if (!server) {
        return failed(server.error());
    }
    const bool six = order.address.contains(':');
    const std::string url = (certificate ? "https://" : "http://") + (six ? "[" + order.address + "]" : order.address) +
                            ":" + std::to_string((*server)->port());
    const std::filesystem::path addressFile = addressFileOf(order.database);
    if (const auto written = writePrivateFile(addressFile, url + "\n" + digest); !written) {
        return failed(written.error());
    }

    bool ending = false;
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&](boost::system::error_code error, int) {
        if (!error) {
            ending = true;
            (*server)->stop();
            context.stop();
        }
    });
    output << "listening on " << url << std::endl;
    if (order.console) {
        output << "the console is at " << url << "/ for browsers on this machine" << std::endl;
    }
    context.run();
    if (ending) {
        context.restart();
        context.run_for(farewellLimit);
    }
    std::error_code ignored;
    std::filesystem::remove(addressFile, ignored);
    return 0;
}

}  // namespace zelkovanta::office
