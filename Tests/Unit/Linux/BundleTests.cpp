#include "Platform/Foundation/Bundle.h"

#include "Platform/Linux/Foundation/BundleNative.h"

#include <QTemporaryDir>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace {

NS::Bundle bundleAround(const std::filesystem::path& executable) {
    return Linux::handle<NS::Bundle>(std::make_shared<Linux::BundleNative>(executable));
}

namespace fs = std::filesystem;

class Bundle : public testing::Test {
protected:
    fs::path folder() const { return fs::path(folder_.path().toStdString()); }

    /// X.app with this Info.plist.
    NS::Bundle bundleWithInfo(const std::string& info) const {
        const auto contents = folder() / "X.app/Contents";
        fs::create_directories(contents / "MacOS");
        std::ofstream(contents / "Info.plist") << info;
        return bundleAround(contents / "MacOS/program");
    }

    static const Linux::BundleNative& native(const NS::Bundle& bundle) {
        return Linux::object<Linux::BundleNative>(bundle);
    }

private:
    QTemporaryDir folder_;
};

TEST_F(Bundle, AnExecutableInAnApplicationBelongsToIt) {
    const auto bundle = bundleWithInfo(R"(<plist version="1.0"><dict>
        <key>CFBundleIdentifier</key><string>org.example.x</string>
        <key>CFBundleName</key><string>Example</string>
        <key>CFBundleShortVersionString</key><string>1.2.3</string>
        <key>LSUIElement</key><true/>
        </dict></plist>)");
    EXPECT_EQ(bundle.bundleURL().path(), (folder() / "X.app").string());
    EXPECT_EQ(bundle.bundleIdentifier(), "org.example.x");
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleShortVersionString"), NS::PropertyListValue("1.2.3"));
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("LSUIElement"), NS::PropertyListValue(true));
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("no such key"), std::nullopt);
    EXPECT_EQ(native(bundle).displayName(), "Example");
    EXPECT_EQ(native(bundle).fileName(), "org.example.x");
}

TEST_F(Bundle, AnUpdateOnTheDiskChangesNothing) {
    const auto bundle =
        bundleWithInfo("<plist><dict><key>CFBundleIdentifier</key><string>org.example.x</string></dict></plist>");
    fs::rename(folder() / "X.app", folder() / "old.app");
    EXPECT_EQ(bundle.bundleURL().path(), (folder() / "X.app").string());
    EXPECT_EQ(bundle.bundleIdentifier(), "org.example.x");
}

TEST_F(Bundle, ADamagedListReadsAsEmpty) {
    for (const char* info : {"", "nonsense", "<plist><array/></plist>", "<plist><dict><key>CFBundleIdentifier"}) {
        const auto bundle = bundleWithInfo(info);
        EXPECT_EQ(bundle.bundleURL().path(), (folder() / "X.app").string()) << info;
        EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt) << info;
        EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleIdentifier"), std::nullopt) << info;
    }
}

TEST_F(Bundle, AMissingListReadsAsEmpty) {
    const auto bundle = bundleAround("/nowhere/X.app/Contents/MacOS/program");
    EXPECT_EQ(bundle.bundleURL().path(), "/nowhere/X.app");
    EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt);
    EXPECT_EQ(native(bundle).displayName(), "program");
    EXPECT_EQ(native(bundle).fileName(), "program");
}

TEST_F(Bundle, AnIdentifierThatIsNoTextOrEmptyIsNone) {
    for (const char* value : {"<integer>1</integer>", "<string></string>"}) {
        const auto bundle =
            bundleWithInfo(std::string("<plist><dict><key>CFBundleIdentifier</key>") + value + "</dict></plist>");
        EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt) << value;
        EXPECT_EQ(native(bundle).fileName(), "program") << value;
    }
}

TEST_F(Bundle, ElsewhereTheBundleIsTheExecutablesFolder) {
    bundleWithInfo("<plist><dict><key>CFBundleIdentifier</key><string>org.example.x</string></dict></plist>");
    for (const char* place : {"bin", "X.app/Contents/Helpers", "X.app/MacOS", "X.app/Other/MacOS",
                              "X.app/Contents/MacOS/sub", "X.bundle/Contents/MacOS", "Contents/MacOS"}) {
        const auto bundle = bundleAround(folder() / place / "program");
        EXPECT_EQ(bundle.bundleURL().path(), (folder() / place).string());
        EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt) << place;
    }
}

TEST_F(Bundle, TheMainOneIsAroundThisProgram) {
    const auto bundle = NS::Bundle::mainBundle();
    EXPECT_EQ(bundle, NS::Bundle::mainBundle());
    EXPECT_EQ(bundle.bundleURL().path(), fs::read_symlink("/proc/self/exe").parent_path().string());
    EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt);
}

} // namespace
