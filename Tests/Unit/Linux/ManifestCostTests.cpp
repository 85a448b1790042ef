#include "Updater.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;
constexpr std::size_t allowedBytes = 200'000'000;
constexpr double allowedSeconds = 2;

struct Padding {
    const char* name;
    std::string begin;
    std::string repeated; // "#" is another number each time
    std::string end;

    friend void PrintTo(const Padding& padding, std::ostream* out) { *out << padding.name; }
};

std::string padded(const Padding& padding) {
    std::string text = padding.begin;
    text.reserve(65 * mebibyte);
    const auto number = std::min(padding.repeated.find('#'), padding.repeated.size());
    for (int count = 0; text.size() < 64 * mebibyte; ++count) {
        text.append(padding.repeated, 0, number);
        if (number < padding.repeated.size()) {
            text += std::to_string(count);
            text.append(padding.repeated, number + 1);
        }
    }
    return text + padding.end;
}

/// In bytes: the most that this process has had in memory since the last reset.
std::size_t peakOfMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            std::size_t kibibytes = 0;
            status >> kibibytes;
            return kibibytes * 1024;
        }
    }
    return 0;
}

void resetPeak() {
    std::ofstream("/proc/self/clear_refs") << 5; // https://docs.kernel.org/filesystems/proc.html
}

double secondsOfProcessor() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

const std::string head = R"({"latest": {"version": "1.1.0", "file": "f", "sha256": "ab")";

class ManifestCost : public testing::TestWithParam<Padding> {};

TEST_P(ManifestCost, IsSmallFor64Mebibytes) {
    const auto text = padded(GetParam());
    resetPeak();
    const auto memory = peakOfMemory();
    const auto time = secondsOfProcessor();
    const auto release = Updater::parseManifest(text);
    EXPECT_LT(secondsOfProcessor() - time, allowedSeconds);
    EXPECT_LT(peakOfMemory() - memory, allowedBytes);
    ASSERT_TRUE(release);
    EXPECT_EQ(release->version, "1.1.0");
}

const std::string kibibyte(1024, 'x');

INSTANTIATE_TEST_SUITE_P(
    Paddings, ManifestCost,
    testing::Values(Padding{"Blanks", head + "}", " \n", "}"},
                    Padding{"OneNote", head + R"(, "notes": {"en": ")", "word ", "\"}}}"},
                    Padding{"OneNoteWithEscapes", head + R"(, "notes": {"en": ")", R"(\u00e9\n)", "\"}}}"},
                    Padding{"OneNoteOfManyLanguages", head + R"(, "notes": {)", "\"language#\":\"" + kibibyte + "\",",
                            R"("a":""}}})"},
                    Padding{"NotesThatAreNoTexts", head + R"(, "notes": {"en": [)", "[],", "[]]}}}"},
                    Padding{"UnusedKeys", head, R"(,"key#":1)", "}}"},
                    Padding{"UnusedKeysAtTheTop", head + "}", R"(,"key#":{"a":"b"})", "}"},
                    Padding{"AnUnusedArray", head + R"(,"key":[)", "{},[],", "1]}}"},
                    Padding{"AVersionThatIsReplaced", head + R"(,"version":[)", "[],", R"(1],"version":"1.1.0"}})"}),
    [](const auto& test) { return test.param.name; });

} // namespace
