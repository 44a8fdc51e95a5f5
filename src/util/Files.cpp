// panelkit util: files, folder listings, text and certificate names, read in-process.
#include "util/Files.h"

#include "util/Commands.h"
#include "web/Log.h"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <limits>
#include <regex.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace panelkit::util {

namespace {

// False on a read error, errno telling why; what was read before it stays in out.
bool ReadUpTo(int fd, std::size_t limit, std::string& out)
{
    char chunk[4096];
    while (out.size() < limit) {
        const ssize_t got = ::read(fd, chunk, std::min(sizeof chunk, limit - out.size()));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            break;
        out.append(chunk, static_cast<std::size_t>(got));
    }
    return true;
}

// One byte past the limit is enough to know that a text must be cut.
std::size_t OnePast(std::size_t maxBytes)
{
    return maxBytes == std::numeric_limits<std::size_t>::max() ? maxBytes : maxBytes + 1;
}

// The newline that ends the last line starts no line; a last line without one still counts.
std::size_t StartOfLastLines(const std::string& text, std::size_t lines)
{
    if (lines == 0)
        return text.size();
    std::size_t end = text.size();
    if (end > 0 && text[end - 1] == '\n')
        --end;
    for (std::size_t found = 0; end > 0;) {
        const std::size_t newline = text.rfind('\n', end - 1);
        if (newline == std::string::npos)
            return 0;
        if (++found == lines)
            return newline + 1;
        end = newline;
    }
    return 0;
}

// The same count for a regular file, read backwards in chunks so that a long log is not read whole; -1 on a read error.
off_t StartOfLastLines(int fd, off_t size, std::size_t lines)
{
    if (lines == 0)
        return size;
    char chunk[8192];
    std::size_t found = 0;
    for (off_t end = size; end > 0;) {
        const std::size_t want = static_cast<std::size_t>(std::min<off_t>(static_cast<off_t>(sizeof chunk), end));
        const off_t from = end - static_cast<off_t>(want);
        for (std::size_t done = 0; done < want;) {
            const ssize_t got = ::pread(fd, chunk + done, want - done, from + static_cast<off_t>(done));
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                return -1;  // a read error, or the file shrank under us
            done += static_cast<std::size_t>(got);
        }
        for (std::size_t i = want; i-- > 0;) {
            const off_t at = from + static_cast<off_t>(i);
            if (chunk[i] == '\n' && at != size - 1 && ++found == lines)
                return at + 1;
        }
        end = from;
    }
    return 0;
}

// Pipes and the like cannot be read backwards: read on, keeping only what can still be among the last lines.
bool TailOfStream(int fd, std::size_t lines, std::string& out)
{
    std::size_t trimAt = 64 * 1024;
    for (;;) {
        if (!ReadUpTo(fd, trimAt, out))
            return false;
        if (out.size() < trimAt)
            break;  // the end came before the limit
        out.erase(0, StartOfLastLines(out, lines));
        trimAt = std::max(trimAt, 2 * out.size());
    }
    out.erase(0, StartOfLastLines(out, lines));
    return true;
}

}  // namespace

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
    ReadUpTo(fd, maxBytes, out);
    ::close(fd);
    return true;
}

std::string CatFile(const std::string& path, std::size_t maxBytes)
{
    std::string text;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 || !ReadUpTo(fd, OnePast(maxBytes), text)) {
        const int error = errno;
        text += "cat: " + path + ": " + std::strerror(error) + "\n";
    }
    if (fd >= 0)
        ::close(fd);
    return Bounded(std::move(text), maxBytes);
}

std::string TailFile(const std::string& path, std::size_t lines, std::size_t maxBytes)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return "";
    std::string text;
    struct stat info {};
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode)) {
        const off_t start = StartOfLastLines(fd, info.st_size, lines);
        if (start >= 0 && ::lseek(fd, start, SEEK_SET) == start &&
            !ReadUpTo(fd, std::min(static_cast<std::size_t>(info.st_size - start), OnePast(maxBytes)), text))
            text.clear();
    } else if (!TailOfStream(fd, lines, text)) {
        text.clear();
    }
    ::close(fd);
    return Bounded(std::move(text), maxBytes);
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
