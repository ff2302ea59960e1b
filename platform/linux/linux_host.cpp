#include "platform/linux/linux_host.h"

#include "platform/linux/application_id.h"
#include "platform/linux/transport_settings.h"

#include <chrono>
#include <utility>

#include <QCoreApplication>

namespace zelkovanta::platform::linux_host {

using namespace std::chrono_literals;

namespace {

HostSources sourcesWith(const LinuxHost::Settings& settings, const SessionBusId& sessionBusId) {
    HostSources sources = HostSources::ofThisComputer();
    sources.root = settings.facts;
    sources.environment = settings.environment;
    sources.sessionBusId = [&sessionBusId] { return sessionBusId.value(); };
    return sources;
}

}  // namespace

LinuxHost::Settings LinuxHost::settingsOfThisProcess(Profile profile) {
    const auto environment = processEnvironment();
    const auto program = programFile();
    return {.profile = profile,
            .roots = fileRootsFrom(environment, profile),
            .resources = resourcesFolderFrom(environment, program),
            .program = program,
            .environment = environment,
            .facts = "/"};
}

LinuxHost::LinuxHost(const Settings& settings)
    : buses_(settings.environment),
      sessionBusId_(buses_.session()),
      clock_(network_.context()),
      info_(sourcesWith(settings, sessionBusId_)),
      urlLoading_(network_, TransportSettings::from(settings.environment, info_.localeIdentifier())),
      webSockets_(TransportSettings::from(settings.environment, info_.localeIdentifier())),
      keyStore_(mainThread_.executor(), buses_.session()),
      defaults_(settings.roots.config / "zelkovanta" / "settings.ini", network_.makeWorkerQueue()),
      information_(settings.resources),
      strings_(settings.resources, settings.environment),
      loginItem_(settings.roots.config / "autostart" / (settings.profile.applyTo(applicationId) + ".desktop"),
                 settings.program, strings_),
      powerOff_(clock_, network_.context(), buses_.system(), mainThread_.executor(), strings_,
                [] { QCoreApplication::quit(); }),
      userNotifications_(
          {.file = settings.roots.state / "zelkovanta" / "notifications.json", .sounds = settings.resources / "sounds"},
          clock_, mainThread_.executor(), buses_.session(), network_.makeWorkerQueue()),
      peripheralManagers_(mainThread_.executor(), buses_.system()),
      appearance_(mainThread_.executor(), buses_.session()) {
    // Where nothing else tells this login from another, the bus is asked before anybody wants to know.
    static_cast<void>(info_.auditSessionId());
}

LinuxHost::~LinuxHost() {
    shutDown();
}

void LinuxHost::shutDown() {
    if (std::exchange(isShutDown_, true)) {
        return;
    }
    powerOff_.stop();
    appearance_.stop();
    userNotifications_.end();
    keyStore_.finishChanges(1s);
    urlLoading_.cancelAll();
    webSockets_.cancelAll();
    defaults_.flush(2s);
    // What was cancelled comes to its end before the thread does.
    network_.runAndWait([]() -> Awaitable<void> { co_return; }, 1s);
    network_.stop();
    buses_.stop();
    mainThread_.end();
}

}  // namespace zelkovanta::platform::linux_host
