#include "Platform/AppKit/Application.h"

#include <QApplication>
#include <QEvent>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

/// A fresh account in English with no display: each test runs in a process of its own.
class Account : public testing::Environment {
public:
    Account() {
        const QByteArray home = home_.path().toLocal8Bit();
        qputenv("HOME", home);
        qputenv("XDG_CONFIG_HOME", home + "/config");
        qputenv("XDG_CONFIG_DIRS", home + "/system");
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("LANG", "en_GB.UTF-8");
        qputenv("KORVEX_UPDATE_BASE", "http://127.0.0.1:1"); // nobody answers: tests talk to nobody else's server
        for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "DBUS_SESSION_BUS_ADDRESS"}) {
            qunsetenv(name);
        }
    }

    void SetUp() override { NS::Application::sharedApplication(); }
    void TearDown() override { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

private:
    QTemporaryDir home_;
};

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new Account);
    return RUN_ALL_TESTS();
}
