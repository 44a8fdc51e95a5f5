// panelkit util: files, folder listings, text and certificate names, read in-process.
#include "util/Files.h"

#include "util/Commands.h"
#include "web/Log.h"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <regex.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace panelkit::util {

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
    return RunStatus({"mv", from, to}) == 0;
}

std::vector<std::string> FindFiles(const std::string& dir, FindFilesType type, const std::string& pattern)
{
    std::vector<std::string> names;
    regex_t expression;
    if (::regcomp(&expression, pattern.c_str(), REG_EXTENDED | REG_NOSUB) != 0) {
        PK_ERROR() << "FindFiles: Bad regex pattern: " << pattern;
        return names;
    }
    DIR* folder = ::opendir(dir.c_str());
    if (!folder) {
        ::regfree(&expression);
        return names;
    }
    while (const dirent* entry = ::readdir(folder)) {
        const std::string name = entry->d_name;
        if (::regexec(&expression, name.c_str(), 0, nullptr, 0) != 0)
            continue;
        const bool keep = type == FindFilesType::Any || (type == FindFilesType::Regular && entry->d_type == DT_REG) ||
                          (type == FindFilesType::Directory && entry->d_type == DT_DIR && name != "." && name != "..");
        if (keep)
            names.push_back(name);
    }
    ::closedir(folder);
    ::regfree(&expression);
    return names;
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

}  // namespace panelkit::util
