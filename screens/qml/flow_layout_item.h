#pragma once

#include "screens/qml/placing_item.h"

#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// Its children stand in lines, like words in a paragraph. Its implicit width is that of one long line, its implicit
/// height that of the lines in the width that it has.
class FlowLayoutItem : public zelkovanta::screens::qml::PlacingItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(FlowLayout)
    Q_PROPERTY(double spacing READ spacing WRITE setSpacing NOTIFY spacingChanged)
    Q_PROPERTY(double lineSpacing READ lineSpacing WRITE setLineSpacing NOTIFY lineSpacingChanged)

public:
    explicit FlowLayoutItem(QQuickItem* parent = nullptr) : PlacingItem(parent) { watch(*this); }

    [[nodiscard]] double spacing() const { return layout_.spacing; }
    void setSpacing(double spacing);
    [[nodiscard]] double lineSpacing() const { return layout_.lineSpacing; }
    void setLineSpacing(double lineSpacing);

Q_SIGNALS:
    void spacingChanged();
    void lineSpacingChanged();

protected:
    void place() override;

private:
    FlowLayout layout_;
};

}  // namespace zelkovanta::screens::qml
