// The SHA-1 digest, against the examples that come with its standard and at the block borders.
#include "Lib/Common/QelCrypto.h"

#include <gtest/gtest.h>
#include <string>

namespace {

std::string Digest(const std::string& text) {
    QelSha1Digest digest{};
    EXPECT_EQ(QelSha1(text.data(), text.size(), &digest), RyxOk);
    std::string shown;
    for (const std::uint8_t byte : digest) {
        char piece[3];
        std::snprintf(piece, sizeof piece, "%02x", byte);
        shown += piece;
    }
    return shown;
}

TEST(Digest, IsSha1) {
    EXPECT_EQ(Digest("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(Digest(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(Digest("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
    EXPECT_EQ(Digest(std::string(1000000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
    // The longest text whose length still fits its last block, and the first that needs one more.
    EXPECT_EQ(Digest(std::string(55, 'a')), "c1c8bbdc22796e28c0e15163d20899b65621d65a");
    EXPECT_EQ(Digest(std::string(56, 'a')), "c2db330f6083854c99d4b5bfb6e8f29f201be699");
}

} // namespace
