#include "LoginItem.h"

#include "Platform/ServiceManagement/AppService.h"
#include "Prefs.h"

#include <QByteArray>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace {

std::filesystem::path autostart() {
    return std::filesystem::path(qgetenv("XDG_CONFIG_HOME").toStdString()) / "autostart";
}

/// A file where the folder should be: nothing can be registered.
void refuseRegistration() {
    std::filesystem::create_directories(autostart().parent_path());
    std::ofstream(autostart()) << "in the way";
}

NS::AppServiceStatus status() {
    return NS::AppService::mainAppService().status();
}

TEST(LoginItem, EnablingRegistersAndRecordsIt) {
    Prefs::d().setBool(false, Prefs::launchAtLogin);
    EXPECT_TRUE(LoginItem::set(true));
    EXPECT_EQ(status(), NS::AppServiceStatus::Enabled);
    EXPECT_TRUE(Prefs::d().boolForKey("launchAtLogin"));
}

TEST(LoginItem, DisablingUnregistersAndRecordsIt) {
    LoginItem::set(true);
    EXPECT_TRUE(LoginItem::set(false));
    EXPECT_EQ(status(), NS::AppServiceStatus::NotRegistered);
    EXPECT_FALSE(Prefs::d().boolForKey("launchAtLogin"));
}

TEST(LoginItem, EnablingTwiceAsksTheSystemTwice) {
    EXPECT_TRUE(LoginItem::set(true));
    const auto entry = std::filesystem::directory_iterator(autostart())->path();
    std::ofstream(entry, std::ios::app) << "# still enabled\n";
    ASSERT_EQ(status(), NS::AppServiceStatus::Enabled);
    EXPECT_TRUE(LoginItem::set(true));
    std::ifstream stream(entry);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(text.find("still"), text.npos) << "written anew";
    EXPECT_EQ(status(), NS::AppServiceStatus::Enabled);
}

TEST(LoginItem, ARefusedRegistrationIsLoggedAndLeavesTheRecord) {
    Prefs::d().setBool(false, Prefs::launchAtLogin);
    refuseRegistration();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(LoginItem::set(true));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("LoginItem: register failed: /"), std::string::npos) << log;
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
    EXPECT_FALSE(Prefs::d().boolForKey("launchAtLogin"));
}

TEST(LoginItem, DisablingWhatIsNotRegisteredIsARefusalToo) {
    Prefs::d().setBool(true, Prefs::launchAtLogin);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(LoginItem::set(false));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("LoginItem: unregister failed: The service "),
              std::string::npos);
    EXPECT_TRUE(Prefs::d().boolForKey("launchAtLogin"));
}

TEST(LoginItem, SuccessLogsNothing) {
    testing::internal::CaptureStderr();
    LoginItem::set(true);
    LoginItem::set(false);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
