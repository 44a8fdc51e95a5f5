// The SHA-256 taken on its own thread: the same digest as OpenSSL's one-shot one, however the bytes come.
#include "web/UploadDigest.h"

#include <gtest/gtest.h>

#include <openssl/evp.h>

#include <random>

using panelkit::web::UploadDigest;

namespace {

std::string OneShot(const std::string& data)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(data.data(), data.size(), digest, &length, EVP_sha256(), nullptr);
    std::string hex;
    static const char digits[] = "0123456789abcdef";
    for (unsigned int i = 0; i < length; ++i) {
        hex.push_back(digits[digest[i] >> 4]);
        hex.push_back(digits[digest[i] & 15]);
    }
    return hex;
}

}  // namespace

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
    EXPECT_EQ(OneShot(data), digest.Finish());
}
