#include "Platform/Foundation/JSONSerialization.h"

#include <QByteArray>
#include <QString>
#include <QStringConverter>
#include <gtest/gtest.h>
#include <malloc.h>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

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

TEST(JSONSerialization, NumbersBeyondAllMeasureAreNoIntegersAndHarmNobody) {
    for (const auto& text : {std::string("1e400"), std::string("-1e999"), "1e" + std::string(400, '9'),
                             std::string(400, '9'), "0." + std::string(400, '0') + "1", std::string("1e-999")}) {
        const auto number = value(text);
        ASSERT_TRUE(number) << text;
        EXPECT_EQ(number->integer().value_or(0), 0) << text;
    }
    EXPECT_EQ(value("1e400x"), std::nullopt);
    EXPECT_EQ(value("01e400"), std::nullopt);
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
}

/// Every character in so many bytes, the lowest first or last.
std::string encoded(const QString& text, QStringConverter::Encoding encoding, bool isMarked) {
    QStringEncoder encoder(encoding, isMarked ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
    const QByteArray bytes = encoder.encode(text);
    return bytes.toStdString();
}

TEST(JSONSerialization, EveryEncodingOfUnicodeIsRead) {
    using Encoding = QStringConverter::Encoding;
    const NS::PropertyListValue expected = NS::Dictionary{{"é", NS::Array{1, "\xF0\x9F\x98\x80"}}};
    const QString text = QStringLiteral("{\"é\":[1,\"\U0001F600\"]}");
    for (const auto encoding :
         {Encoding::Utf8, Encoding::Utf16LE, Encoding::Utf16BE, Encoding::Utf32LE, Encoding::Utf32BE}) {
        for (const bool isMarked : {false, true}) {
            const auto bytes = encoded(text, encoding, isMarked);
            EXPECT_EQ(JSONObjectWithData(bytes), expected) << int(encoding) << isMarked;
            EXPECT_EQ(JSONObjectWithData(bytes.substr(0, bytes.size() - 1)), std::nullopt) << int(encoding);
            EXPECT_EQ(JSONObjectWithData(bytes + '\0'), std::nullopt) << int(encoding);
        }
    }
    EXPECT_EQ(JSONObjectWithData(std::string("[\0]\0", 4)), NS::PropertyListValue(NS::Array()));
}

TEST(JSONSerialization, HalfACharacterInUTF16IsRefused) {
    const QString half = QStringLiteral("[\"") + QChar(0xD83D) + QStringLiteral("\"]");
    std::string bytes;
    for (const QChar unit : half) {
        bytes += static_cast<char>(unit.unicode() & 0xFF);
        bytes += static_cast<char>(unit.unicode() >> 8);
    }
    EXPECT_EQ(JSONObjectWithData(bytes), std::nullopt);
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

TEST(JSONSerialization, OnlyWhatIsWantedIsKept) {
    const std::string text =
        R"({"a": {"b": 1, "c": 2, "d": {"x": "y"}, "\u0065": [1]}, "b": 3, "f": "g", "*": {"b": 4}})";
    const auto read = [&](const std::vector<NS::JSONSerialization::KeyPath>& wanted) {
        return JSONObjectWithData(text, wanted).value().dictionary()->at("a");
    };
    EXPECT_EQ(read({{"a", "b"}, {"a", "e"}}), NS::PropertyListValue(NS::Dictionary{{"b", 1}, {"e", NS::Array()}}));
    EXPECT_EQ(read({{"a", "d"}}), NS::PropertyListValue(NS::Dictionary{{"d", NS::Dictionary()}}));
    EXPECT_EQ(read({{"a", "*", "x"}}), NS::PropertyListValue(NS::Dictionary{
                                           {"b", 1}, {"c", 2}, {"d", NS::Dictionary{{"x", "y"}}}, {"e", NS::Array()}}));
    EXPECT_EQ(JSONObjectWithData(text, {{{"f", "g"}}}), NS::PropertyListValue(NS::Dictionary{{"f", "g"}}));
}

TEST(JSONSerialization, WhatIsNotWantedIsWellFormedAllTheSame) {
    const std::vector<NS::JSONSerialization::KeyPath> wanted = {{"a"}};
    for (const char* faulty :
         {"tru", "01", "[1,]", "\"\\x\"", "\"\\uD83D\"", "{\"x\" 1}", "\"\n\"", "1e", "\"\xFF\""}) {
        EXPECT_EQ(JSONObjectWithData(std::string("{\"a\":1,\"b\":") + faulty + "}", wanted), std::nullopt) << faulty;
    }
    EXPECT_TRUE(JSONObjectWithData("{\"b\":" + repeated("[", 511) + repeated("]", 511) + "}", wanted));
    EXPECT_EQ(JSONObjectWithData("{\"b\":" + repeated("[", 512) + repeated("]", 512) + "}", wanted), std::nullopt);
}

/// What the reader makes of a text, as nlohmann-json's own value.
nlohmann::json jsonOf(const NS::PropertyListValue& value) {
    if (const auto* boolean = value.boolean()) {
        return *boolean;
    }
    if (const auto* real = value.real()) {
        return *real;
    }
    if (const auto integer = value.integer()) {
        return *integer;
    }
    if (const auto* text = value.string()) {
        return *text;
    }
    if (const auto* array = value.array()) {
        auto result = nlohmann::json::array();
        for (const auto& item : *array) {
            result.push_back(jsonOf(item));
        }
        return result;
    }
    if (const auto* dictionary = value.dictionary()) {
        auto result = nlohmann::json::object();
        for (const auto& [key, item] : *dictionary) {
            result[key] = jsonOf(item);
        }
        return result;
    }
    return nullptr;
}

TEST(JSONSerialization, AgreesWithAnotherReaderOverRandomTexts) {
    std::mt19937 random(1);
    const std::vector<std::string> pieces = {"{",           "}",
                                             "[",           "]",
                                             ",",           ":",
                                             "\"a\":",      "\"b\\n\"",
                                             "\"\\u00e9\"", "\"\\uD83D\\uDE00\"",
                                             "\"\\uD83D\"", "1",
                                             "-0",          "1.5",
                                             "2e",          "true",
                                             "nul",         "null",
                                             "false",       " ",
                                             "\t\n",        "\"\xC3\xA9\"",
                                             "\"\xC3\"",    "\"",
                                             "\\",          "0",
                                             "1e2"};
    std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(0, 7);
    int wellFormed = 0;
    for (int round = 0; round < 100'000; ++round) {
        const bool isObject = round % 2 == 0;
        std::string text = isObject ? "{\"k\":" : "[";
        for (int left = length(random); left > 0; --left) {
            text += pieces[pick(random)];
        }
        text += isObject ? "}" : "]";
        nlohmann::json expected(nlohmann::json::value_t::discarded);
        try {
            expected = nlohmann::json::parse(text);
        } catch (const nlohmann::json::parse_error&) { // no JSON
        } catch (const nlohmann::json::out_of_range&) {
            continue; // a number that no double can hold
        }
        const auto value = JSONObjectWithData(text);
        ASSERT_EQ(value.has_value(), !expected.is_discarded()) << text;
        const bool isWellFormed = JSONObjectWithData(text, {{{"nothing"}}}).has_value();
        ASSERT_EQ(isWellFormed, value.has_value()) << text;
        if (value) {
            ++wellFormed;
            ASSERT_EQ(jsonOf(*value), expected) << text;
        }
    }
    EXPECT_GT(wellFormed, 1000);
}

} // namespace
