#include "SettingsWindowController.h"

#include "L10n.h"
#include "Platform/AppKit/Application.h"
#include "Platform/Foundation/Calendar.h"
#include "Platform/Linux/AppKit/WindowNative.h"
#include "Platform/Linux/Dispatch/Workers.h"
#include "Platform/ServiceManagement/AppService.h"
#include "Prefs.h"
#include "Seam/Clock.h"
#include "Seam/Power.h"
#include "Support/HTTPServer.h"
#include "Unit/Linux/Managed.h"
#include "Updater.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QTimeEdit>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

namespace {

using Minutes = std::pair<std::int64_t, std::int64_t>;

template <class Handle>
Handle as(const NS::View& view) {
    return Linux::handle<Handle>(Linux::sharedObject<Linux::ViewNative>(view));
}

template <class Widget = QWidget>
Widget* widgetOf(const NS::View& view) {
    return dynamic_cast<Widget*>(Linux::object<Linux::ViewNative>(view).widget.data());
}

/// The pieces of the window, by their place in its grid.
struct Pieces {
    NS::Window window = NS::Application::sharedApplication().windows().at(0);
    NS::View container = window.contentView();
    NS::GridView grid = Linux::handle<NS::GridView>(Linux::object<Linux::ViewNative>(container).subviews.at(0));
    NS::TextField loginLabel = at<NS::TextField>(0, 0);
    NS::Switch loginSwitch = at<NS::Switch>(0, 1);
    NS::TextField loginHint = at<NS::TextField>(1, 0);
    NS::TextField scheduleLabel = at<NS::TextField>(2, 0);
    NS::Switch scheduleSwitch = at<NS::Switch>(2, 1);
    NS::TextField onLabel = at<NS::TextField>(3, 0);
    NS::DatePicker onPicker = at<NS::DatePicker>(3, 1);
    NS::TextField offLabel = at<NS::TextField>(4, 0);
    NS::DatePicker offPicker = at<NS::DatePicker>(4, 1);
    NS::TextField updateLabel = at<NS::TextField>(5, 0);
    NS::Switch updateSwitch = at<NS::Switch>(5, 1);
    NS::TextField updateHint = at<NS::TextField>(6, 0);
    NS::TextField languageLabel = at<NS::TextField>(7, 0);
    NS::PopUpButton languagePopup = at<NS::PopUpButton>(7, 1);

    template <class Handle>
    Handle at(long row, long column) const {
        return as<Handle>(grid.rowAtIndex(row).cellAtIndex(column).contentView());
    }

    std::vector<std::string> captions() const {
        std::vector<std::string> texts;
        for (const auto& label :
             {loginLabel, loginHint, scheduleLabel, onLabel, offLabel, updateLabel, updateHint, languageLabel}) {
            texts.push_back(label.stringValue());
        }
        return texts;
    }

    bool hintIsShown() const { return !grid.rowAtIndex(1).isHidden() && widgetOf(loginHint)->isVisible(); }
    QWidget* widget() const { return Linux::object<Linux::WindowNative>(window).widget; }
    QSize size() const { return widget()->size(); }
    QString timeOf(const NS::DatePicker& picker) const { return widgetOf<QTimeEdit>(picker)->text(); }
};

// A change of layout travels up, one round of events for each level.
void settle() {
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::processEvents();
    }
}

void click(const NS::Switch& control) {
    widgetOf<QCheckBox>(control)->click();
}

void press(QWidget* widget, int key, const QString& text = {}) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &event);
}

/// Types a time of day, such as "2200".
void type(const NS::DatePicker& picker, const QString& digits) {
    auto* edit = widgetOf<QTimeEdit>(picker);
    edit->setCurrentSection(QDateTimeEdit::HourSection);
    edit->setSelectedSection(QDateTimeEdit::HourSection);
    for (const QChar digit : digits) {
        press(edit, digit.unicode(), digit);
    }
    press(edit, Qt::Key_Return);
}

void choose(const NS::PopUpButton& popup, int index) {
    auto* box = widgetOf<QComboBox>(popup);
    press(box, box->currentIndex() < index ? Qt::Key_Down : Qt::Key_Up);
}

// Something stands where the folder of the login items should be.
void refuseLoginItems() {
    const QString config = QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME"));
    QDir().mkpath(config);
    QFile(config + "/autostart").open(QIODevice::WriteOnly);
}

struct SettingsWindowControllerTest : testing::Test {
    SettingsWindowControllerTest() {
        Prefs::registerDefaults();
        Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
        Seam::setNow(NS::Date::dateWithTimeIntervalSince1970(1'714'996'800)); // noon in UTC, the zone of the tests
    }

    Pieces show() const {
        controller->show();
        settle();
        return {};
    }

    static NS::AppServiceStatus loginStatus() { return NS::AppService::mainAppService().status(); }
    static void store(Minutes times) {
        Prefs::d().setInteger(times.first, Prefs::scheduleOnMinutes);
        Prefs::d().setInteger(times.second, Prefs::scheduleOffMinutes);
    }
    static Minutes stored() {
        return {Prefs::d().integerForKey(Prefs::scheduleOnMinutes),
                Prefs::d().integerForKey(Prefs::scheduleOffMinutes)};
    }
    static bool isAwake() { return !Seam::power().held.empty(); }

    std::shared_ptr<SleepGuard> guard = std::make_shared<SleepGuard>();
    std::shared_ptr<ScheduleEngine> engine = ScheduleEngine::create(guard);
    std::shared_ptr<SettingsWindowController> controller = SettingsWindowController::create(engine);
};

const std::vector<std::string> englishCaptions = {"Launch at login",
                                                  "Move Vantorel to the Applications folder to enable this.",
                                                  "Automatic schedule",
                                                  "Turn on at",
                                                  "Turn off at",
                                                  "Update automatically",
                                                  L10n::table().at("settings.autoUpdateHint").en.data(),
                                                  "Language"};
const std::vector<std::string> portugueseCaptions = {"Iniciar com o Mac",
                                                     "Mova o Vantorel para a pasta Aplicativos para ativar isto.",
                                                     "Agenda automática",
                                                     "Ativar às",
                                                     "Desativar às",
                                                     "Atualizar automaticamente",
                                                     L10n::table().at("settings.autoUpdateHint").pt.data(),
                                                     "Idioma"};

// The window and its form

TEST_F(SettingsWindowControllerTest, NothingIsBuiltBeforeItIsShown) {
    EXPECT_TRUE(NS::Application::sharedApplication().windows().empty());
}

TEST_F(SettingsWindowControllerTest, ALanguageChangeBeforeItIsShownBuildsNothing) {
    L10n::setCurrent(Language::ptBR);
    EXPECT_TRUE(NS::Application::sharedApplication().windows().empty());
    EXPECT_EQ(show().captions(), portugueseCaptions);
}

TEST_F(SettingsWindowControllerTest, TheWindowIsTitledAndClosableAndOutlivesItsClosing) {
    const auto pieces = show();
    EXPECT_EQ(pieces.window.styleMask(), NS::WindowStyleMask::Titled | NS::WindowStyleMask::Closable);
    EXPECT_FALSE(pieces.window.isReleasedWhenClosed());
    EXPECT_TRUE(pieces.window.isVisible());
    EXPECT_TRUE(pieces.widget()->close());
    EXPECT_FALSE(pieces.window.isVisible());
    EXPECT_EQ(NS::Application::sharedApplication().windows().size(), 1U);
}

TEST_F(SettingsWindowControllerTest, TheWindowIsAsLargeAsTheFormAndCentred) {
    const auto pieces = show();
    const auto fitting = pieces.container.fittingSize();
    EXPECT_EQ((NS::Size{double(pieces.size().width()), double(pieces.size().height())}), fitting);
    EXPECT_NE(pieces.size(), QSize(360, 240));
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const auto frame = pieces.window.frame();
    EXPECT_NEAR(frame.origin.x + frame.size.width / 2, screen.width() / 2.0, 1);
    EXPECT_NEAR(frame.origin.y + frame.size.height / 2, screen.height() / 2.0, 1);
}

TEST_F(SettingsWindowControllerTest, TheFormIsAGridOfEightRowsOfTwo) {
    const auto pieces = show();
    EXPECT_EQ(pieces.grid.numberOfRows(), 8);
    EXPECT_EQ(pieces.grid.numberOfColumns(), 2);
    EXPECT_EQ(pieces.grid.rowSpacing(), 12);
    EXPECT_EQ(pieces.grid.columnSpacing(), 16);
    EXPECT_EQ(pieces.grid.rowAlignment(), NS::GridRowAlignment::FirstBaseline);
    EXPECT_EQ(pieces.grid.columnAtIndex(0).xPlacement(), NS::GridCellPlacement::Trailing);
    EXPECT_EQ(pieces.grid.columnAtIndex(1).xPlacement(), NS::GridCellPlacement::Leading);
    EXPECT_FALSE(pieces.grid.translatesAutoresizingMaskIntoConstraints());
}

TEST_F(SettingsWindowControllerTest, OnlyTheHintsSpanBothColumns) {
    const auto pieces = show();
    for (long row = 0; row < 8; ++row) {
        const auto first = pieces.grid.rowAtIndex(row).cellAtIndex(0);
        const bool isHint = row == 1 || row == 6;
        EXPECT_EQ(first == pieces.grid.rowAtIndex(row).cellAtIndex(1), isHint) << row;
        EXPECT_EQ(first.xPlacement(), isHint ? NS::GridCellPlacement::Leading : NS::GridCellPlacement::Inherited)
            << row;
    }
}

TEST_F(SettingsWindowControllerTest, TheFormStandsOnTheScreenAsFarApartAsTheLayoutSays) {
    for (const Language language : {Language::en, Language::ptBR}) {
        L10n::setCurrent(language);
        controller = SettingsWindowController::create(engine);
        const auto pieces = show();
        constexpr int ring = 3; // of a switch: it may stand in the space between
        const QRect grid = widgetOf(pieces.grid)->geometry().adjusted(ring, ring, -ring, -ring);
        const QRect content = widgetOf(pieces.container)->rect();
        EXPECT_EQ(grid.top(), 24);
        EXPECT_EQ(content.bottom() - grid.bottom(), 24);
        EXPECT_EQ(grid.left(), 24);
        EXPECT_EQ(content.right() - grid.right(), 24);
        const int captionsEnd = widgetOf(pieces.loginLabel)->geometry().right();
        for (const auto& caption :
             {pieces.scheduleLabel, pieces.onLabel, pieces.offLabel, pieces.updateLabel, pieces.languageLabel}) {
            EXPECT_EQ(widgetOf(caption)->geometry().right(), captionsEnd) << caption.stringValue();
        }
        EXPECT_EQ(widgetOf(pieces.onPicker)->x() - captionsEnd - 1, 16);
        EXPECT_EQ(widgetOf(pieces.offPicker)->x(), widgetOf(pieces.onPicker)->x());
        EXPECT_EQ(widgetOf(pieces.languagePopup)->x(), widgetOf(pieces.onPicker)->x());
        for (const auto& control : {pieces.loginSwitch, pieces.scheduleSwitch, pieces.updateSwitch}) {
            EXPECT_EQ(widgetOf(control)->x() + ring, widgetOf(pieces.onPicker)->x());
        }
        EXPECT_EQ(widgetOf(pieces.updateHint)->x(), ring);
        EXPECT_LE(widgetOf(pieces.updateHint)->width(), 300);
        EXPECT_GT(widgetOf(pieces.updateHint)->geometry().right(), captionsEnd);
    }
}

TEST_F(SettingsWindowControllerTest, CaptionsAreLabelColouredAndHintsSecondaryAndSmall) {
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    const auto pieces = show();
    const auto opacity = [](const NS::TextField& field) {
        return widgetOf(field)->palette().color(QPalette::WindowText).alphaF();
    };
    for (const auto& label : {pieces.loginLabel, pieces.scheduleLabel, pieces.onLabel, pieces.offLabel,
                              pieces.updateLabel, pieces.languageLabel}) {
        EXPECT_EQ(opacity(label), 1) << label.stringValue();
    }
    for (const auto& hint : {pieces.loginHint, pieces.updateHint}) {
        EXPECT_NEAR(opacity(hint), 0.64, 0.01) << hint.stringValue();
        EXPECT_EQ(hint.font().pointSize(), NS::Font::smallSystemFontSize());
        EXPECT_EQ(hint.preferredMaxLayoutWidth(), 300);
    }
}

TEST_F(SettingsWindowControllerTest, ThePickersShowHoursAndMinutesWithAStepper) {
    const auto pieces = show();
    for (const auto& picker : {pieces.onPicker, pieces.offPicker}) {
        EXPECT_EQ(picker.datePickerStyle(), NS::DatePickerStyle::TextFieldAndStepper);
        EXPECT_EQ(picker.datePickerElements(), NS::DatePickerElementFlags::HourMinute);
    }
}

TEST_F(SettingsWindowControllerTest, EveryControlIsNamedByItsCaption) {
    const auto pieces = show();
    const std::pair<NS::TextField, NS::View> rows[] = {
        {pieces.loginLabel, pieces.loginSwitch},   {pieces.scheduleLabel, pieces.scheduleSwitch},
        {pieces.onLabel, pieces.onPicker},         {pieces.offLabel, pieces.offPicker},
        {pieces.updateLabel, pieces.updateSwitch}, {pieces.languageLabel, pieces.languagePopup}};
    for (const auto& [label, control] : rows) {
        EXPECT_EQ(widgetOf<QLabel>(label)->buddy(), widgetOf(control)) << label.stringValue();
    }
}

// Texts and languages

TEST_F(SettingsWindowControllerTest, TheTextsAreInTheLanguageInForce) {
    EXPECT_EQ(show().captions(), englishCaptions);
    EXPECT_EQ(Pieces().window.title(), "Vantorel Settings");
    Prefs::d().setObject(NS::PropertyListValue("pt-BR"), Prefs::appLanguage);
    controller = SettingsWindowController::create(engine);
    EXPECT_EQ(show().captions(), portugueseCaptions);
    EXPECT_EQ(Pieces().window.title(), "Ajustes do Vantorel");
}

TEST_F(SettingsWindowControllerTest, TheLanguagesAreOfferedInTheirOwnWords) {
    const std::vector<std::string> titles = {"Português (Brasil)", "English"};
    const auto pieces = show();
    EXPECT_EQ(pieces.languagePopup.itemTitles(), titles);
    L10n::setCurrent(Language::ptBR);
    EXPECT_EQ(pieces.languagePopup.itemTitles(), titles);
}

TEST_F(SettingsWindowControllerTest, ChoosingEnglishInPortugueseRelabelsAtOnceAndKeepsTheSize) {
    L10n::setCurrent(Language::ptBR);
    const auto pieces = show();
    const QSize before = pieces.size();
    choose(pieces.languagePopup, 1);
    settle();
    EXPECT_EQ(Prefs::d().stringForKey(Prefs::appLanguage), "en");
    EXPECT_EQ(pieces.captions(), englishCaptions);
    EXPECT_EQ(pieces.window.title(), "Vantorel Settings");
    EXPECT_EQ(pieces.languagePopup.indexOfSelectedItem(), 1);
    EXPECT_EQ(pieces.size(), before);
}

TEST_F(SettingsWindowControllerTest, ChoosingPortugueseInEnglishClipsNothingThoughTheSizeStays) {
    const auto pieces = show();
    const QSize before = pieces.size();
    choose(pieces.languagePopup, 0);
    settle();
    EXPECT_EQ(Prefs::d().stringForKey(Prefs::appLanguage), "pt-BR");
    EXPECT_EQ(pieces.captions(), portugueseCaptions);
    EXPECT_EQ(pieces.size(), before);
    const QRect grid = widgetOf(pieces.grid)->geometry();
    EXPECT_TRUE(widgetOf(pieces.container)->rect().contains(grid));
    for (const auto* child : widgetOf(pieces.grid)->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (child->isVisible()) {
            EXPECT_TRUE(QRect(QPoint(), grid.size()).contains(child->geometry()));
            EXPECT_GE(child->width(), child->sizeHint().width());
            EXPECT_GE(child->height(), child->sizeHint().height());
        }
    }
}

TEST_F(SettingsWindowControllerTest, TheSizeFollowsTheLanguageWhenTheHintNextComesOrGoes) {
    L10n::setCurrent(Language::ptBR);
    const auto pieces = show();
    const int before = pieces.size().width();
    choose(pieces.languagePopup, 1);
    controller->show();
    EXPECT_EQ(pieces.size().width(), before);
    refuseLoginItems();
    testing::internal::CaptureStderr();
    click(pieces.loginSwitch);
    testing::internal::GetCapturedStderr();
    EXPECT_LT(pieces.size().width(), before);
}

TEST_F(SettingsWindowControllerTest, ThePopupSelectsTheStoredLanguageElseTheSystems) {
    struct Case {
        std::optional<const char*> stored;
        const char* system;
        long index;
    };
    for (const auto& [language, system, index] :
         {Case{"en", "pt_BR", 1}, Case{"pt-BR", "en_GB", 0}, Case{"fr", "pt_PT", 0}, Case{"PT-BR", "en_GB", 1},
          Case{std::nullopt, "pt_BR", 0}, Case{std::nullopt, "fr", 1}}) {
        qputenv("LANGUAGE", system);
        Prefs::d().setObject(language ? std::optional(NS::PropertyListValue(*language)) : std::nullopt,
                             Prefs::appLanguage);
        EXPECT_EQ(show().languagePopup.indexOfSelectedItem(), index) << language.value_or("none") << ' ' << system;
    }
}

TEST_F(SettingsWindowControllerTest, ChoosingTheLanguageInForceAnnouncesItAgain) {
    int announced = 0;
    auto centre = NS::NotificationCenter::defaultCenter();
    const auto observer = centre.addObserverForName(L10n::languageDidChange(), [&](const auto&) { ++announced; });
    show();
    controller->languageChanged();
    EXPECT_EQ(announced, 1);
    centre.removeObserver(observer);
}

// Opening again

TEST_F(SettingsWindowControllerTest, TheControlsShowHowThingsAre) {
    store({1320, 360});
    const auto pieces = show();
    EXPECT_EQ(pieces.loginSwitch.state(), NS::ControlStateValue::Off);
    EXPECT_EQ(pieces.scheduleSwitch.state(), NS::ControlStateValue::Off);
    EXPECT_EQ(pieces.updateSwitch.state(), NS::ControlStateValue::On);
    EXPECT_EQ(pieces.timeOf(pieces.onPicker), "22:00");
    EXPECT_EQ(pieces.timeOf(pieces.offPicker), "06:00");
    EXPECT_EQ(pieces.languagePopup.indexOfSelectedItem(), 1);
}

TEST_F(SettingsWindowControllerTest, ReopeningReadsEverythingAgainIntoTheSameWindow) {
    const auto pieces = show();
    pieces.widget()->close();
    ASSERT_EQ(NS::AppService::mainAppService().registerAndReturnError(), std::nullopt);
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    Prefs::d().setBool(false, Prefs::autoUpdate);
    store({61, 122});
    Prefs::d().setObject(NS::PropertyListValue("pt-BR"), Prefs::appLanguage);
    const auto again = show();
    EXPECT_EQ(again.window, pieces.window);
    EXPECT_EQ(NS::Application::sharedApplication().windows().size(), 1U);
    EXPECT_TRUE(again.window.isVisible());
    EXPECT_EQ(again.loginSwitch.state(), NS::ControlStateValue::On);
    EXPECT_EQ(again.scheduleSwitch.state(), NS::ControlStateValue::On);
    EXPECT_EQ(again.updateSwitch.state(), NS::ControlStateValue::Off);
    EXPECT_EQ(again.timeOf(again.onPicker), "01:01");
    EXPECT_EQ(again.timeOf(again.offPicker), "02:02");
    EXPECT_EQ(again.languagePopup.indexOfSelectedItem(), 0);
    EXPECT_TRUE(again.onPicker.isEnabled());
    EXPECT_EQ(again.captions(), englishCaptions); // nobody announced the language
}

TEST_F(SettingsWindowControllerTest, ReopeningHidesTheHintAndCentresTheWindow) {
    refuseLoginItems();
    const auto pieces = show();
    const QRect before = pieces.widget()->geometry();
    testing::internal::CaptureStderr();
    click(pieces.loginSwitch);
    testing::internal::GetCapturedStderr();
    ASSERT_TRUE(pieces.hintIsShown());
    pieces.widget()->close();
    pieces.widget()->move(3, 5);
    show();
    EXPECT_FALSE(pieces.hintIsShown());
    EXPECT_EQ(pieces.widget()->geometry(), before);
}

TEST_F(SettingsWindowControllerTest, ShowingChangesNothing) {
    store({1, 2});
    engine->manualOverride = true;
    show();
    show();
    EXPECT_EQ(stored(), Minutes(1, 2));
    EXPECT_TRUE(engine->manualOverride);
    EXPECT_EQ(loginStatus(), NS::AppServiceStatus::NotRegistered);
    EXPECT_TRUE(Seam::scheduledTimers().empty());
}

// Launch at login

TEST_F(SettingsWindowControllerTest, TheHintIsHiddenAtFirst) {
    const auto pieces = show();
    EXPECT_TRUE(pieces.grid.rowAtIndex(1).isHidden());
    EXPECT_FALSE(widgetOf(pieces.loginHint)->isVisible());
}

TEST_F(SettingsWindowControllerTest, LaunchAtLoginIsSwitchedOnAndOff) {
    const auto pieces = show();
    const QSize before = pieces.size();
    click(pieces.loginSwitch);
    EXPECT_EQ(loginStatus(), NS::AppServiceStatus::Enabled);
    EXPECT_EQ(pieces.loginSwitch.state(), NS::ControlStateValue::On);
    EXPECT_TRUE(Prefs::d().boolForKey(Prefs::launchAtLogin));
    click(pieces.loginSwitch);
    EXPECT_EQ(loginStatus(), NS::AppServiceStatus::NotRegistered);
    EXPECT_EQ(pieces.loginSwitch.state(), NS::ControlStateValue::Off);
    EXPECT_FALSE(Prefs::d().boolForKey(Prefs::launchAtLogin));
    EXPECT_FALSE(pieces.hintIsShown());
    EXPECT_EQ(pieces.size(), before);
}

TEST_F(SettingsWindowControllerTest, ARefusalSpringsTheSwitchBackAndGrowsTheWindowByTheHint) {
    refuseLoginItems();
    const auto pieces = show();
    const QSize before = pieces.size();
    testing::internal::CaptureStderr();
    click(pieces.loginSwitch);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("LoginItem: register failed: "), std::string::npos);
    EXPECT_EQ(pieces.loginSwitch.state(), NS::ControlStateValue::Off);
    EXPECT_TRUE(pieces.hintIsShown());
    EXPECT_EQ(pieces.size().height(), before.height() + 12 + widgetOf(pieces.loginHint)->sizeHint().height());
}

TEST_F(SettingsWindowControllerTest, SwitchingOffAfterARefusalHidesTheHintAndShrinksTheWindow) {
    refuseLoginItems();
    const auto pieces = show();
    const QSize before = pieces.size();
    testing::internal::CaptureStderr();
    click(pieces.loginSwitch);
    controller->loginChanged(); // with the switch off
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(pieces.hintIsShown());
    EXPECT_EQ(pieces.size(), before);
    EXPECT_EQ(pieces.loginSwitch.state(), NS::ControlStateValue::Off);
}

TEST_F(SettingsWindowControllerTest, ASecondRefusalKeepsTheHint) {
    refuseLoginItems();
    const auto pieces = show();
    testing::internal::CaptureStderr();
    click(pieces.loginSwitch);
    const QSize grown = pieces.size();
    click(pieces.loginSwitch);
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(pieces.hintIsShown());
    EXPECT_EQ(pieces.size(), grown);
}

TEST_F(SettingsWindowControllerTest, ARefusedSwitchingOffLeavesItOffWithoutAHint) {
    ASSERT_EQ(NS::AppService::mainAppService().registerAndReturnError(), std::nullopt);
    const auto pieces = show();
    ASSERT_EQ(pieces.loginSwitch.state(), NS::ControlStateValue::On);
    const QString entry = QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME")) + "/autostart";
    QDir(entry).removeRecursively();
    refuseLoginItems();
    testing::internal::CaptureStderr();
    click(pieces.loginSwitch);
    const auto log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("LoginItem: unregister failed: "), std::string::npos) << log;
    EXPECT_EQ(pieces.loginSwitch.state(), NS::ControlStateValue::Off);
    EXPECT_FALSE(pieces.hintIsShown());
}

// The schedule

TEST_F(SettingsWindowControllerTest, ASwitchedOffScheduleDisablesThePickersAndFadesTheirCaptions) {
    const auto pieces = show();
    const auto expect = [&](bool enabled) {
        EXPECT_EQ(pieces.onPicker.isEnabled(), enabled);
        EXPECT_EQ(pieces.offPicker.isEnabled(), enabled);
        for (const auto& label : {pieces.onLabel, pieces.offLabel}) {
            EXPECT_NEAR(widgetOf(label)->palette().color(QPalette::WindowText).alphaF(), enabled ? 1 : 0.34, 0.01);
        }
    };
    expect(false);
    click(pieces.scheduleSwitch);
    expect(true);
    click(pieces.scheduleSwitch);
    expect(false);
}

TEST_F(SettingsWindowControllerTest, SwitchingTheScheduleOnDecidesAtOnceAndOffClearsItsTimers) {
    const auto pieces = show();
    engine->manualOverride = true;
    engine->overrideSetAt = NS::Date::date();
    click(pieces.scheduleSwitch); // at noon, between 9 and 18
    EXPECT_TRUE(Prefs::d().boolForKey(Prefs::scheduleEnabled));
    EXPECT_FALSE(engine->manualOverride);
    EXPECT_TRUE(isAwake());
    EXPECT_EQ(Seam::scheduledTimers().size(), 2U);
    engine->manualOverride = true;
    click(pieces.scheduleSwitch);
    EXPECT_FALSE(Prefs::d().boolForKey(Prefs::scheduleEnabled));
    EXPECT_FALSE(engine->manualOverride);
    EXPECT_TRUE(Seam::scheduledTimers().empty());
    EXPECT_TRUE(isAwake()); // as it was
}

TEST_F(SettingsWindowControllerTest, PickedTimesAreStoredAndInForceAtOnce) {
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    const auto pieces = show();
    engine->reconcile();
    ASSERT_TRUE(isAwake());
    engine->manualOverride = true;
    engine->overrideSetAt = NS::Date::date();
    type(pieces.onPicker, "2200");
    type(pieces.offPicker, "0600");
    EXPECT_EQ(stored(), Minutes(1320, 360));
    EXPECT_FALSE(engine->manualOverride);
    EXPECT_FALSE(isAwake()); // at noon
    const auto now = NS::Date::date();
    EXPECT_EQ(Seam::scheduledTimers(),
              (std::vector{now.dateByAddingTimeInterval(10 * 3600.0), now.dateByAddingTimeInterval(18 * 3600.0)}));
}

TEST_F(SettingsWindowControllerTest, OnePickedTimeEndsAnOverrideBeforeItDecides) {
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    const auto pieces = show();
    engine->reconcile();
    engine->manualOverride = true;
    engine->overrideSetAt = NS::Date::date();
    type(pieces.onPicker, "1300"); // at noon
    EXPECT_FALSE(isAwake());
}

TEST_F(SettingsWindowControllerTest, EitherPickerStoresBothTimes) {
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    const auto pieces = show();
    store({1, 2}); // from outside, while the window shows 9 and 18
    type(pieces.onPicker, "1000");
    EXPECT_EQ(stored(), Minutes(600, 1080));
    store({1, 2});
    type(pieces.offPicker, "1900");
    EXPECT_EQ(stored(), Minutes(600, 1140));
}

TEST_F(SettingsWindowControllerTest, TheFirstAndTheLastMinuteOfTheDayAreShownAndStored) {
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    store({1439, 0});
    const auto pieces = show();
    EXPECT_EQ(pieces.timeOf(pieces.onPicker), "23:59");
    EXPECT_EQ(pieces.timeOf(pieces.offPicker), "00:00");
    store({1, 2});
    controller->timesChanged();
    EXPECT_EQ(stored(), Minutes(1439, 0));
}

TEST_F(SettingsWindowControllerTest, EveryMinuteOfTheDayComesBackAsItWas) {
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    for (std::int64_t minute = 0; minute < 1440; minute += 7) {
        store({minute, 1439 - minute});
        controller->show();
        store({-1, -1});
        controller->timesChanged();
        ASSERT_EQ(stored(), Minutes(minute, 1439 - minute));
    }
}

TEST_F(SettingsWindowControllerTest, ImpossibleMinutesShowThePresent) {
    for (const std::int64_t minutes : {std::int64_t(1440), std::int64_t(-1), std::int64_t(1) << 40}) {
        store({minutes, minutes});
        const auto pieces = show();
        EXPECT_EQ(pieces.timeOf(pieces.onPicker), "12:00") << minutes;
        EXPECT_EQ(pieces.timeOf(pieces.offPicker), "12:00") << minutes;
    }
}

TEST_F(SettingsWindowControllerTest, ATimeThatTheClockSkipsTodayShowsTheNextThereIs) {
    Seam::setTimeZone("Europe/Berlin");
    Seam::setNow(NS::Date::dateWithTimeIntervalSince1970(1'711'879'200)); // 2024-03-31, the clock skips 2 to 3
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    store({150, 540});
    const auto pieces = show();
    EXPECT_EQ(pieces.timeOf(pieces.onPicker), "03:00");
    type(pieces.onPicker, "0215");
    EXPECT_EQ(pieces.timeOf(pieces.onPicker), "03:00");
    EXPECT_EQ(stored(), Minutes(180, 540));
}

// Automatic updates

TEST_F(SettingsWindowControllerTest, AutomaticUpdatesAreSwitchedOffAndOn) {
    const auto pieces = show();
    click(pieces.updateSwitch);
    EXPECT_FALSE(Prefs::d().boolForKey(Prefs::autoUpdate));
    click(pieces.updateSwitch);
    EXPECT_TRUE(Prefs::d().boolForKey(Prefs::autoUpdate));
}

TEST_F(SettingsWindowControllerTest, SwitchingUpdatesOnChecksOnAnotherThread) {
    Seam::HTTPServer server;
    server.answer("/updates/vantorel.json", {200, R"({"latest": {"version": "1.0", "file": "f", "sha256": "ab"}})"});
    setenv("KORVEX_UPDATE_BASE", server.url().c_str(), 1);
    Prefs::d().setBool(false, Prefs::autoUpdate);
    std::thread::id checking;
    *Updater::shouldPostpone = [&] {
        checking = std::this_thread::get_id();
        return true;
    };
    click(show().updateSwitch);
    ASSERT_TRUE(Linux::waitForWorkers(std::chrono::seconds(30)));
    EXPECT_EQ(server.requests().size(), 1U);
    EXPECT_NE(checking, std::thread::id());
    EXPECT_NE(checking, std::this_thread::get_id());
}

TEST_F(SettingsWindowControllerTest, SwitchingUpdatesOffAsksNobody) {
    Seam::HTTPServer server;
    setenv("KORVEX_UPDATE_BASE", server.url().c_str(), 1);
    click(show().updateSwitch);
    ASSERT_TRUE(Linux::waitForWorkers(std::chrono::seconds(30)));
    EXPECT_EQ(server.connections(), 0);
}

// One control at a time

TEST_F(SettingsWindowControllerTest, EachControlChangesWhatItSaysAndNothingElse) {
    Prefs::d().setBool(true, Prefs::scheduleEnabled);
    const auto pieces = show();
    const auto world = [] {
        return std::make_tuple(loginStatus(), Prefs::d().boolForKey(Prefs::scheduleEnabled), stored(),
                               Prefs::d().boolForKey(Prefs::autoUpdate), Prefs::d().stringForKey(Prefs::appLanguage));
    };
    auto expected = world();
    click(pieces.loginSwitch);
    std::get<0>(expected) = NS::AppServiceStatus::Enabled;
    EXPECT_EQ(world(), expected);
    click(pieces.scheduleSwitch);
    std::get<1>(expected) = false;
    EXPECT_EQ(world(), expected);
    click(pieces.scheduleSwitch);
    std::get<1>(expected) = true;
    type(pieces.offPicker, "1730");
    std::get<2>(expected) = {540, 1050};
    EXPECT_EQ(world(), expected);
    click(pieces.updateSwitch);
    std::get<3>(expected) = false;
    EXPECT_EQ(world(), expected);
    choose(pieces.languagePopup, 0);
    std::get<4>(expected) = "pt-BR";
    EXPECT_EQ(world(), expected);
}

TEST_F(SettingsWindowControllerTest, ItsActionsHoldItWeakly) {
    const auto pieces = show();
    const std::weak_ptr<SettingsWindowController> weak = controller;
    controller = nullptr;
    ASSERT_TRUE(weak.expired());
    click(pieces.updateSwitch);
    L10n::setCurrent(Language::ptBR);
    EXPECT_TRUE(Prefs::d().boolForKey(Prefs::autoUpdate));
    EXPECT_EQ(pieces.captions(), englishCaptions);
}

using SettingsWindowControllerDeathTest = SettingsWindowControllerTest;

TEST_F(SettingsWindowControllerDeathTest, ActingBeforeShowingIsFatal) {
    for (const auto action : {&SettingsWindowController::loginChanged, &SettingsWindowController::scheduleChanged,
                              &SettingsWindowController::timesChanged, &SettingsWindowController::autoUpdateChanged,
                              &SettingsWindowController::languageChanged}) {
        EXPECT_DEATH(((*controller).*action)(), "before the window was shown");
    }
}

// What an administrator decided

TEST_F(SettingsWindowControllerTest, AForcedControlShowsItsValueAndCannotBeWorked) {
    force("<key>launchAtLogin</key><true/><key>scheduleEnabled</key><true/><key>scheduleOnMinutes</key>"
          "<integer>420</integer><key>scheduleOffMinutes</key><integer>1020</integer><key>autoUpdate</key><false/>"
          "<key>appLanguage</key><string>pt-BR</string>");
    const auto pieces = show();
    EXPECT_EQ(pieces.loginSwitch.state(), NS::ControlStateValue::On) << "whatever the system has";
    EXPECT_EQ(pieces.scheduleSwitch.state(), NS::ControlStateValue::On);
    EXPECT_EQ(pieces.timeOf(pieces.onPicker), "07:00");
    EXPECT_EQ(pieces.timeOf(pieces.offPicker), "17:00");
    EXPECT_EQ(pieces.updateSwitch.state(), NS::ControlStateValue::Off);
    EXPECT_EQ(pieces.languagePopup.indexOfSelectedItem(), 0);
    EXPECT_EQ(pieces.captions(), portugueseCaptions);
    const std::vector<NS::Control> controls = {pieces.loginSwitch, pieces.scheduleSwitch, pieces.onPicker,
                                               pieces.offPicker,   pieces.updateSwitch,   pieces.languagePopup};
    for (const auto& control : controls) {
        EXPECT_FALSE(control.isEnabled());
    }
    for (const auto& control : {pieces.loginSwitch, pieces.scheduleSwitch, pieces.updateSwitch}) {
        click(control);
    }
    EXPECT_EQ(loginStatus(), NS::AppServiceStatus::NotRegistered);
    EXPECT_EQ(pieces.scheduleSwitch.state(), NS::ControlStateValue::On);
}

TEST_F(SettingsWindowControllerTest, WhatIsNotForcedCanBeWorked) {
    force("<key>scheduleEnabled</key><true/><key>scheduleOffMinutes</key><integer>1020</integer>");
    const auto pieces = show();
    EXPECT_TRUE(pieces.loginSwitch.isEnabled());
    EXPECT_FALSE(pieces.scheduleSwitch.isEnabled());
    EXPECT_TRUE(pieces.onPicker.isEnabled());
    EXPECT_FALSE(pieces.offPicker.isEnabled());
    EXPECT_TRUE(pieces.updateSwitch.isEnabled());
    EXPECT_TRUE(pieces.languagePopup.isEnabled());
    type(pieces.onPicker, "0700");
    EXPECT_EQ(stored(), (Minutes{420, 1020}));
    std::filesystem::remove(managedFile());
    EXPECT_EQ(stored(), (Minutes{420, 1080})) << "the forced time was not stored";
}

TEST_F(SettingsWindowControllerTest, TimesOfAScheduleThatIsForcedOffCannotBeWorked) {
    force("<key>scheduleEnabled</key><false/>");
    const auto pieces = show();
    EXPECT_FALSE(pieces.onPicker.isEnabled() || pieces.offPicker.isEnabled());
}

TEST_F(SettingsWindowControllerTest, ReopeningShowsWhatIsForcedByThenOrNoLonger) {
    Prefs::d().setBool(false, Prefs::autoUpdate);
    const auto pieces = show();
    force("<key>autoUpdate</key><true/>");
    show();
    EXPECT_EQ(pieces.updateSwitch.state(), NS::ControlStateValue::On);
    EXPECT_FALSE(pieces.updateSwitch.isEnabled());
    std::filesystem::remove(managedFile());
    show();
    EXPECT_EQ(pieces.updateSwitch.state(), NS::ControlStateValue::Off);
    EXPECT_TRUE(pieces.updateSwitch.isEnabled());
}

TEST_F(SettingsWindowControllerTest, ALoginItemForcedWhileTheWindowIsOpenIsNotChanged) {
    const auto pieces = show();
    force("<key>launchAtLogin</key><false/>");
    click(pieces.loginSwitch);
    EXPECT_EQ(loginStatus(), NS::AppServiceStatus::NotRegistered);
    EXPECT_EQ(pieces.loginSwitch.state(), NS::ControlStateValue::Off);
    EXPECT_FALSE(pieces.loginSwitch.isEnabled());
    EXPECT_FALSE(pieces.hintIsShown());
}

} // namespace
