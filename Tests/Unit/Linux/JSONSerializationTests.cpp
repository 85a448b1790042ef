#include "Platform/Foundation/JSONSerialization.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
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

TEST(JSONSerialization, ObjectsAndArraysAreRead) {
    EXPECT_EQ(JSONObjectWithData(" {\"a\" :\t[1, \"x\", {}],\r\n\"b\":{\"c\":[]}} "),
              NS::PropertyListValue(NS::Dictionary{{"a", NS::Array{1, "x", NS::Dictionary()}},
                                                   {"b", NS::Dictionary{{"c", NS::Array()}}}}));
    EXPECT_EQ(JSONObjectWithData("[]"), NS::PropertyListValue(NS::Array()));
    EXPECT_EQ(JSONObjectWithData("{ }"), NS::PropertyListValue(NS::Dictionary()));
}

TEST(JSONSerialization, FragmentsAreRefused) {
    for (const char* text : {"1", "\"a\"", "true", "null", " 1 "}) {
        EXPECT_EQ(JSONObjectWithData(text), std::nullopt) << text;
    }
}

TEST(JSONSerialization, NothingIsRefused) {
    EXPECT_EQ(JSONObjectWithData(""), std::nullopt);
    EXPECT_EQ(JSONObjectWithData(" \n"), std::nullopt);
    EXPECT_EQ(JSONObjectWithData(std::string(1, '\0')), std::nullopt);
}

TEST(JSONSerialization, WhatIsNotWellFormedIsRefused) {
    for (const char* text :
         {"[",           "]",     "{",          "}",       "[1,]",  "[,1]",  "[1 2]",        "{\"a\"}",   "{\"a\":}",
          "{\"a\":1,}",  "{,}",   "{a:1}",      "{1:1}",   "[1]]",  "[1] x", "[1],",         "[tru]",     "[True]",
          "[nul]",       "[nan]", "[Infinity]", "['a']",   "[\"a]", "[\"a",  "[\"",          "[\"\\",     "{\"a\":1",
          "{\"a\":[}",   "[1}",   "{\"a\":1]",  "[/**/1]", "[1]//", "[\v1]", "[\xC2\xA0 1]", "{\"a\" 1}", "{\"a\"::1}",
          "[\"a\"\"b\"]"}) {
        EXPECT_EQ(JSONObjectWithData(text), std::nullopt) << text;
    }
    EXPECT_EQ(JSONObjectWithData(std::string("[1]\0", 4)), std::nullopt);
}

TEST(JSONSerialization, NumbersThatJSONDoesNotKnowAreRefused) {
    for (const char* text : {"01", "-01", "+1", "-", "--1", "1.", ".5", "-.5", "1.e1", "1e", "1e+", "1e+-1", "0x10",
                             "1_0", "00", "1f", "1 .5"}) {
        EXPECT_EQ(value(text), std::nullopt) << text;
    }
}

TEST(JSONSerialization, IntegersAreExactToTheLastBit) {
    EXPECT_EQ(value("0"), NS::PropertyListValue(0));
    EXPECT_EQ(value("-0")->integer(), 0);
    EXPECT_EQ(value("9007199254740993"), NS::PropertyListValue(std::int64_t{9007199254740993}));
    EXPECT_EQ(value("9223372036854775807"), NS::PropertyListValue(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(value("-9223372036854775808"), NS::PropertyListValue(std::numeric_limits<std::int64_t>::min()));
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

TEST(JSONSerialization, RealsThatAreWholeCountAsIntegers) {
    EXPECT_EQ(value("5.0")->integer(), 5);
    EXPECT_EQ(value("5e2")->integer(), 500);
    EXPECT_EQ(value("-50E-1")->integer(), -5);
    EXPECT_EQ(value("5.5")->integer(), std::nullopt);
    EXPECT_EQ(value("5.5"), NS::PropertyListValue(5.5));
    EXPECT_EQ(value("-1.25e+2"), NS::PropertyListValue(-125.0));
}

TEST(JSONSerialization, BooleansAndNullAreNoNumbers) {
    EXPECT_EQ(value("true"), NS::PropertyListValue(true));
    EXPECT_EQ(value("false"), NS::PropertyListValue(false));
    EXPECT_EQ(value("true")->integer(), std::nullopt);
    EXPECT_EQ(value("null"), NS::PropertyListValue());
    EXPECT_EQ(value("null")->boolean(), nullptr);
}

TEST(JSONSerialization, TextsAreUnescaped) {
    EXPECT_EQ(value(R"("\"\\\/\b\f\n\r\t")"), NS::PropertyListValue("\"\\/\b\f\n\r\t"));
    EXPECT_EQ(value(R"("\u0041\u00e9\u20AC\uD83D\uDE00\uFFFF")"),
              NS::PropertyListValue("A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBF"));
    EXPECT_EQ(value(R"("a\u0000b")"), NS::PropertyListValue(std::string("a\0b", 3)));
    EXPECT_EQ(value("\"\xF0\x9F\x98\x80 / \x7F\""), NS::PropertyListValue("\xF0\x9F\x98\x80 / \x7F"));
    EXPECT_EQ(value(R"("")"), NS::PropertyListValue(""));
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

TEST(JSONSerialization, EveryShorterTextIsRefused) {
    const std::string text =
        R"({"latest":{"version":"1.2","size":-12.5e3,"notes":{"en":"\u00e9\n"},"x":[true,false,null]}})";
    ASSERT_TRUE(JSONObjectWithData(text));
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_EQ(JSONObjectWithData(text.substr(0, length)), std::nullopt) << text.substr(0, length);
    }
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
