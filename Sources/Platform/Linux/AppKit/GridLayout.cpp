#include "Platform/Linux/AppKit/GridLayout.h"

#include <QWidget>
#include <algorithm>
#include <numeric>

namespace Linux {

namespace {

// The size without the alignment insets.
QSize sizeOf(const ViewNative& view) {
    return view.widget->sizeHint().shrunkBy(view.alignmentInsets());
}

int baselineOf(const ViewNative& view) {
    return view.firstBaseline() - view.alignmentInsets().top();
}

} // namespace

void GridLayout::setPlan(GridPlan plan) {
    plan_ = std::move(plan);
    invalidate();
}

GridLayout::RowSize GridLayout::sizeOf(const std::vector<GridPlace>& row) const {
    RowSize size;
    for (const auto& place : row) {
        const int height = Linux::sizeOf(*place.view).height();
        const int above = plan_.alignsBaselines ? baselineOf(*place.view) : 0;
        size.above = std::max(size.above, above);
        size.below = std::max(size.below, height - above);
    }
    return size;
}

// A view that spans several columns and does not fit widens the last of them.
std::vector<int> GridLayout::columnWidths() const {
    std::vector<int> widths(static_cast<std::size_t>(plan_.columns), 0);
    const auto widen = [&](bool spanning) {
        for (const auto& row : plan_.rows) {
            for (const auto& place : row) {
                if ((place.span > 1) == spanning) {
                    auto& last = widths.at(static_cast<std::size_t>(place.column + place.span - 1));
                    last += std::max(0, Linux::sizeOf(*place.view).width() - widthOf(place, widths));
                }
            }
        }
    };
    widen(false);
    widen(true);
    return widths;
}

int GridLayout::widthOf(const GridPlace& place, const std::vector<int>& widths) const {
    const auto first = widths.begin() + place.column;
    return std::accumulate(first, first + place.span, (place.span - 1) * plan_.columnSpacing);
}

QSize GridLayout::sizeHint() const {
    const auto widths = columnWidths();
    int height = 0;
    for (const auto& row : plan_.rows) {
        height += sizeOf(row).height();
    }
    const auto gaps = [](std::size_t count) { return std::max(0, static_cast<int>(count) - 1); };
    const QSize size(std::accumulate(widths.begin(), widths.end(), gaps(widths.size()) * plan_.columnSpacing),
                     height + gaps(plan_.rows.size()) * plan_.rowSpacing);
    return size.grownBy(plan_.insets);
}

void GridLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    const auto widths = columnWidths();
    const QPoint origin = rect.marginsRemoved(plan_.insets).topLeft();
    int top = origin.y();
    for (const auto& row : plan_.rows) {
        const auto rowSize = sizeOf(row);
        for (const auto& place : row) {
            const QSize size = Linux::sizeOf(*place.view);
            const int before =
                std::accumulate(widths.begin(), widths.begin() + place.column, place.column * plan_.columnSpacing);
            const int free = place.isTrailing ? widthOf(place, widths) - size.width() : 0;
            const int lowered = plan_.alignsBaselines ? rowSize.above - baselineOf(*place.view) : 0;
            const QRect seen(QPoint(origin.x() + before + free, top + lowered), size);
            place.view->widget->setGeometry(seen.marginsAdded(place.view->alignmentInsets()));
        }
        top += rowSize.height() + plan_.rowSpacing;
    }
}

} // namespace Linux
