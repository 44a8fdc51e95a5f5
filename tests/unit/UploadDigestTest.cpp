// The SHA-256 taken on its own thread: the same digest as OpenSSL's one-shot one, however the bytes come.
#include "Digests.h"
#include "web/UploadDigest.h"

#include <gtest/gtest.h>

#include <random>

using panelkit::test::Sha256Hex;
using panelkit::web::UploadDigest;

TEST(UploadDigest, KnownDigestsOfShortTexts)
{
    UploadDigest empty;
    EXPECT_EQ("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855", empty.Finish());
    UploadDigest abc;
    abc.Update("a", 1);
    abc.Update("bc", 2);
    EXPECT_EQ("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad", abc.Finish());
}

TEST(UploadDigest, PiecesOfAnySizeAcrossTheRingGiveTheOneShotDigest)
{
    std::mt19937 generator(11);
    std::string data(2 * UploadDigest::kRing + 4321, '\0');
    for (auto& byte : data)
        byte = static_cast<char>(generator());
    UploadDigest digest;
    std::size_t at = 0;
    for (std::size_t piece = 1; at < data.size(); piece = piece * 3 % 200003 + 1) {
        const std::size_t count = std::min(piece, data.size() - at);
        digest.Update(data.data() + at, count);
        at += count;
    }
    EXPECT_EQ(Sha256Hex(data), digest.Finish());
}
