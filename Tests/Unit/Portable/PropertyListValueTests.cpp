#include "Platform/Foundation/PropertyListValue.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(Value, IntegralNumbersAreIntegers) {
    EXPECT_EQ(NS::PropertyListValue(7).integer(), 7);
    EXPECT_EQ(NS::PropertyListValue(-2.0).integer(), -2);
    EXPECT_EQ(NS::PropertyListValue(std::numeric_limits<std::int64_t>::max()).integer(),
              std::numeric_limits<std::int64_t>::max());
}

TEST(Value, NothingElseIsAnInteger) {
    EXPECT_EQ(NS::PropertyListValue(2.5).integer(), std::nullopt);
    EXPECT_EQ(NS::PropertyListValue(9223372036854775808.0).integer(), std::nullopt);
    EXPECT_EQ(NS::PropertyListValue(-1e300).integer(), std::nullopt);
    EXPECT_EQ(NS::PropertyListValue(std::numeric_limits<double>::quiet_NaN()).integer(), std::nullopt);
    EXPECT_EQ(NS::PropertyListValue(true).integer(), std::nullopt);
    EXPECT_EQ(NS::PropertyListValue("7").integer(), std::nullopt);
    EXPECT_EQ(NS::PropertyListValue().integer(), std::nullopt);
}

TEST(Value, HoldsOneKindAtATime) {
    const NS::PropertyListValue text("cup");
    ASSERT_NE(text.string(), nullptr);
    EXPECT_EQ(*text.string(), "cup");
    EXPECT_EQ(text.dictionary(), nullptr);
    EXPECT_EQ(text.boolean(), nullptr);
    EXPECT_NE(NS::PropertyListValue(true), NS::PropertyListValue(1));
}

} // namespace
