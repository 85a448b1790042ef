#include "Platform/AppKit/Switch.h"

#include "Platform/Linux/AppKit/CheckableNative.h"
#include "Platform/Linux/AppKit/Palette.h"

#include <QCheckBox>
#include <QPainter>
#include <QStyleOptionButton>
#include <algorithm>

namespace Linux {

namespace {

constexpr QSize trackSize(38, 22);
constexpr int ringRoom = 3;
constexpr double ringWidth = 2;
constexpr double knobGap = 2;
constexpr double disabledOpacity = 0.4;

/// A check box in all but its looks, so keyboard and screen readers know it.
class SwitchWidget final : public QCheckBox {
public:
    SwitchWidget() { setAttribute(Qt::WA_Hover); }

    QSize sizeHint() const override { return trackSize.grownBy(ring()); }
    QSize minimumSizeHint() const override { return sizeHint(); }

    static QMargins ring() { return {ringRoom, ringRoom, ringRoom, ringRoom}; }

protected:
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }

    void paintEvent(QPaintEvent*) override {
        QStyleOptionButton option;
        initStyleOption(&option);
        const bool isLeftToRight = option.direction == Qt::LeftToRight;
        const QRectF track = QRectF(rect()).marginsRemoved(ring());
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        if (!isEnabled()) {
            painter.setOpacity(disabledOpacity);
        }
        drawPill(painter, track, trackColor(option));
        drawPill(painter, knob(track, isChecked() == isLeftToRight), isDown() ? QColor(0xe4, 0xe4, 0xe4) : Qt::white);
        // As everywhere on the desktop: not for those who work by mouse.
        if (hasFocus() && (option.state & QStyle::State_KeyboardFocusChange) != 0) {
            drawRing(painter, option.palette.color(QPalette::Highlight));
        }
    }

private:
    QColor trackColor(const QStyleOptionButton& option) const {
        const QColor window = option.palette.color(QPalette::Window);
        const QColor text = option.palette.color(QPalette::Active, QPalette::WindowText);
        const QColor base =
            isChecked() ? option.palette.color(QPalette::Active, QPalette::Highlight) : mixed(window, text, 0.32);
        const bool isLit = isEnabled() && (option.state & QStyle::State_MouseOver) != 0;
        return isLit ? mixed(base, text, 0.1) : base;
    }

    static QRectF knob(const QRectF& track, bool atRight) {
        QRectF knob(track.topLeft(), QSizeF(track.height(), track.height()));
        if (atRight) {
            knob.moveRight(track.right());
        }
        return knob.adjusted(knobGap, knobGap, -knobGap, -knobGap);
    }

    static void drawPill(QPainter& painter, const QRectF& rect, const QColor& color) {
        painter.setBrush(color);
        painter.drawRoundedRect(rect, rect.height() / 2, rect.height() / 2);
    }

    void drawRing(QPainter& painter, const QColor& color) const {
        const double half = ringWidth / 2;
        const QRectF ring = QRectF(rect()).adjusted(half, half, -half, -half);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(color, ringWidth));
        painter.drawRoundedRect(ring, ring.height() / 2, ring.height() / 2);
    }
};

struct SwitchNative : CheckableNative {
    SwitchNative() : CheckableNative(new SwitchWidget) {}

    // Its middle stands at the middle of the capitals beside it.
    int firstBaseline() const override { return (button->sizeHint().height() + button->fontMetrics().capHeight()) / 2; }
    QMargins alignmentInsets() const override { return SwitchWidget::ring(); }
};

} // namespace

template <>
struct NativeOf<Switch> : std::type_identity<SwitchNative> {};

} // namespace Linux

namespace NS {

using namespace Linux;

Switch Switch::initWithFrame(const Rect&) {
    return handle<Switch>(std::make_shared<SwitchNative>());
}

void Switch::setState(ControlStateValue state) {
    native(*this).setState(state);
}

ControlStateValue Switch::state() const {
    return native(*this).state();
}

} // namespace NS
