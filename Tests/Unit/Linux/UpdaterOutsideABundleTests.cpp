#include "Updater.h"

#include "Prefs.h"
#include "Support/HTTPServer.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

TEST(UpdaterOutsideABundle, HasVersionZeroAndDownloadsNothing) {
    EXPECT_EQ(Updater::currentVersion(), "0");
    Prefs::registerDefaults();
    Seam::HTTPServer server;
    server.answer("/updates/vantorel.json",
                  {200, R"({"latest": {"version": "0.0.1", "file": "image.dmg", "sha256": "ab"}})"});
    setenv("KORVEX_UPDATE_BASE", server.url().c_str(), 1);
    EXPECT_TRUE(Updater::isNewer(Updater::fetchLatest()->version, Updater::currentVersion()));
    EXPECT_FALSE(Updater::checkAndInstall(false));
    ASSERT_EQ(server.requests().size(), 2U); // two manifests
    EXPECT_EQ(server.requests()[1].path, "/updates/vantorel.json");
}

} // namespace
