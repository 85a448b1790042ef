#pragma once

#include "Platform/Linux/AppKit/Anchors.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <QLayout>
#include <vector>

namespace Linux {

/// Lays out the subviews of a plain view by their distances to its edges. The size hint contains the distances that may
/// be larger. In a view of another size, a centered subview keeps the middle and its own width. Not QGridLayout: it has
/// one set of margins for all its items, and counts the insets of a view as part of it.
class EdgeLayout final : public QLayout {
public:
    /// That of `superview`, which gets one when it has none.
    static EdgeLayout& of(QWidget& superview);

    void constrain(const ViewNative& subview, Edge edge, int distance);

    // `places_` holds the widgets, so QLayout has no items.
    void addItem(QLayoutItem* item) override { delete item; }
    int count() const override { return 0; }
    QLayoutItem* itemAt(int) const override { return nullptr; }
    QLayoutItem* takeAt(int) override { return nullptr; }
    QSize sizeHint() const override;
    QSize minimumSize() const override { return {}; }
    void setGeometry(const QRect& rect) override;

private:
    struct Place {
        QPointer<QWidget> widget;
        QMargins insets; // the alignment insets of the view
        QMargins margins;
        bool isCentered = false;
    };

    explicit EdgeLayout(QWidget& superview) : QLayout(&superview) {}
    Place& placeOf(const ViewNative& subview);

    std::vector<Place> places_;
};

} // namespace Linux
