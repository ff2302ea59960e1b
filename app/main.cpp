#include "app/single_instance.h"
#include "app/wiring.h"
#include "platform/linux/application_id.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <malloc.h>
#include <system_error>

#include <QGuiApplication>
#include <QQuickWindow>
#include <QSessionManager>

/// The library for transfers brings GnuTLS for protocols that nobody speaks here, and this is how GnuTLS is told not to
/// set itself up in every process that it is brought into. Ours is OpenSSL. The name is the library's.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" int _gnutls_global_init_skip();
extern "C" int _gnutls_global_init_skip() {
    return 1;
}

namespace {

using zelkovanta::app::SingleInstance;
using zelkovanta::app::Wiring;
using zelkovanta::platform::linux_host::applicationId;
using zelkovanta::platform::linux_host::FileRoots;
using zelkovanta::platform::linux_host::LinuxHost;

constexpr int wrongUse = 2;
/// Even a bus that is only being started answers sooner.
constexpr std::chrono::seconds busLimit{1};

/// Pictures are drawn without a graphics driver in the process, and only when something changes: half the memory and a
/// tenth of the idle time. Whoever sets Qt's own variables has it their way.
void chooseRendering() {
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND")) {
        QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    }
    if (qEnvironmentVariableIsEmpty("QSG_RENDER_LOOP")) {
        qputenv("QSG_RENDER_LOOP", "basic");
    }
}

/// Each thread would begin a heap of its own, and all of them wait more than they allocate.
void shareOneHeap() {
    ::mallopt(M_ARENA_MAX, 1);
}

/// Where the lock and the socket of this login lie.
QString instanceFolder(const FileRoots& roots) {
    const std::filesystem::path folder = roots.runtime.value_or(roots.data / "zelkovanta");
    if (!roots.runtime) {
        std::error_code ignored;  // A folder that cannot be made means that starts are not told apart.
        std::filesystem::create_directories(folder, ignored);
    }
    return QString::fromStdString(folder.string());
}

int startedBefore(SingleInstance::Start start) {
    if (start == SingleInstance::Start::handedOver) {
        return EXIT_SUCCESS;
    }
    std::fputs("ZelkoVanta is running already, and does not answer.\n", stderr);
    return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    shareOneHeap();
    const auto profile =
        zelkovanta::platform::linux_host::profileFrom(zelkovanta::platform::linux_host::processEnvironment());
    if (!profile) {
        std::fprintf(stderr, "%s\n", profile.error().c_str());
        return wrongUse;
    }
    // The end from a terminal is an end in order, as any other.
    std::signal(SIGINT, [](int) { static_cast<void>(std::raise(SIGTERM)); });

    chooseRendering();
    zelkovanta::platform::linux_host::leaveSilentSessionBusAlone(zelkovanta::platform::linux_host::processEnvironment(),
                                                                 busLimit);
    const QString activationToken = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QString::fromLatin1(applicationId));
    // Closing the window hides it.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // The autostart entry starts the program at login; the session's own memory would start it twice.
    QObject::connect(&application, &QGuiApplication::saveStateRequest,
                     [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); });

    const LinuxHost::Settings settings = LinuxHost::settingsOfThisProcess(*profile);
    SingleInstance instance(instanceFolder(settings.roots), QString::fromStdString(profile->applyTo(applicationId)));
    if (const auto start = instance.begin(activationToken); start != SingleInstance::Start::first) {
        return startedBefore(start);
    }
    Wiring wiring(settings);
    instance.onSecondStart = [&wiring](const QString& token) { wiring.bringForward(token); };
    wiring.showWindow();
    const int status = QGuiApplication::exec();
    instance.stopAnswering();
    return status;
}
