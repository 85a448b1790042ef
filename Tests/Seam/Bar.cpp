#include "Bar.h"

#include "Platform/Linux/AppKit/StatusItemNative.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

namespace Seam {

namespace {

std::function<void()> noteStatusItem = [] {};

class Presenter : public Linux::StatusItemPresenter {
public:
    explicit Presenter(Linux::StatusItemNative& item) : item(item) {
        noteStatusItem();
        item.behavior = NS::StatusItemBehavior::TerminationOnRemoval; // so that the program has to say what it wants
        all().push_back(this);
    }
    ~Presenter() override { std::erase(all(), this); }

    void imageChanged() override { ++imageChanges; }
    void toolTipChanged() override {}

    static std::vector<Presenter*>& all() {
        static std::vector<Presenter*> presenters;
        return presenters;
    }

    Linux::StatusItemNative& item;
    int imageChanges = 0;
};

} // namespace

void whenStatusItemIsMade(std::function<void()> note) {
    noteStatusItem = std::move(note);
}

std::vector<NS::StatusItem> statusItems() {
    std::vector<NS::StatusItem> items;
    for (const auto* presenter : Presenter::all()) {
        items.push_back(Linux::handle<NS::StatusItem>(presenter->item.shared_from_this()));
    }
    return items;
}

void click(const NS::StatusItem& item, const NS::Event& event) {
    Linux::sharedObject<Linux::StatusItemNative>(item)->mouseUp(event, {10, 10});
}

void whenMenuOpens(std::function<void(NS::StatusItem)> use) {
    QTimer::singleShot(0, qApp, [use = std::move(use)] {
        QWidget* menu = QApplication::activePopupWidget();
        if (menu == nullptr) { // not yet
            whenMenuOpens(use);
            return;
        }
        use(statusItems().front());
        if (QApplication::activePopupWidget() == menu) {
            menu->close();
        }
    });
}

int imageChanges(const NS::StatusItem& item) {
    const auto& native = Linux::object<Linux::StatusItemNative>(item);
    return static_cast<const Presenter&>(*native.presenter).imageChanges;
}

} // namespace Seam

namespace Linux {

std::unique_ptr<StatusItemPresenter> makeStatusItemPresenter(StatusItemNative& item) {
    return std::make_unique<Seam::Presenter>(item);
}

} // namespace Linux
