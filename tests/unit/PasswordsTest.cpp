// Password digests and hashes made in-process: known answers, the salt, and passwords crypt cannot take.
#include "util/Passwords.h"

#include <gtest/gtest.h>

#include <crypt.h>

#include <regex>
#include <set>

namespace util = panelkit::util;

TEST(Passwords, TheHttpDigestHashIsTheMd5OfUserRealmAndPassword)
{
    EXPECT_EQ("06e037fbcd56fe3835f09eeb5d57b2f1", util::HttpDigestHash("admin", "Halvor Configuration Tool", "secret"));
    // MD5 of "::" (empty user, realm and password).
    EXPECT_EQ("4501c091b0366d76ea3218b6cfdd8097", util::HttpDigestHash("", "", ""));
}

TEST(Passwords, TheRootHashIsSha512CryptWithAFreshSixteenCharacterSalt)
{
    std::set<std::string> salts;
    for (int i = 0; i < 20; ++i) {
        const std::string hash = util::CryptSha512("pass word");
        ASSERT_TRUE(std::regex_match(hash, std::regex(R"(\$6\$[./0-9A-Za-z]{16}\$[./0-9A-Za-z]{86})"))) << hash;
        crypt_data state{};
        EXPECT_EQ(hash, ::crypt_r("pass word", hash.c_str(), &state));
        salts.insert(hash.substr(3, 16));
    }
    EXPECT_EQ(20u, salts.size());
}

TEST(Passwords, APasswordHoldingANulByteIsNotHashed)
{
    EXPECT_EQ("", util::CryptSha512(std::string("abc\0def", 7)));
}
