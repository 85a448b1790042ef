#include "Platform/AppKit/Application.h"
#include "Platform/AppKit/Button.h"
#include "Platform/AppKit/DatePicker.h"
#include "Platform/AppKit/GridView.h"
#include "Platform/AppKit/ImageView.h"
#include "Platform/AppKit/PopUpButton.h"
#include "Platform/AppKit/StackView.h"
#include "Platform/AppKit/StatusItem.h"
#include "Platform/AppKit/Switch.h"
#include "Platform/AppKit/TextField.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

/// What is set comes back, through each system's own objects and numbers.
struct AppKit : testing::Test {
    NS::Application& application = NS::Application::sharedApplication();
    NS::TextField one = NS::TextField::labelWithString("one");
    NS::TextField two = NS::TextField::labelWithString("two");
};

NS::Image square(double side) {
    return NS::Image::imageWithSize({side, side}, /*flipped=*/false, [](const NS::Rect&) { return true; });
}

TEST_F(AppKit, TheApplicationKeepsItsPolicyAndItsWindows) {
    EXPECT_TRUE(application.setActivationPolicy(NS::ApplicationActivationPolicy::Accessory));
    EXPECT_EQ(application.activationPolicy(), NS::ApplicationActivationPolicy::Accessory);
    const auto window = NS::Window::initWithContentRect({{0, 0}, {200, 100}}, NS::WindowStyleMask::Titled,
                                                        NS::BackingStoreType::Buffered, /*defer=*/false);
    const auto windows = application.windows();
    EXPECT_NE(std::find(windows.begin(), windows.end(), window), windows.end());
}

TEST_F(AppKit, AWindowIsWhatItWasMade) {
    const auto style = NS::WindowStyleMask::Titled | NS::WindowStyleMask::Closable;
    auto window = NS::Window::initWithContentRect({{0, 0}, {200, 100}}, style, NS::BackingStoreType::Buffered,
                                                  /*defer=*/false);
    window.setReleasedWhenClosed(false);
    window.setTitle("Vantorel ☕");
    window.setTitleVisibility(NS::WindowTitleVisibility::Hidden);
    window.setTitlebarAppearsTransparent(true);
    const auto view = NS::View::initWithFrame({});
    window.setContentView(view);
    window.setContentSize({320, 240});
    EXPECT_EQ(window.styleMask(), style);
    EXPECT_FALSE(window.isReleasedWhenClosed());
    EXPECT_EQ(window.title(), "Vantorel ☕");
    EXPECT_EQ(window.titleVisibility(), NS::WindowTitleVisibility::Hidden);
    EXPECT_TRUE(window.titlebarAppearsTransparent());
    EXPECT_EQ(window.contentView(), view);
    EXPECT_EQ(window.frame().size.width, 320);
    EXPECT_GE(window.frame().size.height, 240);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(AppKit, AWindowIsVisibleFromOrderingItInToOrderingItOut) {
    auto window = NS::Window::initWithContentRect({{0, 0}, {200, 100}}, NS::WindowStyleMask::Titled,
                                                  NS::BackingStoreType::Buffered, /*defer=*/false);
    window.setReleasedWhenClosed(false);
    window.orderFrontRegardless();
    EXPECT_TRUE(window.isVisible());
    window.orderOut();
    EXPECT_FALSE(window.isVisible());
}

TEST_F(AppKit, AButtonIsWhatItWasMadeAndRunsItsAction) {
    int pressed = 0;
    auto button = NS::Button::buttonWithTitle("Continue", [&] { ++pressed; });
    button.setBezelStyle(NS::BezelStyle::Rounded);
    button.setKeyEquivalent("\r");
    EXPECT_EQ(button.title(), "Continue");
    EXPECT_EQ(button.bezelStyle(), NS::BezelStyle::Rounded);
    EXPECT_EQ(button.keyEquivalent(), "\r");
    EXPECT_TRUE(button.isEnabled());
    button.performClick();
    EXPECT_EQ(pressed, 1);
    button.setEnabled(false);
    EXPECT_FALSE(button.isEnabled());
}

TEST_F(AppKit, AColorHasItsComponents) {
    const auto color = NS::Color::colorWithCalibratedRed(0.25, 0.5, 0.75, 0.5);
    EXPECT_NEAR(color.redComponent(), 0.25, 0.001);
    EXPECT_NEAR(color.greenComponent(), 0.5, 0.001);
    EXPECT_NEAR(color.blueComponent(), 0.75, 0.001);
    EXPECT_NEAR(color.alphaComponent(), 0.5, 0.001);
}

TEST_F(AppKit, ALabelIsWhatItWasMade) {
    const auto color = NS::Color::blackColor();
    one.setStringValue("xícara");
    one.setFont(NS::Font::systemFontOfSize(20, NS::FontWeight::Semibold));
    one.setTextColor(color);
    one.setPreferredMaxLayoutWidth(250);
    EXPECT_EQ(one.stringValue(), "xícara");
    EXPECT_EQ(one.font().pointSize(), 20);
    EXPECT_EQ(one.textColor(), color);
    EXPECT_EQ(one.preferredMaxLayoutWidth(), 250);
    for (const auto alignment : {NS::TextAlignment::Right, NS::TextAlignment::Center, NS::TextAlignment::Left}) {
        one.setAlignment(alignment);
        EXPECT_EQ(one.alignment(), alignment);
    }
}

TEST_F(AppKit, ADatePickerShowsTheTimeOfDay) {
    auto picker = NS::DatePicker::initWithFrame({});
    picker.setDatePickerStyle(NS::DatePickerStyle::TextFieldAndStepper);
    picker.setDatePickerElements(NS::DatePickerElementFlags::HourMinute);
    const auto date = NS::Date::dateWithTimeIntervalSince1970(1'700'000'040);
    picker.setDateValue(date);
    EXPECT_EQ(picker.datePickerStyle(), NS::DatePickerStyle::TextFieldAndStepper);
    EXPECT_EQ(picker.datePickerElements(), NS::DatePickerElementFlags::HourMinute);
    EXPECT_EQ(picker.dateValue(), date);
}

TEST_F(AppKit, APopUpButtonHasItsItemsAndOneOfThemSelected) {
    auto popup = NS::PopUpButton::initWithFrame({}, /*pullsDown=*/false);
    popup.addItemsWithTitles({"Português (Brasil)", "English"});
    EXPECT_EQ(popup.itemTitles(), (std::vector<std::string>{"Português (Brasil)", "English"}));
    popup.selectItemAtIndex(1);
    EXPECT_EQ(popup.indexOfSelectedItem(), 1);
}

TEST_F(AppKit, AStackHasItsViewsSpacingsAndInsets) {
    auto stack = NS::StackView::stackViewWithViews({one, two});
    stack.setOrientation(NS::UserInterfaceLayoutOrientation::Vertical);
    stack.setAlignment(NS::LayoutAttribute::Leading);
    stack.setSpacing(14);
    stack.setCustomSpacing(26, one);
    stack.setEdgeInsets({.top = 28, .left = 32, .bottom = 27, .right = 31});
    stack.setTranslatesAutoresizingMaskIntoConstraints(false);
    EXPECT_EQ(stack.arrangedSubviews(), (std::vector<NS::View>{one, two}));
    EXPECT_EQ(stack.orientation(), NS::UserInterfaceLayoutOrientation::Vertical);
    EXPECT_EQ(stack.alignment(), NS::LayoutAttribute::Leading);
    EXPECT_EQ(stack.spacing(), 14);
    EXPECT_EQ(stack.customSpacingAfterView(one), 26);
    EXPECT_EQ(stack.edgeInsets(), (NS::EdgeInsets{.top = 28, .left = 32, .bottom = 27, .right = 31}));
    EXPECT_FALSE(stack.translatesAutoresizingMaskIntoConstraints());
}

TEST_F(AppKit, AGridHasItsRowsColumnsAndCells) {
    const auto control = NS::Switch::initWithFrame({});
    auto grid = NS::GridView::gridViewWithViews({{one, control}, {two, NS::GridCell::emptyContentView()}});
    grid.setRowSpacing(12);
    grid.setColumnSpacing(16);
    grid.setRowAlignment(NS::GridRowAlignment::FirstBaseline);
    grid.columnAtIndex(0).setXPlacement(NS::GridCellPlacement::Trailing);
    EXPECT_EQ(grid.numberOfRows(), 2);
    EXPECT_EQ(grid.numberOfColumns(), 2);
    EXPECT_EQ(grid.rowSpacing(), 12);
    EXPECT_EQ(grid.columnSpacing(), 16);
    EXPECT_EQ(grid.rowAlignment(), NS::GridRowAlignment::FirstBaseline);
    EXPECT_EQ(grid.columnAtIndex(0).xPlacement(), NS::GridCellPlacement::Trailing);
    EXPECT_EQ(grid.rowAtIndex(0).cellAtIndex(1).contentView(), control);

    auto cell = grid.cellForView(two);
    auto row = grid.rowAtIndex(1);
    row.mergeCellsInRange(0, 2);
    cell.setXPlacement(NS::GridCellPlacement::Leading);
    row.setHidden(true);
    EXPECT_EQ(cell.xPlacement(), NS::GridCellPlacement::Leading);
    EXPECT_EQ(row.cellAtIndex(1), cell);
    EXPECT_TRUE(row.isHidden());
}

TEST_F(AppKit, AConstraintHasItsLength) {
    EXPECT_EQ(one.widthAnchor().constraintEqualToConstant(72).constant(), 72);
}

TEST_F(AppKit, APictureIsATemplateWhenItWasMadeOne) {
    auto image = square(18);
    image.setTemplate(true);
    EXPECT_TRUE(image.isTemplate());
    EXPECT_EQ(image.size(), (NS::Size{18, 18}));
    EXPECT_EQ(NS::ImageView::imageViewWithImage(image).image(), image);
}

TEST_F(AppKit, AMenuHasItsLinesAndTheyRunTheirActions) {
    int chosen = 0;
    auto state = NS::MenuItem::initWithTitle("on", nullptr, "");
    state.setEnabled(false);
    auto menu = NS::Menu::initWithTitle("");
    menu.addItem(state);
    menu.addItem(NS::MenuItem::separatorItem());
    menu.addItem(NS::MenuItem::initWithTitle("Quit", [&] { ++chosen; }, "q"));
    ASSERT_EQ(menu.numberOfItems(), 3);
    EXPECT_EQ(menu.itemAtIndex(0).title(), "on");
    EXPECT_FALSE(menu.itemAtIndex(0).isEnabled());
    EXPECT_TRUE(menu.itemAtIndex(1).isSeparatorItem());
    EXPECT_EQ(menu.itemAtIndex(2).keyEquivalent(), "q");
    EXPECT_EQ(menu.itemAtIndex(2).keyEquivalentModifierMask(), NS::EventModifierFlags::Command);
    EXPECT_FALSE(menu.itemAtIndex(3));
    menu.performActionForItemAtIndex(2);
    EXPECT_EQ(chosen, 1);
}

TEST_F(AppKit, AStatusItemHasItsFaceAndItsMenu) {
    auto item = NS::StatusBar::systemStatusBar().statusItemWithLength(NS::StatusItemLength::Square);
    item.setBehavior(NS::StatusItemBehavior::None);
    EXPECT_EQ(item.behavior(), NS::StatusItemBehavior::None);
    EXPECT_EQ(item.length(), NS::StatusItemLength::Square);
    auto button = item.button();
    ASSERT_TRUE(button);
    const auto image = square(18);
    button.setImage(image);
    button.setToolTip("Vantorel is on");
    EXPECT_EQ(button.image(), image);
    EXPECT_EQ(button.toolTip(), "Vantorel is on");
    const auto menu = NS::Menu::initWithTitle("");
    item.setMenu(menu);
    EXPECT_EQ(item.menu(), menu);
    item.setMenu(NS::Menu());
    EXPECT_FALSE(item.menu());
}

} // namespace
