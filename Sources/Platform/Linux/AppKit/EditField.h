#pragma once

#include "Platform/Linux/AppKit/ViewNative.h"

#include <QStyle>
#include <QStyleOptionComplex>

namespace Linux {

/// How far below the top of the widget, at its own size, the text of its edit field stands.
inline int baselineOf(const QWidget& widget, QStyle::ComplexControl control, QStyleOptionComplex& option,
                      QStyle::SubControl field, int rounding = 0) {
    option.rect = QRect(QPoint(), widget.sizeHint());
    const QRect text = widget.style()->subControlRect(control, &option, field, &widget);
    const QFontMetrics metrics = widget.fontMetrics();
    return text.top() + (text.height() - metrics.height() + rounding) / 2 + metrics.ascent();
}

} // namespace Linux
