// panelkit web layer: reads query, form fields, uploads and bodies into a Request, within the limits.
#include "web/RequestParser.h"

#include "web/Request.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTMLForm.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/MediaType.h>
#include <Poco/Net/MessageHeader.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/PartHandler.h>
#include <Poco/String.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace panelkit::web {

namespace {

constexpr std::size_t kChunk = 64 * 1024;

// The device could not store an upload: the server's fault, not the client's.
struct StorageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string TooLarge(std::uint64_t limit)
{
    return "The request body is larger than the limit of " + std::to_string(limit) + " bytes";
}

// Reads through to the source but stops at limit bytes, remembering that there was more.
class LimitedBuffer : public std::streambuf {
public:
    LimitedBuffer(std::istream& source, std::uint64_t limit) : source_(source), limit_(limit) {}
    bool exceeded() const { return exceeded_; }
    /// The last bytes read, enough to see how the body ended.
    const std::string& tail() const { return tail_; }

protected:
    int_type underflow() override
    {
        if (exceeded_)
            return traits_type::eof();
        // One byte past the limit tells an over-long body from one that fits exactly.
        const std::uint64_t room = limit_ - consumed_ + 1;
        const auto want = static_cast<std::streamsize>(room < sizeof buffer_ ? room : sizeof buffer_);
        source_.read(buffer_, want);
        const std::streamsize got = source_.gcount();
        if (got <= 0)
            return traits_type::eof();
        consumed_ += static_cast<std::uint64_t>(got);
        if (consumed_ > limit_) {
            exceeded_ = true;
            return traits_type::eof();
        }
        setg(buffer_, buffer_, buffer_ + got);
        tail_.append(buffer_, static_cast<std::size_t>(got));
        if (tail_.size() > kTail)
            tail_.erase(0, tail_.size() - kTail);
        return traits_type::to_int_type(buffer_[0]);
    }

private:
    static constexpr std::size_t kTail = 256;
    std::istream& source_;
    std::string tail_;
    std::uint64_t limit_;
    std::uint64_t consumed_ = 0;
    bool exceeded_ = false;
    char buffer_[8192];
};

// Streams every file part to its own temporary file; fields stay in the form.
class UploadHandler : public Poco::Net::PartHandler {
public:
    UploadHandler(const std::string& directory, std::vector<UploadedFile>& files) : directory_(directory), files_(files)
    {
    }

    void handlePart(const Poco::Net::MessageHeader& header, std::istream& stream) override
    {
        std::string disposition;
        Poco::Net::NameValueCollection params;
        Poco::Net::MessageHeader::splitParameters(header.get("Content-Disposition", ""), disposition, params);
        std::string path = directory_ + "/panelkit-upload-XXXXXX";
        const int fd = ::mkstemp(path.data());
        if (fd < 0)
            throw StorageError("cannot create an upload file in " + directory_ + ": " + std::strerror(errno));
        // Listed before writing, so that a failure halfway still removes the file.
        files_.push_back({params.get("name", ""), params.get("filename", ""),
                          header.get("Content-Type", "application/octet-stream"), 0, "", path});
        std::uint64_t size = 0;
        bool written = true;
        char chunk[kChunk];
        while (written && stream.read(chunk, sizeof chunk), stream.gcount() > 0) {
            written = WriteAll(fd, chunk, static_cast<std::size_t>(stream.gcount()));
            size += static_cast<std::uint64_t>(stream.gcount());
        }
        ::close(fd);
        if (!written)
            throw StorageError("cannot write the upload file " + path);
        files_.back().size = size;
    }

private:
    static bool WriteAll(int fd, const char* data, std::size_t size)
    {
        while (size > 0) {
            const ssize_t n = ::write(fd, data, size);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return false;
            data += n;
            size -= static_cast<std::size_t>(n);
        }
        return true;
    }

    const std::string& directory_;
    std::vector<UploadedFile>& files_;
};

void RemoveFiles(std::vector<UploadedFile>& files)
{
    for (const auto& file : files)
        ::unlink(file.path.c_str());
    files.clear();
}

}  // namespace

int RequestParser::Parse(Request& request, std::istream& body, std::int64_t contentLength, const Limits& limits,
                         std::string& message)
{
    try {
        Poco::Net::HTMLForm query;
        query.read(request.queryString_);
        request.query_.swap(query);
    } catch (const Poco::Exception& e) {
        message = "Malformed query string: " + e.message();
        return 400;
    }

    const std::string contentTypeHeader = request.header("Content-Type");
    if (!contentTypeHeader.empty()) {
        const Poco::Net::MediaType type(contentTypeHeader);
        request.contentType_ = Poco::toLower(type.getType() + "/" + type.getSubType());
    }
    if (contentLength == 0 || (contentLength < 0 && request.method_ != "POST" && request.method_ != "PUT"))
        return 0;

    const bool multipart = request.contentType_ == "multipart/form-data";
    const bool urlencoded = request.contentType_ == "application/x-www-form-urlencoded";
    const std::uint64_t limit = multipart ? limits.multipart : limits.contentLength;
    if (contentLength > 0 && static_cast<std::uint64_t>(contentLength) > limit) {
        message = TooLarge(limit);
        return 413;
    }

    LimitedBuffer limited(body, limit);
    std::istream in(&limited);
    try {
        if (multipart || urlencoded) {
            Poco::Net::HTTPRequest head(Poco::Net::HTTPRequest::HTTP_POST, "/");
            head.setContentType(contentTypeHeader);
            Poco::Net::HTMLForm form;
            UploadHandler uploads(limits.uploadDirectory, request.files_);
            form.load(head, in, uploads);
            // The reader takes an early end of the stream for the end of the last part, so a
            // broken-off upload would pass as a short file: the closing delimiter must be there.
            if (multipart && limited.tail().find("--" + form.boundary() + "--") == std::string::npos)
                throw Poco::Net::MultipartException("the body ends before its closing boundary");
            request.form_.swap(form);
        } else {
            request.body_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        }
    } catch (const StorageError& e) {
        RemoveFiles(request.files_);
        message = e.what();
        return 500;
    } catch (const std::exception& e) {
        RemoveFiles(request.files_);
        if (limited.exceeded()) {
            message = TooLarge(limit);
            return 413;
        }
        const auto* poco = dynamic_cast<const Poco::Exception*>(&e);
        message = std::string("Malformed request body: ") + (poco ? poco->displayText() : e.what());
        return 400;
    }
    if (limited.exceeded()) {
        RemoveFiles(request.files_);
        request.body_.clear();
        message = TooLarge(limit);
        return 413;
    }
    return 0;
}

}  // namespace panelkit::web
