#include "StatusItemController.h"

#include "Platform/AppKit/Application.h"
#include "Platform/Linux/AppKit/CurrentEvent.h"
#include "Prefs.h"
#include "Seam/Bar.h"
#include "Seam/Power.h"
#include "StatusIcons.h"

#include <gtest/gtest.h>

namespace {

using NS::EventModifierFlags;
using NS::EventType;

constexpr NS::Event leftClick{EventType::LeftMouseUp};
constexpr NS::Event rightClick{EventType::RightMouseUp};
constexpr NS::Event controlClick{EventType::LeftMouseUp, EventModifierFlags::Control};

struct StatusItemControllerTest : testing::Test {
    StatusItemControllerTest() {
        controller->onManualToggle = [this] {
            ++manualToggles;
            activeAtManualToggle = sleepGuard->isActive();
        };
    }

    NS::StatusItem item() const { return Seam::statusItems().front(); }
    NS::StatusBarButton button() const { return item().button(); }

    /// What the menu holds that `event` opens.
    NS::Menu menuOpenedBy(const NS::Event& event) const {
        NS::Menu menu;
        Seam::whenMenuOpens([&menu](const NS::StatusItem& opened) { menu = opened.menu(); });
        Seam::click(item(), event);
        return menu;
    }

    std::shared_ptr<SleepGuard> sleepGuard = std::make_shared<SleepGuard>();
    std::shared_ptr<StatusItemController> controller = StatusItemController::create(sleepGuard);
    int manualToggles = 0;
    bool activeAtManualToggle = false;
};

TEST_F(StatusItemControllerTest, PutsOneSquareItemIntoTheBarThatCannotBeRemoved) {
    EXPECT_EQ(Seam::statusItems().size(), 1U);
    EXPECT_EQ(item().length(), -2);
    EXPECT_EQ(item().behavior(), NS::StatusItemBehavior::None);
    EXPECT_FALSE(item().menu());
}

TEST_F(StatusItemControllerTest, TheButtonActsOnReleaseOfEitherMouseButton) {
    EXPECT_EQ(static_cast<unsigned long long>(button().sendActionOn(NS::EventMask::LeftMouseUp)), 20U);
}

TEST_F(StatusItemControllerTest, PressingAloneDoesNothing) {
    Seam::click(item(), {EventType::LeftMouseDown});
    Seam::click(item(), {EventType::RightMouseDown});
    EXPECT_FALSE(sleepGuard->isActive());
}

TEST_F(StatusItemControllerTest, StartsWithTheOutlineAndTheOffToolTip) {
    EXPECT_EQ(button().image(), StatusIcons::outline());
    EXPECT_EQ(button().toolTip(), "Vantorel is off");
}

TEST_F(StatusItemControllerTest, AClickSwitchesTheGuardTheIconAndTheToolTip) {
    Seam::click(item(), leftClick);
    EXPECT_TRUE(sleepGuard->isActive());
    EXPECT_EQ(button().image(), StatusIcons::filled());
    EXPECT_EQ(button().toolTip(), "Vantorel is on");
    Seam::click(item(), leftClick);
    EXPECT_FALSE(sleepGuard->isActive());
    EXPECT_EQ(button().image(), StatusIcons::outline());
    EXPECT_EQ(button().toolTip(), "Vantorel is off");
}

TEST_F(StatusItemControllerTest, TheManualToggleIsAnnouncedBeforeTheGuardChanges) {
    Seam::click(item(), leftClick);
    EXPECT_EQ(manualToggles, 1);
    EXPECT_FALSE(activeAtManualToggle);
    Seam::click(item(), leftClick);
    EXPECT_EQ(manualToggles, 2);
    EXPECT_TRUE(activeAtManualToggle);
}

TEST_F(StatusItemControllerTest, TogglingWorksWithoutCallbacks) {
    controller->onManualToggle = nullptr;
    Seam::click(item(), leftClick);
    EXPECT_TRUE(sleepGuard->isActive());
    controller->openSettings();
}

TEST_F(StatusItemControllerTest, WithoutACurrentEventTheActionToggles) {
    ASSERT_FALSE(NS::Application::sharedApplication().currentEvent());
    controller->statusItemClicked();
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(StatusItemControllerTest, AnEventThatIsNoClickTogglesWhileNothingElseIsHeldDown) {
    const Linux::CurrentEvent movement({EventType::MouseMoved, EventModifierFlags::Control});
    controller->statusItemClicked();
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(StatusItemControllerTest, OtherModifiersStillToggle) {
    Seam::click(item(), {EventType::LeftMouseUp, EventModifierFlags::Shift | EventModifierFlags::Command});
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(StatusItemControllerTest, ARightClickOpensTheMenuAndDoesNotToggle) {
    EXPECT_TRUE(menuOpenedBy(rightClick));
    EXPECT_FALSE(sleepGuard->isActive());
    EXPECT_EQ(manualToggles, 0);
}

TEST_F(StatusItemControllerTest, AControlClickOpensTheMenuAndDoesNotToggle) {
    EXPECT_TRUE(menuOpenedBy(controlClick));
    EXPECT_FALSE(sleepGuard->isActive());
}

TEST_F(StatusItemControllerTest, TheMenuIsDetachedWhenItHasClosed) {
    menuOpenedBy(rightClick);
    EXPECT_FALSE(item().menu());
    Seam::click(item(), leftClick);
    EXPECT_TRUE(sleepGuard->isActive());
}

TEST_F(StatusItemControllerTest, EachOpeningHasAMenuOfItsOwn) {
    EXPECT_FALSE(menuOpenedBy(rightClick) == menuOpenedBy(rightClick));
}

TEST_F(StatusItemControllerTest, TheMenuHasItsSixLinesInOrder) {
    const auto menu = menuOpenedBy(rightClick);
    ASSERT_EQ(menu.numberOfItems(), 6);
    EXPECT_EQ(menu.itemAtIndex(0).title(), "Vantorel is off");
    EXPECT_FALSE(menu.itemAtIndex(0).isEnabled());
    EXPECT_EQ(menu.itemAtIndex(0).keyEquivalent(), "");
    EXPECT_TRUE(menu.itemAtIndex(1).isSeparatorItem());
    EXPECT_EQ(menu.itemAtIndex(2).title(), "Turn On");
    EXPECT_TRUE(menu.itemAtIndex(2).isEnabled());
    EXPECT_EQ(menu.itemAtIndex(2).keyEquivalent(), "");
    EXPECT_EQ(menu.itemAtIndex(3).title(), "Settings…");
    EXPECT_TRUE(menu.itemAtIndex(3).isEnabled());
    EXPECT_EQ(menu.itemAtIndex(3).keyEquivalent(), ",");
    EXPECT_EQ(menu.itemAtIndex(3).keyEquivalentModifierMask(), EventModifierFlags::Command);
    EXPECT_TRUE(menu.itemAtIndex(4).isSeparatorItem());
    EXPECT_EQ(menu.itemAtIndex(5).title(), "Quit Vantorel");
    EXPECT_TRUE(menu.itemAtIndex(5).isEnabled());
    EXPECT_EQ(menu.itemAtIndex(5).keyEquivalent(), "q");
    EXPECT_EQ(menu.itemAtIndex(5).keyEquivalentModifierMask(), EventModifierFlags::Command);
}

TEST_F(StatusItemControllerTest, TheMenuFollowsTheState) {
    Seam::click(item(), leftClick);
    const auto menu = menuOpenedBy(rightClick);
    EXPECT_EQ(menu.itemAtIndex(0).title(), "Vantorel is on");
    EXPECT_FALSE(menu.itemAtIndex(0).isEnabled());
    EXPECT_EQ(menu.itemAtIndex(2).title(), "Turn Off");
}

TEST_F(StatusItemControllerTest, TheMenusToggleDoesWhatAClickDoes) {
    auto menu = menuOpenedBy(rightClick);
    menu.performActionForItemAtIndex(2);
    EXPECT_TRUE(sleepGuard->isActive());
    EXPECT_EQ(manualToggles, 1);
    EXPECT_FALSE(activeAtManualToggle);
    EXPECT_EQ(button().image(), StatusIcons::filled());
}

TEST_F(StatusItemControllerTest, TheMenusSettingsLineCallsOnOpenSettings) {
    int opened = 0;
    controller->onOpenSettings = [&opened] { ++opened; };
    auto menu = menuOpenedBy(rightClick);
    menu.performActionForItemAtIndex(3);
    EXPECT_EQ(opened, 1);
}

TEST_F(StatusItemControllerTest, TheIconFollowsTheGuardWhoeverSwitchesIt) {
    sleepGuard->activate();
    EXPECT_EQ(button().image(), StatusIcons::filled());
    sleepGuard->deactivate();
    EXPECT_EQ(button().image(), StatusIcons::outline());
}

TEST_F(StatusItemControllerTest, ARefusedAssertionLeavesTheIconAlone) {
    const int before = Seam::imageChanges(item());
    Seam::power().refuses = true;
    Seam::click(item(), leftClick);
    EXPECT_EQ(button().image(), StatusIcons::outline());
    EXPECT_EQ(Seam::imageChanges(item()), before);
}

TEST_F(StatusItemControllerTest, AChangeOfLanguageReachesTheMenuAtOnceAndTheToolTipAtTheNextChange) {
    Prefs::d().setObject(NS::PropertyListValue("pt-BR"), Prefs::appLanguage);
    EXPECT_EQ(menuOpenedBy(rightClick).itemAtIndex(5).title(), "Sair do Vantorel");
    EXPECT_EQ(button().toolTip(), "Vantorel is off");
    Seam::click(item(), leftClick);
    EXPECT_EQ(button().toolTip(), "Vantorel ativado");
}

TEST_F(StatusItemControllerTest, ReplacesTheGuardsCallbackAndHoldsNoCycle) {
    const std::weak_ptr<StatusItemController> weak = controller;
    controller = nullptr;
    EXPECT_TRUE(weak.expired());
    EXPECT_TRUE(Seam::statusItems().empty());
    sleepGuard->toggle(); // the callback is still there and finds nobody
    EXPECT_TRUE(sleepGuard->isActive());
}

} // namespace
