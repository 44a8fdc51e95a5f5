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
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
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

// "line 1\n" ... "line <count>\n", from line `from` on.
std::string NumberedLines(int from, int count)
{
    std::string text;
    for (int i = from; i <= count; ++i)
        text += "line " + std::to_string(i) + "\n";
    return text;
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

TEST(CatFile, GivesTheFilesBytes)
{
    TempDir dir;
    dir.write("resolv.conf", std::string("nameserver 10.0.0.53\n\0tail", 26));
    EXPECT_EQ(std::string("nameserver 10.0.0.53\n\0tail", 26), util::CatFile(dir / "resolv.conf", 4096));
    dir.write("empty", "");
    EXPECT_EQ("", util::CatFile(dir / "empty", 4096));
}

TEST(CatFile, OverTheLimitIsCutWithAnEllipsis)
{
    TempDir dir;
    dir.write("big", std::string(600, 'a'));
    EXPECT_EQ("aaaaaaa...", util::CatFile(dir / "big", 10));
    EXPECT_EQ("aaa", util::CatFile(dir / "big", 3));
    EXPECT_EQ(std::string(600, 'a'), util::CatFile(dir / "big", 600));
}

TEST(CatFile, AMissingFileGivesCatsComplaint)
{
    TempDir dir;
    const std::string path = dir / "resolv.conf";
    EXPECT_EQ("cat: " + path + ": No such file or directory\n", util::CatFile(path, 4096));
    EXPECT_EQ("cat: ...", util::CatFile(path, 8)) << "the complaint is bounded too";
}

TEST(CatFile, AFolderGivesCatsComplaint)
{
    TempDir dir;
    EXPECT_EQ("cat: " + dir.path() + ": Is a directory\n", util::CatFile(dir.path(), 4096));
}

TEST(TailFile, GivesTheLastLines)
{
    TempDir dir;
    dir.write("messages", "one\ntwo\nthree\nfour\n");
    EXPECT_EQ("three\nfour\n", util::TailFile(dir / "messages", 2, 4096));
    EXPECT_EQ("four\n", util::TailFile(dir / "messages", 1, 4096));
    EXPECT_EQ("one\ntwo\nthree\nfour\n", util::TailFile(dir / "messages", 30, 4096));
    EXPECT_EQ("", util::TailFile(dir / "messages", 0, 4096));
}

TEST(TailFile, ALastLineWithoutANewlineCounts)
{
    TempDir dir;
    dir.write("messages", "one\ntwo\nthree");
    EXPECT_EQ("two\nthree", util::TailFile(dir / "messages", 2, 4096));
    dir.write("messages", "only");
    EXPECT_EQ("only", util::TailFile(dir / "messages", 2, 4096));
}

TEST(TailFile, EmptyLinesAreLines)
{
    TempDir dir;
    dir.write("messages", "\n\n\n");
    EXPECT_EQ("\n\n", util::TailFile(dir / "messages", 2, 4096));
    dir.write("messages", "");
    EXPECT_EQ("", util::TailFile(dir / "messages", 2, 4096));
}

TEST(TailFile, AMissingOrUnreadableFileGivesNothing)
{
    TempDir dir;
    EXPECT_EQ("", util::TailFile(dir / "messages", 30, 4096));
    EXPECT_EQ("", util::TailFile(dir.path(), 30, 4096)) << "a folder";
}

TEST(TailFile, OverTheLimitIsCutWithAnEllipsis)
{
    TempDir dir;
    dir.write("messages", std::string(50, 'x') + "\n" + std::string(20, 'a') + "\n" + std::string(20, 'b') + "\n");
    EXPECT_EQ(std::string(7, 'a') + "...", util::TailFile(dir / "messages", 2, 10));
    EXPECT_EQ("aaa", util::TailFile(dir / "messages", 2, 3));
    EXPECT_EQ(std::string(20, 'a') + "\n" + std::string(20, 'b') + "\n", util::TailFile(dir / "messages", 2, 42));
}

TEST(TailFile, TheEndOfALongLogAcrossManyChunks)
{
    TempDir dir;
    dir.write("messages", NumberedLines(1, 200000));
    EXPECT_EQ(NumberedLines(199971, 200000), util::TailFile(dir / "messages", 30, 8096));
    const std::string longLine(20000, 'z');
    dir.write("messages", "first\n" + longLine + "\nlast\n");
    EXPECT_EQ(longLine + "\nlast\n", util::TailFile(dir / "messages", 2, 30000));
}

TEST(TailFile, APipeIsReadToItsEnd)
{
    TempDir dir;
    const std::string fifo = dir / "messages";
    ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0600)) << std::strerror(errno);
    const std::string text = NumberedLines(1, 50000);
    std::thread writer([&fifo, &text] {
        const int fd = ::open(fifo.c_str(), O_WRONLY);
        for (std::size_t done = 0; fd >= 0 && done < text.size();) {
            const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
            if (n <= 0)
                break;
            done += static_cast<std::size_t>(n);
        }
        ::close(fd);
    });
    const std::string tail = util::TailFile(fifo, 3, 4096);
    writer.join();
    EXPECT_EQ(NumberedLines(49998, 50000), tail);
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
