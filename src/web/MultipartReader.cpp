// panelkit web layer: reads a multipart/form-data body in large blocks: fields into the posted values,
// files streamed to temporary files with their SHA-256 taken on the way.
#include "web/MultipartReader.h"

#include "web/UploadDigest.h"

#include <Poco/Exception.h>
#include <Poco/Net/MessageHeader.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>
#include <unistd.h>

namespace panelkit::web {

namespace {

// Longer part headers than this are not a browser's.
constexpr std::size_t kHeaderLimit = 16 * 1024;
// As many parts as the form reader of the urlencoded bodies takes fields.
constexpr int kPartLimit = 100;
// A boundary has at most 70 characters; longer ones are taken up to 128, as leniently as POCO takes them.
constexpr std::size_t kBoundaryLimit = 128;

// Why the body was refused, as the status to answer with.
struct Failure {
    int status;
    std::string message;
};

Failure Malformed(const std::string& reason)
{
    return {400, "Malformed request body: " + reason};
}

Failure EndsEarly()
{
    return Malformed("the body ends before its closing boundary");
}

// Closes the descriptor however the part ends.
class FileCloser {
public:
    explicit FileCloser(int fd) : fd_(fd) {}
    ~FileCloser() { ::close(fd_); }
    FileCloser(const FileCloser&) = delete;
    FileCloser& operator=(const FileCloser&) = delete;

private:
    int fd_;
};

bool WriteAll(int fd, const char* data, std::size_t size)
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

// Browsers write a quote in a name as %22, older ones and other clients as \" (which the parameter
// splitting already undoes): both come back as the quote.
std::string Unquote(std::string value)
{
    for (auto at = value.find("%22"); at != std::string::npos; at = value.find("%22", at + 1))
        value.replace(at, 3, "\"");
    return value;
}

}  // namespace

MultipartReader::MultipartReader(const std::string& boundary, const Limits& limits, std::size_t block)
    : boundary_(boundary), delimiter_("\r\n--" + boundary), limits_(limits), block_(std::max<std::size_t>(block, 1))
{
    // Room for a block after what may be kept unread: part headers, or the start of a delimiter.
    buffer_.resize(block_ + kHeaderLimit + delimiter_.size() + 2);
}

int MultipartReader::Read(std::istream& body, Poco::Net::NameValueCollection& fields,
                          std::vector<UploadedFile>& files, std::string& message)
{
    body_ = &body;
    try {
        if (boundary_.empty() || boundary_.size() > kBoundaryLimit)
            throw Malformed("the multipart type names no usable boundary");
        _SkipPreamble();
        for (int parts = 0; !_ClosingDelimiter(); ++parts) {
            if (parts == kPartLimit)
                throw Malformed("Too many form fields");
            _ReadPart(fields, files);
        }
        _SkipEpilogue();
        return 0;
    } catch (const Failure& failure) {
        message = failure.message;
        return failure.status;
    } catch (const std::exception& e) {
        // No memory, no thread, no digest: the device could not take the upload.
        message = std::string("cannot store the upload: ") + e.what();
        return 500;
    }
}

void MultipartReader::_SkipPreamble()
{
    // The first delimiter may open the body without the line break before it: one is put in front.
    buffer_[0] = '\r';
    buffer_[1] = '\n';
    end_ = 2;
    if (!_ReadToDelimiter([](const char*, std::size_t) {}))
        throw Malformed("No boundary line found");
}

bool MultipartReader::_ClosingDelimiter()
{
    if (!_Need(2))
        throw EndsEarly();
    if (buffer_[begin_] == '-' && buffer_[begin_ + 1] == '-') {
        begin_ += 2;
        return true;
    }
    // Transport padding may follow a delimiter before its line break.
    for (;;) {
        if (!_Need(1))
            throw EndsEarly();
        if (buffer_[begin_] != ' ' && buffer_[begin_] != '\t')
            break;
        ++begin_;
    }
    if (!_Need(2))
        throw EndsEarly();
    if (buffer_[begin_] != '\r' || buffer_[begin_ + 1] != '\n')
        throw Malformed("a boundary is followed by other than a line break");
    begin_ += 2;
    return false;
}

void MultipartReader::_ReadPart(Poco::Net::NameValueCollection& fields, std::vector<UploadedFile>& files)
{
    Poco::Net::MessageHeader header;
    try {
        std::istringstream lines(_ReadHeaders());
        header.read(lines);
    } catch (const Poco::Exception& e) {
        throw Malformed(e.displayText());
    }
    std::string disposition;
    Poco::Net::NameValueCollection params;
    Poco::Net::MessageHeader::splitParameters(header.get("Content-Disposition", ""), disposition, params);
    const std::string name = Unquote(params.get("name", ""));
    if (!params.has("filename")) {
        _ReadField(name, fields);
        return;
    }
    UploadedFile file;
    file.field = name;
    file.filename = Unquote(params.get("filename"));
    file.mime = header.get("Content-Type", "application/octet-stream");
    _ReadFile(std::move(file), files);
}

std::string MultipartReader::_ReadHeaders()
{
    // The headers end at an empty line; a part without headers begins with it.
    for (;;) {
        const char* window = buffer_.data() + begin_;
        const std::size_t size = end_ - begin_;
        std::size_t length = 0;
        if (size >= 2 && window[0] == '\r' && window[1] == '\n') {
            length = 2;
        } else if (const auto* hit = static_cast<const char*>(::memmem(window, size, "\r\n\r\n", 4))) {
            length = static_cast<std::size_t>(hit - window) + 4;
        }
        if (length > 0) {
            begin_ += length;
            return std::string(window, length);
        }
        if (size > kHeaderLimit)
            throw Malformed("the headers of a part are too long");
        if (!_Fill())
            throw EndsEarly();
    }
}

void MultipartReader::_ReadFile(UploadedFile file, std::vector<UploadedFile>& files)
{
    file.path = limits_.uploadDirectory + "/panelkit-upload-XXXXXX";
    const int fd = ::mkstemp(file.path.data());
    if (fd < 0)
        throw Failure{500, "cannot create an upload file in " + limits_.uploadDirectory + ": " + std::strerror(errno)};
    const FileCloser closer(fd);
    // Listed before writing, so that a failure halfway still removes the file.
    files.push_back(file);
    UploadDigest digest;
    std::uint64_t size = 0;
    _ReadContent([&](const char* data, std::size_t length) {
        digest.Update(data, length);
        if (!WriteAll(fd, data, length))
            throw Failure{500, "cannot write the upload file " + file.path + ": " + std::strerror(errno)};
        size += length;
    });
    files.back().size = size;
    files.back().sha256 = digest.Finish();
}

void MultipartReader::_ReadField(const std::string& name, Poco::Net::NameValueCollection& fields)
{
    std::string value;
    _ReadContent([&](const char* data, std::size_t length) {
        // A field is held in memory: it may be as large as a body that is not multipart.
        if (value.size() + length > limits_.contentLength)
            throw Failure{413, "The form field \"" + name + "\" is larger than the limit of " +
                                   std::to_string(limits_.contentLength) + " bytes"};
        value.append(data, length);
    });
    fields.add(name, value);
}

void MultipartReader::_ReadContent(const Sink& sink)
{
    if (!_ReadToDelimiter(sink))
        throw EndsEarly();
}

bool MultipartReader::_ReadToDelimiter(const Sink& sink)
{
    // Everything before the next delimiter; its last bytes but one may begin a delimiter that the
    // next block completes, so they stay until then.
    const std::size_t keep = delimiter_.size() - 1;
    for (;;) {
        const char* window = buffer_.data() + begin_;
        const std::size_t size = end_ - begin_;
        const auto* hit = static_cast<const char*>(::memmem(window, size, delimiter_.data(), delimiter_.size()));
        if (hit) {
            const auto length = static_cast<std::size_t>(hit - window);
            if (length > 0)
                sink(window, length);
            begin_ += length + delimiter_.size();
            return true;
        }
        if (size > keep) {
            sink(window, size - keep);
            begin_ = end_ - keep;
        }
        if (!_Fill())
            return false;
    }
}

void MultipartReader::_SkipEpilogue()
{
    // Read to the end, so that nothing of this body is taken for the next request.
    do
        begin_ = end_;
    while (_Fill());
}

bool MultipartReader::_Need(std::size_t count)
{
    while (end_ - begin_ < count)
        if (!_Fill())
            return false;
    return true;
}

bool MultipartReader::_Fill()
{
    // What is left unread moves to the front: a delimiter's length at most, or one part's headers.
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    body_->read(buffer_.data() + end_, static_cast<std::streamsize>(block_));
    const auto got = static_cast<std::size_t>(body_->gcount());
    end_ += got;
    return got > 0;
}

}  // namespace panelkit::web
