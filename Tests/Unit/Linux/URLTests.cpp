#include "Platform/Foundation/JSONSerialization.h"
#include "Platform/Linux/Foundation/URLNative.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Row = std::vector<std::string>;

/// The text of a column that is written as JSON.
std::string unquoted(const std::string& column) {
    const auto array = NS::JSONSerialization::JSONObjectWithData("[" + column + "]");
    EXPECT_TRUE(array) << column;
    return array ? *array->array()->front().string() : "";
}

/// The rows of a table of Foundation's answers, each with as many columns as its head.
std::vector<Row> table(const char* name) {
    std::ifstream file(std::string(TEST_DATA) + "/" + name);
    std::vector<Row> rows;
    for (std::string line; std::getline(file, line);) {
        Row row(1);
        for (const char c : line) {
            c == '\t' ? row.push_back("") : row.back().push_back(c);
        }
        rows.push_back(row);
    }
    EXPECT_GT(rows.size(), 1U) << name;
    for (const auto& row : rows) {
        EXPECT_EQ(row.size(), rows.front().size()) << row.front();
    }
    rows.erase(rows.begin());
    return rows;
}

NS::URL url(const std::string& text) {
    return NS::URL::URLWithString(text);
}

std::string textOf(const std::string& text) {
    const auto parsed = url(text);
    return parsed ? parsed.absoluteString() : "none";
}

std::string hostOf(const NS::URL& url) {
    return Linux::object<Linux::URLNative>(url).parts.host();
}

TEST(URL, TextsParseAsInFoundation) {
    for (const auto& row : table("url-base.tsv")) {
        const auto parsed = url(unquoted(row[0]));
        ASSERT_EQ(parsed ? "yes" : "no", row[1]) << row[0];
        if (parsed) {
            EXPECT_EQ(parsed.scheme().value_or("-"), row[2]) << row[0];
            EXPECT_EQ(parsed.URLByAppendingPathComponent("updates/vantorel.json").absoluteString(), row[3]) << row[0];
        }
    }
}

TEST(URL, ComponentsAreAppendedAsInFoundation) {
    for (const auto& row : table("url-append.tsv")) {
        const auto result = url(row[0]).URLByAppendingPathComponent(unquoted(row[1]));
        EXPECT_EQ(result.absoluteString(), row[2]) << row[0] << " + " << row[1];
        EXPECT_EQ(hostOf(result), row[3]) << row[0] << " + " << row[1];
        EXPECT_EQ(result.path(), row[4]) << row[0] << " + " << row[1];
    }
}

TEST(URL, PathsOfBundlesAreTakenApartAsInFoundation) {
    for (const auto& row : table("url-bundle.tsv")) {
        const auto bundle = NS::URL::fileURLWithPath(unquoted(row[0]));
        EXPECT_EQ(bundle.pathExtension(), unquoted(row[1])) << row[0];
        EXPECT_EQ(bundle.URLByDeletingLastPathComponent().path(), row[2]) << row[0];
        EXPECT_EQ(bundle.path(), row[3]) << row[0];
    }
}

TEST(URL, WhatNeedsNoEncodingStays) {
    for (const char* text :
         {"https://h.example", "HTTPS://u:p@H.Example:443/a/./../b//c;d=1?e=f/g?h#i?j/k", "http://[fe80::1%25eth0]:80/",
          "http://%41.example/%2F%2f", "a/b:c", "/", "?", "#", "https:?#", "http://h.example:/", "x+y-z.1:"}) {
        EXPECT_EQ(textOf(text), text);
    }
}

TEST(URL, WhatCannotStandIsEncoded) {
    EXPECT_EQ(textOf("http://h.example/\xC3\xA9\xFF\x01"), "http://h.example/%C3%A9%FF%01");
    EXPECT_EQ(textOf("http://h.example/%41%4%"), "http://h.example/%41%254%25");
    EXPECT_EQ(textOf("http://h.example/?a b[%#c#d"), "http://h.example/?a%20b%5B%25#c%23d");
    EXPECT_EQ(textOf("http://a b:c@h.example"), "http://a%20b:c@h.example");
    EXPECT_EQ(textOf(std::string("/a\0b", 4)), "/a%00b");
}

TEST(URL, ANameInOtherLettersTakesItsASCIIForm) {
    EXPECT_EQ(textOf("https://b\xC3\xBC"
                     "cher.example/x"),
              "https://xn--bcher-kva.example/x");
}

TEST(URL, DoubtfulHostsAreNone) {
    for (const char* authority : {"a@b@c", "a b", "a\\b", "[::1", "[::1]x", "[]", "::1", "[::1 ]", "a:b", "a:1:2",
                                  "a:+1", "a%", "a<b", "a\x7F", "\xFF", "[::1]@h]"}) {
        EXPECT_EQ(textOf(std::string("https://") + authority + "/x"), "none") << authority;
    }
}

TEST(URL, ASchemeIsLettersFirst) {
    for (const char* text : {"1a:b", "-a:b", "a_b:c", "\xC3\xA9:a", "a b:c"}) {
        EXPECT_EQ(textOf(text), "none") << text;
    }
}

TEST(URL, TheHostIsNeitherUserNorPort) {
    EXPECT_EQ(hostOf(url("https://user:1@h.example:8080/x")), "h.example");
    EXPECT_EQ(hostOf(url("https://[::1]:8080/x")), "[::1]");
    EXPECT_EQ(hostOf(url("https://[::1]")), "[::1]");
    EXPECT_EQ(hostOf(url("https://user@:80")), "");
    EXPECT_EQ(hostOf(url("https:///x")), "");
    EXPECT_EQ(hostOf(url("https:h.example")), "");
}

TEST(URL, AComponentNeverBecomesHostOrScheme) {
    for (const char* base : {"https:", "https:/", "/", "?q", "a:/"}) {
        for (const char* component : {"//evil.example/x", "/evil.example/x", "///evil.example", "evil:x", "//evil:x"}) {
            const auto result = url(base).URLByAppendingPathComponent(component);
            const auto reread = url(result.absoluteString());
            ASSERT_TRUE(reread) << result.absoluteString();
            EXPECT_EQ(hostOf(reread), "") << result.absoluteString();
            EXPECT_EQ(reread.scheme(), url(base).scheme()) << result.absoluteString();
        }
    }
}

TEST(URL, AFilesPathComesBackByteByByte) {
    std::string all = "/";
    for (int byte = 1; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    all += "."; // the last byte is then no slash
    for (const auto& path : {all, std::string("/a b/%41?c#d"), std::string("/%2F%00"), std::string("/\xFF\xFE"),
                             std::string("//a"), std::string("/a//b"), std::string("/")}) {
        const auto file = NS::URL::fileURLWithPath(path);
        EXPECT_EQ(file.path(), path);
        EXPECT_EQ(file.scheme(), "file");
        const auto reread = url(file.absoluteString());
        ASSERT_TRUE(reread) << file.absoluteString();
        EXPECT_EQ(reread.path(), path);
        EXPECT_EQ(hostOf(reread), "");
    }
}

TEST(URL, AFilesPathLosesTrailingSlashes) {
    EXPECT_EQ(NS::URL::fileURLWithPath("/a/b/").path(), "/a/b");
    EXPECT_EQ(NS::URL::fileURLWithPath("/a/b/").absoluteString(), "file:///a/b");
    EXPECT_EQ(NS::URL::fileURLWithPath("//").path(), "/");
}

TEST(URL, ARelativePathStartsFromTheCurrentFolder) {
    const auto folder = std::filesystem::current_path().string();
    EXPECT_EQ(NS::URL::fileURLWithPath("a/b").path(), folder + "/a/b");
    EXPECT_EQ(NS::URL::fileURLWithPath("").path(), folder);
}

TEST(URL, APathDecodesNoSlashAndNoZero) {
    EXPECT_EQ(url("file:///a%2Fb%2fc%00d%25e").path(), "/a%2Fb%2fc%00d%e");
}

TEST(URL, AComponentOfAFileMayHoldAnyBytes) {
    const auto folder = NS::URL::fileURLWithPath("/tmp/a b");
    EXPECT_EQ(folder.URLByAppendingPathComponent("c%20d/\xFF?").path(), "/tmp/a b/c%20d/\xFF?");
    EXPECT_EQ(NS::URL::fileURLWithPath("/").URLByAppendingPathComponent("a").path(), "/a");
    EXPECT_EQ(folder.URLByAppendingPathComponent(std::string("a\0/b", 4)).path(), "/tmp/a b/a%00/b");
}

TEST(URL, TheExtensionIsOfTheLastComponentOnly) {
    EXPECT_EQ(url("https://h.example/a.b/c").pathExtension(), "");
    EXPECT_EQ(url("https://h.example/a.b/").pathExtension(), "b");
    EXPECT_EQ(url("https://h.example").pathExtension(), "");
    EXPECT_EQ(url("https://h.example/a%2Eb?c.d#e.f").pathExtension(), "b");
    EXPECT_EQ(url("a.b").pathExtension(), "b");
}

TEST(URL, TheFolderIsOneLevelUp) {
    const auto above = [](const char* text) { return url(text).URLByDeletingLastPathComponent().absoluteString(); };
    EXPECT_EQ(above("https://h.example/a/b?c#d"), "https://h.example/a/?c#d");
    EXPECT_EQ(above("https://h.example/a/b//"), "https://h.example/a/");
    EXPECT_EQ(above("https://h.example"), "https://h.example");
    EXPECT_EQ(above("file:///"), "file:///");
    EXPECT_EQ(above("file:///a"), "file:///");
}

TEST(URL, AHandleSharesWhatNeverChanges) {
    const auto first = url("https://h.example/a");
    const auto second = first;
    EXPECT_EQ(first, second);
    EXPECT_FALSE(first == url("https://h.example/a"));
    first.URLByAppendingPathComponent("b");
    EXPECT_EQ(second.absoluteString(), "https://h.example/a");
}

} // namespace
