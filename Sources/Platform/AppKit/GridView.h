#pragma once

#include "Platform/AppKit/View.h"

#include <vector>

namespace NS {

class GridCell;
class GridRow;

enum class GridCellPlacement : long { Inherited = 0, Leading = 2, Trailing = 3 };
enum class GridRowAlignment : long { None = 1, FirstBaseline = 2 };

/// A column of a grid (NSGridColumn).
class GridColumn : public Object {
public:
    /// Where in the column's width its cells' views are.
    void setXPlacement(GridCellPlacement placement);
    GridCellPlacement xPlacement() const;

    using Object::Object;
};

/// Views in rows and columns, each column as wide as its widest view (NSGridView).
class GridView : public View {
public:
    /// One inner list for each row, all equally long.
    static GridView gridViewWithViews(const std::vector<std::vector<View>>& rows);

    long numberOfRows() const;
    long numberOfColumns() const;
    GridRow rowAtIndex(long index) const;
    GridColumn columnAtIndex(long index) const;
    /// Absent when the view is in no cell.
    GridCell cellForView(const View& view) const;

    void setRowSpacing(double spacing);
    double rowSpacing() const;
    void setColumnSpacing(double spacing);
    double columnSpacing() const;

    /// The vertical alignment of the views of a row.
    void setRowAlignment(GridRowAlignment alignment);
    GridRowAlignment rowAlignment() const;

    using View::View;
};

/// A row of a grid (NSGridRow).
class GridRow : public Object {
public:
    /// A hidden row takes no room, and no spacing.
    void setHidden(bool hidden);
    bool isHidden() const;

    /// For a place that was merged away, the cell that took it.
    GridCell cellAtIndex(long index) const;

    /// Makes one cell of `length` neighbors from `location` on. It shows the first one's view.
    void mergeCellsInRange(long location, long length);

    using Object::Object;
};

/// A place in a grid (NSGridCell).
class GridCell : public Object {
public:
    /// Stands for no view in `gridViewWithViews`.
    static View emptyContentView();

    /// Absent in an empty cell.
    View contentView() const;
    GridRow row() const;

    /// Inherited, unless set: then the column's does not count.
    void setXPlacement(GridCellPlacement placement);
    GridCellPlacement xPlacement() const;

    using Object::Object;
};

} // namespace NS
