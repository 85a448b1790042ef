#pragma once

#include "Platform/AppKit/Color.h"
#include "Platform/AppKit/Control.h"
#include "Platform/AppKit/Font.h"

#include <string>

namespace NS {

enum class TextAlignment : long { Left = 0, Center = 1, Right = 2 };

/// A text (NSTextField), here always a label.
class TextField : public Control {
public:
    static TextField labelWithString(const std::string& text);
    static TextField wrappingLabelWithString(const std::string& text);

    void setStringValue(const std::string& text);
    std::string stringValue() const;

    void setFont(const Font& font);
    Font font() const;
    void setTextColor(const Color& color);
    Color textColor() const;
    void setAlignment(TextAlignment alignment);
    TextAlignment alignment() const;

    /// Where a wrapping label breaks its lines, in points.
    void setPreferredMaxLayoutWidth(double width);
    double preferredMaxLayoutWidth() const;

    using Control::Control;
};

} // namespace NS
