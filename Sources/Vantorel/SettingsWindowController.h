#pragma once

#include "Platform/AppKit/DatePicker.h"
#include "Platform/AppKit/GridView.h"
#include "Platform/AppKit/PopUpButton.h"
#include "Platform/AppKit/Switch.h"
#include "Platform/AppKit/TextField.h"
#include "Platform/AppKit/Window.h"
#include "Platform/Foundation/Date.h"
#include "ScheduleEngine.h"

#include <cstdint>
#include <memory>

/// The Settings window: launch at login, the schedule and its times, automatic updates, the language. It is built when
/// it is first shown, and kept. Main thread only.
class SettingsWindowController : public std::enable_shared_from_this<SettingsWindowController> {
public:
    /// Follows the language from here on.
    static std::shared_ptr<SettingsWindowController> create(std::shared_ptr<ScheduleEngine> scheduleEngine);

    /// Brings the window to the front, in the middle of the screen, showing how things are now.
    void show();

    /// The controls' actions.
    void loginChanged();
    void scheduleChanged();
    void timesChanged();
    void autoUpdateChanged();
    void languageChanged();

private:
    explicit SettingsWindowController(std::shared_ptr<ScheduleEngine> scheduleEngine);
    void observe();
    void buildWindow();
    void makeControls();
    template <class Control>
    Control connected(Control control, void (SettingsWindowController::*action)());
    void nameControls();
    NS::GridView makeGrid();
    void relabel();
    void syncFromState();
    void setHintVisible(bool visible);
    void updateScheduleControlsEnabled();
    void requireWindow() const;
    static NS::Date dateFromMinutes(std::int64_t minutes);

    NS::Window window_;
    std::shared_ptr<ScheduleEngine> scheduleEngine_;
    NS::Switch loginSwitch_;
    NS::TextField loginLabel_;
    NS::TextField loginHint_;
    NS::GridRow loginHintRow_;
    NS::Switch scheduleSwitch_;
    NS::TextField scheduleLabel_;
    NS::TextField onLabel_;
    NS::TextField offLabel_;
    NS::DatePicker onPicker_;
    NS::DatePicker offPicker_;
    NS::TextField updateLabel_;
    NS::Switch updateSwitch_;
    NS::TextField updateHint_;
    NS::TextField languageLabel_;
    NS::PopUpButton languagePopup_;
};
