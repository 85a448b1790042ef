#include "SettingsWindowController.h"

#include "FatalError.h"
#include "L10n.h"
#include "LoginItem.h"
#include "Platform/AppKit/Application.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/ServiceManagement/AppService.h"
#include "Prefs.h"
#include "TimeOfDay.h"
#include "Updater.h"
#include "Weakly.h"

#include <utility>

namespace {

constexpr double margin = 24;

// The popup's items.
constexpr long portuguese = 0;
constexpr long english = 1;

NS::TextField captionLabel(const NS::Color& color = NS::Color::labelColor()) {
    auto label = NS::TextField::labelWithString("");
    label.setTextColor(color);
    return label;
}

NS::TextField hintLabel() {
    auto label = NS::TextField::wrappingLabelWithString("");
    label.setTextColor(NS::Color::secondaryLabelColor());
    label.setFont(NS::Font::systemFontOfSize(NS::Font::smallSystemFontSize()));
    label.setPreferredMaxLayoutWidth(300);
    return label;
}

NS::DatePicker timePicker() {
    auto picker = NS::DatePicker::initWithFrame({});
    picker.setDatePickerStyle(NS::DatePickerStyle::TextFieldAndStepper);
    picker.setDatePickerElements(NS::DatePickerElementFlags::HourMinute);
    return picker;
}

NS::PopUpButton popupOfLanguages() {
    auto popup = NS::PopUpButton::initWithFrame({}, /*pullsDown=*/false);
    popup.addItemsWithTitles({L10n::label(Language::ptBR), L10n::label(Language::en)});
    return popup;
}

// A hint spans both columns. Gives its row.
NS::GridRow spreadHint(const NS::GridView& grid, const NS::TextField& hint) {
    auto cell = grid.cellForView(hint);
    auto row = cell.row();
    row.mergeCellsInRange(0, 2);
    cell.setXPlacement(NS::GridCellPlacement::Leading);
    return row;
}

NS::View containerOf(NS::GridView grid) {
    auto container = NS::View::initWithFrame({});
    grid.setTranslatesAutoresizingMaskIntoConstraints(false);
    container.addSubview(grid);
    NS::LayoutConstraint::activateConstraints({
        grid.topAnchor().constraintEqualToAnchor(container.topAnchor(), margin),
        grid.bottomAnchor().constraintEqualToAnchor(container.bottomAnchor(), -margin),
        grid.leadingAnchor().constraintGreaterThanOrEqualToAnchor(container.leadingAnchor(), margin),
        grid.trailingAnchor().constraintLessThanOrEqualToAnchor(container.trailingAnchor(), -margin),
        grid.centerXAnchor().constraintEqualToAnchor(container.centerXAnchor()),
    });
    return container;
}

NS::ControlStateValue stateOf(bool on) {
    return on ? NS::ControlStateValue::On : NS::ControlStateValue::Off;
}

bool isForced(const char* key) {
    return Prefs::d().objectIsForcedForKey(key);
}

bool isOn(const NS::Switch& control) {
    return control.state() == NS::ControlStateValue::On;
}

} // namespace

std::shared_ptr<SettingsWindowController>
SettingsWindowController::create(std::shared_ptr<ScheduleEngine> scheduleEngine) {
    std::shared_ptr<SettingsWindowController> controller(new SettingsWindowController(std::move(scheduleEngine)));
    controller->observe();
    return controller;
}

SettingsWindowController::SettingsWindowController(std::shared_ptr<ScheduleEngine> scheduleEngine)
    : scheduleEngine_(std::move(scheduleEngine)) {}

void SettingsWindowController::observe() {
    NS::NotificationCenter::defaultCenter().addObserverForName(
        L10n::languageDidChange(), weakly(weak_from_this(), &SettingsWindowController::relabel));
}

void SettingsWindowController::show() {
    if (!window_) {
        buildWindow();
    }
    syncFromState();
    window_.center();
    NS::Application::sharedApplication().activateIgnoringOtherApps(true);
    window_.makeKeyAndOrderFront();
    window_.orderFrontRegardless(); // from macOS 14 on, to activate is a wish
}

void SettingsWindowController::buildWindow() {
    auto window = NS::Window::initWithContentRect({{0, 0}, {360, 240}},
                                                  NS::WindowStyleMask::Titled | NS::WindowStyleMask::Closable,
                                                  NS::BackingStoreType::Buffered, /*defer=*/false);
    window.setReleasedWhenClosed(false);

    makeControls();
    nameControls();
    const auto container = containerOf(makeGrid());
    window.setContentView(container);
    window_ = window;

    relabel();
    window_.setContentSize(container.fittingSize());
}

// Without texts, which `relabel` sets.
void SettingsWindowController::makeControls() {
    using Self = SettingsWindowController;
    loginLabel_ = captionLabel();
    loginSwitch_ = connected(NS::Switch::initWithFrame({}), &Self::loginChanged);
    loginHint_ = hintLabel();
    scheduleLabel_ = captionLabel();
    scheduleSwitch_ = connected(NS::Switch::initWithFrame({}), &Self::scheduleChanged);
    onLabel_ = captionLabel(NS::Color::secondaryLabelColor());
    offLabel_ = captionLabel(NS::Color::secondaryLabelColor());
    onPicker_ = connected(timePicker(), &Self::timesChanged);
    offPicker_ = connected(timePicker(), &Self::timesChanged);
    updateLabel_ = captionLabel();
    updateSwitch_ = connected(NS::Switch::initWithFrame({}), &Self::autoUpdateChanged);
    updateHint_ = hintLabel();
    languageLabel_ = captionLabel();
    languagePopup_ = connected(popupOfLanguages(), &Self::languageChanged);
}

// `control`, with a method of this object as its action.
template <class Control>
Control SettingsWindowController::connected(Control control, void (SettingsWindowController::*action)()) {
    control.setAction(weakly(weak_from_this(), action));
    return control;
}

NS::GridView SettingsWindowController::makeGrid() {
    const auto empty = NS::GridCell::emptyContentView();
    auto grid = NS::GridView::gridViewWithViews({
        {loginLabel_, loginSwitch_},
        {loginHint_, empty},
        {scheduleLabel_, scheduleSwitch_},
        {onLabel_, onPicker_},
        {offLabel_, offPicker_},
        {updateLabel_, updateSwitch_},
        {updateHint_, empty},
        {languageLabel_, languagePopup_},
    });
    grid.setRowSpacing(12);
    grid.setColumnSpacing(16);
    grid.columnAtIndex(0).setXPlacement(NS::GridCellPlacement::Trailing);
    grid.columnAtIndex(1).setXPlacement(NS::GridCellPlacement::Leading);
    grid.setRowAlignment(NS::GridRowAlignment::FirstBaseline);
    spreadHint(grid, updateHint_);
    loginHintRow_ = spreadHint(grid, loginHint_);
    loginHintRow_.setHidden(true);
    return grid;
}

void SettingsWindowController::nameControls() {
    loginSwitch_.setAccessibilityTitleUIElement(loginLabel_);
    scheduleSwitch_.setAccessibilityTitleUIElement(scheduleLabel_);
    onPicker_.setAccessibilityTitleUIElement(onLabel_);
    offPicker_.setAccessibilityTitleUIElement(offLabel_);
    updateSwitch_.setAccessibilityTitleUIElement(updateLabel_);
    languagePopup_.setAccessibilityTitleUIElement(languageLabel_);
}

// The window keeps its size until the hint next comes or goes.
void SettingsWindowController::relabel() {
    if (!window_) { // it will be built in the language of that day
        return;
    }
    loginLabel_.setStringValue(L10n::t("settings.launchAtLogin"));
    loginHint_.setStringValue(L10n::t("settings.loginHint"));
    scheduleLabel_.setStringValue(L10n::t("settings.schedule"));
    onLabel_.setStringValue(L10n::t("settings.scheduleOn"));
    offLabel_.setStringValue(L10n::t("settings.scheduleOff"));
    updateLabel_.setStringValue(L10n::t("settings.autoUpdate"));
    updateHint_.setStringValue(L10n::t("settings.autoUpdateHint"));
    languageLabel_.setStringValue(L10n::t("settings.language"));
    window_.setTitle(L10n::t("settings.title"));
}

void SettingsWindowController::syncFromState() {
    setHintVisible(false);
    loginSwitch_.setState(stateOf(isForced(Prefs::launchAtLogin)
                                      ? Prefs::d().boolForKey(Prefs::launchAtLogin)
                                      : NS::AppService::mainAppService().status() == NS::AppServiceStatus::Enabled));
    scheduleSwitch_.setState(stateOf(Prefs::d().boolForKey(Prefs::scheduleEnabled)));
    onPicker_.setDateValue(dateFromMinutes(Prefs::d().integerForKey(Prefs::scheduleOnMinutes)));
    offPicker_.setDateValue(dateFromMinutes(Prefs::d().integerForKey(Prefs::scheduleOffMinutes)));
    updateSwitch_.setState(stateOf(Prefs::d().boolForKey(Prefs::autoUpdate)));
    languagePopup_.selectItemAtIndex(L10n::current() == Language::ptBR ? portuguese : english);
    loginSwitch_.setEnabled(!isForced(Prefs::launchAtLogin));
    scheduleSwitch_.setEnabled(!isForced(Prefs::scheduleEnabled));
    updateSwitch_.setEnabled(!isForced(Prefs::autoUpdate));
    languagePopup_.setEnabled(!isForced(Prefs::appLanguage));
    updateScheduleControlsEnabled();
}

void SettingsWindowController::updateScheduleControlsEnabled() {
    const bool enabled = isOn(scheduleSwitch_);
    onPicker_.setEnabled(enabled && !isForced(Prefs::scheduleOnMinutes));
    offPicker_.setEnabled(enabled && !isForced(Prefs::scheduleOffMinutes));
    const auto color = enabled ? NS::Color::labelColor() : NS::Color::tertiaryLabelColor();
    onLabel_.setTextColor(color);
    offLabel_.setTextColor(color);
}

void SettingsWindowController::setHintVisible(bool visible) {
    if (loginHintRow_) {
        if (loginHintRow_.isHidden() == !visible) {
            return;
        }
        loginHintRow_.setHidden(!visible);
    }
    window_.setContentSize(window_.contentView().fittingSize());
}

// That time of day today. Impossible minutes give the present.
NS::Date SettingsWindowController::dateFromMinutes(std::int64_t minutes) {
    const auto now = NS::Date::date();
    const auto time = TimeOfDay::componentsOfMinutes(minutes);
    return NS::Calendar::currentCalendar().dateBySettingHour(*time.hour, *time.minute, 0, now).value_or(now);
}

void SettingsWindowController::requireWindow() const {
    if (!window_) {
        fatalError("a control of the Settings window acts before the window was shown");
    }
}

void SettingsWindowController::loginChanged() {
    requireWindow();
    if (isForced(Prefs::launchAtLogin)) { // since the window was opened
        syncFromState();
        return;
    }
    const bool wanted = isOn(loginSwitch_);
    const bool refused = !LoginItem::set(wanted) && wanted;
    if (refused) {
        loginSwitch_.setState(NS::ControlStateValue::Off);
    }
    setHintVisible(refused);
}

void SettingsWindowController::scheduleChanged() {
    requireWindow();
    Prefs::d().setBool(isOn(scheduleSwitch_), Prefs::scheduleEnabled);
    updateScheduleControlsEnabled();
    scheduleEngine_->manualOverride = false;
    scheduleEngine_->reconcile();
}

// Of either picker, and both are stored.
void SettingsWindowController::timesChanged() {
    requireWindow();
    Prefs::d().setInteger(TimeOfDay::minutesOfDate(onPicker_.dateValue()), Prefs::scheduleOnMinutes);
    Prefs::d().setInteger(TimeOfDay::minutesOfDate(offPicker_.dateValue()), Prefs::scheduleOffMinutes);
    scheduleEngine_->manualOverride = false;
    scheduleEngine_->reconcile();
}

// The check blocks, so it is not done here.
void SettingsWindowController::autoUpdateChanged() {
    requireWindow();
    Prefs::d().setBool(isOn(updateSwitch_), Prefs::autoUpdate);
    if (Prefs::d().boolForKey(Prefs::autoUpdate)) {
        NS::DispatchQueue::global().async([] { Updater::checkAndInstall(/*userInitiated=*/false); });
    }
}

// Storing the language announces it, which comes back here as `relabel`.
void SettingsWindowController::languageChanged() {
    requireWindow();
    L10n::setCurrent(languagePopup_.indexOfSelectedItem() == portuguese ? Language::ptBR : Language::en);
}
