#include "Support/Matches.h"
#include "Updater.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

TEST(UpdaterVersions, ComparesNumberByNumber) {
    EXPECT_TRUE(Updater::isNewer("1.10", "1.9"));
    EXPECT_FALSE(Updater::isNewer("1.9", "1.10"));
    EXPECT_TRUE(Updater::isNewer("2", "1.9.9"));
    EXPECT_FALSE(Updater::isNewer("1.9.9", "2"));
    EXPECT_TRUE(Updater::isNewer("1.0.1", "1"));
}

TEST(UpdaterVersions, AnEqualVersionIsNotNewer) {
    EXPECT_FALSE(Updater::isNewer("1.2.3", "1.2.3"));
    EXPECT_FALSE(Updater::isNewer("", ""));
}

TEST(UpdaterVersions, TrailingZerosMakeNoDifference) {
    EXPECT_FALSE(Updater::isNewer("1.2", "1.2.0"));
    EXPECT_FALSE(Updater::isNewer("1.2.0", "1.2"));
    EXPECT_FALSE(Updater::isNewer("", "0"));
}

TEST(UpdaterVersions, APieceThatIsNoNumberCountsAsZero) {
    EXPECT_TRUE(Updater::isNewer("1.2.3", "1.2.3-beta"));
    EXPECT_FALSE(Updater::isNewer("1.2.3-beta", "1.2.3"));
    EXPECT_FALSE(Updater::isNewer("V2", "1"));
    EXPECT_FALSE(Updater::isNewer("1. 5", "1.0"));
    EXPECT_FALSE(Updater::isNewer("1.5 ", "1.0"));
    EXPECT_FALSE(Updater::isNewer("1.0x5", "1.0"));
}

TEST(UpdaterVersions, EmptyPiecesAreDropped) {
    EXPECT_TRUE(Updater::isNewer("1..1", "1.0.1"));
    EXPECT_FALSE(Updater::isNewer(".1", "1"));
    EXPECT_FALSE(Updater::isNewer("1.", "1"));
    EXPECT_FALSE(Updater::isNewer("...", "0"));
}

TEST(UpdaterVersions, APieceMayHaveOneSign) {
    EXPECT_TRUE(Updater::isNewer("+2", "1"));
    EXPECT_FALSE(Updater::isNewer("-2", "1"));
    EXPECT_TRUE(Updater::isNewer("0", "-2"));
    EXPECT_TRUE(Updater::isNewer("1", "1.-1"));
    for (const char* text : {"+-2", "-+2", "++2", "--2", "+", "-"}) {
        EXPECT_FALSE(Updater::isNewer(text, "0")) << text;
        EXPECT_FALSE(Updater::isNewer("0", text)) << text;
    }
}

TEST(UpdaterVersions, APieceBeyond64BitsCountsAsZero) {
    EXPECT_TRUE(Updater::isNewer("9223372036854775807", "9223372036854775806"));
    EXPECT_FALSE(Updater::isNewer("9223372036854775808", "1"));
    EXPECT_FALSE(Updater::isNewer("0", "-9223372036854775809"));
    EXPECT_TRUE(Updater::isNewer("0", "-9223372036854775808"));
}

// The same rule, said with other means.
std::vector<long long> numbersOf(const std::string& version) {
    std::vector<long long> numbers;
    std::istringstream pieces(version);
    for (std::string piece; std::getline(pieces, piece, '.');) {
        if (piece.empty()) {
            continue;
        }
        long long value = 0;
        if (matches(piece, "[+-]?[0-9]+")) {
            try {
                value = std::stoll(piece);
            } catch (const std::out_of_range&) {
                value = 0;
            }
        }
        numbers.push_back(value);
    }
    return numbers;
}

bool isNewerRestated(const std::string& candidate, const std::string& current) {
    const auto theirs = numbersOf(candidate);
    const auto ours = numbersOf(current);
    for (std::size_t i = 0; i < theirs.size() || i < ours.size(); ++i) {
        const long long their = i < theirs.size() ? theirs[i] : 0;
        const long long our = i < ours.size() ? ours[i] : 0;
        if (their != our) {
            return their > our;
        }
    }
    return false;
}

TEST(UpdaterVersions, AgreesWithARestatementOverRandomTexts) {
    std::mt19937 random(1);
    const std::vector<std::string> pieces = {"0",
                                             "1",
                                             "2",
                                             "10",
                                             "007",
                                             "+3",
                                             "-3",
                                             "-",
                                             "a",
                                             "3-beta",
                                             " 1",
                                             "",
                                             ".",
                                             ".",
                                             ".",
                                             ".",
                                             "9223372036854775807",
                                             "92233720368547758080"};
    std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(0, 7);
    const auto text = [&] {
        std::string result;
        for (int left = length(random); left > 0; --left) {
            result += pieces[pick(random)];
        }
        return result;
    };
    int newer = 0;
    for (int round = 0; round < 50'000; ++round) {
        const auto candidate = text();
        const auto current = text();
        const bool expected = isNewerRestated(candidate, current);
        newer += expected;
        ASSERT_EQ(Updater::isNewer(candidate, current), expected) << '"' << candidate << "\" \"" << current << '"';
    }
    EXPECT_GT(newer, 10'000); // both answers came up
    EXPECT_LT(newer, 40'000);
}

std::string latest(const std::string& fields) {
    return R"({"latest": {)" + fields + "}}";
}

const std::string required = R"("version": "1.1.0", "file": "a/b.dmg", "sha256": "ab")";

TEST(UpdaterManifest, ReadsEveryField) {
    const auto release = Updater::parseManifest(
        R"({"latest": {"version": "1.1.0", "file": "images/Vantorel.dmg", "sha256": "0a1b",
            "size": 1234567, "notes": {"en": "Better", "pt-BR": "Melhor"}, "other": [1]}, "another": null})");
    ASSERT_TRUE(release);
    EXPECT_EQ(release->version, "1.1.0");
    EXPECT_EQ(release->file, "images/Vantorel.dmg");
    EXPECT_EQ(release->sha256, "0a1b");
    EXPECT_EQ(release->size, 1234567);
    EXPECT_EQ(release->notes, (std::map<std::string, std::string>{{"en", "Better"}, {"pt-BR", "Melhor"}}));
}

TEST(UpdaterManifest, MayBeOfAnySize) {
    const std::string mebibytes(std::size_t{3} << 20, ' ');
    EXPECT_TRUE(Updater::parseManifest(latest(required) + mebibytes));
    const auto release = Updater::parseManifest(latest(required + R"(, "notes": {"en": ")" + mebibytes + "\"}"));
    ASSERT_TRUE(release);
    EXPECT_EQ(release->notes.at("en"), mebibytes);
}

TEST(UpdaterManifest, SizeAndNotesMayBeMissing) {
    const auto release = Updater::parseManifest(latest(required));
    ASSERT_TRUE(release);
    EXPECT_EQ(release->size, 0);
    EXPECT_TRUE(release->notes.empty());
}

TEST(UpdaterManifest, ASizeThatIsNoIntegerIsZero) {
    for (const char* size : {R"("12")", "1.5", "true", "null", "[]", "{}", "1e300", "[7]", R"({"size": 7})"}) {
        const auto release = Updater::parseManifest(latest(required + R"(, "size": )" + size));
        ASSERT_TRUE(release) << size;
        EXPECT_EQ(release->size, 0) << size;
    }
}

TEST(UpdaterManifest, ASizeMayBeWrittenAsARealWithAnIntegralValue) {
    EXPECT_EQ(Updater::parseManifest(latest(required + R"(, "size": 12.0)"))->size, 12);
    EXPECT_EQ(Updater::parseManifest(latest(required + R"(, "size": 9007199254740993)"))->size, 9007199254740993);
}

TEST(UpdaterManifest, NotesOfAnotherShapeAreEmpty) {
    for (const char* notes : {R"({"en": "Better", "pt-BR": 5})", R"(["Better"])", R"("Better")", "null"}) {
        const auto release = Updater::parseManifest(latest(required + R"(, "notes": )" + notes));
        ASSERT_TRUE(release) << notes;
        EXPECT_TRUE(release->notes.empty()) << notes;
    }
}

TEST(UpdaterManifest, TheChecksumIsLowerCased) {
    EXPECT_EQ(Updater::parseManifest(latest(R"("version": "1", "file": "f", "sha256": "ABCDEFabc019Zz")"))->sha256,
              "abcdefabc019zz");
}

TEST(UpdaterManifest, WithoutARequiredTextThereIsNoRelease) {
    const std::vector<std::string> fields = {R"("version": "1")", R"("file": "f")", R"("sha256": "ab")"};
    for (std::size_t missing = 0; missing < fields.size(); ++missing) {
        std::string others;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            others += i == missing ? "" : fields[i] + ",";
        }
        const auto key = fields[missing].substr(0, fields[missing].find(':'));
        EXPECT_FALSE(Updater::parseManifest(latest(others + R"("size": 1)"))) << key;
        for (const char* value : {"1", "true", "null", R"(["1"])", R"({"a": "1"})"}) {
            EXPECT_FALSE(Updater::parseManifest(latest(others + key + ": " + value))) << key << value;
        }
        EXPECT_TRUE(Updater::parseManifest(latest(others + fields[missing]))) << key;
    }
}

TEST(UpdaterManifest, NothingIsCheckedBeyondItsShape) {
    const auto release = Updater::parseManifest(latest(R"("version": "", "file": "../x", "sha256": "short")"));
    ASSERT_TRUE(release);
    EXPECT_EQ(release->file, "../x");
}

TEST(UpdaterManifest, LatestMustBeAnObject) {
    for (const char* value : {"[]", R"("1.0")", "1", "null", R"([{"version": "1", "file": "f", "sha256": "ab"}])"}) {
        EXPECT_FALSE(Updater::parseManifest(std::string(R"({"latest": )") + value + "}")) << value;
    }
    EXPECT_FALSE(Updater::parseManifest("{}"));
    EXPECT_FALSE(Updater::parseManifest("{" + required + "}"));
}

TEST(UpdaterManifest, TheTopLevelMustBeAnObject) {
    for (const std::string text : {"", " ", "[]", "\"latest\"", "1", "null", "{", "{\"latest\": {}", "not json"}) {
        EXPECT_FALSE(Updater::parseManifest(text)) << text;
    }
    EXPECT_FALSE(Updater::parseManifest("[" + latest(required) + "]"));
    EXPECT_FALSE(Updater::parseManifest(latest(required) + "}"));
}

TEST(UpdaterManifest, TextThatIsNotUTF8IsNoManifest) {
    EXPECT_FALSE(Updater::parseManifest(latest(required + ", \"note\": \"\xff\xfe\"")));
    EXPECT_FALSE(Updater::parseManifest("\xff\xff\xff"));
}

TEST(UpdaterManifest, EndlessNestingIsNoManifest) {
    const std::string deep(1'000'000, '[');
    EXPECT_FALSE(Updater::parseManifest(deep));
    EXPECT_FALSE(Updater::parseManifest(latest(required + R"(, "x": )" + deep)));
}

struct UpdaterBase : testing::Test {
    ~UpdaterBase() override { before ? setenv(variable, before->c_str(), 1) : unsetenv(variable); }

    static std::string baseFor(const char* value) {
        setenv(variable, value, 1);
        return Updater::baseURL().absoluteString();
    }

    static constexpr char variable[] = "KORVEX_UPDATE_BASE";
    const std::optional<std::string> before =
        std::getenv(variable) ? std::optional<std::string>(std::getenv(variable)) : std::nullopt;
};

TEST_F(UpdaterBase, IsTheBuiltInOneUnlessTheEnvironmentNamesAnother) {
    EXPECT_EQ(baseFor(""), "https://korvex.example");
    EXPECT_EQ(baseFor("http://127.0.0.1:1/a"), "http://127.0.0.1:1/a");
    unsetenv(variable);
    EXPECT_EQ(Updater::baseURL().absoluteString(), "https://korvex.example");
}

TEST_F(UpdaterBase, IsPercentEncodedBehindTheHost) {
    EXPECT_EQ(baseFor("http://127.0.0.1:1/a b<>"), "http://127.0.0.1:1/a%20b%3C%3E");
}

} // namespace
