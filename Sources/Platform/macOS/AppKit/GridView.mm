#include "Platform/AppKit/GridView.h"

#include "Platform/macOS/Conversions.h"

#import <AppKit/AppKit.h>

namespace NS {

using namespace macOS;

static_assert(static_cast<long>(GridCellPlacement::Inherited) == NSGridCellPlacementInherited);
static_assert(static_cast<long>(GridCellPlacement::Leading) == NSGridCellPlacementLeading);
static_assert(static_cast<long>(GridCellPlacement::Trailing) == NSGridCellPlacementTrailing);
static_assert(static_cast<long>(GridRowAlignment::None) == NSGridRowAlignmentNone);
static_assert(static_cast<long>(GridRowAlignment::FirstBaseline) == NSGridRowAlignmentFirstBaseline);

GridView GridView::gridViewWithViews(const std::vector<std::vector<View>>& rows) {
    NSMutableArray<NSArray<NSView*>*>* array = [NSMutableArray arrayWithCapacity:rows.size()];
    for (const auto& views : rows) {
        [array addObject:toNSArray(views)];
    }
    return handle<GridView>([NSGridView gridViewWithViews:array]);
}

long GridView::numberOfRows() const {
    return [object<NSGridView>(*this) numberOfRows];
}

long GridView::numberOfColumns() const {
    return [object<NSGridView>(*this) numberOfColumns];
}

GridRow GridView::rowAtIndex(long index) const {
    return handle<GridRow>([object<NSGridView>(*this) rowAtIndex:index]);
}

GridColumn GridView::columnAtIndex(long index) const {
    return handle<GridColumn>([object<NSGridView>(*this) columnAtIndex:index]);
}

GridCell GridView::cellForView(const View& view) const {
    return handle<GridCell>([object<NSGridView>(*this) cellForView:object<NSView>(view)]);
}

void GridView::setRowSpacing(double spacing) {
    [object<NSGridView>(*this) setRowSpacing:spacing];
}

double GridView::rowSpacing() const {
    return [object<NSGridView>(*this) rowSpacing];
}

void GridView::setColumnSpacing(double spacing) {
    [object<NSGridView>(*this) setColumnSpacing:spacing];
}

double GridView::columnSpacing() const {
    return [object<NSGridView>(*this) columnSpacing];
}

void GridView::setRowAlignment(GridRowAlignment alignment) {
    [object<NSGridView>(*this) setRowAlignment:static_cast<NSGridRowAlignment>(alignment)];
}

GridRowAlignment GridView::rowAlignment() const {
    return static_cast<GridRowAlignment>([object<NSGridView>(*this) rowAlignment]);
}

void GridColumn::setXPlacement(GridCellPlacement placement) {
    [object<NSGridColumn>(*this) setXPlacement:static_cast<NSGridCellPlacement>(placement)];
}

GridCellPlacement GridColumn::xPlacement() const {
    return static_cast<GridCellPlacement>([object<NSGridColumn>(*this) xPlacement]);
}

void GridRow::setHidden(bool hidden) {
    [object<NSGridRow>(*this) setHidden:hidden];
}

bool GridRow::isHidden() const {
    return [object<NSGridRow>(*this) isHidden];
}

GridCell GridRow::cellAtIndex(long index) const {
    return handle<GridCell>([object<NSGridRow>(*this) cellAtIndex:index]);
}

void GridRow::mergeCellsInRange(long location, long length) {
    const NSRange range = {static_cast<NSUInteger>(location), static_cast<NSUInteger>(length)};
    [object<NSGridRow>(*this) mergeCellsInRange:range];
}

View GridCell::emptyContentView() {
    return handle<View>([NSGridCell emptyContentView]);
}

View GridCell::contentView() const {
    return handle<View>([object<NSGridCell>(*this) contentView]);
}

GridRow GridCell::row() const {
    return handle<GridRow>([object<NSGridCell>(*this) row]);
}

void GridCell::setXPlacement(GridCellPlacement placement) {
    [object<NSGridCell>(*this) setXPlacement:static_cast<NSGridCellPlacement>(placement)];
}

GridCellPlacement GridCell::xPlacement() const {
    return static_cast<GridCellPlacement>([object<NSGridCell>(*this) xPlacement]);
}

} // namespace NS
