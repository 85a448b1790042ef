#include "Platform/AppKit/Application.h"
#include "Support/Runner.h"

#include <QApplication>
#include <QEvent>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <optional>

namespace {

/// A fresh account in English with no display.
class Account : public testing::Environment {
public:
    void SetUp() override {
        const QByteArray home = home_.emplace().path().toLocal8Bit();
        qputenv("HOME", home);
        qputenv("XDG_CONFIG_HOME", home + "/config");
        qputenv("XDG_CONFIG_DIRS", home + "/system");
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("LANG", "en_GB.UTF-8");
        qputenv("KORVEX_UPDATE_BASE", "http://127.0.0.1:1"); // nobody answers: tests talk to nobody else's server
        for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "DBUS_SESSION_BUS_ADDRESS", "http_proxy",
                                 "https_proxy", "all_proxy", "HTTPS_PROXY", "ALL_PROXY", "XDG_RUNTIME_DIR"}) {
            qunsetenv(name);
        }
        NS::Application::sharedApplication();
    }

    void TearDown() override { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

private:
    std::optional<QTemporaryDir> home_;
};

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new Account);
    return runEachTestInAProcess();
}
