#include "Platform/Foundation/FileManager.h"

#include "Platform/Foundation/PropertyListValue.h"

#include <QDir>
#include <QTemporaryDir>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct FileManagerTest : testing::Test {
    static NS::URL url(const fs::path& path) { return NS::URL::fileURLWithPath(path.string()); }
    static void write(const fs::path& file, const std::string& text) { std::ofstream(file) << text; }
    static std::string read(const fs::path& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    QTemporaryDir home;
    const fs::path folder = home.path().toStdString();
    NS::FileManager manager = NS::FileManager::defaultManager();
};

TEST_F(FileManagerTest, TheTemporaryDirectoryIsTheUsersChoiceWhenItIsPrivate) {
    fs::create_directory(folder / "a b%41");
    fs::permissions(folder / "a b%41", fs::perms::owner_all);
    setenv("TMPDIR", (folder / "a b%41").c_str(), 1);
    EXPECT_EQ(manager.temporaryDirectory().path(), folder / "a b%41");
    setenv("TMPDIR", (folder / "a b%41/").c_str(), 1);
    EXPECT_EQ(manager.temporaryDirectory().path(), folder / "a b%41");
}

TEST_F(FileManagerTest, OtherwiseTheTemporaryDirectoryIsAFolderOfOursThatOnlyTheUserCanRead) {
    setenv("XDG_CACHE_HOME", (folder / "caches").c_str(), 1);
    fs::create_directory(folder / "shared");
    write(folder / "file", "");
    for (const auto permissions : {fs::perms(0770), fs::perms(0707), fs::perms(01777)}) {
        fs::permissions(folder / "shared", permissions);
        for (const char* choice : {"shared", "file", "missing"}) {
            setenv("TMPDIR", (folder / choice).c_str(), 1);
            const fs::path own = manager.temporaryDirectory().path();
            EXPECT_EQ(own.parent_path(), folder / "caches") << choice;
            EXPECT_EQ(fs::status(own).permissions(), fs::perms::owner_all) << choice;
        }
    }
    for (const char* choice : {"", "relative"}) {
        setenv("TMPDIR", choice, 1);
        EXPECT_EQ(fs::path(manager.temporaryDirectory().path()).parent_path(), folder / "caches") << choice;
    }
    unsetenv("TMPDIR");
    EXPECT_EQ(fs::path(manager.temporaryDirectory().path()).parent_path(), folder / "caches");
}

TEST_F(FileManagerTest, ATemporaryDirectoryOfAnotherUserIsNotTaken) {
    if (geteuid() != 0) {
        setenv("TMPDIR", "/", 1); // root's
    } else {
        ASSERT_EQ(chown(folder.c_str(), 4711, 4711), 0);
        setenv("TMPDIR", folder.c_str(), 1);
    }
    EXPECT_NE(manager.temporaryDirectory().path(), std::getenv("TMPDIR"));
}

TEST_F(FileManagerTest, ExistenceFollowsLinks) {
    write(folder / "file", "");
    fs::create_symlink("file", folder / "link");
    fs::create_symlink("missing", folder / "dangling");
    EXPECT_TRUE(manager.fileExistsAtPath(folder));
    EXPECT_TRUE(manager.fileExistsAtPath(folder / "file"));
    EXPECT_TRUE(manager.fileExistsAtPath(folder / "link"));
    EXPECT_FALSE(manager.fileExistsAtPath(folder / "dangling"));
    EXPECT_FALSE(manager.fileExistsAtPath(""));
}

TEST_F(FileManagerTest, ALinkHasADestinationAndNothingElseHas) {
    write(folder / "file", "");
    fs::create_symlink("missing", folder / "dangling");
    EXPECT_EQ(manager.destinationOfSymbolicLinkAtPath(folder / "dangling"), "missing");
    EXPECT_EQ(manager.destinationOfSymbolicLinkAtPath(folder / "file"), std::nullopt);
    EXPECT_EQ(manager.destinationOfSymbolicLinkAtPath(folder / "missing"), std::nullopt);
}

TEST_F(FileManagerTest, WhatIsMissingIsNotWritable) {
    EXPECT_TRUE(manager.isWritableFileAtPath(folder));
    EXPECT_FALSE(manager.isWritableFileAtPath(folder / "missing"));
}

TEST_F(FileManagerTest, RemovingTakesAFolderWithAllThatIsInIt) {
    fs::create_directories(folder / "x/y/z");
    write(folder / "x/y/file", "");
    write(folder / "outside", "");
    fs::create_symlink(folder / "outside", folder / "x/link");
    EXPECT_TRUE(manager.removeItemAtURL(url(folder / "x")));
    EXPECT_FALSE(fs::exists(folder / "x"));
    EXPECT_TRUE(fs::exists(folder / "outside"));
    EXPECT_FALSE(manager.removeItemAtURL(url(folder / "x")));
}

TEST_F(FileManagerTest, RemovingALinkLeavesItsDestination) {
    fs::create_directory(folder / "x");
    write(folder / "x/file", "");
    fs::create_symlink("x", folder / "link");
    EXPECT_TRUE(manager.removeItemAtURL(url(folder / "link")));
    EXPECT_TRUE(fs::exists(folder / "x/file"));
    EXPECT_FALSE(fs::exists(fs::symlink_status(folder / "link")));
}

TEST_F(FileManagerTest, MovingTakesTheFileAndReplacesNothing) {
    write(folder / "a", "text");
    EXPECT_TRUE(manager.moveItemAtURL(url(folder / "a"), url(folder / "b")));
    EXPECT_EQ(read(folder / "b"), "text");
    EXPECT_FALSE(fs::exists(folder / "a"));
    write(folder / "a", "other");
    EXPECT_FALSE(manager.moveItemAtURL(url(folder / "a"), url(folder / "b")));
    EXPECT_EQ(read(folder / "b"), "text");
    EXPECT_EQ(read(folder / "a"), "other");
    EXPECT_FALSE(manager.moveItemAtURL(url(folder / "missing"), url(folder / "c")));
    EXPECT_FALSE(manager.moveItemAtURL(url(folder / "a"), url(folder / "missing/c")));
}

/// A folder on another volume than the temporary one.
struct OtherVolume {
    OtherVolume() {
        struct stat here = {};
        struct stat there = {};
        stat(QDir::tempPath().toStdString().c_str(), &here);
        stat("/dev/shm", &there);
        isOther = here.st_dev != there.st_dev;
    }

    bool isOther = false;
    QTemporaryDir home{"/dev/shm/move-XXXXXX"};
    fs::path folder = home.path().toStdString();
};

TEST_F(FileManagerTest, MovingGoesToAnotherVolumeToo) {
    const OtherVolume other;
    ASSERT_TRUE(other.isOther);
    fs::create_directory(folder / "x");
    write(folder / "x/file", "text");
    fs::permissions(folder / "x/file", fs::perms(0751));
    fs::create_symlink("file", folder / "x/link");
    EXPECT_TRUE(manager.moveItemAtURL(url(folder / "x"), url(other.folder / "y")));
    EXPECT_FALSE(fs::exists(folder / "x"));
    EXPECT_EQ(read(other.folder / "y/file"), "text");
    EXPECT_EQ(fs::status(other.folder / "y/file").permissions(), fs::perms(0751));
    EXPECT_EQ(fs::read_symlink(other.folder / "y/link"), "file");
}

TEST_F(FileManagerTest, MovingToAnotherVolumeReplacesNothing) {
    const OtherVolume other;
    ASSERT_TRUE(other.isOther);
    write(folder / "a", "text");
    write(other.folder / "b", "there");
    EXPECT_FALSE(manager.moveItemAtURL(url(folder / "a"), url(other.folder / "b")));
    EXPECT_EQ(read(other.folder / "b"), "there");
    EXPECT_EQ(read(folder / "a"), "text");
}

TEST_F(FileManagerTest, AFolderIsMadeWithThoseAboveItIfAsked) {
    EXPECT_FALSE(manager.createDirectoryAtURL(url(folder / "a/b"), /*withIntermediateDirectories=*/false));
    EXPECT_TRUE(manager.createDirectoryAtURL(url(folder / "a/b"), true));
    EXPECT_TRUE(fs::is_directory(folder / "a/b"));
    EXPECT_TRUE(manager.createDirectoryAtURL(url(folder / "a/b"), true));
    EXPECT_FALSE(manager.createDirectoryAtURL(url(folder / "a/b"), false));
    write(folder / "file", "");
    EXPECT_FALSE(manager.createDirectoryAtURL(url(folder / "file"), true));
    EXPECT_FALSE(manager.createDirectoryAtURL(url(folder / "file/x"), true));
}

TEST_F(FileManagerTest, PermissionsAreSetExactly) {
    write(folder / "file", "");
    EXPECT_TRUE(manager.setAttributes({.posixPermissions = 0755}, folder / "file"));
    EXPECT_EQ(fs::status(folder / "file").permissions(), fs::perms(0755));
    EXPECT_FALSE(manager.setAttributes({.posixPermissions = 0755}, folder / "missing"));
}

TEST_F(FileManagerTest, ATextIsWrittenWholeInPlaceOfWhatStoodThere) {
    write(folder / "file", "something longer than the text");
    EXPECT_TRUE(NS::writeToURL("é\n", url(folder / "file")));
    EXPECT_EQ(read(folder / "file"), "é\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1); // and nothing beside it
}

TEST_F(FileManagerTest, ATextThatCannotBeWrittenLeavesWhatStoodThere) {
    EXPECT_FALSE(NS::writeToURL("text", url(folder / "missing/file")));
    fs::create_directory(folder / "x");
    EXPECT_FALSE(NS::writeToURL("text", url(folder / "x")));
    EXPECT_TRUE(fs::is_directory(folder / "x"));
}

TEST_F(FileManagerTest, APropertyListIsReadIfItIsADictionary) {
    write(folder / "dictionary", "<plist version=\"1.0\"><dict><key>a</key><integer>1</integer></dict></plist>");
    write(folder / "array", "<plist version=\"1.0\"><array/></plist>");
    EXPECT_EQ(NS::dictionaryWithContentsOfURL(url(folder / "dictionary")), (NS::Dictionary{{"a", 1}}));
    EXPECT_EQ(NS::dictionaryWithContentsOfURL(url(folder / "array")), std::nullopt);
    EXPECT_EQ(NS::dictionaryWithContentsOfURL(url(folder / "missing")), std::nullopt);
    EXPECT_EQ(NS::dictionaryWithContentsOfURL(url(folder)), std::nullopt);
}

} // namespace
