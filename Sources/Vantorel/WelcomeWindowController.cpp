#include "WelcomeWindowController.h"

#include "FatalError.h"
#include "Platform/AppKit/Application.h"
#include "Platform/AppKit/ImageView.h"
#include "Platform/AppKit/TextField.h"
#include "Prefs.h"
#include "StatusIcons.h"
#include "Weakly.h"

#include <utility>

namespace {

constexpr double iconSide = 72;

NS::ImageView cupView() {
    auto view = NS::ImageView::imageViewWithImage(
        NS::Image::imageWithSize({iconSide, iconSide}, /*flipped=*/false, [](const NS::Rect& rect) {
            StatusIcons::drawCup(rect, /*filled=*/true, StatusIcons::coffee());
            return true;
        }));
    view.setTranslatesAutoresizingMaskIntoConstraints(false);
    return view;
}

NS::TextField titleLabel(const std::string& text) {
    auto label = NS::TextField::labelWithString(text);
    label.setFont(NS::Font::systemFontOfSize(20, NS::FontWeight::Semibold));
    label.setAlignment(NS::TextAlignment::Center);
    return label;
}

NS::TextField hintLabel(const std::string& text) {
    auto label = NS::TextField::wrappingLabelWithString(text);
    label.setTextColor(NS::Color::secondaryLabelColor());
    label.setAlignment(NS::TextAlignment::Center);
    label.setPreferredMaxLayoutWidth(250);
    return label;
}

NS::TextField subtitleLabel(const std::string& text) {
    auto label = NS::TextField::labelWithString(text);
    label.setTextColor(NS::Color::secondaryLabelColor());
    label.setAlignment(NS::TextAlignment::Center);
    return label;
}

} // namespace

std::shared_ptr<WelcomeWindowController> WelcomeWindowController::create(std::function<void()> onComplete) {
    return std::shared_ptr<WelcomeWindowController>(new WelcomeWindowController(std::move(onComplete)));
}

WelcomeWindowController::WelcomeWindowController(std::function<void()> onComplete)
    : onComplete_(std::move(onComplete)) {}

void WelcomeWindowController::show() {
    auto window = NS::Window::initWithContentRect({{0, 0}, {340, 320}}, NS::WindowStyleMask::Titled,
                                                  NS::BackingStoreType::Buffered, /*defer=*/false);
    window.setReleasedWhenClosed(false);
    window.setTitleVisibility(NS::WindowTitleVisibility::Hidden);
    window.setTitlebarAppearsTransparent(true);

    const auto stack = content(L10n::detectSystemLanguage());
    window.setContentView(stack);
    window.setContentSize(stack.fittingSize());
    window.center();
    window_ = window;

    NS::Application::sharedApplication().activateIgnoringOtherApps(true);
    window_.makeKeyAndOrderFront();
    window_.orderFrontRegardless(); // from macOS 14 on, to activate is a wish
}

NS::StackView WelcomeWindowController::content(Language language) {
    auto icon = cupView();
    const auto title = titleLabel(welcomeBilingual("welcome.title", language));
    const auto hint = hintLabel(welcomeBilingual("welcome.hint", language));
    const auto subtitle = subtitleLabel(welcomeBilingual("welcome.subtitle", language));
    const auto radios = radioGroup(language);
    const auto button = continueButton(language);

    auto stack = NS::StackView::stackViewWithViews({icon, title, hint, subtitle, radios, button});
    stack.setOrientation(NS::UserInterfaceLayoutOrientation::Vertical);
    stack.setAlignment(NS::LayoutAttribute::CenterX);
    stack.setSpacing(14);
    stack.setCustomSpacing(8, title);
    stack.setCustomSpacing(26, hint);
    stack.setCustomSpacing(16, subtitle);
    stack.setCustomSpacing(24, radios);
    stack.setEdgeInsets({.top = 28, .left = 32, .bottom = 28, .right = 32});
    stack.setTranslatesAutoresizingMaskIntoConstraints(false);

    NS::LayoutConstraint::activateConstraints({
        icon.widthAnchor().constraintEqualToConstant(iconSide),
        icon.heightAnchor().constraintEqualToConstant(iconSide),
    });
    return stack;
}

NS::StackView WelcomeWindowController::radioGroup(Language language) {
    const auto action = weakly(weak_from_this(), &WelcomeWindowController::radioChanged);
    ptRadio_ = NS::Button::radioButtonWithTitle(L10n::label(Language::ptBR), action);
    enRadio_ = NS::Button::radioButtonWithTitle(L10n::label(Language::en), action);
    (language == Language::ptBR ? ptRadio_ : enRadio_).setState(NS::ControlStateValue::On);

    auto stack = NS::StackView::stackViewWithViews({ptRadio_, enRadio_});
    stack.setOrientation(NS::UserInterfaceLayoutOrientation::Vertical);
    stack.setAlignment(NS::LayoutAttribute::Leading);
    stack.setSpacing(10);
    return stack;
}

NS::Button WelcomeWindowController::continueButton(Language language) {
    auto button = NS::Button::buttonWithTitle(welcomeBilingual("welcome.continue", language),
                                              weakly(weak_from_this(), &WelcomeWindowController::continuePressed));
    button.setBezelStyle(NS::BezelStyle::Rounded);
    button.setKeyEquivalent("\r");
    return button;
}

// A text is always in the stored language, so the language is stored for the length of one look-up. Restoring its
// absence matters: a stored language says that the first run is completed.
std::string WelcomeWindowController::welcomeBilingual(const char* key, Language language) {
    const auto stored = Prefs::d().stringForKey(Prefs::appLanguage);
    Prefs::d().setObject(NS::PropertyListValue(L10n::rawValue(language)), Prefs::appLanguage);
    std::string text = L10n::t(key);
    Prefs::d().setObject(stored, Prefs::appLanguage);
    return text;
}

void WelcomeWindowController::radioChanged() {}

void WelcomeWindowController::continuePressed() {
    if (!ptRadio_) {
        fatalError("the Welcome window continues before it was shown");
    }
    L10n::setCurrent(ptRadio_.state() == NS::ControlStateValue::On ? Language::ptBR : Language::en);
    if (window_) {
        window_.orderOut();
    }
    window_ = NS::Window();
    onComplete_();
}
