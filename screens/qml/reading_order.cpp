#include "screens/qml/reading_order.h"

#include <algorithm>

namespace zelkovanta::screens::qml {

void ReadingOrder::setOf(QQuickItem* item) {
    if (of_ == item) {
        return;
    }
    of_ = item;
    connect(item, &QQuickItem::childrenChanged, this, &ReadingOrder::schedule);
    schedule();
    Q_EMIT ofChanged();
}

void ReadingOrder::schedule() {
    if (!isScheduled_) {
        isScheduled_ = true;
        QMetaObject::invokeMethod(this, &ReadingOrder::sort, Qt::QueuedConnection);
    }
}

void ReadingOrder::sort() {
    isScheduled_ = false;
    if (!of_) {
        return;
    }
    auto rows = of_->childItems();
    if (std::ranges::is_sorted(rows, {}, &QQuickItem::y)) {
        return;
    }
    std::ranges::stable_sort(rows, {}, &QQuickItem::y);
    for (qsizetype index = 1; index < rows.size(); ++index) {
        rows[index]->stackAfter(rows[index - 1]);
    }
    isScheduled_ = false;
}

}  // namespace zelkovanta::screens::qml
