#pragma once

#include "platform/string_table.h"

#include <QTranslator>

namespace zelkovanta::screens::qml {

/// Lets `qsTr` read the program's own table of texts: the English text is the key, wherever it stands. The table must
/// outlive it.
class StringTableTranslator : public QTranslator {
    Q_OBJECT

public:
    explicit StringTableTranslator(const platform::StringTable& strings) : strings_(strings) {}

    [[nodiscard]] QString translate(const char*, const char* sourceText, const char*, int) const override {
        return QString::fromStdString(strings_.localized(sourceText));
    }
    [[nodiscard]] bool isEmpty() const override { return false; }

private:
    const platform::StringTable& strings_;
};

}  // namespace zelkovanta::screens::qml
