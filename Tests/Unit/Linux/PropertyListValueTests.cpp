#include "Platform/Foundation/PropertyListValue.h"

#include <QTemporaryDir>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <plist/plist.h>
#include <string>
#include <sys/stat.h>

namespace {

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    for (; count > 0; --count) {
        result += text;
    }
    return result;
}

std::string xml(const std::string& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\"><dict>" +
           entries + "</dict></plist>";
}

const std::string version = "<key>version</key><string>1.1.0</string>";
const NS::Dictionary expected = {{"version", "1.1.0"}};

struct PropertyListFile : testing::Test {
    std::optional<NS::Dictionary> read(const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
        return read();
    }
    std::optional<NS::Dictionary> read() const {
        return NS::dictionaryWithContentsOfURL(NS::URL::fileURLWithPath(file.string()), {"version", "other"});
    }

    QTemporaryDir home;
    const std::filesystem::path file = std::filesystem::path(home.path().toStdString()) / "Info.plist";
};

TEST_F(PropertyListFile, OnlyWantedTextsAreRead) {
    const auto dictionary = read(xml("<key>a</key><string>b</string>" + version +
                                     "<key>c</key><dict><key>version</key><string>2</string></dict>"
                                     "<key>other</key><integer>3</integer>"));
    EXPECT_EQ(dictionary, (NS::Dictionary{{"version", "1.1.0"}, {"other", NS::PropertyListValue()}}));
    EXPECT_EQ(read(xml("")), NS::Dictionary());
    EXPECT_EQ(read(xml("<key>version</key><string>1 &lt; <!-- 3 --><![CDATA[<2>]]></string>")),
              (NS::Dictionary{{"version", "1 < <2>"}}));
}

TEST_F(PropertyListFile, ItMayHoldAnyNumberOfContainersAndMebibytes) {
    EXPECT_EQ(read(xml("<key>x</key><array>" + repeated("<array/><dict/>", 5000) + "</array>" + version)), expected);
    EXPECT_EQ(read(xml("<key>x</key><string>" + std::string(std::size_t{3} << 20, 'x') + "</string>" + version)),
              expected);
    EXPECT_EQ(read(xml(version) + std::string(std::size_t{3} << 20, ' ')), expected);
}

TEST_F(PropertyListFile, NestingBeyondReasonIsRefused) {
    EXPECT_EQ(read(xml("<key>x</key>" + repeated("<array>", 500) + repeated("</array>", 500) + version)), expected);
    EXPECT_EQ(read(xml("<key>x</key>" + repeated("<array>", 1'000'000) + repeated("</array>", 1'000'000) + version)),
              std::nullopt);
}

TEST_F(PropertyListFile, WhatIsNoPropertyListIsRefused) {
    for (const std::string text :
         {"", "text", "<plist version=\"1.0\"><array/></plist>", "<dict><key>version</key><string>1</string></dict>",
          "<html><dict/></html>", "{version = 1;}"}) {
        EXPECT_EQ(read(text), std::nullopt) << text;
    }
    for (const std::string entries :
         {"<string>version</string>", "<key>version</key>", "<key>a</key><key>version</key><string>1</string><x/>",
          "<key>version</key><string>1<b/></string>", "<key>version</key><string>1</integer>",
          "<key>x</key><array><nothing/></array>", "<key>x</key><string>&unknown;</string>", "<key>x</key><true/><"}) {
        EXPECT_EQ(read(xml(entries)), std::nullopt) << entries;
    }
    const auto whole = xml(version);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(read(whole.substr(0, length)), std::nullopt) << length;
    }
}

TEST_F(PropertyListFile, NothingButAFileIsRead) {
    EXPECT_EQ(read(), std::nullopt);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(read(), std::nullopt);
    std::filesystem::remove(file);
    std::filesystem::create_symlink("/dev/zero", file);
    EXPECT_EQ(read(), std::nullopt);
}

TEST_F(PropertyListFile, WhatExceeds64MebibytesIsRefused) {
    std::ofstream(file) << xml(version);
    std::filesystem::resize_file(file, std::uintmax_t{1} << 40); // zeros, which take no room
    EXPECT_EQ(read(), std::nullopt);
}

std::string binary(plist_t node) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(node, &bytes, &size);
    std::string result(bytes, size);
    plist_to_bin_free(bytes);
    plist_free(node);
    return result;
}

TEST_F(PropertyListFile, BinaryOnesAreRead) {
    plist_t node = plist_new_dict();
    plist_dict_set_item(node, "other", plist_new_string("é\xF0\x9F\x98\x80"));
    plist_dict_set_item(node, "number", plist_new_uint(7));
    plist_t many = plist_new_array();
    for (int count = 0; count < 30'000; ++count) {
        plist_array_append_item(many, plist_new_uint(static_cast<std::uint64_t>(count)));
    }
    plist_dict_set_item(node, "many", many);
    plist_dict_set_item(node, "version", plist_new_string("1.1.0"));
    const auto bytes = binary(node);
    EXPECT_EQ(read(bytes), (NS::Dictionary{{"version", "1.1.0"}, {"other", "é\xF0\x9F\x98\x80"}}));
}

TEST_F(PropertyListFile, BinaryOnesThatAreNoDictionaryAreRefused) {
    EXPECT_EQ(read(binary(plist_new_array())), std::nullopt);
    EXPECT_EQ(read("bplist00"), std::nullopt);
    EXPECT_EQ(read("bplist00" + std::string(32, '\xFF')), std::nullopt);
    plist_t node = plist_new_dict();
    plist_dict_set_item(node, "version", plist_new_uint(7));
    const auto bytes = binary(node);
    EXPECT_EQ(read(bytes), (NS::Dictionary{{"version", NS::PropertyListValue()}}));
    for (std::size_t at = 8; at < bytes.size(); ++at) {
        for (const char byte : {'\0', '\x0F', '\x5F', '\xD1', '\xFF'}) { // any answer will do
            auto damaged = bytes;
            damaged[at] = byte;
            read(damaged);
        }
    }
}

/// A dictionary of "version" and of arrays within arrays, each of which holds the next one twice.
std::string doublingBinary(int levels) {
    std::vector<std::string> objects = {std::string("\xD2\x01\x02\x03\x04", 5), "\x57version", "\x51x",
                                        "\x55"
                                        "1.1.0"};
    for (int level = 0; level < levels; ++level) {
        const char next = static_cast<char>(objects.size() + 1);
        objects.push_back(std::string("\xA2") + next + next);
    }
    objects.emplace_back("\xA0");
    std::string bytes = "bplist00";
    std::string offsets;
    for (const auto& object : objects) {
        offsets += static_cast<char>(bytes.size());
        bytes += object;
    }
    const char table = static_cast<char>(bytes.size());
    const char count = static_cast<char>(objects.size());
    return bytes + offsets + std::string(6, '\0') + "\x01\x01" + std::string(7, '\0') + count + std::string(8, '\0') +
           std::string(7, '\0') + table;
}

TEST_F(PropertyListFile, ObjectsThatAreReferredToTwiceCostNothing) {
    EXPECT_EQ(read(doublingBinary(24)), expected);
}

} // namespace
