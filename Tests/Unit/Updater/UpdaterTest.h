#pragma once

#include "Platform/AppKit/Application.h"
#include "Platform/CryptoKit/SHA256.h"
#include "Platform/Foundation/Task.h"
#include "Prefs.h"
#include "Support/HTTPServer.h"
#include "Support/Matches.h"
#include "Tools.h"
#include "Updater.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <sys/mount.h>
#include <thread>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Names = std::vector<std::string>;

inline const std::string identifier = "example.korvex.test";
inline constexpr char manifestPath[] = "/updates/vantorel.json";
inline constexpr char imagePath[] = "/images/Vantorel.dmg";

inline std::string contentsOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline std::string sha256(const std::string& text) {
    NS::SHA256 hash;
    hash.update(text.data(), text.size());
    std::string digits;
    for (const int byte : hash.finalize()) {
        digits += "0123456789abcdef"[byte / 16];
        digits += "0123456789abcdef"[byte % 16];
    }
    return digits;
}

inline std::string infoPlist(const std::string& entries) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + entries + "</dict></plist>";
}

inline std::string entry(const std::string& key, const std::string& value) {
    return "<key>" + key + "</key><string>" + value + "</string>";
}

inline std::string infoPlist(const std::string& bundleIdentifier, const std::string& version) {
    return infoPlist(entry("CFBundleIdentifier", bundleIdentifier) + entry("CFBundleShortVersionString", version));
}

inline std::string headOf(std::size_t bodySize) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(bodySize) + "\r\n\r\n";
}

inline Names namesIn(const fs::path& folder) {
    Names names;
    for (const auto& item : fs::directory_iterator(folder)) {
        names.push_back(item.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

template <class Condition>
bool becomesTrue(const Condition& condition) {
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

/// Version 1.0.0 is running from its bundle, and a server offers 1.1.0.
struct UpdaterTest : testing::Test {
    virtual std::string runningInfo() { return infoPlist(identifier, "1.0.0"); }

    void SetUp() override {
        std::ofstream(bundle / "Contents/Info.plist") << runningInfo();
        setenv("KORVEX_UPDATE_BASE", server.url().c_str(), 1);
        NS::Application::sharedApplication();
        Prefs::registerDefaults();
        // An image is an archive here, and "mounting" unpacks it.
        Tools::install("hdiutil", R"(case $1 in
            attach) mkdir "$6" && tar -xf "$2" -C "$6" ;;
            detach) rm -rf "$2" ;;
            esac)");
        Tools::install("ditto", R"(cp -a "$1" "$2")");
        Tools::install("sh", R"(cp -p "$1" "$UPDATER_TESTS_HOME/script"; : > "$5")");
        makeImage(infoPlist(identifier, "1.1.0"));
        offer("1.1.0");
    }

    void makeImage(const std::string& info, const std::string& name = "Vantorel.app") {
        const auto folder = home / "image";
        fs::remove_all(folder);
        fs::create_directories(folder / name / "Contents");
        if (!info.empty()) {
            std::ofstream(folder / name / "Contents/Info.plist") << info;
        }
        std::ofstream(folder / name / "Contents/new") << "new";
        packImage();
    }

    void packImage() {
        auto tar = NS::Task::init();
        tar.setExecutableURL(NS::URL::fileURLWithPath("/usr/bin/tar"));
        tar.setArguments({"-cf", (home / "image.tar").string(), "-C", (home / "image").string(), "."});
        ASSERT_TRUE(tar.launchAndReturnError());
        tar.waitUntilExit();
        ASSERT_EQ(tar.terminationStatus(), 0);
        image = contentsOf(home / "image.tar");
        server.answer(imagePath, {200, image});
    }

    void offer(const std::string& version) { offer(version, sha256(image)); }
    void offer(const std::string& version, const std::string& checksum,
               const std::string& file = "images/Vantorel.dmg") {
        server.answer(manifestPath, {200, R"({"latest": {"version": ")" + version + R"(", "file": ")" + file +
                                              R"(", "sha256": ")" + checksum + R"("}})"});
    }

    /// One check, as it runs: away from the main thread.
    bool check(bool userInitiated = false) {
        return std::async(std::launch::async, [=] { return Updater::checkAndInstall(userInitiated); }).get();
    }

    /// What a check logged, without the time and the process.
    Names logOfCheck(bool expected) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(check(), expected);
        std::istringstream log(testing::internal::GetCapturedStderr());
        Names lines;
        for (std::string line; std::getline(log, line);) {
            const bool hasHead = matches(line, "[-0-9]+ [:.0-9]+ [^ ]+ .*");
            lines.push_back(hasHead ? line.substr(line.find(' ', line.find(' ', line.find(' ') + 1) + 1) + 1) : line);
        }
        return lines;
    }

    Names paths() {
        Names paths;
        for (const auto& request : server.requests()) {
            paths.push_back(request.path);
        }
        return paths;
    }

    Names toolsRun() {
        Names names;
        for (const auto& run : Tools::runs()) {
            names.push_back(run[0] == "hdiutil" ? "hdiutil " + run[1] : run[0]);
        }
        return names;
    }

    void mountTmpfs(const fs::path& folder, const char* options) {
        fs::create_directories(folder);
        ASSERT_EQ(mount("tmpfs", folder.c_str(), "tmpfs", 0, options), 0);
    }

    const fs::path home = std::getenv("UPDATER_TESTS_HOME");
    const fs::path applications = home / "My Applications";
    const fs::path bundle = applications / "Vantorel.app";
    const fs::path temporary = home / "temporary files";
    std::string image;
    Seam::HTTPServer server;
};
