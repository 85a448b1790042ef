#include "Platform/AppKit/GridView.h"

#include "Platform/Linux/AppKit/GridLayout.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <algorithm>
#include <cmath>

namespace Linux {

namespace {

struct GridViewNative;
struct RowNative;

struct CellNative : Native {
    View view; // absent in an empty cell
    std::weak_ptr<RowNative> row;
    long column = 0;
    long span = 1;
    GridCellPlacement placement = GridCellPlacement::Inherited;
};

struct RowNative : Native {
    std::weak_ptr<GridViewNative> grid;
    std::vector<std::shared_ptr<CellNative>> cells; // one for each column; the same for those that are merged
    bool isHidden = false;
};

struct ColumnNative : Native {
    std::weak_ptr<GridViewNative> grid;
    GridCellPlacement placement = GridCellPlacement::Inherited;
};

struct GridViewNative : ViewNative {
    GridViewNative() : ViewNative(new QWidget), layout(new GridLayout(widget)) {}
    ~GridViewNative() override {
        if (widget) { // it goes later, and its layout with it
            layout->setPlan({});
        }
    }

    GridLayout* const layout;
    std::vector<std::shared_ptr<RowNative>> rows;
    std::vector<std::shared_ptr<ColumnNative>> columns;
    double rowSpacing = 6;
    double columnSpacing = 6;
    GridRowAlignment alignment = GridRowAlignment::None;

    // As wide as the widest of its views': they must not be cut off at the grid's edge.
    QMargins alignmentInsets() const override {
        QMargins insets;
        for (const auto& view : subviews) {
            insets = insets | view->alignmentInsets();
        }
        return insets;
    }

    void layOut() const {
        GridPlan plan;
        plan.insets = alignmentInsets();
        plan.columns = static_cast<int>(columns.size());
        plan.rowSpacing = static_cast<int>(std::lround(rowSpacing));
        plan.columnSpacing = static_cast<int>(std::lround(columnSpacing));
        plan.alignsBaselines = alignment == GridRowAlignment::FirstBaseline;
        for (const auto& row : rows) {
            if (!row->isHidden) {
                plan.rows.push_back(placesOf(*row));
            }
        }
        layout->setPlan(std::move(plan));
    }

private:
    std::vector<GridPlace> placesOf(const RowNative& row) const {
        std::vector<GridPlace> places;
        for (std::size_t column = 0; column < row.cells.size(); ++column) {
            const auto& cell = *row.cells[column];
            if (cell.view && cell.column == static_cast<long>(column)) { // and not merged into one before
                places.push_back(
                    {&native(cell.view), static_cast<int>(column), static_cast<int>(cell.span), isTrailing(cell)});
            }
        }
        return places;
    }

    bool isTrailing(const CellNative& cell) const {
        const bool inherits = cell.placement == GridCellPlacement::Inherited;
        const auto placement = inherits ? columns[static_cast<std::size_t>(cell.column)]->placement : cell.placement;
        return placement == GridCellPlacement::Trailing;
    }
};

// Rows, columns and cells may outlive their grid.
void layOut(const std::weak_ptr<GridViewNative>& grid) {
    if (const auto shared = grid.lock()) {
        shared->layOut();
    }
}

} // namespace

template <>
struct NativeOf<GridView> : std::type_identity<GridViewNative> {};

} // namespace Linux

namespace NS {

using namespace Linux;

GridView GridView::gridViewWithViews(const std::vector<std::vector<View>>& rows) {
    auto grid = std::make_shared<GridViewNative>();
    for (const auto& views : rows) {
        auto row = std::make_shared<RowNative>();
        row->grid = grid;
        for (const auto& view : views) {
            auto cell = std::make_shared<CellNative>();
            cell->row = row;
            cell->column = static_cast<long>(row->cells.size());
            if (!(view == GridCell::emptyContentView())) {
                cell->view = view;
                grid->adopt(shared(view));
            }
            row->cells.push_back(std::move(cell));
        }
        grid->rows.push_back(std::move(row));
    }
    for (std::size_t column = 0; !rows.empty() && column < rows.front().size(); ++column) {
        grid->columns.push_back(std::make_shared<ColumnNative>());
        grid->columns.back()->grid = grid;
    }
    grid->layOut();
    return handle<GridView>(std::move(grid));
}

long GridView::numberOfRows() const {
    return static_cast<long>(native(*this).rows.size());
}

long GridView::numberOfColumns() const {
    return static_cast<long>(native(*this).columns.size());
}

GridRow GridView::rowAtIndex(long index) const {
    return handle<GridRow>(native(*this).rows.at(static_cast<std::size_t>(index)));
}

GridColumn GridView::columnAtIndex(long index) const {
    return handle<GridColumn>(native(*this).columns.at(static_cast<std::size_t>(index)));
}

GridCell GridView::cellForView(const View& view) const {
    for (const auto& row : native(*this).rows) {
        for (const auto& cell : row->cells) {
            if (cell->view == view) {
                return handle<GridCell>(cell);
            }
        }
    }
    return {};
}

void GridView::setRowSpacing(double spacing) {
    native(*this).rowSpacing = spacing;
    native(*this).layOut();
}

double GridView::rowSpacing() const {
    return native(*this).rowSpacing;
}

void GridView::setColumnSpacing(double spacing) {
    native(*this).columnSpacing = spacing;
    native(*this).layOut();
}

double GridView::columnSpacing() const {
    return native(*this).columnSpacing;
}

void GridView::setRowAlignment(GridRowAlignment alignment) {
    native(*this).alignment = alignment;
    native(*this).layOut();
}

GridRowAlignment GridView::rowAlignment() const {
    return native(*this).alignment;
}

void GridColumn::setXPlacement(GridCellPlacement placement) {
    auto& self = object<ColumnNative>(*this);
    self.placement = placement;
    layOut(self.grid);
}

GridCellPlacement GridColumn::xPlacement() const {
    return object<ColumnNative>(*this).placement;
}

void GridRow::setHidden(bool hidden) {
    auto& self = object<RowNative>(*this);
    self.isHidden = hidden;
    for (const auto& cell : self.cells) {
        if (cell->view) {
            native(cell->view).widget->setVisible(!hidden);
        }
    }
    layOut(self.grid);
}

bool GridRow::isHidden() const {
    return object<RowNative>(*this).isHidden;
}

GridCell GridRow::cellAtIndex(long index) const {
    return handle<GridCell>(object<RowNative>(*this).cells.at(static_cast<std::size_t>(index)));
}

void GridRow::mergeCellsInRange(long location, long length) {
    auto& self = object<RowNative>(*this);
    const auto first = self.cells.begin() + location;
    (*first)->span = length;
    std::fill(first + 1, first + length, *first);
    layOut(self.grid);
}

View GridCell::emptyContentView() {
    static const auto empty = handle<View>(std::make_shared<ViewNative>(nullptr));
    return empty;
}

View GridCell::contentView() const {
    return object<CellNative>(*this).view;
}

GridRow GridCell::row() const {
    return handle<GridRow>(object<CellNative>(*this).row.lock());
}

void GridCell::setXPlacement(GridCellPlacement placement) {
    auto& self = object<CellNative>(*this);
    self.placement = placement;
    if (const auto row = self.row.lock()) {
        layOut(row->grid);
    }
}

GridCellPlacement GridCell::xPlacement() const {
    return object<CellNative>(*this).placement;
}

} // namespace NS
