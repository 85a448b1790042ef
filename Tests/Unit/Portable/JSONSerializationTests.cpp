#include "Platform/Foundation/JSONSerialization.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
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

TEST(JSONSerialization, IntegersAreExactToTheLastBit) {
    EXPECT_EQ(value("0"), NS::PropertyListValue(0));
    EXPECT_EQ(value("-0")->integer(), 0);
    EXPECT_EQ(value("9007199254740993"), NS::PropertyListValue(std::int64_t{9007199254740993}));
    EXPECT_EQ(value("9223372036854775807"), NS::PropertyListValue(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(value("-9223372036854775808"), NS::PropertyListValue(std::numeric_limits<std::int64_t>::min()));
}

TEST(JSONSerialization, LargerNumbersAreNoIntegers) {
    for (const char* text :
         {"9223372036854775808", "18446744073709551615", "18446744073709551616", "-9223372036854777856", "1e300"}) {
        const auto number = value(text);
        ASSERT_TRUE(number) << text;
        EXPECT_TRUE(number->real()) << text;
        EXPECT_EQ(number->integer(), std::nullopt) << text;
    }
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

TEST(JSONSerialization, EveryShorterTextIsRefused) {
    const std::string text =
        R"({"latest":{"version":"1.2","size":-12.5e3,"notes":{"en":"\u00e9\n"},"x":[true,false,null]}})";
    ASSERT_TRUE(JSONObjectWithData(text));
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_EQ(JSONObjectWithData(text.substr(0, length)), std::nullopt) << text.substr(0, length);
    }
}

} // namespace
