// Bounded command output, file and text helpers, certificate names, device identity and the reboot child.
#include "Process.h"
#include "TempDir.h"
#include "util/DevicePath.h"
#include "util/Commands.h"
#include "util/DeviceIdentity.h"
#include "util/Environment.h"
#include "util/Files.h"
#include "util/FlagFiles.h"

#include <gtest/gtest.h>

#include <qor_util/system.h>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <csignal>
#include <sys/stat.h>

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

// The service ignores SIGCHLD once it forked a detached child; the other tests of this process wait
// for their children (popen, spawn), so a test that forks one puts the disposition back.
class SigchldKept {
public:
    SigchldKept() { ::sigaction(SIGCHLD, nullptr, &saved_); }
    ~SigchldKept() { ::sigaction(SIGCHLD, &saved_, nullptr); }
    SigchldKept(const SigchldKept&) = delete;
    SigchldKept& operator=(const SigchldKept&) = delete;

private:
    struct sigaction saved_ {};
};

}  // namespace

TEST(ShellCommand, OutputOverTheLimitIsCutWithAnEllipsis)
{
    const std::string out = util::ShellCommand("head -c 600 /dev/zero | tr '\\0' a", 10);
    EXPECT_EQ("aaaaaaa...", out);
}

TEST(ShellCommand, LimitBelowFourBytesCutsWithoutAnEllipsis)
{
    EXPECT_EQ("aaa", util::ShellCommand("head -c 600 /dev/zero | tr '\\0' a", 3));
}

TEST(ShellCommand, OutputOfExactlyTheLimitIsWhole)
{
    EXPECT_EQ("abcdefghij", util::ShellCommand("printf abcdefghij", 10));
    EXPECT_EQ(std::string(1024, 'b'), util::ShellCommand("head -c 1024 /dev/zero | tr '\\0' b", 1024));
}

TEST(ShellCommand, LongOutputIsCutAtTheLimit)
{
    const std::string out = util::ShellCommand("head -c 20000 /dev/zero | tr '\\0' c", 10000);
    ASSERT_EQ(10000u, out.size());
    EXPECT_EQ("...", out.substr(9997));
    EXPECT_EQ(std::string(9997, 'c'), out.substr(0, 9997));
}

TEST(ShellCommand, ThroughTheMakersLibraryGivesTheOutputAndStatus)
{
    std::string out;
    EXPECT_EQ(0, util::ShellCommand("echo hello", out));
    EXPECT_EQ("hello\n", out);
    EXPECT_EQ(3, util::ShellCommand("exit 3", out));
    EXPECT_EQ("", out);
}

TEST(ShellCommand, AQuotedPathWithBlanksAndQuotesIsOneWord)
{
    TempDir dir;
    dir.write("it's a device/etc/resolv.conf", "nameserver 10.0.0.53\n");
    const std::string path = dir.path() + "/it's a device/etc/resolv.conf";
    EXPECT_EQ("nameserver 10.0.0.53\n", panelkit::util::ShellCommand("cat " + panelkit::util::ShellQuote(path), 4096));
}

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

TEST(Identity, DeviceIdStatusesGiveTheirTexts)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    EXPECT_EQ("(error: ID not initialized)", util::SystemDeviceID());
    root.write("etc/qor/device_id", "not-an-id\n");
    EXPECT_EQ("(error: invalid ID)", util::SystemDeviceID());
    root.write("etc/qor/device_id", "0012-3456-789A\n");
    EXPECT_EQ("0012-3456-789A", util::SystemDeviceID());
}

TEST(Identity, AssemblyNumberAndTheCachedDeviceName)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    root.write("etc/qor/barcode_asn", "A123456789\n");
    EXPECT_EQ("A123456789", util::SystemAssemblySN());
    EXPECT_EQ("ulm3_A123456789", util::DeviceName());
    root.write("etc/qor/barcode_asn", "B000000001\n");
    EXPECT_EQ("B000000001", util::SystemAssemblySN());
    EXPECT_EQ("ulm3_A123456789", util::DeviceName()) << "the name is read once per process";
}

TEST(Identity, CurrentAddressPrefersTheBridge)
{
    EXPECT_EQ("192.168.1.1", util::CurrentIPAddressOf({{"eth0", "10.0.0.5"}, {"br1", "192.168.1.1"}, {"lo", "127.0.0.1"}}));
    EXPECT_EQ("10.0.0.5", util::CurrentIPAddressOf({{"eth1", "10.1.0.5"}, {"eth0", "10.0.0.5"}}));
    EXPECT_EQ("10.1.0.5", util::CurrentIPAddressOf({{"eth1", "10.1.0.5"}, {"wlan0", "10.2.0.5"}}));
    EXPECT_EQ("10.0.0.9", util::CurrentIPAddressOf({{"eth0", "10.0.0.5"}, {"eth0", "10.0.0.9"}}));
    EXPECT_EQ("", util::CurrentIPAddressOf({{"lo", "127.0.0.1"}}));
}

TEST(Reboot, ForkRebootRunsTheDevicesRebootWithAFiveSecondDelay)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    root.write("tmp/.keep", "");
    root.write("sbin/reboot", "#!/bin/sh\necho \"$*\" > \"$(dirname \"$0\")/../tmp/reboot-args\"\n", true);
    const SigchldKept kept;
    util::ForkReboot();
    ASSERT_TRUE(panelkit::test::WaitForText(root / "tmp/reboot-args", "\n", 5000));
    EXPECT_EQ("-d 5\n", root.read("tmp/reboot-args"));
}

TEST(Identity, SettingTheAssemblyNumberReportsSuccessWithNonZero)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    EXPECT_EQ(0, qor_util::system::SetBarcodeASN("A1")) << "no identity folder on this device";
    root.write("etc/qor/.keep", "");
    EXPECT_NE(0, qor_util::system::SetBarcodeASN("A987654321"));
    EXPECT_EQ("A987654321", util::SystemAssemblySN());
    EXPECT_EQ(0, qor_util::system::SetBarcodeASN("")) << "an empty number is refused";
    EXPECT_EQ(0, qor_util::system::SetBarcodeASN("A1\nB2"));
    int status = -1;
    EXPECT_EQ("A987654321", qor_util::system::GetBarcodeASN(&status));
    EXPECT_EQ(0, status);
}
