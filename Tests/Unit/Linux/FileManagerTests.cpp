#include "Platform/Foundation/FileManager.h"

#include "Platform/Linux/Foundation/TemporaryFiles.h"
#include "Support/Files.h"

#include <QDir>
#include <QTemporaryDir>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct FileManagerOnLinux : testing::Test {
    QTemporaryDir home;
    const fs::path folder = home.path().toStdString();
    NS::FileManager manager = NS::FileManager::defaultManager();
};

TEST_F(FileManagerOnLinux, TheTemporaryDirectoryIsTheUsersChoiceWhenItIsPrivate) {
    fs::create_directory(folder / "a b%41");
    fs::permissions(folder / "a b%41", fs::perms::owner_all);
    setenv("TMPDIR", (folder / "a b%41").c_str(), 1);
    EXPECT_EQ(manager.temporaryDirectory().path(), folder / "a b%41");
    setenv("TMPDIR", (folder / "a b%41/").c_str(), 1);
    EXPECT_EQ(manager.temporaryDirectory().path(), folder / "a b%41");
}

TEST_F(FileManagerOnLinux, OtherwiseTheTemporaryDirectoryIsAFolderOfOursThatOnlyTheUserCanRead) {
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

TEST_F(FileManagerOnLinux, ATemporaryDirectoryOfAnotherUserIsNotTaken) {
    if (geteuid() != 0) {
        setenv("TMPDIR", "/", 1); // root's
    } else {
        ASSERT_EQ(chown(folder.c_str(), 4711, 4711), 0);
        setenv("TMPDIR", folder.c_str(), 1);
    }
    EXPECT_NE(manager.temporaryDirectory().path(), std::getenv("TMPDIR"));
}

TEST_F(FileManagerOnLinux, WhatUpdatesLeftMoreThanADayAgoInOurOwnFolderGoesAtTheStart) {
    using std::chrono::hours;
    setenv("XDG_CACHE_HOME", (folder / "caches").c_str(), 1);
    unsetenv("TMPDIR");
    const fs::path own = manager.temporaryDirectory().path();
    const auto prefix = fs::read_symlink("/proc/self/exe").filename().string() + "-"; // a program without a bundle
    fs::create_directories(own / (prefix + "staged-1") / "deep");
    fs::create_directories(own / (prefix + "staged-2"));
    for (const char* file : {"update-1.sh", "update-2.sh", "1.0.dmg", "2.0.dmg"}) {
        write(own / (prefix + file), "");
    }
    write(own / "download-old", "");
    write(own / "download-new", "");
    write(own / "somebody's own", "");
    const auto now = fs::file_time_type::clock::now();
    const auto old = {own / (prefix + "staged-1"), own / (prefix + "update-1.sh"), own / (prefix + "1.0.dmg"),
                      own / "download-old", own / "somebody's own"};
    for (const auto& item : fs::directory_iterator(own)) {
        fs::last_write_time(item, now - hours(23));
    }
    for (const auto& item : old) {
        fs::last_write_time(item, now - hours(25));
    }
    Linux::TemporaryFiles::removeOld();
    std::set<std::string> left;
    for (const auto& item : fs::directory_iterator(own)) {
        left.insert(item.path().filename());
    }
    EXPECT_EQ(left, (std::set<std::string>{prefix + "staged-2", prefix + "update-2.sh", prefix + "2.0.dmg",
                                           "download-new", "somebody's own"}));
}

TEST_F(FileManagerOnLinux, WithoutAFolderOfOurOwnThereIsNothingToRemove) {
    setenv("XDG_CACHE_HOME", (folder / "caches").c_str(), 1);
    Linux::TemporaryFiles::removeOld();
    EXPECT_FALSE(fs::exists(folder / "caches"));
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

TEST_F(FileManagerOnLinux, MovingGoesToAnotherVolumeToo) {
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

TEST_F(FileManagerOnLinux, MovingToAnotherVolumeReplacesNothing) {
    const OtherVolume other;
    ASSERT_TRUE(other.isOther);
    write(folder / "a", "text");
    write(other.folder / "b", "there");
    EXPECT_FALSE(manager.moveItemAtURL(url(folder / "a"), url(other.folder / "b")));
    EXPECT_EQ(read(other.folder / "b"), "there");
    EXPECT_EQ(read(folder / "a"), "text");
}

} // namespace
