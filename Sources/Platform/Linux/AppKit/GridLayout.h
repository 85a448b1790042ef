#pragma once

#include "Platform/Linux/AppKit/ViewNative.h"

#include <QLayout>
#include <vector>

namespace Linux {

/// Where a view stands in a grid.
struct GridPlace {
    const ViewNative* view = nullptr; // of the grid, which lives as long as its plan
    int column = 0;
    int span = 1;
    bool isTrailing = false;
};

/// The layout of a grid: the rows that are shown, and the spaces between.
struct GridPlan {
    std::vector<std::vector<GridPlace>> rows;
    int columns = 0;
    QMargins insets; // room for the alignment insets of the views
    int rowSpacing = 0;
    int columnSpacing = 0;
    bool alignsBaselines = false;
};

/// Rows and columns, with the texts of a row on one line, which Qt's own grid does not do.
class GridLayout final : public QLayout {
public:
    explicit GridLayout(QWidget* parent) : QLayout(parent) {}

    void setPlan(GridPlan plan);

    // The plan holds the items, so QLayout has none.
    void addItem(QLayoutItem* item) override { delete item; }
    int count() const override { return 0; }
    QLayoutItem* itemAt(int) const override { return nullptr; }
    QLayoutItem* takeAt(int) override { return nullptr; }

    QSize sizeHint() const override;
    QSize minimumSize() const override { return sizeHint(); }
    void setGeometry(const QRect& rect) override;

private:
    /// A row's height, and how much of it is above the line that its texts stand on.
    struct RowSize {
        int above = 0;
        int below = 0;
        int height() const { return above + below; }
    };

    RowSize sizeOf(const std::vector<GridPlace>& row) const;
    std::vector<int> columnWidths() const;
    int widthOf(const GridPlace& place, const std::vector<int>& widths) const;

    GridPlan plan_;
};

} // namespace Linux
