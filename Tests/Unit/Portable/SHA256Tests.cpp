#include "Platform/CryptoKit/SHA256.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace {

std::string hex(const NS::SHA256::Digest& digest) {
    std::string text;
    for (const unsigned byte : digest) {
        text += "0123456789abcdef"[byte / 16];
        text += "0123456789abcdef"[byte % 16];
    }
    return text;
}

std::string digestInPieces(std::string_view text, std::size_t pieceSize) {
    NS::SHA256 hash;
    for (std::size_t start = 0; start < text.size(); start += pieceSize) {
        const auto piece = text.substr(start, pieceSize);
        hash.update(piece.data(), piece.size());
    }
    return hex(hash.finalize());
}

// The published examples.
TEST(SHA256, AgreesWithTheStandardsExamples) {
    EXPECT_EQ(digestInPieces("", 1), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digestInPieces("abc", 3), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digestInPieces(std::string(1'000'000, 'a'), 1'000'000),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(SHA256, TheSizeOfThePiecesMakesNoDifference) {
    const std::string text(100'000, 'x');
    const auto whole = digestInPieces(text, text.size());
    for (const std::size_t size : {1U, 63U, 64U, 65U, 99'999U}) {
        EXPECT_EQ(digestInPieces(text, size), whole) << size;
    }
}

} // namespace
