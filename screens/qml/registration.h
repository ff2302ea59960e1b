#pragma once

namespace zelkovanta::platform {
class Appearance;
}  // namespace zelkovanta::platform

class QQmlEngine;

namespace zelkovanta::screens::qml {

/// Makes the module "ZelkoVanta.Screens" known to an engine, once. The appearance must outlive the engine.
void registerScreens(QQmlEngine& engine, platform::Appearance& appearance);

/// The window of the program, which needs the property "page", a `PageModel`.
inline constexpr auto mainWindowUrl = "qrc:/qt/qml/ZelkoVanta/Screens/Main.qml";

}  // namespace zelkovanta::screens::qml
