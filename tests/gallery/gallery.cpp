// gallery [--picture FILE] [--dark]: every component of the windows in every state, or a picture of it.

#include "screens/qml/registration.h"
#include "tests/gallery/gallery_samples.h"

#include <cstdlib>

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

int main(int argc, char** argv) {
    using zelkovanta::platform::ColorScheme;
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND")) {
        QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    }
    const QGuiApplication application(argc, argv);
    QCommandLineParser options;
    const QCommandLineOption picture(QStringLiteral("picture"), QStringLiteral("Draws into a file and ends."),
                                     QStringLiteral("FILE"));
    const QCommandLineOption dark(QStringLiteral("dark"), QStringLiteral("Begins in the dark."));
    options.addOptions({picture, dark});
    options.addHelpOption();
    options.process(application);

    zelkovanta::platform::simulated::SimulatedAppearance appearance(options.isSet(dark) ? ColorScheme::dark
                                                                                        : ColorScheme::light);
    zelkovanta::gallery::Samples samples(appearance);
    QQmlApplicationEngine engine;
    zelkovanta::screens::qml::registerScreens(engine, appearance);
    engine.setInitialProperties({{QStringLiteral("samples"), QVariant::fromValue(&samples)}});
    engine.load(QUrl::fromLocalFile(QStringLiteral(ZELKOVANTA_GALLERY)));
    if (engine.rootObjects().isEmpty()) {
        return EXIT_FAILURE;
    }
    auto* const window = qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
    if (!options.isSet(picture)) {
        window->show();
        return QGuiApplication::exec();
    }
    window->show();
    QCoreApplication::processEvents();
    return window->grabWindow().save(options.value(picture)) ? EXIT_SUCCESS : EXIT_FAILURE;
}
