#include "Platform/AppKit/PopUpButton.h"

#include "Platform/Linux/AppKit/ViewNative.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <gtest/gtest.h>

namespace {

struct PopUpButtonTest : testing::Test {
    PopUpButtonTest() {
        popup.setAction([this] { ++actions; });
        popup.addItemsWithTitles({"Português (Brasil)", "English"});
    }

    void press(Qt::Key key) const {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(box, &event);
    }

    int actions = 0;
    NS::PopUpButton popup = NS::PopUpButton::initWithFrame({}, /*pullsDown=*/false);
    QComboBox* box = dynamic_cast<QComboBox*>(Linux::object<Linux::ViewNative>(popup).widget.data());
};

TEST_F(PopUpButtonTest, HasItsItemsInOrderAndTheFirstSelected) {
    EXPECT_EQ(popup.itemTitles(), (std::vector<std::string>{"Português (Brasil)", "English"}));
    EXPECT_EQ(popup.indexOfSelectedItem(), 0);
}

TEST_F(PopUpButtonTest, SelectingByProgramDoesNotAct) {
    popup.selectItemAtIndex(1);
    EXPECT_EQ(popup.indexOfSelectedItem(), 1);
    EXPECT_EQ(box->currentText(), "English");
    EXPECT_EQ(actions, 0);
}

TEST_F(PopUpButtonTest, ChoosingByKeyboardActs) {
    press(Qt::Key_Down);
    EXPECT_EQ(popup.indexOfSelectedItem(), 1);
    EXPECT_EQ(actions, 1);
}

TEST_F(PopUpButtonTest, ADisabledOneTakesNoKey) {
    popup.setEnabled(false);
    press(Qt::Key_Down);
    EXPECT_EQ(popup.indexOfSelectedItem(), 0);
    EXPECT_EQ(actions, 0);
}

} // namespace
