#include "Platform/ServiceManagement/AppService.h"

#include "Platform/Linux/Foundation/BundleNative.h"
#include "Platform/Linux/ServiceManagement/AppServiceNative.h"

#include <QTemporaryDir>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

NS::Bundle bundleAround(const std::filesystem::path& executable) {
    return Linux::handle<NS::Bundle>(std::make_shared<Linux::BundleNative>(executable));
}

NS::AppService appServiceOf(const NS::Bundle& bundle) {
    return Linux::handle<NS::AppService>(std::make_shared<Linux::AppServiceNative>(bundle));
}

namespace fs = std::filesystem;
using Status = NS::AppServiceStatus;

class AppService : public testing::Test {
protected:
    AppService() { setenv("XDG_CONFIG_HOME", config().c_str(), 1); }
    ~AppService() override { setenv("XDG_CONFIG_HOME", before_.c_str(), 1); }

    fs::path folder() const { return fs::path(folder_.path().toStdString()); }
    fs::path config() const { return folder() / "config"; }
    fs::path entry() const { return config() / "autostart/org.example.x.desktop"; }

    NS::AppService service(const std::string& application = "X.app", const std::string& name = "Example") const {
        const auto contents = folder() / application / "Contents";
        fs::create_directories(contents / "MacOS");
        std::ofstream(contents / "Info.plist")
            << "<plist><dict><key>CFBundleIdentifier</key><string>org.example.x</string><key>CFBundleName</key><string>"
            << name << "</string></dict></plist>";
        return appServiceOf(bundleAround(contents / "MacOS/program"));
    }

    void writeEntry(const std::string& text) const {
        fs::create_directories(entry().parent_path());
        std::ofstream(entry()) << text;
    }

    std::string entryText() const {
        std::ifstream stream(entry());
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    QTemporaryDir folder_;
    std::string before_ = std::getenv("XDG_CONFIG_HOME");
};

TEST_F(AppService, IsNotRegisteredAtFirst) {
    EXPECT_EQ(service().status(), Status::NotRegistered);
    EXPECT_FALSE(fs::exists(config())) << "asking must make nothing";
}

TEST_F(AppService, RegisteringWritesAnAutostartEntry) {
    auto subject = service();
    EXPECT_FALSE(subject.registerAndReturnError());
    EXPECT_EQ(subject.status(), Status::Enabled);
    const auto program = folder().string() + "/X.app/Contents/MacOS/program";
    EXPECT_EQ(entryText(), "[Desktop Entry]\nType=Application\nName=Example\nIcon=org.example.x\nExec=\"" + program +
                               "\"\nTryExec=" + program + "\nX-GNOME-Autostart-enabled=true\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(entry().parent_path()), {}), 1) << "a side file is left";
}

TEST_F(AppService, ThePathIsQuotedAndEscapedTwice) {
    ASSERT_FALSE(service("a \"b\" $c `d` \\e 100% é.app").registerAndReturnError());
    EXPECT_NE(entryText().find("\nExec=\"" + folder().string() +
                               R"(/a \\"b\\" \\$c \\`d\\` \\\\e 100%% é.app/Contents/MacOS/program")" + "\n"),
              std::string::npos)
        << entryText();
}

TEST_F(AppService, LineBreaksStayInsideTheirValues) {
    ASSERT_FALSE(service("a\nHidden=true\t\r.app", "Two\nHidden=true\\").registerAndReturnError());
    EXPECT_NE(entryText().find("\nTryExec=" + folder().string() + "/a\\nHidden=true\\t\\r.app/"), std::string::npos);
    EXPECT_NE(entryText().find("\nName=Two\\nHidden=true\\\\\n"), std::string::npos) << entryText();
    EXPECT_NE(entryText().find("/a\\nHidden=true\\t\\r.app/"), std::string::npos) << entryText();
    EXPECT_EQ(service().status(), Status::Enabled);
}

TEST_F(AppService, RegisteringTwiceRewritesAndSucceeds) {
    writeEntry("[Desktop Entry]\nHidden=true\n");
    auto subject = service();
    EXPECT_FALSE(subject.registerAndReturnError());
    const auto text = entryText();
    EXPECT_FALSE(subject.registerAndReturnError());
    EXPECT_EQ(entryText(), text);
    EXPECT_EQ(subject.status(), Status::Enabled);
}

TEST_F(AppService, UnregisteringRemovesTheEntry) {
    auto subject = service();
    ASSERT_FALSE(subject.registerAndReturnError());
    EXPECT_FALSE(subject.unregisterAndReturnError());
    EXPECT_FALSE(fs::exists(entry()));
    EXPECT_EQ(subject.status(), Status::NotRegistered);
}

TEST_F(AppService, UnregisteringWhatIsNotRegisteredIsAnError) {
    const auto error = service().unregisterAndReturnError();
    ASSERT_TRUE(error);
    EXPECT_NE(error->localizedDescription.find("not registered"), std::string::npos) << error->localizedDescription;
}

TEST_F(AppService, TheStatusIsWhatTheEntrySaysNow) {
    const auto subject = service();
    for (const char* text :
         {"[Desktop Entry]\n", "[Desktop Entry]", "# comment\n\n[Desktop Entry]\r\nHidden=false\r\n",
          "[Desktop Entry]\nName=Hidden=true\n", "[Desktop Entry]\n#Hidden=true\n", "[Desktop Entry]\nNotHidden=true\n",
          "[Other]\nHidden=true\n[Desktop Entry]\n", "[Desktop Entry]\n[Desktop Action a]\nHidden=true\n"}) {
        writeEntry(text);
        EXPECT_EQ(subject.status(), Status::Enabled) << text;
    }
    for (const char* text : {"", "\n", "nonsense", "[Desktop Entr", "[Other]\nExec=x\n",
                             "[Desktop Entry]\nHidden=true\n", "[Desktop Entry]\nExec=x\n Hidden = true \n",
                             "[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n", "[Desktop Entry]\nHidden=true"}) {
        writeEntry(text);
        EXPECT_EQ(subject.status(), Status::NotRegistered) << text;
    }
    fs::remove(entry());
    fs::create_directory(entry());
    EXPECT_EQ(subject.status(), Status::NotRegistered);
}

TEST_F(AppService, ARefusalNamesTheFileAndTheReason) {
    fs::create_directories(config());
    std::ofstream(config() / "autostart") << "in the way";
    auto subject = service();
    const auto error = subject.registerAndReturnError();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription, entry().string() + ": Not a directory");
    EXPECT_EQ(subject.status(), Status::NotRegistered);
    EXPECT_TRUE(subject.unregisterAndReturnError());
}

TEST_F(AppService, AnEntryThatCannotBeReplacedStaysAsItIs) {
    fs::create_directories(entry() / "folder in its place");
    auto subject = service();
    EXPECT_TRUE(subject.registerAndReturnError());
    EXPECT_EQ(std::distance(fs::directory_iterator(entry().parent_path()), {}), 1) << "a side file is left";
    const auto error = subject.unregisterAndReturnError();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription, entry().string() + ": Is a directory");
}

TEST_F(AppService, WithoutAnIdentifierTheExecutableGivesTheName) {
    auto subject = appServiceOf(bundleAround("/opt/tools/program"));
    ASSERT_FALSE(subject.registerAndReturnError());
    EXPECT_TRUE(fs::exists(config() / "autostart/program.desktop"));
    EXPECT_EQ(subject.status(), Status::Enabled);
    EXPECT_EQ(service().status(), Status::NotRegistered);
}

TEST_F(AppService, TheMainOneServesTheMainBundle) {
    auto subject = NS::AppService::mainAppService();
    ASSERT_FALSE(subject.registerAndReturnError());
    const auto executable = fs::read_symlink("/proc/self/exe");
    EXPECT_TRUE(fs::exists(config() / "autostart" / (executable.filename().string() + ".desktop")));
}

} // namespace
