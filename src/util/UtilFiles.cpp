// panelkit util: commands with captured output, files, text, certificates and the device's identity.
#include "util/Util.h"

#include "web/Log.h"

#include <qor_util/system.h>

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <ifaddrs.h>
#include <map>
#include <netdb.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace panelkit::util {

std::string ShellCommand(const std::string& cmd, std::size_t maxBytes)
{
    std::string result;
    result.reserve(maxBytes);
    FILE* pipe = ::popen(cmd.c_str(), "r");
    if (!pipe)
        return result;
    char chunk[512];
    std::size_t total = 0;
    for (;;) {
        std::memset(chunk, 0, sizeof chunk);
        const std::size_t got = std::fread(chunk, 1, sizeof chunk, pipe);
        if (got == 0)
            break;
        total += got;
        if (total > maxBytes) {
            result.append(chunk, maxBytes - result.size());
            if (result.size() >= 4)
                result.replace(result.size() - 3, 3, "...");
            break;
        }
        result.append(chunk, got);
    }
    ::pclose(pipe);
    return result;
}

int ShellCommand(const std::string& cmd, std::string& out)
{
    return qor_util::system::exec(cmd, out);
}

bool FileExists(const std::string& path)
{
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0;
}

bool ReadFileHead(const std::string& path, std::size_t maxBytes, std::string& out)
{
    // Plain system calls: pages check several small state files on every request.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    out.clear();
    char chunk[4096];
    while (out.size() < maxBytes) {
        const ssize_t n = ::read(fd, chunk, std::min(sizeof chunk, maxBytes - out.size()));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        out.append(chunk, static_cast<std::size_t>(n));
    }
    ::close(fd);
    return true;
}

unsigned FileSize(const std::string& path)
{
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? static_cast<unsigned>(info.st_size) : 0u;
}

bool MoveFile(const std::string& from, const std::string& to)
{
    if (::rename(from.c_str(), to.c_str()) == 0)
        return true;
    if (errno != EXDEV)
        return false;
    // Across file systems: mv copies and removes. Run with arguments, as the names may come from a browser.
    const char* const args[] = {"mv", from.c_str(), to.c_str(), nullptr};
    pid_t pid = -1;
    if (::posix_spawnp(&pid, "mv", nullptr, nullptr, const_cast<char* const*>(args), environ) != 0)
        return false;
    int status = 0;
    if (::waitpid(pid, &status, 0) != pid)
        return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string StripChars(const std::string& text, const std::string& chars)
{
    std::string out = text;
    out.erase(std::remove_if(out.begin(), out.end(), containsChars{chars}), out.end());
    return out;
}

bool GetCertificateDetails(const std::string& path, std::string& issuer, std::string& subject)
{
    issuer.clear();
    subject.clear();
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        PK_ERROR() << "GetCertificateDetils: Unable to load certificate from disk";
        return false;
    }
    std::stringstream text;
    text << file.rdbuf();
    const std::string content = text.str();
    const auto begin = content.find("<cert>");
    const auto end = content.find("</cert>");
    if (begin == std::string::npos || end == std::string::npos || end < begin) {
        PK_ERROR() << "GetCertificateDetils: Certificate format error";
        return false;
    }
    BIO* memory = BIO_new_mem_buf(content.data() + begin, static_cast<int>(end - begin));
    X509* certificate = memory ? PEM_read_bio_X509(memory, nullptr, nullptr, nullptr) : nullptr;
    if (!certificate) {
        PK_ERROR() << "GetCertificateDetils: Unable to parse certificate in memory";
        BIO_free(memory);
        return false;
    }
    char* subjectText = X509_NAME_oneline(X509_get_subject_name(certificate), nullptr, 0);
    char* issuerText = X509_NAME_oneline(X509_get_issuer_name(certificate), nullptr, 0);
    subject = subjectText ? subjectText : "";
    issuer = issuerText ? issuerText : "";
    OPENSSL_free(subjectText);
    OPENSSL_free(issuerText);
    X509_free(certificate);
    BIO_free(memory);
    return true;
}

std::string DeviceName()
{
    static const std::string name = "ulm3_" + qor_util::system::GetBarcodeASN();
    return name;
}

std::string SystemAssemblySN()
{
    return qor_util::system::GetBarcodeASN();
}

std::string SystemDeviceID()
{
    int status = 0;
    const std::string id = qor_util::system::GetDeviceID(&status);
    if (status == 2)
        return "(error: invalid ID)";
    if (status == 1)
        return "(error: ID not initialized)";
    return id;
}

std::string CurrentIPAddressOf(const std::vector<std::pair<std::string, std::string>>& addresses)
{
    std::map<std::string, std::string> byInterface;
    for (const auto& [name, address] : addresses)
        if (name == "eth0" || name == "eth1" || name == "br1")
            byInterface[name] = address;
    for (const char* preferred : {"br1", "eth0", "eth1"}) {
        auto it = byInterface.find(preferred);
        if (it != byInterface.end())
            return it->second;
    }
    return "";
}

std::string GetCurrentIPAddress()
{
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0)
        return "";
    std::vector<std::pair<std::string, std::string>> addresses;
    for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET)
            continue;
        char host[NI_MAXHOST] = "";
        if (::getnameinfo(entry->ifa_addr, sizeof(sockaddr_in), host, sizeof host, nullptr, 0, NI_NUMERICHOST) != 0)
            host[0] = '\0';
        addresses.emplace_back(entry->ifa_name, host);
    }
    ::freeifaddrs(list);
    return CurrentIPAddressOf(addresses);
}

}  // namespace panelkit::util
