#include "UpdaterTest.h"

#include "Platform/Linux/Dispatch/Workers.h"
#include "Platform/Linux/Foundation/TimerNative.h"
#include "Seam/Clock.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool refusesChmod = false;
std::atomic<int> looksForMarker = 0;

} // namespace

// The C library's functions of these names are called through here.

extern "C" int chmod(const char* path, mode_t mode) {
    if (refusesChmod) {
        errno = EPERM;
        return -1;
    }
    return fchmodat(AT_FDCWD, path, mode, 0);
}

extern "C" int access(const char* path, int mode) noexcept {
    looksForMarker += std::string_view(path).ends_with(".started") ? 1 : 0;
    return faccessat(AT_FDCWD, path, mode, 0);
}

namespace {

constexpr char mismatch[] = "Updater: checksum mismatch, discarding download";
constexpr char helperSilent[] = "Updater: helper did not start, keeping the current version";
constexpr double day = 86400;

const Names manifestOnly = {manifestPath};
const Names manifestAndImage = {manifestPath, imagePath};
const Names wholeStaging = {"hdiutil attach", "ditto", "hdiutil detach"};
const Names rejectedStaging = {"hdiutil attach", "hdiutil detach"};

// When it looks

struct UpdaterScheduleTest : UpdaterTest {
    void SetUp() override {
        UpdaterTest::SetUp();
        offer("1.0.0");
    }

    /// Lets time pass and what it started come to an end.
    void runUntil(double seconds) {
        Seam::runUntil(start.dateByAddingTimeInterval(seconds));
        QCoreApplication::processEvents();
        ASSERT_TRUE(Linux::waitForWorkers(30s));
    }

    const NS::Date start = NS::Date::date();
};

TEST_F(UpdaterScheduleTest, TheFirstCheckComesAfterTwelveSecondsAndThenOneEachDay) {
    Updater::start();
    runUntil(11.9);
    EXPECT_EQ(paths().size(), 0U);
    runUntil(12);
    EXPECT_EQ(paths().size(), 1U);
    runUntil(day - 1);
    EXPECT_EQ(paths().size(), 1U);
    runUntil(day);
    EXPECT_EQ(paths().size(), 2U);
    runUntil(2 * day);
    EXPECT_EQ(paths().size(), 3U);
}

TEST_F(UpdaterScheduleTest, TheDailyCheckMayBeAnHourLate) {
    Updater::start();
    const auto& timers = Linux::TimerNative::scheduled();
    const auto daily = std::ranges::find(timers, true, [](const auto& timer) { return timer->repeats; });
    ASSERT_NE(daily, timers.end());
    EXPECT_EQ((*daily)->tolerance, 3600);
    EXPECT_EQ((*daily)->interval, day);
}

TEST_F(UpdaterScheduleTest, StartingTwiceLeavesOneDailyTimerAndASecondFirstCheck) {
    Updater::start();
    Updater::start();
    const std::vector<NS::Date> expected = {start.dateByAddingTimeInterval(12), start.dateByAddingTimeInterval(12),
                                            start.dateByAddingTimeInterval(day)};
    EXPECT_EQ(Seam::scheduledTimers(), expected);
    runUntil(12);
    const auto first = paths().size();
    EXPECT_GE(first, 1U); // the second first check may meet the first one under way
    EXPECT_LE(first, 2U);
    runUntil(day);
    EXPECT_EQ(paths().size(), first + 1);
}

TEST_F(UpdaterScheduleTest, WithUpdatesOffTheTimersAskNobody) {
    Prefs::d().setBool(false, Prefs::autoUpdate);
    Updater::start();
    runUntil(2 * day);
    EXPECT_EQ(paths().size(), 0U);
    EXPECT_FALSE(check(/*userInitiated=*/true)); // not kept out by a check under way
    EXPECT_EQ(paths(), manifestOnly);
}

// Whether it installs

TEST_F(UpdaterTest, ANewerReleaseIsInstalled) {
    EXPECT_TRUE(check());
    EXPECT_EQ(paths(), manifestAndImage);
    EXPECT_EQ(toolsRun(), (Names{"hdiutil attach", "ditto", "hdiutil detach", "sh"}));
}

TEST_F(UpdaterTest, WithUpdatesOffACheckOfTheUserRunsFully) {
    Prefs::d().setBool(false, Prefs::autoUpdate);
    EXPECT_FALSE(check());
    EXPECT_TRUE(server.requests().empty());
    EXPECT_TRUE(check(/*userInitiated=*/true));
}

TEST_F(UpdaterTest, ASecondCheckReturnsAtOnceAndTheFirstEndsNormally) {
    server.answer(manifestPath, {{headOf(0), 1h}});
    auto first = std::async(std::launch::async, [] { return Updater::checkAndInstall(false); });
    ASSERT_TRUE(becomesTrue([&] { return !server.requests().empty(); }));
    offer("1.1.0");
    EXPECT_FALSE(check());
    EXPECT_EQ(first.wait_for(0s), std::future_status::timeout);
    server.release();
    EXPECT_FALSE(first.get());
    EXPECT_EQ(paths(), manifestOnly);
    EXPECT_TRUE(check());
}

TEST_F(UpdaterTest, OfManyChecksAtOnceOneRuns) {
    offer("1.0.0");
    std::vector<std::future<bool>> checks;
    for (int count = 0; count < 8; ++count) {
        checks.push_back(std::async(std::launch::async, [] { return Updater::checkAndInstall(false); }));
    }
    for (auto& running : checks) {
        EXPECT_FALSE(running.get());
    }
    EXPECT_GE(paths().size(), 1U);
    const auto before = paths().size();
    check();
    EXPECT_EQ(paths().size(), before + 1); // the last one let go
}

// In many rounds, for a check that tests and sets in two steps lets a second one in only now and then.
TEST_F(UpdaterTest, OfTwoChecksAtTheSameInstantExactlyOneRuns) {
    for (int round = 0; round < 100; ++round) {
        Seam::HTTPServer silent;
        silent.answer(manifestPath, {{headOf(0), 1h}});
        setenv("KORVEX_UPDATE_BASE", silent.url().c_str(), 1);
        std::atomic<int> ready = 0;
        std::atomic<int> ended = 0;
        const auto one = [&] {
            ++ready;
            while (ready < 2) {
            }
            EXPECT_FALSE(Updater::checkAndInstall(/*userInitiated=*/true));
            ++ended;
        };
        auto first = std::async(std::launch::async, one);
        auto second = std::async(std::launch::async, one);
        EXPECT_TRUE(becomesTrue([&] { return silent.requests().size() + std::size_t(ended) >= 2; }));
        silent.release();
        first.get();
        second.get();
        ASSERT_EQ(silent.requests().size(), 1U) << "in round " << round;
    }
}

TEST_F(UpdaterTest, TheRunningVersionAndOlderOnesAreLeftAlone) {
    for (const char* version : {"1.0.0", "1.0", "0.9.9", "", "beta"}) {
        offer(version);
        EXPECT_FALSE(check()) << version;
    }
    EXPECT_EQ(paths(), Names(5, manifestPath));
}

TEST_F(UpdaterTest, AfterThreeAttemptsAVersionIsLeftAlone) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        Prefs::noteUpdateAttempt("1.1.0");
    }
    EXPECT_FALSE(check());
    EXPECT_EQ(paths(), manifestOnly);
    makeImage(infoPlist(identifier, "1.2.0"));
    offer("1.2.0");
    EXPECT_TRUE(check()); // another version lifts the block
}

TEST_F(UpdaterTest, AfterTwoAttemptsAThirdIsMade) {
    Prefs::noteUpdateAttempt("1.1.0");
    Prefs::noteUpdateAttempt("1.1.0");
    EXPECT_TRUE(check());
    EXPECT_EQ(Prefs::updateAttempts("1.1.0"), 3);
}

TEST_F(UpdaterTest, WhilePostponedNothingIsInstalledAndTheNextCheckMakesUpForIt) {
    int asked = 0;
    bool postpone = true;
    *Updater::shouldPostpone = [&] {
        ++asked;
        return postpone;
    };
    EXPECT_FALSE(check());
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(paths(), manifestOnly);
    postpone = false;
    EXPECT_TRUE(check());
    EXPECT_EQ(asked, 2);
}

TEST_F(UpdaterTest, NobodyIsAskedToPostponeWhatWouldNotBeInstalled) {
    int asked = 0;
    *Updater::shouldPostpone = [&] { return ++asked > 0; };
    offer("1.0.0");
    EXPECT_FALSE(check());
    for (int attempt = 0; attempt < 3; ++attempt) {
        Prefs::noteUpdateAttempt("1.1.0");
    }
    offer("1.1.0");
    EXPECT_FALSE(check());
    EXPECT_EQ(asked, 0);
}

// The manifest

TEST_F(UpdaterTest, TheRunningVersionIsTheBundles) {
    EXPECT_EQ(Updater::currentVersion(), "1.0.0");
}

TEST_F(UpdaterTest, TheManifestIsAskedForOnceBelowTheBase) {
    setenv("KORVEX_UPDATE_BASE", (server.url() + "/some/base/?q=1").c_str(), 1);
    EXPECT_FALSE(Updater::fetchLatest());
    EXPECT_EQ(paths(), Names{"/some/base/updates/vantorel.json?q=1"});
}

TEST_F(UpdaterTest, AnythingButStatus200IsNoRelease) {
    for (const int status : {201, 202, 203, 204, 206, 304, 400, 401, 404, 500, 503}) {
        server.answer(manifestPath, {status, status == 204 || status == 304
                                                 ? ""
                                                 : R"({"latest": {"version": "1.1.0", "file": "f", "sha256": "ab"}})"});
        EXPECT_FALSE(Updater::fetchLatest()) << status;
    }
    EXPECT_EQ(paths().size(), 11U); // and none is asked for twice
    offer("1.1.0");
    EXPECT_TRUE(Updater::fetchLatest());
}

TEST_F(UpdaterTest, AnEmptyBodyIsNoRelease) {
    server.answer(manifestPath, {200, ""});
    EXPECT_FALSE(Updater::fetchLatest());
}

TEST_F(UpdaterTest, ATransferThatFailsIsNoRelease) {
    setenv("KORVEX_UPDATE_BASE", "http://127.0.0.1:1", 1);
    EXPECT_FALSE(Updater::fetchLatest());
}

TEST_F(UpdaterTest, AnAnswerThatDoesNotComeOverHTTPIsNoRelease) {
    fs::create_directories(home / "updates");
    std::ofstream(home / "updates/vantorel.json") << R"({"latest": {"version": "2", "file": "f", "sha256": "ab"}})";
    setenv("KORVEX_UPDATE_BASE", ("file://" + home.string()).c_str(), 1);
    EXPECT_FALSE(Updater::fetchLatest());
}

TEST_F(UpdaterTest, TheBaseIsReadAnewEachTime) {
    EXPECT_EQ(Updater::baseURL().absoluteString(), server.url());
    setenv("KORVEX_UPDATE_BASE", "ftp://other.example/a b", 1);
    EXPECT_EQ(Updater::baseURL().absoluteString(), "ftp://other.example/a%20b");
}

TEST_F(UpdaterTest, TheBaseIsReadAgainForTheDownload) {
    Seam::HTTPServer other;
    other.answer(imagePath, {200, image});
    *Updater::shouldPostpone = [&] {
        setenv("KORVEX_UPDATE_BASE", other.url().c_str(), 1);
        return false;
    };
    EXPECT_TRUE(check());
    EXPECT_EQ(paths(), manifestOnly);
    EXPECT_EQ(other.requests().size(), 1U);
}

TEST_F(UpdaterTest, ABaseThatIsNoURLOrIsMissingGivesTheBuiltInOne) {
    for (const char* text : {"", "ht tp://x", "http://h.example:port"}) {
        setenv("KORVEX_UPDATE_BASE", text, 1);
        EXPECT_EQ(Updater::baseURL().absoluteString(), "https://korvex.example") << text;
    }
    unsetenv("KORVEX_UPDATE_BASE");
    EXPECT_EQ(Updater::baseURL().absoluteString(), "https://korvex.example");
}

TEST_F(UpdaterTest, TheBuiltInServerIsAskedEncrypted) {
    const Seam::HTTPServer proxy; // refuses
    setenv("https_proxy", proxy.url().c_str(), 1);
    for (const char* exceptions : {"no_proxy", "NO_PROXY"}) {
        unsetenv(exceptions);
    }
    unsetenv("KORVEX_UPDATE_BASE");
    EXPECT_FALSE(Updater::fetchLatest());
    ASSERT_EQ(proxy.requests().size(), 1U);
    EXPECT_TRUE(proxy.requests()[0].head.starts_with("CONNECT korvex.example:443 "));
    unsetenv("https_proxy");
}

// The download

TEST_F(UpdaterTest, TheImageIsVerifiedAndNamedAfterItsVersion) {
    ASSERT_TRUE(check());
    EXPECT_EQ(Tools::runs()[0][2], temporary / "Vantorel-1.1.0.dmg");
}

TEST_F(UpdaterTest, TheFileIsAPathOnTheServersOwnHost) {
    for (const char* file : {"/images/Vantorel.dmg", "//images/a b%.dmg?x#y", "https://elsewhere.example/x.dmg"}) {
        offer("1.1.0", "ab", file);
        EXPECT_FALSE(check()) << file;
    }
    EXPECT_EQ(paths(), (Names{manifestPath, imagePath, manifestPath, "//images/a%20b%25.dmg%3Fx%23y", manifestPath,
                              "/https://elsewhere.example/x.dmg"}));
}

TEST_F(UpdaterTest, AnUpperCaseChecksumVerifies) {
    auto checksum = sha256(image);
    std::ranges::transform(checksum, checksum.begin(), [](unsigned char c) { return char(std::toupper(c)); });
    offer("1.1.0", checksum);
    EXPECT_TRUE(check());
}

TEST_F(UpdaterTest, AnotherChecksumDiscardsTheDownloadWithOneLine) {
    for (const auto& checksum : {std::string(64, '0'), sha256(image).substr(1), sha256(image) + "0", std::string()}) {
        offer("1.1.0", checksum);
        EXPECT_EQ(logOfCheck(false), Names{mismatch}) << checksum;
        EXPECT_EQ(namesIn(temporary), Names()) << checksum;
    }
    EXPECT_EQ(toolsRun(), Names());
}

TEST_F(UpdaterTest, AnImageThatIsNotAnsweredWith200IsLeftAlone) {
    int left = 0;
    for (const int status : {201, 206, 404, 500}) {
        server.answer(imagePath, {status, image});
        EXPECT_EQ(logOfCheck(false), Names()) << status;
        EXPECT_EQ(namesIn(temporary).size(), std::size_t(++left)) << status; // the session's own file
    }
    EXPECT_EQ(toolsRun(), Names());
}

TEST_F(UpdaterTest, AnImageThatDoesNotArriveLeavesNothing) {
    server.answer(imagePath, {{headOf(image.size())}, {image.substr(0, image.size() / 2)}});
    EXPECT_EQ(logOfCheck(false), Names());
    EXPECT_EQ(namesIn(temporary), Names());
    EXPECT_EQ(toolsRun(), Names());
}

TEST_F(UpdaterTest, ADownloadThatCannotBeReadIsLeftWhereItIs) {
    server.answer(imagePath, {{headOf(image.size())}, {image.substr(0, 1000)}, {image.substr(1000), 1h}});
    auto running = std::async(std::launch::async, [] { return Updater::checkAndInstall(false); });
    Names names;
    ASSERT_TRUE(becomesTrue([&] {
        names = namesIn(temporary);
        return !names.empty() && names[0].starts_with("download-");
    }));
    const auto file = temporary / names[0];
    fs::remove(file);
    fs::create_directory(file);
    server.release();
    EXPECT_FALSE(running.get());
    EXPECT_TRUE(fs::is_directory(file));
    EXPECT_EQ(toolsRun(), Names());
}

TEST_F(UpdaterTest, ASecondDownloadReplacesTheFirst) {
    std::ofstream(temporary / "Vantorel-1.1.0.dmg") << "of an earlier attempt";
    EXPECT_TRUE(check());
    fs::create_directories(temporary / "Vantorel-1.1.0.dmg/even a folder");
    EXPECT_TRUE(check());
}

TEST_F(UpdaterTest, AnImageThatCannotBeMovedIntoPlaceIsLeftWhereItIs) {
    mountTmpfs(temporary / "Vantorel-1.1.0.dmg", "");
    EXPECT_EQ(logOfCheck(false), Names());
    const auto left = namesIn(temporary);
    ASSERT_EQ(left.size(), 2U);
    EXPECT_EQ(contentsOf(temporary / (left[0] == "Vantorel-1.1.0.dmg" ? left[1] : left[0])), image);
    EXPECT_EQ(toolsRun(), Names());
}

TEST_F(UpdaterTest, TheSizeOfTheManifestCountsForNothing) {
    server.answer(manifestPath, {200, R"({"latest": {"version": "1.1.0", "file": "images/Vantorel.dmg", "size": 1,
                                          "sha256": ")" +
                                          sha256(image) + R"("}})"});
    EXPECT_TRUE(check());
}

TEST_F(UpdaterTest, ImagesOfEverySizeAreHashedWhole) {
    for (const std::size_t size : {0UL, 1UL, 262143UL, 262144UL, 262145UL, 3000000UL}) {
        image = std::string(size, 'x');
        server.answer(imagePath, {200, image});
        offer("1.1.0");
        EXPECT_EQ(logOfCheck(false), Names()) << size; // it is no image, but its checksum is right
    }
    EXPECT_EQ(toolsRun(), Names(6, "hdiutil attach"));
}

// The staging

TEST_F(UpdaterTest, TheToolsGetExactlyTheirArguments) {
    ASSERT_TRUE(check());
    const auto runs = Tools::runs();
    ASSERT_EQ(runs.size(), 4U);
    const std::string mountPoint = runs[0].back();
    const auto staged = temporary / "Vantorel-staged-1.1.0/Vantorel.app";
    EXPECT_TRUE(matches(fs::path(mountPoint).filename().string(),
                        "Vantorel-mount-[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}"));
    EXPECT_EQ(fs::path(mountPoint).parent_path(), temporary);
    EXPECT_EQ(runs[0], (Tools::Run{"hdiutil", "attach", temporary / "Vantorel-1.1.0.dmg", "-nobrowse", "-readonly",
                                   "-mountpoint", mountPoint}));
    EXPECT_EQ(runs[1], (Tools::Run{"ditto", mountPoint + "/Vantorel.app", staged}));
    EXPECT_EQ(runs[2], (Tools::Run{"hdiutil", "detach", mountPoint, "-force"}));
}

TEST_F(UpdaterTest, EachAttemptMountsAtAPlaceOfItsOwn) {
    EXPECT_TRUE(check());
    EXPECT_TRUE(check());
    EXPECT_NE(Tools::runs()[0].back(), Tools::runs()[4].back());
}

TEST_F(UpdaterTest, TheApplicationIsStagedWholeAndTheImageUnmounted) {
    ASSERT_TRUE(check());
    EXPECT_EQ(contentsOf(temporary / "Vantorel-staged-1.1.0/Vantorel.app/Contents/new"), "new");
    for (const auto& name : namesIn(temporary)) {
        EXPECT_FALSE(name.starts_with("Vantorel-mount-")) << name;
    }
}

TEST_F(UpdaterTest, AnImageThatCannotBeMountedIsNotUnmounted) {
    Tools::install("hdiutil", "exit 1");
    EXPECT_EQ(logOfCheck(false), Names());
    EXPECT_EQ(toolsRun(), Names{"hdiutil attach"});
    EXPECT_EQ(namesIn(temporary), Names());
}

TEST_F(UpdaterTest, WithoutTheToolNothingIsDownloaded) {
    Tools::remove("hdiutil");
    EXPECT_EQ(logOfCheck(false), Names());
    EXPECT_EQ(paths(), manifestOnly);
    EXPECT_EQ(toolsRun(), Names());
    EXPECT_EQ(namesIn(temporary), Names());
}

struct UpdaterRejects : UpdaterTest {
    /// The image is mounted, not taken, unmounted, and deleted.
    void expectRejected(const std::string& reason) {
        offer("1.1.0");
        EXPECT_EQ(logOfCheck(false), Names()) << reason;
        EXPECT_EQ(toolsRun(), rejectedStaging) << reason;
        EXPECT_EQ(namesIn(temporary), Names()) << reason;
        fs::remove(std::getenv("TOOLS_RECORD"));
    }
};

TEST_F(UpdaterRejects, AnImageWhoseApplicationHasAnotherName) {
    makeImage(infoPlist(identifier, "1.1.0"), "Vantorel 2.app");
    expectRejected("another name");
}

TEST_F(UpdaterRejects, AnApplicationWithoutAReadableInfoPlist) {
    for (const char* info : {"", "no property list", "<plist version=\"1.0\"><array/></plist>"}) {
        makeImage(info);
        expectRejected(info);
    }
}

TEST_F(UpdaterRejects, AnotherApplication) {
    makeImage(infoPlist("example.korvex.other", "1.1.0"));
    expectRejected("another identifier");
    makeImage(infoPlist(identifier + " ", "1.1.0"));
    expectRejected("nearly the identifier");
    makeImage(infoPlist(entry("CFBundleShortVersionString", "1.1.0")));
    expectRejected("no identifier");
    makeImage(infoPlist("<key>CFBundleIdentifier</key><true/>" + entry("CFBundleShortVersionString", "1.1.0")));
    expectRejected("an identifier that is no text");
}

TEST_F(UpdaterRejects, AnotherVersionThanPromised) {
    for (const char* version : {"1.2.0", "1.1", "1.1.0 ", "1.1.00", ""}) {
        makeImage(infoPlist(identifier, version));
        expectRejected(version);
    }
    makeImage(infoPlist(entry("CFBundleIdentifier", identifier)));
    expectRejected("no version");
    makeImage(
        infoPlist(entry("CFBundleIdentifier", identifier) + "<key>CFBundleShortVersionString</key><real>1.1</real>"));
    expectRejected("a version that is no text");
}

TEST_F(UpdaterRejects, ALinkThatLeadsOutOfTheImage) {
    fs::create_directories(home / "outside/Contents");
    std::ofstream(home / "outside/Contents/Info.plist") << infoPlist(identifier, "1.1.0");
    const auto up = fs::path("../../outside"); // the image is mounted two folders below
    for (const auto& target : {home / "outside", up, fs::path("Real.app") / ".." / up, fs::path("nowhere"),
                               fs::path("Vantorel.app"), fs::path(".")}) {
        makeImage(infoPlist(identifier, "1.1.0"), "Real.app");
        fs::create_symlink(target, home / "image/Vantorel.app");
        packImage();
        expectRejected(target);
    }
}

TEST_F(UpdaterTest, ALinkWithinTheImageIsFollowed) {
    makeImage(infoPlist(identifier, "1.1.0"), "Real.app");
    fs::create_directory_symlink("Real.app", home / "image/again");
    fs::create_directory_symlink("again", home / "image/Vantorel.app");
    packImage();
    offer("1.1.0");
    ASSERT_TRUE(check());
    const auto runs = Tools::runs();
    EXPECT_EQ(runs[1][1], runs[0].back() + "/Real.app");
    const auto staged = temporary / "Vantorel-staged-1.1.0/Vantorel.app";
    EXPECT_FALSE(fs::is_symlink(staged));
    EXPECT_EQ(contentsOf(staged / "Contents/new"), "new");
}

TEST_F(UpdaterTest, AnInfoPlistMayBeLargeAndHoldMuch) {
    std::string arrays;
    for (int count = 0; count < 2000; ++count) {
        arrays += "<array/>";
    }
    const auto needed = entry("CFBundleIdentifier", identifier) + entry("CFBundleShortVersionString", "1.1.0");
    makeImage(infoPlist(entry("long", std::string(std::size_t{2} << 20, 'x')) + "<key>many</key><array>" + arrays +
                        "</array>" + needed));
    offer("1.1.0");
    EXPECT_TRUE(check());
}

struct UpdaterWithoutIdentifier : UpdaterTest {
    std::string runningInfo() override {
        return infoPlist("<key>CFBundleShortVersionString</key><integer>3</integer>");
    }
};

TEST_F(UpdaterWithoutIdentifier, TakesAnApplicationThatHasNoneEither) {
    EXPECT_EQ(Updater::currentVersion(), "0"); // a version must be a text
    makeImage(infoPlist(entry("CFBundleShortVersionString", "0.1")));
    offer("0.1");
    EXPECT_TRUE(check());
}

TEST_F(UpdaterWithoutIdentifier, RejectsAnApplicationThatHasOne) {
    EXPECT_FALSE(check());
    EXPECT_EQ(toolsRun(), rejectedStaging);
}

TEST_F(UpdaterTest, WhatAnEarlierAttemptStagedIsClearedFirst) {
    const auto folder = temporary / "Vantorel-staged-1.1.0";
    fs::create_directories(folder / "Vantorel.app/Contents/stale");
    EXPECT_TRUE(check());
    EXPECT_EQ(namesIn(folder / "Vantorel.app/Contents"), (Names{"Info.plist", "new"}));
}

// The copy alone decides.
TEST_F(UpdaterTest, AStagingFolderThatCannotBeMadeIsNoFailure) {
    const auto folder = temporary / "Vantorel-staged-1.1.0";
    std::ofstream(folder) << "in the way";
    ASSERT_EQ(mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr), 0); // so that it stays there
    Tools::install("ditto", R"(folder=$(dirname "$2")
        umount "$folder" && rm "$folder" && mkdir "$folder" && cp -a "$1" "$2")");
    EXPECT_TRUE(check());
}

TEST_F(UpdaterTest, ACopyThatFailsLeavesTheStagingFolder) {
    Tools::install("ditto", R"(mkdir "$2"; exit 1)");
    EXPECT_EQ(logOfCheck(false), Names());
    EXPECT_EQ(toolsRun(), wholeStaging);
    EXPECT_EQ(namesIn(temporary), Names{"Vantorel-staged-1.1.0"});
    EXPECT_TRUE(fs::exists(temporary / "Vantorel-staged-1.1.0/Vantorel.app"));
}

TEST_F(UpdaterTest, ACopyThatCannotBeStartedLeavesTheStagingFolder) {
    Tools::remove("ditto");
    EXPECT_EQ(logOfCheck(false), Names());
    EXPECT_EQ(toolsRun(), (Names{"hdiutil attach", "hdiutil detach"}));
    EXPECT_EQ(namesIn(temporary), Names{"Vantorel-staged-1.1.0"});
}

TEST_F(UpdaterTest, AnImageThatCannotBeUnmountedIsInstalledAllTheSame) {
    Tools::install("hdiutil", R"([ $1 = attach ] && mkdir "$6" && tar -xf "$2" -C "$6")");
    EXPECT_TRUE(check());
}

// The tools

TEST_F(UpdaterTest, AToolThatASignalEndsHasFailed) {
    Tools::install("hdiutil", "kill -KILL $$");
    EXPECT_FALSE(check());
    EXPECT_EQ(toolsRun(), Names{"hdiutil attach"});
}

TEST_F(UpdaterTest, WhatToolsSayIsHeardNowhere) {
    for (const char* tool : {"hdiutil", "ditto"}) {
        const auto script = contentsOf(fs::path("/usr/bin") / tool);
        Tools::install(tool, "echo noise; echo noise >&2\n" + script.substr(script.find("TOOLS_RECORD\"\n") + 14));
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(logOfCheck(true), Names());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// The swap

TEST_F(UpdaterTest, TheHelperGetsExactlyItsArguments) {
    ASSERT_TRUE(check());
    const auto run = Tools::runs().back();
    const std::string uuid = "[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}";
    ASSERT_EQ(run.size(), 6U);
    EXPECT_TRUE(matches(run[1], temporary.string() + "/Vantorel-update-" + uuid + "\\.sh"));
    EXPECT_EQ(run[2], bundle);
    EXPECT_EQ(run[3], temporary / "Vantorel-staged-1.1.0/Vantorel.app");
    EXPECT_EQ(run[4], std::to_string(getpid()));
    EXPECT_TRUE(matches(run[5], temporary.string() + "/Vantorel-update-" + uuid + "\\.started"));
    EXPECT_NE(fs::path(run[1]).stem(), fs::path(run[5]).stem());
}

// The sum was taken of the script's lines where they are written down, not of the program's constant.
TEST_F(UpdaterTest, TheScriptIsWrittenOutByteForByteAndExecutable) {
    ASSERT_TRUE(check());
    const auto script = contentsOf(home / "script");
    EXPECT_EQ(script.size(), 755U);
    EXPECT_EQ(sha256(script), "4d7ba0ec5df5c1a8d5f43d8e32d8065c59ae2bbe4d5f2dd238c3f59990ce06ba");
    EXPECT_EQ(fs::status(home / "script").permissions(), fs::perms(0755));
}

TEST_F(UpdaterTest, OnceTheHelperRunsTheAttemptCountsAndTheImageIsGone) {
    EXPECT_EQ(logOfCheck(true), Names());
    EXPECT_EQ(Prefs::updateAttempts("1.1.0"), 1);
    const auto left = namesIn(temporary); // the helper's: script, marker and staging folder
    ASSERT_EQ(left.size(), 3U);
    EXPECT_EQ(left[0], "Vantorel-staged-1.1.0");
    EXPECT_TRUE(left[1].starts_with("Vantorel-update-"));
    EXPECT_TRUE(left[2].starts_with("Vantorel-update-"));
}

// The helper is started by the shell in any case.
TEST_F(UpdaterTest, AScriptThatCannotBeMadeExecutableIsStartedAllTheSame) {
    refusesChmod = true;
    EXPECT_TRUE(check());
    EXPECT_NE(fs::status(home / "script").permissions(), fs::perms(0755));
}

TEST_F(UpdaterTest, TheHelperSpeaksWhereTheApplicationDoes) {
    Tools::install("sh",
                   R"(echo said; echo complained >&2; readlink /proc/$$/fd/0 > "$UPDATER_TESTS_HOME/input"; : > "$5")");
    testing::internal::CaptureStdout();
    EXPECT_EQ(logOfCheck(true), Names{"complained"});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "said\n");
    EXPECT_EQ(contentsOf(home / "input"), fs::read_symlink("/proc/self/fd/0").string() + "\n");
}

/// Looks at the preferences' file at each thing that the main thread does.
struct MainThread : QObject {
    explicit MainThread(std::function<bool()> isCounted) : isCounted(std::move(isCounted)) {
        qApp->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override {
        if (object == qApp && event->type() == QEvent::MetaCall) {
            countedBefore.push_back(isCounted());
        }
        return false;
    }

    const std::function<bool()> isCounted;
    std::vector<bool> countedBefore;
};

TEST_F(UpdaterTest, TheAttemptIsCountedBeforeTheMainThreadIsAskedToQuit) {
    QCoreApplication::processEvents();
    ASSERT_TRUE(check());
    const auto file = home / "config" / (identifier + ".plist");
    const MainThread mainThread([&] { return contentsOf(file).find("1.1.0") != std::string::npos; });
    QCoreApplication::processEvents();
    EXPECT_EQ(mainThread.countedBefore, (std::vector{false, true})); // to store the count, and then to quit
}

// What a worker asked itself would be lost, for the event loop does not run yet.
TEST_F(UpdaterTest, TheMainThreadQuits) {
    ASSERT_TRUE(check());
    bool hasQuit = true;
    QTimer::singleShot(10s, [&] {
        hasQuit = false;
        QCoreApplication::exit();
    });
    NS::Application::sharedApplication().run();
    EXPECT_TRUE(hasQuit);
}

struct Quitting : NS::ApplicationDelegate {
    void applicationDidFinishLaunching(const NS::Notification&) override {
        worker = std::thread([this] { installed = Updater::checkAndInstall(false); });
    }
    void applicationWillTerminate(const NS::Notification&) override {
        worker.join();
        terminated = true;
    }

    std::thread worker;
    bool installed = false;
    bool terminated = false;
};

TEST_F(UpdaterTest, OnceTheHelperRunsTheApplicationQuits) {
    const auto delegate = std::make_shared<Quitting>();
    NS::Application::sharedApplication().setDelegate(delegate);
    NS::Application::sharedApplication().run();
    EXPECT_TRUE(delegate->installed);
    EXPECT_TRUE(delegate->terminated);
}

struct UpdaterMarkerRace : UpdaterTest {
    std::chrono::duration<double> timeOfCheck(bool expected, const Names& log) {
        const auto before = std::chrono::steady_clock::now();
        EXPECT_EQ(logOfCheck(expected), log);
        return std::chrono::steady_clock::now() - before;
    }
};

TEST_F(UpdaterMarkerRace, AHelperThatNeverStartsKeepsTheCurrentVersion) {
    Tools::install("sh", "exec sleep 6");
    const auto time = timeOfCheck(false, {helperSilent});
    EXPECT_GE(time, 3s);
    EXPECT_LT(time, 5s);
    EXPECT_EQ(namesIn(temporary), Names());
    EXPECT_EQ(Prefs::updateAttempts("1.1.0"), 0);
    EXPECT_EQ(namesIn(applications), Names{"Vantorel.app"});
    EXPECT_LE(looksForMarker, 60); // 50 milliseconds apart
}

TEST_F(UpdaterMarkerRace, AMarkerWithinThreeSecondsCounts) {
    Tools::install("sh", R"(sleep 2; : > "$5")");
    EXPECT_GE(timeOfCheck(true, {}), 2s);
}

TEST_F(UpdaterMarkerRace, AMarkerAfterThreeSecondsDoesNot) {
    Tools::install("sh", R"(sleep 5; : > "$5")");
    EXPECT_LT(timeOfCheck(false, {helperSilent}), 5s);
}

TEST_F(UpdaterTest, AScriptThatCannotBeWrittenLeavesTheStagingFolder) {
    mountTmpfs(temporary, "size=1m,mode=700");
    Tools::install("hdiutil", R"(case $1 in
        attach) mkdir "$6" && tar -xf "$2" -C "$6" ;;
        detach) rm -rf "$2"; cat /dev/zero > "$TMPDIR/filler" ;;
        esac)");
    EXPECT_EQ(logOfCheck(false), Names());
    EXPECT_EQ(toolsRun(), wholeStaging);
    EXPECT_EQ(namesIn(temporary), (Names{"Vantorel-staged-1.1.0", "filler"}));
}

TEST_F(UpdaterTest, WithoutAShellTheScriptAndTheStagingFolderStay) {
    Tools::remove("sh");
    EXPECT_EQ(logOfCheck(false), Names());
    const auto left = namesIn(temporary);
    ASSERT_EQ(left.size(), 2U);
    EXPECT_EQ(left[0], "Vantorel-staged-1.1.0");
    EXPECT_TRUE(left[1].ends_with(".sh"));
    EXPECT_EQ(Prefs::updateAttempts("1.1.0"), 0);
}

// The target

TEST_F(UpdaterTest, InAFolderThatIsNotWritableNothingIsDownloaded) {
    const char* folder = applications.c_str();
    ASSERT_EQ(mount(folder, folder, nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(mount(nullptr, folder, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    EXPECT_EQ(logOfCheck(false), Names());
    EXPECT_EQ(paths(), manifestOnly);
}

TEST_F(UpdaterTest, AVersionThatIsAPathOrEndsEarlyLeadsNowhere) {
    for (const char* version : {"9.1/../../../elsewhere", "9.1.x\\u0000"}) {
        offer(version);
        EXPECT_EQ(logOfCheck(false), Names());
    }
    EXPECT_EQ(paths(), Names(2, manifestPath));
}

TEST_F(UpdaterTest, AVersionMayHoldAnythingElse) {
    const std::string version = "2.0~beta (3), \\'x'%";
    makeImage(infoPlist(identifier, version));
    offer("2.0~beta (3), \\\\'x'%");
    EXPECT_TRUE(check());
}

} // namespace
