#pragma once

#include <gtest/gtest.h>
#include <string>

/// Whether a POSIX extended regular expression describes the whole text. Compiles in no time, unlike std::regex.
inline bool matches(const std::string& text, const std::string& expression) {
    return testing::Matcher<std::string>(testing::MatchesRegex(expression)).Matches(text);
}
