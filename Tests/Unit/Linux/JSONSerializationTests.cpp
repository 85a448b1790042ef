#include "Platform/Foundation/JSONSerialization.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <string>

namespace {

using NS::JSONSerialization::JSONObjectWithData;

/// The only item of an array that holds `text`.
std::optional<NS::PropertyListValue> value(const std::string& text) {
    const auto array = JSONObjectWithData("[" + text + "]");
    if (!array || !array->array() || array->array()->size() != 1) {
        return std::nullopt;
    }
    return array->array()->front();
}

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (; count > 0; --count) {
        result += text;
    }
    return result;
}

std::size_t allocatedBytes() {
    const auto use = mallinfo2();
    return use.uordblks + use.hblkhd;
}

TEST(JSONSerialization, NumbersThatJSONDoesNotKnowAreRefused) {
    for (const char* text : {"01", "-01", "+1", "-", "--1", "1.", ".5", "-.5", "1.e1", "1e", "1e+", "1e+-1", "0x10",
                             "1_0", "00", "1f", "1 .5"}) {
        EXPECT_EQ(value(text), std::nullopt) << text;
    }
}

TEST(JSONSerialization, LargerNumbersAreNoIntegers) {
    for (const char* text : {"9223372036854775808", "18446744073709551616", "-9223372036854777856", "1e300"}) {
        const auto number = value(text);
        ASSERT_TRUE(number) << text;
        EXPECT_TRUE(number->real()) << text;
        EXPECT_EQ(number->integer(), std::nullopt) << text;
    }
}

TEST(JSONSerialization, NumbersBeyondAllMeasureAreRefused) {
    EXPECT_EQ(value("1e999"), std::nullopt);
    EXPECT_EQ(value("-1e999"), std::nullopt);
    EXPECT_EQ(value(std::string(400, '9')), std::nullopt);
}

TEST(JSONSerialization, EscapesOfNothingAreRefused) {
    for (const char* text : {R"("\x")", R"("\")", R"("\'")", R"("\u")", R"("\u00")", R"("\u004")", R"("\u004g")",
                             R"("\u+041")", R"("\u-041")", R"("\U0041")", R"("\0")"}) {
        EXPECT_EQ(value(text), std::nullopt) << text;
    }
}

TEST(JSONSerialization, HalvesOfCharactersAreRefused) {
    for (const char* text : {R"("\uD83D")", R"("\uDE00")", R"("\uDE00\uD83D")", R"("\uD83Dx")", R"("\uD83D\n")",
                             R"("\uD83D\u0041")", R"("\uD83D\uD83D")", R"("\uDE00\uDE00")"}) {
        EXPECT_EQ(value(text), std::nullopt) << text;
    }
}

TEST(JSONSerialization, ControlCharactersInTextsAreRefused) {
    for (char c = 0; c < 0x20; ++c) {
        EXPECT_EQ(value(std::string("\"a") + c + "\""), std::nullopt) << int(c);
    }
}

TEST(JSONSerialization, WhatIsNotUTF8IsRefused) {
    for (const char* bytes : {"\xFF", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "\xE2\x82"}) {
        EXPECT_EQ(value(std::string("\"") + bytes + "\""), std::nullopt);
        EXPECT_EQ(JSONObjectWithData(std::string("{\"") + bytes + "\":1}"), std::nullopt);
    }
    EXPECT_EQ(JSONObjectWithData(std::string("\xFF\xFE[\0]\0", 6)), std::nullopt);
    EXPECT_EQ(JSONObjectWithData(std::string("[\0]\0", 4)), std::nullopt);
}

TEST(JSONSerialization, AByteOrderMarkIsPassedOver) {
    EXPECT_EQ(JSONObjectWithData("\xEF\xBB\xBF[1]"), NS::PropertyListValue(NS::Array{1}));
    EXPECT_EQ(JSONObjectWithData("[\xEF\xBB\xBF]"), std::nullopt);
}

TEST(JSONSerialization, OfEqualKeysTheLastOneCounts) {
    EXPECT_EQ(JSONObjectWithData(R"({"a":1,"b":2,"\u0061":3})"),
              NS::PropertyListValue(NS::Dictionary{{"a", 3}, {"b", 2}}));
}

TEST(JSONSerialization, NestingEndsAt512) {
    EXPECT_TRUE(JSONObjectWithData(repeated("[", 512) + repeated("]", 512)));
    EXPECT_EQ(JSONObjectWithData(repeated("[", 513) + repeated("]", 513)), std::nullopt);
    EXPECT_TRUE(JSONObjectWithData(repeated("{\"a\":", 511) + "{}" + repeated("}", 511)));
    EXPECT_EQ(JSONObjectWithData(repeated("{\"a\":", 512) + "{}" + repeated("}", 512)), std::nullopt);
}

TEST(JSONSerialization, NoNestingOverflowsTheStack) {
    EXPECT_EQ(JSONObjectWithData(std::string(10'000'000, '[')), std::nullopt);
    EXPECT_EQ(JSONObjectWithData(repeated("[{\"a\":", 2'000'000)), std::nullopt);
}

TEST(JSONSerialization, ALargeTextIsRead) {
    const auto text = "[\"" + std::string(100'000'000, 'x') + "\"]";
    const auto before = allocatedBytes();
    const auto result = JSONObjectWithData(text);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->array()->front().string()->size(), 100'000'000U);
    EXPECT_LT(allocatedBytes(), before + 150'000'000U);
}

TEST(JSONSerialization, ManySmallValuesCostNoMoreThanTheyAre) {
    const std::size_t count = 3'000'000;
    const auto text = "[" + repeated("[],", count - 1) + "[]]";
    const auto before = allocatedBytes();
    const auto result = JSONObjectWithData(text);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->array()->size(), count);
    EXPECT_LT(allocatedBytes(), before + 3 * count * sizeof(NS::PropertyListValue));
}

} // namespace
