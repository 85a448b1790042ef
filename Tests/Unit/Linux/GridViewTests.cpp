#include "Platform/AppKit/GridView.h"

#include "Platform/AppKit/DatePicker.h"
#include "Platform/AppKit/PopUpButton.h"
#include "Platform/AppKit/Switch.h"
#include "Platform/AppKit/TextField.h"
#include "Platform/Linux/AppKit/ViewNative.h"

#include <QImage>
#include <QLabel>
#include <QPalette>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QTimeEdit>
#include <gtest/gtest.h>

namespace {

using NS::GridCell;
using NS::GridView;
using NS::TextField;

QWidget* widgetOf(const NS::View& view) {
    return Linux::object<Linux::ViewNative>(view).widget;
}

QRect frame(const NS::View& view) {
    return widgetOf(view)->geometry();
}

void layOut(const NS::View& view) {
    const auto size = view.fittingSize();
    widgetOf(view)->resize(
        QSizeF(size.width, size.height).toSize().grownBy(Linux::object<Linux::ViewNative>(view).alignmentInsets()));
    widgetOf(view)->grab(); // lays out what is not on a screen
}

TextField label(const std::string& text, double size = 13) {
    auto field = TextField::labelWithString(text);
    field.setFont(NS::Font::systemFontOfSize(size));
    return field;
}

/// The lowest line of `area` that has something as dark as text on it, in the coordinates of `picture`.
int lowestInk(const QImage& picture, const QRect& area) {
    for (int y = area.bottom(); y >= area.top(); --y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (qGray(picture.pixel(x, y)) < 100) {
                return y;
            }
        }
    }
    return -1;
}

struct GridViewTest : testing::Test {
    TextField a = label("a"), bb = label("bbbb"), ccc = label("cccccccc"), d = label("d");
};

TEST_F(GridViewTest, EachColumnIsAsWideAsItsWidestView) {
    auto grid = GridView::gridViewWithViews({{a, bb}, {ccc, d}});
    grid.setColumnSpacing(7);
    layOut(grid);
    EXPECT_EQ(frame(a).x(), 0);
    EXPECT_EQ(frame(bb).x(), frame(ccc).width() + 7);
    EXPECT_EQ(frame(d).x(), frame(bb).x());
    EXPECT_EQ(grid.fittingSize().width, frame(ccc).width() + 7 + frame(bb).width());
}

TEST_F(GridViewTest, RowsAreAsFarApartAsTheSpacingSays) {
    auto grid = GridView::gridViewWithViews({{a}, {bb}, {ccc}});
    grid.setRowSpacing(9);
    layOut(grid);
    EXPECT_EQ(frame(bb).top() - frame(a).bottom() - 1, 9);
    EXPECT_EQ(frame(ccc).top() - frame(bb).bottom() - 1, 9);
    EXPECT_EQ(grid.fittingSize().height, frame(ccc).bottom() + 1);
}

TEST_F(GridViewTest, AHiddenRowTakesNoRoomAndNoSpacing) {
    auto grid = GridView::gridViewWithViews({{a}, {bb}, {ccc}});
    const auto before = grid.fittingSize().height;
    auto row = grid.rowAtIndex(1);
    row.setHidden(true);
    EXPECT_TRUE(row.isHidden());
    EXPECT_EQ(grid.fittingSize().height, before - 6 - bb.fittingSize().height);
    layOut(grid);
    EXPECT_EQ(frame(ccc).top() - frame(a).bottom() - 1, 6);
    EXPECT_TRUE(widgetOf(bb)->isHidden());
    row.setHidden(false);
    EXPECT_EQ(grid.fittingSize().height, before);
    EXPECT_FALSE(widgetOf(bb)->isHidden());
}

TEST_F(GridViewTest, AHiddenRowMakesNoColumnWide) {
    auto grid = GridView::gridViewWithViews({{a, d}, {ccc, bb}});
    grid.rowAtIndex(1).setHidden(true);
    EXPECT_EQ(grid.fittingSize().width, a.fittingSize().width + 6 + d.fittingSize().width);
}

TEST_F(GridViewTest, PlacementIsTheColumnsUnlessTheCellHasItsOwn) {
    auto grid = GridView::gridViewWithViews({{a}, {ccc}, {bb}});
    grid.columnAtIndex(0).setXPlacement(NS::GridCellPlacement::Trailing);
    grid.cellForView(bb).setXPlacement(NS::GridCellPlacement::Leading);
    layOut(grid);
    EXPECT_EQ(frame(a).right(), frame(ccc).right());
    EXPECT_EQ(frame(bb).x(), 0);
    EXPECT_EQ(grid.cellForView(a).xPlacement(), NS::GridCellPlacement::Inherited);
}

TEST_F(GridViewTest, AMergedCellSpansItsColumnsAndWidensNoneThatItFitsInto) {
    auto grid = GridView::gridViewWithViews({{a, ccc}, {bb, GridCell::emptyContentView()}});
    grid.columnAtIndex(0).setXPlacement(NS::GridCellPlacement::Trailing);
    grid.cellForView(bb).row().mergeCellsInRange(0, 2);
    layOut(grid);
    EXPECT_EQ(frame(a).x(), 0); // its column is not as wide as what spans it
    EXPECT_EQ(frame(bb).right(), frame(ccc).right());
    EXPECT_EQ(grid.rowAtIndex(1).cellAtIndex(1), grid.rowAtIndex(1).cellAtIndex(0));
    EXPECT_EQ(grid.rowAtIndex(1).cellAtIndex(1).contentView(), bb);
}

TEST_F(GridViewTest, AMergedCellThatDoesNotFitWidensTheLastColumn) {
    auto grid = GridView::gridViewWithViews({{a, d}, {ccc, GridCell::emptyContentView()}});
    grid.cellForView(ccc).row().mergeCellsInRange(0, 2);
    layOut(grid);
    EXPECT_EQ(grid.fittingSize().width, ccc.fittingSize().width);
    EXPECT_EQ(frame(d).x(), frame(a).width() + 6);
}

TEST_F(GridViewTest, EmptyCellsHaveNoViewAndStrangersNoCell) {
    const auto grid = GridView::gridViewWithViews({{a, GridCell::emptyContentView()}});
    EXPECT_FALSE(grid.rowAtIndex(0).cellAtIndex(1).contentView());
    EXPECT_FALSE(grid.cellForView(bb));
    EXPECT_EQ(grid.cellForView(a).row(), grid.rowAtIndex(0));
    EXPECT_EQ(grid.numberOfRows(), 1);
    EXPECT_EQ(grid.numberOfColumns(), 2);
}

TEST_F(GridViewTest, ARowMayOutliveItsGrid) {
    auto row = GridView::gridViewWithViews({{a}, {bb}}).rowAtIndex(0);
    row.setHidden(true);
    EXPECT_TRUE(row.isHidden());
    EXPECT_EQ(row.cellAtIndex(0).contentView(), a);
}

TEST_F(GridViewTest, ALabelThatGetsLongerWidensTheGrid) {
    auto grid = GridView::gridViewWithViews({{a, d}});
    const auto before = grid.fittingSize().width;
    a.setStringValue("much longer");
    EXPECT_GT(grid.fittingSize().width, before);
}

/// "H" beside `view`, on one line: how far below the caption's line the other one's is.
int drop(const TextField& caption, const NS::View& view, const QRect& textOfView) {
    auto grid = GridView::gridViewWithViews({{caption, view}});
    grid.setRowAlignment(NS::GridRowAlignment::FirstBaseline);
    layOut(grid);
    const QImage picture = widgetOf(grid)->grab().toImage();
    const int line = lowestInk(picture, frame(caption));
    EXPECT_GT(line, 0);
    return lowestInk(picture, textOfView.translated(frame(view).topLeft())) - line;
}

TEST_F(GridViewTest, TextsOfARowStandOnOneLine) {
    for (const double size : {11.0, 13.0, 20.0, 26.0}) {
        const auto other = label("H", size);
        EXPECT_EQ(drop(label("H"), other, QRect(QPoint(), widgetOf(other)->sizeHint())), 0) << size;
    }
}

TEST_F(GridViewTest, AWrappedTextStandsOnItsFirstLine) {
    auto wrapped = TextField::wrappingLabelWithString("HHHH HHHH HHHH");
    wrapped.setFont(NS::Font::systemFontOfSize(13));
    wrapped.setPreferredMaxLayoutWidth(50);
    const int line = widgetOf(wrapped)->fontMetrics().height();
    ASSERT_GT(widgetOf(wrapped)->sizeHint().height(), 2 * line);
    EXPECT_EQ(drop(label("H"), wrapped, QRect(0, 0, 20, line)), 0);
}

TEST_F(GridViewTest, TheTimeInAPickerStandsOnTheLineOfItsCaption) {
    auto picker = NS::DatePicker::initWithFrame({});
    picker.setDateValue(NS::Date::dateWithTimeIntervalSince1970(0));
    const QSize size = widgetOf(picker)->sizeHint();
    EXPECT_EQ(drop(label("H"), picker, QRect(4, 3, size.width() / 2, size.height() - 6)), 0);
}

TEST_F(GridViewTest, TheItemOfAPopUpButtonStandsOnTheLineOfItsCaption) {
    auto popup = NS::PopUpButton::initWithFrame({}, /*pullsDown=*/false);
    popup.addItemsWithTitles({"HHHH"});
    const QSize size = widgetOf(popup)->sizeHint();
    EXPECT_EQ(drop(label("H"), popup, QRect(4, 3, size.width() / 2, size.height() - 6)), 0);
}

TEST_F(GridViewTest, ASwitchStandsInTheMiddleOfTheCapitalsBesideIt) {
    const auto caption = label("H");
    const auto control = NS::Switch::initWithFrame({});
    auto grid = GridView::gridViewWithViews({{caption, control}});
    grid.setRowAlignment(NS::GridRowAlignment::FirstBaseline);
    layOut(grid);
    const QImage picture = widgetOf(grid)->grab().toImage();
    const int bottom = lowestInk(picture, frame(caption));
    const double middle = bottom - widgetOf(caption)->fontMetrics().capHeight() / 2.0 + 0.5;
    EXPECT_NEAR(frame(control).y() + frame(control).height() / 2.0, middle, 1);
}

TEST_F(GridViewTest, TheFocusRingOfASwitchIsNotCutOff) {
    const auto control = NS::Switch::initWithFrame({});
    const auto grid = GridView::gridViewWithViews({{control, a}});
    layOut(grid);
    EXPECT_TRUE(widgetOf(grid)->rect().contains(frame(control)));
    EXPECT_EQ(grid.fittingSize().height, 22); // it does not count
}

} // namespace
