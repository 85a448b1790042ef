#include "Platform/AppKit/Application.h"
#include "Prefs.h"
#include "Seam/Bar.h"
#include "Seam/Power.h"

#include <QTimer>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

int mainOfVantorel(); // the program's own, compiled under this name

namespace {

/// Clicks on the cup, once it is there, and quits.
void clickAndQuit() {
    auto& application = NS::Application::sharedApplication();
    if (Seam::statusItems().empty()) {
        QTimer::singleShot(1, clickAndQuit);
        return;
    }
    EXPECT_EQ(application.activationPolicy(), NS::ApplicationActivationPolicy::Accessory);
    Seam::click(Seam::statusItems().front(), {NS::EventType::LeftMouseUp});
    EXPECT_EQ(Seam::power().held.size(), 1U);
    application.terminate();
}

TEST(Main, RunsAsAnAccessoryWithADelegateUntilItIsQuit) {
    ASSERT_EQ(NS::Application::sharedApplication().activationPolicy(), NS::ApplicationActivationPolicy::Regular);
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    QTimer::singleShot(0, clickAndQuit);
    EXPECT_EQ(mainOfVantorel(), 0);
    EXPECT_TRUE(Seam::power().held.empty()) << "released by the delegate";
    EXPECT_EQ(Seam::statusItems().size(), 1U) << "the delegate is kept to the end of the process";
}

TEST(Main, RemovesWhatUpdatesLeftLongAgo) {
    namespace fs = std::filesystem;
    const auto folder = fs::path(std::getenv("HOME")) / ".cache" / fs::read_symlink("/proc/self/exe").filename();
    fs::create_directories(folder);
    std::ofstream(folder / "download-old").put('x');
    fs::last_write_time(folder / "download-old", fs::file_time_type::clock::now() - std::chrono::hours(25));
    qunsetenv("XDG_CACHE_HOME");
    Prefs::d().setObject(NS::PropertyListValue("en"), Prefs::appLanguage);
    QTimer::singleShot(0, clickAndQuit);
    mainOfVantorel();
    EXPECT_FALSE(fs::exists(folder / "download-old"));
}

} // namespace
