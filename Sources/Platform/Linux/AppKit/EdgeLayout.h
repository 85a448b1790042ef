#pragma once

#include "Platform/Linux/AppKit/Anchors.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <QLayout>
#include <memory>
#include <vector>

namespace Linux {

/// Lays out the subviews of a plain view by their distances to its edges. Distances that may be larger count for the
/// size that the view would like to have; whatever it gets, what is centred stays in the middle and as large as it is.
class EdgeLayout final : public QLayout {
public:
    /// That of `superview`, which gets one when it has none.
    static EdgeLayout& of(QWidget& superview);

    void constrain(const ViewNative& subview, Edge edge, int distance);

    void addItem(QLayoutItem* item) override;
    int count() const override { return static_cast<int>(places_.size()); }
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    QSize sizeHint() const override;
    QSize minimumSize() const override { return {}; }
    void setGeometry(const QRect& rect) override;

private:
    struct Place {
        std::unique_ptr<QLayoutItem> item;
        QMargins insets; // of the view: not seen
        QMargins margins;
        bool isCentred = false;
    };

    explicit EdgeLayout(QWidget& superview) : QLayout(&superview) {}
    Place& placeOf(const ViewNative& subview);

    std::vector<Place> places_;
};

} // namespace Linux
