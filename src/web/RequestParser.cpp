// panelkit web layer: reads query, form fields, uploads and bodies into a Request, within the limits.
#include "web/RequestParser.h"

#include "web/RequestBodyBuffer.h"
#include "web/MultipartReader.h"
#include "web/Request.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTMLForm.h>
#include <Poco/Net/MediaType.h>
#include <Poco/String.h>

#include <algorithm>
#include <unistd.h>

namespace panelkit::web {

namespace {

std::string TooLarge(std::uint64_t limit)
{
    return "The request body is larger than the limit of " + std::to_string(limit) + " bytes";
}

// Reads through to the source but stops at limit bytes, remembering that there was more.
class LimitedBuffer : public RequestBodyBuffer {
public:
    LimitedBuffer(std::istream& source, std::uint64_t limit) : source_(source), limit_(limit) {}
    bool exceeded() const { return exceeded_; }

protected:
    std::streamsize Receive(char* to, std::streamsize count) override
    {
        if (exceeded_)
            return 0;
        // One byte past the limit tells an over-long body from one that fits exactly.
        const std::uint64_t room = limit_ - consumed_ + 1;
        const std::uint64_t want = std::min<std::uint64_t>(room, static_cast<std::uint64_t>(count));
        source_.read(to, static_cast<std::streamsize>(want));
        const std::streamsize got = source_.gcount();
        consumed_ += static_cast<std::uint64_t>(got);
        if (consumed_ > limit_) {
            exceeded_ = true;
            return 0;
        }
        return got;
    }

private:
    std::istream& source_;
    std::uint64_t limit_;
    std::uint64_t consumed_ = 0;
    bool exceeded_ = false;
};

// Form values in URL encoding, through POCO's reader; 0, or 400 and the message.
int ReadUrlEncoded(std::istream& in, Poco::Net::NameValueCollection& values, std::string& message)
{
    try {
        Poco::Net::HTMLForm form;
        form.read(in);
        values.swap(form);
        return 0;
    } catch (const std::exception& e) {
        const auto* poco = dynamic_cast<const Poco::Exception*>(&e);
        message = std::string("Malformed request body: ") + (poco ? poco->displayText() : e.what());
        return 400;
    }
}

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
    std::string boundary;
    if (!contentTypeHeader.empty()) {
        const Poco::Net::MediaType type(contentTypeHeader);
        request.contentType_ = Poco::toLower(type.getType() + "/" + type.getSubType());
        boundary = type.parameters().get("boundary", "");
    }
    if (contentLength == 0 || (contentLength < 0 && request.method_ != "POST" && request.method_ != "PUT"))
        return 0;

    const bool multipart = request.contentType_ == "multipart/form-data";
    const std::uint64_t limit = multipart ? limits.multipart : limits.contentLength;
    if (contentLength > 0 && static_cast<std::uint64_t>(contentLength) > limit) {
        message = TooLarge(limit);
        return 413;
    }

    LimitedBuffer limited(body, limit);
    std::istream in(&limited);
    int status = 0;
    if (multipart)
        status = MultipartReader(boundary, limits).Read(in, request.form_, request.files_, message);
    else if (request.contentType_ == "application/x-www-form-urlencoded")
        status = ReadUrlEncoded(in, request.form_, message);
    else
        request.body_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    // A body cut at the limit reads as a malformed one: the limit is the reason.
    if (limited.exceeded()) {
        status = 413;
        message = TooLarge(limit);
    }
    if (status != 0) {
        RemoveFiles(request.files_);
        request.form_.clear();
        request.body_.clear();
    }
    return status;
}

}  // namespace panelkit::web
