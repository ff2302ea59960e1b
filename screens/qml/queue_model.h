#pragma once

#include "platform/clock.h"
#include "platform/string_table.h"
#include "screens/qml/keyed_rows.h"
#include "screens/queue_row.h"
#include "screens/queue_row_sections.h"
#include "screens/wait_time.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QString>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// What a list holds of one signal. A row that has not changed is the same object.
struct QueueEntry {
    QueueRow row;
    DrawnRow drawn;
    WaitTimerText timer;
};
using QueueEntryHandle = std::shared_ptr<QueueEntry>;

/// A list of signals as QML draws it. The clock and the texts must outlive it.
class QueueModel : public KeyedRows<QueueEntryHandle> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to a screen.")
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    /// The title above the rows; empty for none.
    Q_PROPERTY(QString header READ header NOTIFY headerChanged)
    Q_PROPERTY(QString emptySymbol READ emptySymbol NOTIFY emptyChanged)
    Q_PROPERTY(QString emptyTitle READ emptyTitle NOTIFY emptyChanged)
    Q_PROPERTY(QString emptySubtitle READ emptySubtitle NOTIFY emptyChanged)

public:
    enum Role : int {
        signalId = Qt::UserRole,
        spokenName,
        mark,
        outline,
        room,
        type,
        typeColor,
        waitText,
        waitColor,
        detail,
        note,
        chip,
        combined,
        position,
        acknowledge,
        done,
        cancel,
    };
    using PressHandler = std::function<void(const records::Signal&, RowAction)>;

    QueueModel(const platform::Clock& clock, const platform::StringTable& strings, PressHandler onPress);

    void setSection(const QueueSection& section);
    /// The list comes in sight: from now on its timers tick on whole seconds.
    Q_INVOKABLE void appear();
    /// Has the wait timers drawn again, and nothing else. In how many milliseconds they are to be drawn the next time.
    Q_INVOKABLE int tick();
    /// Where the row of this signal stands; -1 if there is none.
    Q_INVOKABLE int placeOf(const QString& id) const;
    /// A button of a row; nothing if the row or the button is not there, or no longer.
    Q_INVOKABLE void pressAcknowledge(const QString& id) { press(id, &QueueRow::onAcknowledge); }
    Q_INVOKABLE void pressDone(const QString& id) { press(id, &QueueRow::onDone); }
    Q_INVOKABLE void pressCancel(const QString& id) { press(id, &QueueRow::onCancel); }

    [[nodiscard]] QString header() const;
    [[nodiscard]] QString emptySymbol() const;
    [[nodiscard]] QString emptyTitle() const;
    [[nodiscard]] QString emptySubtitle() const;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();
    void emptyChanged();
    void headerChanged();

protected:
    [[nodiscard]] const std::string& keyOf(const QueueEntryHandle& entry) const override { return entry->drawn.id; }
    [[nodiscard]] QVariant valueOf(const QueueEntryHandle& entry, int role) const override;

private:
    [[nodiscard]] QueueEntryHandle entryOf(const QueueRow& row, const QueueEntry* before) const;
    void press(const QString& id, std::optional<RowAction> QueueRow::* action) const;

    const platform::Clock& clock_;
    const platform::StringTable& strings_;
    const PressHandler onPress_;
    std::optional<EmptyQueueLabel> empty_;
    std::optional<std::string> header_;
    platform::SteadyTime appeared_{};
};

}  // namespace zelkovanta::screens::qml
