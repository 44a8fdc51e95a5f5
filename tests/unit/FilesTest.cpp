// File, folder and text helpers, and certificate names.
#include "Process.h"
#include "TempDir.h"
#include "util/Files.h"

#include <gtest/gtest.h>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

using panelkit::test::TempDir;
namespace util = panelkit::util;

namespace {

// A key and a certificate for the name, signed by the issuer (self-signed when issuer is null).
struct Issued {
    EVP_PKEY* key = nullptr;
    X509* certificate = nullptr;
    ~Issued()
    {
        X509_free(certificate);
        EVP_PKEY_free(key);
    }
};

void Issue(Issued& out, const char* commonName, const Issued* issuer)
{
    out.key = EVP_RSA_gen(2048);
    out.certificate = X509_new();
    ASN1_INTEGER_set(X509_get_serialNumber(out.certificate), 1);
    X509_gmtime_adj(X509_getm_notBefore(out.certificate), 0);
    X509_gmtime_adj(X509_getm_notAfter(out.certificate), 3600);
    X509_set_pubkey(out.certificate, out.key);
    X509_NAME* name = X509_get_subject_name(out.certificate);
    X509_NAME_add_entry_by_txt(name, "O", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("Site"), -1, -1, 0);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(commonName), -1, -1, 0);
    X509_set_issuer_name(out.certificate, issuer ? X509_get_subject_name(issuer->certificate) : name);
    X509_sign(out.certificate, issuer ? issuer->key : out.key, EVP_sha256());
}

std::string Pem(X509* certificate)
{
    BIO* memory = BIO_new(BIO_s_mem());
    PEM_write_bio_X509(memory, certificate);
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    std::string text(data, static_cast<std::size_t>(size));
    BIO_free(memory);
    return text;
}

}  // namespace

TEST(Files, ExistsAndSize)
{
    TempDir dir;
    dir.write("a.bin", std::string(1234, 'z'));
    EXPECT_TRUE(util::FileExists(dir / "a.bin"));
    EXPECT_TRUE(util::FileExists(dir.path()));
    EXPECT_FALSE(util::FileExists(dir / "none"));
    EXPECT_EQ(1234u, util::FileSize(dir / "a.bin"));
    EXPECT_EQ(0u, util::FileSize(dir / "none"));
}

TEST(Files, ReadFileHeadStopsAtTheLimitAndFailsForAMissingFile)
{
    TempDir dir;
    dir.write("status.txt", std::string(6000, 'a') + "tail");
    std::string head = "left over";
    ASSERT_TRUE(util::ReadFileHead(dir.path() + "/status.txt", 5000, head));
    EXPECT_EQ(std::string(5000, 'a'), head);
    ASSERT_TRUE(util::ReadFileHead(dir.path() + "/status.txt", 1 << 20, head));
    EXPECT_EQ(6004u, head.size());
    EXPECT_FALSE(util::ReadFileHead(dir.path() + "/missing.txt", 5000, head));
}

TEST(Files, MoveFileRenamesAndFailsForAMissingSource)
{
    TempDir dir;
    dir.write("upload", "image");
    EXPECT_TRUE(util::MoveFile(dir / "upload", dir / "firmware.bin"));
    EXPECT_EQ("image", dir.read("firmware.bin"));
    EXPECT_FALSE(dir.exists("upload"));
    EXPECT_FALSE(util::MoveFile(dir / "upload", dir / "other"));
}

TEST(Files, MoveFileCrossesFileSystems)
{
    struct stat tmp {};
    struct stat shm {};
    TempDir dir;
    if (::stat("/dev/shm", &shm) != 0 || ::stat(dir.path().c_str(), &tmp) != 0 || tmp.st_dev == shm.st_dev)
        GTEST_SKIP() << "no second file system to move across";
    const std::string away = "/dev/shm/panelkit-move-" + std::to_string(::getpid());
    dir.write("upload", "image \"quoted\" $(name)");
    ASSERT_TRUE(util::MoveFile(dir / "upload", away));
    EXPECT_FALSE(dir.exists("upload"));
    EXPECT_EQ("image \"quoted\" $(name)", panelkit::test::ReadFile(away));
    ::unlink(away.c_str());
}

TEST(FindFiles, DirectoriesNeverIncludeDotEntries)
{
    TempDir dir;
    dir.write("a/x", "");
    dir.write("b/x", "");
    dir.write("plain.txt", "");
    auto names = util::FindFiles(dir.path(), util::FindFilesType::Directory, ".*");
    std::sort(names.begin(), names.end());
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), names);
    auto regular = util::FindFiles(dir.path(), util::FindFilesType::Regular, ".*");
    EXPECT_EQ(std::vector<std::string>{"plain.txt"}, regular);
    auto any = util::FindFiles(dir.path(), util::FindFilesType::Any, ".*");
    EXPECT_EQ(5u, any.size()) << "every entry, . and .. included";
}

TEST(FindFiles, PatternsSearchAndBadPatternsGiveNothing)
{
    TempDir dir;
    dir.write("one-panelkit-plugin.so", "");
    dir.write("two-panelkit-plugin.so.bak", "");
    EXPECT_EQ(std::vector<std::string>{"one-panelkit-plugin.so"},
              util::FindFiles(dir.path(), util::FindFilesType::Regular, ".*-panelkit-plugin.so$"));
    EXPECT_EQ(2u, util::FindFiles(dir.path(), util::FindFilesType::Regular, "plugin").size());
    testing::internal::CaptureStderr();
    EXPECT_TRUE(util::FindFiles(dir.path(), util::FindFilesType::Any, "[").empty());
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("FindFiles: Bad regex pattern: ["));
    EXPECT_TRUE(util::FindFiles(dir / "missing", util::FindFilesType::Any, ".*").empty());
}

TEST(Text, StripCharsRemovesDashesAndBlanks)
{
    EXPECT_EQ("abc", util::StripChars("a-b c", "- "));
    EXPECT_EQ("a-b c", util::StripChars("a-b c", ""));
    EXPECT_TRUE(util::containsChars{"xy"}('y'));
    EXPECT_FALSE(util::containsChars{"xy"}('z'));
}

TEST(Certificate, ClosingMarkerWithoutOpeningIsAFormatError)
{
    TempDir dir;
    dir.write("client.ovpn", "client\n-----BEGIN CERTIFICATE-----\n</cert>\n");
    std::string issuer = "old", subject = "old";
    testing::internal::CaptureStderr();
    EXPECT_FALSE(util::GetCertificateDetails(dir / "client.ovpn", issuer, subject));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, log.find("GetCertificateDetils: Certificate format error")) << log;
    EXPECT_EQ("", issuer);
    EXPECT_EQ("", subject);
}

TEST(Certificate, MissingFileCannotBeLoaded)
{
    std::string issuer, subject;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(util::GetCertificateDetails("/nonexistent/client.ovpn", issuer, subject));
    EXPECT_NE(std::string::npos,
              testing::internal::GetCapturedStderr().find("GetCertificateDetils: Unable to load certificate from disk"));
}

TEST(Certificate, GarbageBetweenTheMarkersCannotBeParsed)
{
    TempDir dir;
    dir.write("client.ovpn", "<cert>\nnot a certificate\n</cert>\n");
    std::string issuer, subject;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(util::GetCertificateDetails(dir / "client.ovpn", issuer, subject));
    EXPECT_NE(std::string::npos,
              testing::internal::GetCapturedStderr().find("GetCertificateDetils: Unable to parse certificate in memory"));
}

TEST(Certificate, IssuerGoesToTheSecondArgumentAndSubjectToTheThird)
{
    Issued ca, client;
    Issue(ca, "Site CA", nullptr);
    Issue(client, "router-17", &ca);
    TempDir dir;
    dir.write("client.ovpn", "client\nremote vpn.example 1194\n<cert>\n" + Pem(client.certificate) + "</cert>\n<key>\n</key>\n");
    std::string issuer, subject;
    ASSERT_TRUE(util::GetCertificateDetails(dir / "client.ovpn", issuer, subject));
    EXPECT_EQ("/O=Site/CN=Site CA", issuer);
    EXPECT_EQ("/O=Site/CN=router-17", subject);
}
