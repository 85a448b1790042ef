#include "Platform/Foundation/ProcessInfo.h"
#include "Platform/Foundation/UUID.h"
#include "Support/Matches.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <unistd.h>

namespace {

TEST(ProcessInfo, HasTheEnvironmentOfTheMoment) {
    setenv("A_TEST_VARIABLE", "a=b c", 1);
    EXPECT_EQ(NS::ProcessInfo::processInfo().environment().at("A_TEST_VARIABLE"), "a=b c");
    setenv("A_TEST_VARIABLE", "", 1);
    EXPECT_EQ(NS::ProcessInfo::processInfo().environment().at("A_TEST_VARIABLE"), "");
    unsetenv("A_TEST_VARIABLE");
    EXPECT_FALSE(NS::ProcessInfo::processInfo().environment().contains("A_TEST_VARIABLE"));
}

TEST(ProcessInfo, IdentifiesThisProcess) {
    EXPECT_EQ(NS::ProcessInfo::processInfo().processIdentifier(), getpid());
}

TEST(UUID, IsRandomInUpperCase) {
    const std::string form = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";
    std::set<std::string> texts;
    for (int count = 0; count < 1000; ++count) {
        const auto uuid = NS::UUID::init();
        EXPECT_TRUE(matches(uuid.UUIDString(), form)) << uuid.UUIDString();
        EXPECT_EQ(uuid.UUIDString(), uuid.UUIDString());
        texts.insert(uuid.UUIDString());
    }
    EXPECT_EQ(texts.size(), 1000U);
}

} // namespace
