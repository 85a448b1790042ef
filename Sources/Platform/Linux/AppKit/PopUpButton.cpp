#include "Platform/AppKit/PopUpButton.h"

#include "Platform/Linux/AppKit/EditField.h"

#include <QComboBox>
#include <QStyleOptionComboBox>

namespace Linux {

namespace {

class PopUp final : public QComboBox {
public:
    int textBaseline() const {
        QStyleOptionComboBox option;
        initStyleOption(&option);
        return baselineOf(*this, QStyle::CC_ComboBox, option, QStyle::SC_ComboBoxEditField);
    }
};

struct PopUpButtonNative : ViewNative {
    explicit PopUpButtonNative(PopUp* box) : ViewNative(box), box(box) {
        QObject::connect(box, &QComboBox::activated, box, [this] { sendAction(); });
    }

    int firstBaseline() const override { return box->textBaseline(); }

    QPointer<PopUp> box;
};

} // namespace

template <>
struct NativeOf<PopUpButton> : std::type_identity<PopUpButtonNative> {};

} // namespace Linux

namespace NS {

using namespace Linux;

PopUpButton PopUpButton::initWithFrame(const Rect&, bool) {
    return handle<PopUpButton>(std::make_shared<PopUpButtonNative>(new PopUp));
}

void PopUpButton::addItemsWithTitles(const std::vector<std::string>& titles) {
    for (const auto& title : titles) {
        native(*this).box->addItem(QString::fromStdString(title));
    }
}

std::vector<std::string> PopUpButton::itemTitles() const {
    const auto& box = *native(*this).box;
    std::vector<std::string> titles;
    for (int index = 0; index < box.count(); ++index) {
        titles.push_back(box.itemText(index).toStdString());
    }
    return titles;
}

void PopUpButton::selectItemAtIndex(long index) {
    native(*this).box->setCurrentIndex(static_cast<int>(index));
}

long PopUpButton::indexOfSelectedItem() const {
    return native(*this).box->currentIndex();
}

} // namespace NS
