#include "Platform/Foundation/FileManager.h"

#include "Platform/Foundation/PropertyListValue.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;

struct FileManagerTest : testing::Test {
    const TemporaryFolder temporary;
    const fs::path folder = temporary.path();
    NS::FileManager manager = NS::FileManager::defaultManager();
};

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

TEST_F(FileManagerTest, AURLIsResolvedToTheFileWithoutLinks) {
    fs::create_directories(folder / "x/y");
    fs::create_symlink("x", folder / "link");
    const auto plain = url(folder / "x/y").URLByResolvingSymlinksInPath().path();
    EXPECT_EQ(url(folder / "link/y").URLByResolvingSymlinksInPath().path(), plain);
    EXPECT_EQ(url(folder / "link/../x/y").URLByResolvingSymlinksInPath().path(), plain);
    EXPECT_TRUE(plain.ends_with("/x/y"));
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
    write(folder / "dictionary", "<plist version=\"1.0\"><dict><key>a</key><string>é</string></dict></plist>");
    write(folder / "array", "<plist version=\"1.0\"><array/></plist>");
    EXPECT_EQ(NS::dictionaryWithContentsOfURL(url(folder / "dictionary"), {"a"}), (NS::Dictionary{{"a", "é"}}));
    EXPECT_EQ(NS::dictionaryWithContentsOfURL(url(folder / "array"), {"a"}), std::nullopt);
    EXPECT_EQ(NS::dictionaryWithContentsOfURL(url(folder / "missing"), {"a"}), std::nullopt);
    EXPECT_EQ(NS::dictionaryWithContentsOfURL(url(folder), {"a"}), std::nullopt);
}

} // namespace
