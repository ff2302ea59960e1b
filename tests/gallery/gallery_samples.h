#pragma once

#include "platform/linux/gettext_string_table.h"
#include "platform/simulated/event_loop.h"
#include "platform/simulated/simulated_appearance.h"
#include "screens/qml/choice_model.h"
#include "screens/qml/page_model.h"
#include "screens/qml/queue_model.h"
#include "tests/support/store_fixture.h"

#include <memory>

#include <QByteArray>
#include <QObject>
#include <QStringList>
#include <QVariantList>

namespace zelkovanta::gallery {

/// What the gallery fills its components with.
class Samples : public QObject {
    Q_OBJECT
    Q_PROPERTY(zelkovanta::screens::qml::QueueModel* rows READ rows CONSTANT)
    Q_PROPERTY(zelkovanta::screens::qml::ChoiceModel* choices READ choices CONSTANT)
    /// The page of somebody with a form open.
    Q_PROPERTY(zelkovanta::screens::qml::PageModel* page READ page CONSTANT)
    /// The colours in which somebody's status is told.
    Q_PROPERTY(QStringList symbols READ symbols CONSTANT)
    Q_PROPERTY(QByteArray code READ code CONSTANT)

public:
    explicit Samples(platform::simulated::SimulatedAppearance& appearance);

    [[nodiscard]] screens::qml::QueueModel* rows() { return &rows_; }
    [[nodiscard]] screens::qml::ChoiceModel* choices() { return &choices_; }
    [[nodiscard]] screens::qml::PageModel* page() { return page_.get(); }
    /// Of each status, and of none, on the page or on the accent colour.
    Q_INVOKABLE [[nodiscard]] static QVariantList dots(bool onAccent);
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
    support::Computer computer_;
    std::unique_ptr<screens::qml::PageModel> page_;
};

}  // namespace zelkovanta::gallery
