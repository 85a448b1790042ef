#include "WelcomeWindowController.h"

#include "Platform/AppKit/Application.h"
#include "Platform/AppKit/ImageView.h"
#include "Platform/AppKit/TextField.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Linux/AppKit/ImageNative.h"
#include "Platform/Linux/AppKit/WindowNative.h"
#include "Prefs.h"
#include "StatusIcons.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScreen>
#include <gtest/gtest.h>

namespace {

template <class Handle>
Handle as(const NS::View& view) {
    return Linux::handle<Handle>(Linux::sharedObject<Linux::ViewNative>(view));
}

/// The pieces of the shown window, by their place in its content.
struct Pieces {
    NS::Window window = NS::Application::sharedApplication().windows().at(0);
    NS::StackView stack = as<NS::StackView>(window.contentView());
    std::vector<NS::View> views = stack.arrangedSubviews();
    NS::ImageView icon = as<NS::ImageView>(views.at(0));
    NS::TextField title = as<NS::TextField>(views.at(1));
    NS::TextField hint = as<NS::TextField>(views.at(2));
    NS::TextField subtitle = as<NS::TextField>(views.at(3));
    NS::StackView radios = as<NS::StackView>(views.at(4));
    NS::Button pt = as<NS::Button>(radios.arrangedSubviews().at(0));
    NS::Button en = as<NS::Button>(radios.arrangedSubviews().at(1));
    NS::Button continueButton = as<NS::Button>(views.at(5));
};

struct WelcomeWindowControllerTest : testing::Test {
    Pieces show(const char* languages = "en_GB") {
        qputenv("LANGUAGE", languages);
        controller->show();
        return {};
    }

    int completions = 0;
    std::shared_ptr<WelcomeWindowController> controller = WelcomeWindowController::create([this] { ++completions; });
};

TEST_F(WelcomeWindowControllerTest, NothingIsBuiltBeforeItIsShown) {
    EXPECT_TRUE(NS::Application::sharedApplication().windows().empty());
}

TEST_F(WelcomeWindowControllerTest, TheWindowIsTitledOnlyWithItsTitleHidden) {
    const auto pieces = show();
    EXPECT_EQ(pieces.window.styleMask(), NS::WindowStyleMask::Titled);
    EXPECT_FALSE(pieces.window.isReleasedWhenClosed());
    EXPECT_EQ(pieces.window.titleVisibility(), NS::WindowTitleVisibility::Hidden);
    EXPECT_TRUE(pieces.window.titlebarAppearsTransparent());
    EXPECT_EQ(pieces.window.title(), "");
    EXPECT_TRUE(pieces.window.isVisible());
}

TEST_F(WelcomeWindowControllerTest, TheUserCannotCloseTheWindow) {
    const auto pieces = show();
    EXPECT_FALSE(Linux::object<Linux::WindowNative>(pieces.window).widget->close());
    EXPECT_TRUE(pieces.window.isVisible());
}

TEST_F(WelcomeWindowControllerTest, TheWindowIsAsLargeAsItsContentAndCentred) {
    const auto pieces = show();
    const auto fitting = pieces.stack.fittingSize();
    const QSize content = Linux::object<Linux::WindowNative>(pieces.window).widget->size();
    EXPECT_EQ((NS::Size{double(content.width()), double(content.height())}), fitting);
    EXPECT_FALSE(fitting == (NS::Size{340, 320}));
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const auto frame = pieces.window.frame();
    EXPECT_NEAR(frame.origin.x + frame.size.width / 2, screen.width() / 2.0, 1);
    EXPECT_NEAR(frame.origin.y + frame.size.height / 2, screen.height() / 2.0, 1);
}

TEST_F(WelcomeWindowControllerTest, TheIconIsTheCupAt72Points) {
    const auto pieces = show();
    EXPECT_EQ(pieces.icon.image().size(), (NS::Size{72, 72}));
    EXPECT_FALSE(pieces.icon.image().isTemplate());
    EXPECT_EQ(pieces.icon.fittingSize(), (NS::Size{72, 72}));
    EXPECT_FALSE(pieces.icon.translatesAutoresizingMaskIntoConstraints());
    const auto* widget = Linux::object<Linux::ViewNative>(pieces.icon).widget.data();
    EXPECT_EQ(widget->minimumSize(), QSize(72, 72));
    EXPECT_EQ(widget->maximumSize(), QSize(72, 72));
}

TEST_F(WelcomeWindowControllerTest, TheIconIsTheFilledCupInCoffee) {
    const auto render = [](const NS::Image& image) { return Linux::object<Linux::ImageNative>(image).render(1, {}); };
    const auto filled = NS::Image::imageWithSize({72, 72}, false, [](const NS::Rect& rect) {
        StatusIcons::drawCup(rect, true, StatusIcons::coffee());
        return true;
    });
    const QImage icon = render(show().icon.image());
    EXPECT_EQ(icon.pixel(28, 72 - 26), qRgb(237, 158, 56)); // the middle of the body
    EXPECT_EQ(icon, render(filled));
}

TEST_F(WelcomeWindowControllerTest, TheTitleIsSemiboldAt20Points) {
    const auto pieces = show();
    EXPECT_EQ(pieces.title.font().pointSize(), 20);
    EXPECT_EQ(Linux::object<Linux::ViewNative>(pieces.title).widget->font().weight(), QFont::DemiBold);
    EXPECT_EQ(pieces.title.alignment(), NS::TextAlignment::Center);
}

TEST_F(WelcomeWindowControllerTest, HintAndSubtitleAreSecondaryAndCentred) {
    const auto pieces = show();
    const QColor plain = QGuiApplication::palette().color(QPalette::WindowText);
    for (const auto& label : {pieces.hint, pieces.subtitle}) {
        EXPECT_EQ(label.alignment(), NS::TextAlignment::Center);
        const QColor color = Linux::object<Linux::ViewNative>(label).widget->palette().color(QPalette::WindowText);
        EXPECT_EQ(color.rgb(), plain.rgb());
        EXPECT_LT(color.alpha(), 255);
    }
    EXPECT_EQ(pieces.hint.preferredMaxLayoutWidth(), 250);
    EXPECT_LE(pieces.hint.fittingSize().width, 250);
}

TEST_F(WelcomeWindowControllerTest, TheContentKeepsItsSpacingsAndInsets) {
    const auto pieces = show();
    ASSERT_EQ(pieces.views.size(), 6U);
    EXPECT_EQ(pieces.stack.orientation(), NS::UserInterfaceLayoutOrientation::Vertical);
    EXPECT_EQ(pieces.stack.alignment(), NS::LayoutAttribute::CenterX);
    EXPECT_EQ(pieces.stack.spacing(), 14);
    EXPECT_EQ(pieces.stack.edgeInsets(), (NS::EdgeInsets{28, 32, 28, 32}));
    EXPECT_FALSE(pieces.stack.translatesAutoresizingMaskIntoConstraints());
    EXPECT_EQ(pieces.stack.customSpacingAfterView(pieces.title), 8);
    EXPECT_EQ(pieces.stack.customSpacingAfterView(pieces.hint), 26);
    EXPECT_EQ(pieces.stack.customSpacingAfterView(pieces.subtitle), 16);
    EXPECT_EQ(pieces.stack.customSpacingAfterView(pieces.radios), 24);
}

TEST_F(WelcomeWindowControllerTest, TheViewsStandOnTheScreenAsFarApartAsTheLayoutSays) {
    const auto pieces = show();
    QCoreApplication::processEvents();
    const double gaps[] = {14, 8, 26, 16, 24};
    const auto geometry = [&](std::size_t index) {
        return Linux::object<Linux::ViewNative>(pieces.views.at(index)).widget->geometry();
    };
    const QRect content = Linux::object<Linux::ViewNative>(pieces.stack).widget->rect();
    EXPECT_EQ(geometry(0).top(), 28);
    for (std::size_t index = 0; index < std::size(gaps); ++index) {
        EXPECT_EQ(geometry(index + 1).top() - geometry(index).bottom() - 1, gaps[index]) << index;
    }
    EXPECT_EQ(content.bottom() - geometry(5).bottom(), 28);
    for (std::size_t index = 0; index < 6; ++index) {
        EXPECT_NEAR(geometry(index).center().x(), content.center().x(), 1) << index;
        EXPECT_GE(geometry(index).left(), 32) << index;
    }
}

TEST_F(WelcomeWindowControllerTest, TheRadioGroupIsALeadingColumn) {
    const auto pieces = show();
    EXPECT_EQ(pieces.radios.arrangedSubviews().size(), 2U);
    EXPECT_EQ(pieces.radios.orientation(), NS::UserInterfaceLayoutOrientation::Vertical);
    EXPECT_EQ(pieces.radios.alignment(), NS::LayoutAttribute::Leading);
    EXPECT_EQ(pieces.radios.spacing(), 10);
    EXPECT_EQ(pieces.pt.title(), "Português (Brasil)");
    EXPECT_EQ(pieces.en.title(), "English");
}

TEST_F(WelcomeWindowControllerTest, APortugueseSystemIsGreetedInPortuguese) {
    for (const char* languages : {"pt_PT", "pt_BR"}) {
        controller = WelcomeWindowController::create([] {});
        const auto pieces = show(languages);
        EXPECT_EQ(pieces.title.stringValue(), "Bem-vindo ao Vantorel");
        EXPECT_EQ(pieces.hint.stringValue(), "Um clique na xícara mantém seu Mac acordado.");
        EXPECT_EQ(pieces.subtitle.stringValue(), "Escolha seu idioma");
        EXPECT_EQ(pieces.continueButton.title(), "Continuar");
        EXPECT_EQ(pieces.pt.state(), NS::ControlStateValue::On);
        EXPECT_EQ(pieces.en.state(), NS::ControlStateValue::Off);
    }
}

TEST_F(WelcomeWindowControllerTest, EveryOtherSystemIsGreetedInEnglish) {
    for (const char* languages : {"fr", "en_GB:pt_BR"}) {
        controller = WelcomeWindowController::create([] {});
        const auto pieces = show(languages);
        EXPECT_EQ(pieces.title.stringValue(), "Welcome to Vantorel");
        EXPECT_EQ(pieces.hint.stringValue(), "One click on the cup keeps your Mac awake.");
        EXPECT_EQ(pieces.subtitle.stringValue(), "Choose your language");
        EXPECT_EQ(pieces.continueButton.title(), "Continue");
        EXPECT_EQ(pieces.pt.state(), NS::ControlStateValue::Off);
        EXPECT_EQ(pieces.en.state(), NS::ControlStateValue::On);
    }
}

TEST_F(WelcomeWindowControllerTest, OneRadioButtonTurnsTheOtherOff) {
    auto pieces = show("pt_BR");
    pieces.en.performClick();
    EXPECT_EQ(pieces.pt.state(), NS::ControlStateValue::Off);
    EXPECT_EQ(pieces.en.state(), NS::ControlStateValue::On);
    pieces.pt.performClick();
    EXPECT_EQ(pieces.pt.state(), NS::ControlStateValue::On);
    EXPECT_EQ(pieces.en.state(), NS::ControlStateValue::Off);
}

TEST_F(WelcomeWindowControllerTest, ChoosingALanguageDoesNotRelabelTheWindow) {
    auto pieces = show("pt_BR");
    pieces.en.performClick();
    EXPECT_EQ(pieces.title.stringValue(), "Bem-vindo ao Vantorel");
    EXPECT_EQ(pieces.continueButton.title(), "Continuar");
    EXPECT_EQ(Prefs::d().stringForKey("appLanguage"), std::nullopt);
}

TEST_F(WelcomeWindowControllerTest, ShowingLeavesNoLanguageBehind) {
    int announced = 0;
    auto centre = NS::NotificationCenter::defaultCenter();
    const auto observer = centre.addObserverForName(L10n::languageDidChange(), [&](const auto&) { ++announced; });
    show("pt_BR");
    EXPECT_EQ(Prefs::d().stringForKey("appLanguage"), std::nullopt);
    EXPECT_EQ(announced, 0);
    centre.removeObserver(observer);
}

TEST_F(WelcomeWindowControllerTest, ShowingPutsAStoredLanguageBack) {
    Prefs::d().setObject(NS::PropertyListValue("fr"), Prefs::appLanguage);
    show("pt_BR");
    EXPECT_EQ(Prefs::d().stringForKey("appLanguage"), "fr");
}

TEST_F(WelcomeWindowControllerTest, ItsTextsAreInTheSystemsLanguageWhateverIsStored) {
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    const auto pieces = show("pt_BR");
    EXPECT_EQ(pieces.subtitle.stringValue(), L10n::table().at("welcome.subtitle").pt);
    EXPECT_EQ(pieces.continueButton.title(), L10n::table().at("welcome.continue").pt);
}

TEST_F(WelcomeWindowControllerTest, ContinuingStoresTheLanguageThenCompletes) {
    std::string storedAtCompletion;
    std::size_t windowsAtCompletion = 99;
    controller = WelcomeWindowController::create([&] {
        storedAtCompletion = Prefs::d().stringForKey("appLanguage").value_or("none");
        windowsAtCompletion = NS::Application::sharedApplication().windows().size();
    });
    qputenv("LANGUAGE", "pt_BR");
    controller->show();
    controller->continuePressed();
    EXPECT_EQ(storedAtCompletion, "pt-BR");
    EXPECT_EQ(windowsAtCompletion, 0U);
}

TEST_F(WelcomeWindowControllerTest, ChoosingEnglishOnAPortugueseSystemStoresEnglish) {
    {
        auto pieces = show("pt_BR");
        pieces.en.performClick();
        pieces.continueButton.performClick();
    }
    EXPECT_EQ(Prefs::d().stringForKey("appLanguage"), "en");
    EXPECT_EQ(completions, 1);
}

TEST_F(WelcomeWindowControllerTest, ContinuingAnnouncesTheLanguageOnce) {
    int announced = 0;
    auto centre = NS::NotificationCenter::defaultCenter();
    const auto observer = centre.addObserverForName(L10n::languageDidChange(), [&](const auto&) { ++announced; });
    show();
    controller->continuePressed();
    EXPECT_EQ(announced, 1);
    centre.removeObserver(observer);
}

TEST_F(WelcomeWindowControllerTest, ReturnIsTheContinueButtonsKey) {
    const auto pieces = show();
    EXPECT_EQ(pieces.continueButton.keyEquivalent(), "\r");
    EXPECT_EQ(pieces.continueButton.bezelStyle(), NS::BezelStyle::Rounded);
}

TEST_F(WelcomeWindowControllerTest, TheButtonMayOutliveItsWindowDuringItsOwnClick) {
    const std::weak_ptr<WelcomeWindowController> weak = controller;
    controller = WelcomeWindowController::create([this] { controller = nullptr; });
    controller->show();
    {
        auto button = Pieces().continueButton;
        button.performClick();
    }
    EXPECT_EQ(controller, nullptr);
    EXPECT_TRUE(NS::Application::sharedApplication().windows().empty());
}

using WelcomeWindowControllerDeathTest = WelcomeWindowControllerTest;

TEST_F(WelcomeWindowControllerDeathTest, ContinuingBeforeShowingIsFatal) {
    EXPECT_DEATH(controller->continuePressed(), "before it was shown");
}

} // namespace
