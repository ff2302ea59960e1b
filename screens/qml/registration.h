#pragma once

class QQmlEngine;

namespace zelkovanta::screens::qml {

/// Makes the module "ZelkoVanta.Screens" known to an engine.
void registerScreens(QQmlEngine& engine);

/// The window of the program, which needs the property "page", a `PageModel`.
inline constexpr auto mainWindowUrl = "qrc:/qt/qml/ZelkoVanta/Screens/Main.qml";

}  // namespace zelkovanta::screens::qml
