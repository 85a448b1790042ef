#pragma once

#include "L10n.h"
#include "Platform/AppKit/Button.h"
#include "Platform/AppKit/StackView.h"
#include "Platform/AppKit/Window.h"

#include <functional>
#include <memory>
#include <string>

/// The first run's window: greets the user and asks for the language. Main thread only.
class WelcomeWindowController : public std::enable_shared_from_this<WelcomeWindowController> {
public:
    /// `onComplete` runs once the user has continued. Nothing is built before `show`.
    static std::shared_ptr<WelcomeWindowController> create(std::function<void()> onComplete);

    /// Builds the window and brings it to the front. Call once.
    void show();

    /// The radio buttons' action. It does nothing: sharing it makes them one group.
    void radioChanged();
    /// Stores the chosen language, takes the window away and completes.
    void continuePressed();

private:
    explicit WelcomeWindowController(std::function<void()> onComplete);
    NS::StackView radioGroup(Language language);
    NS::Button continueButton(Language language);
    NS::StackView content(Language language);
    static std::string welcomeBilingual(const char* key, Language language);

    NS::Window window_;
    NS::Button ptRadio_;
    NS::Button enRadio_;
    std::function<void()> onComplete_;
};
