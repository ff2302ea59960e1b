#include "screens/qml/registration.h"

#include "screens/qml/theme.h"

#include <QQmlEngine>

// Written by the build for the types of this folder; a static library drops what nobody names.
// NOLINTNEXTLINE(readability-identifier-naming): the name that Qt's build gives it
extern void qml_register_types_ZelkoVanta_Screens();

namespace zelkovanta::screens::qml {

void registerScreens(QQmlEngine& engine, platform::Appearance& appearance) {
    // Named is enough: the file that it stands in lets the engine find it.
    volatile auto types = &qml_register_types_ZelkoVanta_Screens;
    static_cast<void>(types);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    // The engine's own: there is one for each engine, and it goes with it.
    new Theme(appearance, &engine);
}

}  // namespace zelkovanta::screens::qml
