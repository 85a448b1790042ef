#include "Platform/Linux/Foundation/Files.h"
#include "Platform/Linux/Foundation/UserDefaultsNative.h"
#include "Unit/Linux/Managed.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::string list(const std::string& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries + "</dict></plist>\n";
}

std::string number(const std::string& key, int value) {
    return "<key>" + key + "</key><integer>" + std::to_string(value) + "</integer>";
}

void write(const fs::path& file, const std::string& bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

std::string bytesOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

fs::path managedFile() {
    const auto name = fs::read_symlink("/proc/self/exe").filename().string() + ".managed.plist";
    return Linux::systemConfigFolders().front() / name;
}

void force(const std::string& entries) {
    write(managedFile(), list(entries));
}

namespace {

class ManagedDefaults : public testing::Test {
    QTemporaryDir folder_; // before the defaults, which are made of it

protected:
    fs::path folder(const char* name) const { return fs::path(folder_.path().toStdString()) / name; }
    fs::path user() const { return folder("user") / "cup.plist"; }
    fs::path forced(const char* name = "first") const { return folder(name) / "cup.managed.plist"; }
    fs::path preset(const char* name = "first") const { return folder(name) / "cup.plist"; }

    /// Each file in the administrator's folders, and what it holds.
    std::map<std::string, std::string> administratorsFiles() const {
        std::map<std::string, std::string> files;
        for (const char* name : {"first", "second"}) {
            if (fs::exists(folder(name))) {
                for (const auto& entry : fs::directory_iterator(folder(name))) {
                    files[entry.path()] = fs::is_regular_file(entry.symlink_status()) ? bytesOf(entry.path()) : "";
                }
            }
        }
        return files;
    }

    NS::UserDefaults defaults = Linux::handle<NS::UserDefaults>(
        std::make_shared<Linux::UserDefaultsNative>(user(), std::vector{folder("first"), folder("second")}));
};

TEST_F(ManagedDefaults, AForcedValueHidesTheUsersThatTheAdministratorsDefaultAndThatTheRegisteredOne) {
    defaults.registerDefaults({{"key", 1}});
    EXPECT_EQ(defaults.integerForKey("key"), 1);
    write(preset(), list(number("key", 2)));
    EXPECT_EQ(defaults.integerForKey("key"), 2);
    write(user(), list(number("key", 3)));
    EXPECT_EQ(defaults.integerForKey("key"), 3);
    write(forced(), list(number("key", 4)));
    EXPECT_EQ(defaults.integerForKey("key"), 4);
}

TEST_F(ManagedDefaults, TheFirstFolderWithTheKeyDecides) {
    write(user(), list(number("both", 0) + number("one", 0)));
    write(forced("second"), list(number("both", 2) + number("one", 2)));
    EXPECT_EQ(defaults.integerForKey("both"), 2);
    write(forced("first"), list(number("both", 1)));
    EXPECT_EQ(defaults.integerForKey("both"), 1);
    EXPECT_EQ(defaults.integerForKey("one"), 2);
    write(preset("second"), list(number("default", 2) + number("other", 2)));
    write(preset("first"), list(number("default", 1)));
    EXPECT_EQ(defaults.integerForKey("default"), 1);
    EXPECT_EQ(defaults.integerForKey("other"), 2);
}

TEST_F(ManagedDefaults, OnlyTheForcedIsForced) {
    defaults.registerDefaults({{"registered", 1}});
    write(preset(), list(number("preset", 1)));
    write(user(), list(number("users", 1)));
    write(forced("second"), list(number("forced", 0)));
    EXPECT_TRUE(defaults.objectIsForcedForKey("forced"));
    for (const char* key : {"registered", "preset", "users", "none"}) {
        EXPECT_FALSE(defaults.objectIsForcedForKey(key)) << key;
    }
}

TEST_F(ManagedDefaults, AUserMayChangeAnAdministratorsDefault) {
    write(preset(), list(number("key", 2)));
    defaults.setInteger(3, "key");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(defaults.integerForKey("key"), 3);
    defaults.setObject(std::nullopt, "key");
    EXPECT_EQ(defaults.integerForKey("key"), 2);
}

TEST_F(ManagedDefaults, WhatIsForcedCannotBeSet) {
    write(forced(), list(number("key", 4)));
    defaults.setObject(std::nullopt, "key");
    defaults.setBool(true, "key");
    defaults.setInteger(5, "key");
    EXPECT_EQ(defaults.integerForKey("key"), 4);
    EXPECT_TRUE(defaults.synchronize());
    QCoreApplication::processEvents();
    EXPECT_FALSE(fs::exists(user()));
    fs::remove(forced());
    EXPECT_EQ(defaults.integerForKey("key"), 0) << "what was set meanwhile is dropped, not kept";
}

TEST_F(ManagedDefaults, TheUsersOwnValueIsBackWhenItIsForcedNoLonger) {
    write(user(), list(number("key", 3)));
    write(forced(), list(number("key", 4)));
    defaults.setInteger(5, "key");
    defaults.setInteger(6, "other");
    EXPECT_TRUE(defaults.synchronize());
    fs::remove(forced());
    EXPECT_EQ(defaults.integerForKey("key"), 3);
    EXPECT_EQ(defaults.integerForKey("other"), 6);
}

TEST_F(ManagedDefaults, AChangeOnTheDiskTakesEffect) {
    write(user(), list(number("key", 3)));
    for (const int value : {4, 5, 6}) { // files of the same size
        write(forced(), list(number("key", value)));
        EXPECT_EQ(defaults.integerForKey("key"), value);
    }
    write(forced(), list(number("other", 1)));
    EXPECT_EQ(defaults.integerForKey("key"), 3);
    EXPECT_FALSE(defaults.objectIsForcedForKey("key"));
    write(forced(), list(number("key", 7)));
    EXPECT_TRUE(defaults.objectIsForcedForKey("key"));
    fs::remove_all(folder("first"));
    EXPECT_EQ(defaults.integerForKey("key"), 3);
}

TEST_F(ManagedDefaults, AForcedValueHidesAChangeThatWaitsToBeWritten) {
    defaults.setInteger(3, "key");
    write(forced(), list(number("key", 4)));
    EXPECT_EQ(defaults.integerForKey("key"), 4);
}

TEST_F(ManagedDefaults, AForcedValueOfAnotherTypeIsReadAsThatTypeIs) {
    write(user(), list("<key>text</key><false/><key>data</key><true/>"));
    write(forced(), list("<key>text</key><string>YES</string><key>data</key><data>AAAA</data>"));
    EXPECT_TRUE(defaults.boolForKey("text"));
    EXPECT_FALSE(defaults.boolForKey("data"));
    EXPECT_TRUE(defaults.objectIsForcedForKey("data"));
}

TEST_F(ManagedDefaults, TheAdministratorsFilesAreNeverWritten) {
    write(forced(), list(number("key", 4)));
    write(preset(), list(number("default", 2)));
    const auto before = administratorsFiles();
    defaults.setInteger(5, "key");
    defaults.setInteger(5, "default");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(administratorsFiles(), before);
    EXPECT_EQ(bytesOf(user()).find("<key>key</key>"), std::string::npos);
}

/// What stands where a file of the administrator's should be.
struct Damage {
    const char* name;
    void (*make)(const fs::path& file);
};

void PrintTo(const Damage& damage, std::ostream* stream) {
    *stream << damage.name;
}

class DamagedManagedFile : public ManagedDefaults, public testing::WithParamInterface<Damage> {};

TEST_P(DamagedManagedFile, CountsAsAbsentAndStaysAsItIs) {
    write(user(), list(number("key", 3)));
    write(forced("second"), list(number("other", 2)));
    for (const auto& file : {forced(), preset()}) {
        fs::create_directories(file.parent_path());
        GetParam().make(file);
    }
    const auto before = administratorsFiles();
    EXPECT_EQ(defaults.integerForKey("key"), 3);
    EXPECT_FALSE(defaults.objectIsForcedForKey("key"));
    EXPECT_EQ(defaults.integerForKey("other"), 2);
    defaults.setInteger(5, "key");
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(defaults.integerForKey("key"), 5);
    EXPECT_EQ(administratorsFiles(), before);
}

INSTANTIATE_TEST_SUITE_P(
    All, DamagedManagedFile,
    testing::Values(
        Damage{"Empty", [](const fs::path& file) { write(file, ""); }},
        Damage{"Text", [](const fs::path& file) { write(file, "key = 4\n"); }},
        Damage{"Array", [](const fs::path& file) { write(file, "<plist><array><true/></array></plist>"); }},
        Damage{"Truncated", [](const fs::path& file) { write(file, list(number("key", 4)).substr(0, 90)); }},
        Damage{"TooLarge",
               [](const fs::path& file) { write(file, list(number("key", 4)) + std::string(1 << 20, '\n')); }},
        Damage{"Folder", [](const fs::path& file) { fs::create_directory(file); }},
        Damage{"Pipe", [](const fs::path& file) { ASSERT_EQ(mkfifo(file.c_str(), 0600), 0); }},
        Damage{"Loop", [](const fs::path& file) { fs::create_symlink(file, file); }},
        Damage{"Dangling", [](const fs::path& file) { fs::create_symlink("/none", file); }}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(ManagedDefaults, AFileThatMayNotBeReadCountsAsAbsent) {
    write(forced(), list(number("key", 4)));
    fs::permissions(forced(), fs::perms::none);
    fs::permissions(folder("first"), fs::perms::none);
    fs::permissions(folder(""), fs::perms::all);
    const bool isRoot = geteuid() == 0;
    ASSERT_FALSE(isRoot && seteuid(65534) != 0);
    EXPECT_EQ(defaults.integerForKey("key"), 0);
    ASSERT_FALSE(isRoot && seteuid(0) != 0);
    fs::permissions(folder("first"), fs::perms::owner_all);
    EXPECT_EQ(bytesOf(forced()), isRoot ? list(number("key", 4)) : "");
}

TEST_F(ManagedDefaults, ADamagedFileIsNamedInTheLogOnlyWhenThatIsAskedFor) {
    write(forced(), "damaged");
    testing::internal::CaptureStderr();
    defaults.integerForKey("key");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    QLoggingCategory::setFilterRules("vantorel.preferences.info=true");
    testing::internal::CaptureStderr();
    write(forced(), "damaged again");
    defaults.integerForKey("key");
    EXPECT_NE(testing::internal::GetCapturedStderr().find(forced().string()), std::string::npos);
}

TEST(SystemConfigFolders, AreThoseOfTheEnvironmentInTheirOrder) {
    const auto foldersFor = [](const char* variable) {
        qputenv("XDG_CONFIG_DIRS", variable);
        std::string folders;
        for (const auto& folder : Linux::systemConfigFolders()) {
            folders += folder.string() + " ";
        }
        return folders;
    };
    EXPECT_EQ(foldersFor("/b:relative::/a"), "/b /a ");
    EXPECT_EQ(foldersFor("relative"), "");
    EXPECT_EQ(foldersFor(""), "/etc/xdg ");
    qunsetenv("XDG_CONFIG_DIRS");
    EXPECT_EQ(Linux::systemConfigFolders().front().string(), "/etc/xdg");
}

TEST(SystemConfigFolders, AreAskedByTheStandardDefaults) {
    force(number("ManagedDefaultsTests", 42));
    auto standard = NS::UserDefaults::standardUserDefaults();
    EXPECT_EQ(standard.integerForKey("ManagedDefaultsTests"), 42);
    EXPECT_TRUE(standard.objectIsForcedForKey("ManagedDefaultsTests"));
}

} // namespace
