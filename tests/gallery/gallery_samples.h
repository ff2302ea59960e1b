#pragma once

#include "platform/linux/gettext_string_table.h"
#include "platform/simulated/event_loop.h"
#include "platform/simulated/simulated_appearance.h"
#include "screens/qml/choice_model.h"
#include "screens/qml/queue_model.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>

namespace zelkovanta::gallery {

/// What the gallery fills its components with.
class Samples : public QObject {
    Q_OBJECT
    Q_PROPERTY(zelkovanta::screens::qml::QueueModel* rows READ rows CONSTANT)
    Q_PROPERTY(zelkovanta::screens::qml::ChoiceModel* choices READ choices CONSTANT)
    Q_PROPERTY(QStringList symbols READ symbols CONSTANT)
    Q_PROPERTY(QByteArray code READ code CONSTANT)

public:
    explicit Samples(platform::simulated::SimulatedAppearance& appearance);

    [[nodiscard]] screens::qml::QueueModel* rows() { return &rows_; }
    [[nodiscard]] screens::qml::ChoiceModel* choices() { return &choices_; }
    [[nodiscard]] QStringList symbols() const;
    [[nodiscard]] QByteArray code() const;

    Q_INVOKABLE void setDark(bool dark);

private:
    platform::simulated::SimulatedAppearance& appearance_;
    platform::simulated::EventLoop loop_;
    platform::simulated::ManualClock clock_{loop_};
    platform::linux_host::GettextStringTable strings_;
    screens::qml::QueueModel rows_;
    screens::qml::ChoiceModel choices_;
};

}  // namespace zelkovanta::gallery
