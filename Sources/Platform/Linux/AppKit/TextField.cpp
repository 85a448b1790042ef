#include "Platform/AppKit/TextField.h"

#include "Platform/Linux/AppKit/ColorNative.h"
#include "Platform/Linux/AppKit/FontNative.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <cmath>

namespace Linux {

namespace {

/// A label whose color follows the palette, and which, when it wraps, is as large as its text wrapped at the preferred
/// width.
class Label : public QLabel {
public:
    explicit Label(const QString& text) : QLabel(text) { setTextFormat(Qt::PlainText); }

    void setColor(std::shared_ptr<ColorNative> color) {
        color_ = std::move(color);
        applyColor();
    }

    void setWrapWidth(int width) {
        wrapWidth_ = width;
        setWordWrap(true);
        updateGeometry();
    }

    QSize sizeHint() const override {
        if (wrapWidth_ <= 0) {
            return QLabel::sizeHint();
        }
        return fontMetrics().boundingRect(0, 0, wrapWidth_, QWIDGETSIZE_MAX, Qt::TextWordWrap, text()).size();
    }
    QSize minimumSizeHint() const override { return sizeHint(); }
    bool hasHeightForWidth() const override { return false; }

protected:
    void changeEvent(QEvent* event) override {
        QLabel::changeEvent(event);
        if (event->type() == QEvent::PaletteChange && !applying_) {
            applyColor();
        }
    }

private:
    void applyColor() {
        if (!color_) {
            return;
        }
        applying_ = true;
        QPalette colored;
        colored.setColor(QPalette::WindowText, color_->resolved(QGuiApplication::palette()));
        setPalette(colored);
        applying_ = false;
    }

    std::shared_ptr<ColorNative> color_;
    int wrapWidth_ = 0;
    bool applying_ = false;
};

struct TextFieldNative : ViewNative {
    TextFieldNative(Label* label, bool wraps) : ViewNative(label), label(label), wraps(wraps) {}

    QPointer<Label> label;
    const bool wraps;

    // Its first line is in the middle when it is the only one, and else at the top.
    int firstBaseline() const override {
        const QFontMetrics metrics = label->fontMetrics();
        const int above = wraps ? 0 : (label->sizeHint().height() - metrics.height()) / 2;
        return above + metrics.ascent();
    }

    Font font = Font::systemFontOfSize(13);
    Color color = Color::labelColor();
    TextAlignment alignment = TextAlignment::Left;
    double preferredMaxLayoutWidth = 0;
};

TextField make(const std::string& text, bool wraps) {
    return handle<TextField>(std::make_shared<TextFieldNative>(new Label(QString::fromStdString(text)), wraps));
}

Qt::Alignment qt(TextAlignment alignment) {
    switch (alignment) {
    case TextAlignment::Center:
        return Qt::AlignHCenter | Qt::AlignVCenter;
    case TextAlignment::Right:
        return Qt::AlignRight | Qt::AlignVCenter;
    case TextAlignment::Left:
        break;
    }
    return Qt::AlignLeft | Qt::AlignVCenter;
}

} // namespace

template <>
struct NativeOf<TextField> : std::type_identity<TextFieldNative> {};

} // namespace Linux

namespace NS {

using namespace Linux;

TextField TextField::labelWithString(const std::string& text) {
    return make(text, /*wraps=*/false);
}

TextField TextField::wrappingLabelWithString(const std::string& text) {
    return make(text, /*wraps=*/true);
}

void TextField::setStringValue(const std::string& text) {
    native(*this).label->setText(QString::fromStdString(text));
}

std::string TextField::stringValue() const {
    return native(*this).label->text().toStdString();
}

void TextField::setFont(const Font& font) {
    native(*this).font = font;
    native(*this).label->setFont(native(font).font());
}

Font TextField::font() const {
    return native(*this).font;
}

void TextField::setTextColor(const Color& color) {
    native(*this).color = color;
    native(*this).label->setColor(shared(color));
}

Color TextField::textColor() const {
    return native(*this).color;
}

void TextField::setAlignment(TextAlignment alignment) {
    native(*this).alignment = alignment;
    native(*this).label->setAlignment(qt(alignment));
}

TextAlignment TextField::alignment() const {
    return native(*this).alignment;
}

void TextField::setPreferredMaxLayoutWidth(double width) {
    auto& self = native(*this);
    self.preferredMaxLayoutWidth = width;
    if (self.wraps) {
        self.label->setWrapWidth(static_cast<int>(std::lround(width)));
    }
}

double TextField::preferredMaxLayoutWidth() const {
    return native(*this).preferredMaxLayoutWidth;
}

} // namespace NS
