// panelkit web layer: the reply a page builds, written out by whichever front end received the request.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

namespace panelkit::web {

/// Status, headers and a body held in memory, or a file streamed from disk.
class Response {
public:
    Response();
    /// Removes a temporary file the reply was streaming.
    ~Response();
    Response(const Response&) = delete;
    Response& operator=(const Response&) = delete;

    /// Sets the HTTP status code (200 unless changed).
    void status(int code) { status_ = code; }
    /// The HTTP status code.
    int status() const { return status_; }
    /// The standard reason phrase of the status code.
    static const char* Reason(int code);
    /// Sets the content type ("text/html; charset=utf-8" unless changed).
    void contentType(const std::string& type) { contentType_ = type; }
    /// The content type.
    const std::string& contentType() const { return contentType_; }
    /// Adds a header; a name set twice is sent twice.
    void setHeader(const std::string& name, const std::string& value);
    /// The headers besides the content type, in the order set.
    const std::vector<std::pair<std::string, std::string>>& headers() const { return headers_; }
    /// The body stream.
    std::ostream& out() { return out_; }
    /// The body written so far.
    const std::string& body() const { return body_; }
    /// Throws away the body and headers written so far (for error pages).
    void reset();
    /// Replaces the whole reply with a small HTML page stating the status and the message.
    void errorPage(int code, const std::string& message);
    /// Answers with a redirect to the location.
    void redirect(const std::string& location, int code = 302);
    /// Answers with a file streamed from disk as an attachment named downloadName
    /// (inline when downloadName is empty).
    void sendFile(const std::string& path, const std::string& downloadName, const std::string& type);
    /// The file given to sendFile is removed once the reply is gone (after it was sent).
    void removeFileAfterSending() { removeFile_ = true; }
    /// The file to stream instead of the body, "" when none.
    const std::string& file() const { return file_; }
    /// The value of a header offering a download named name: "attachment; filename=\"name\"", the name without
    /// the characters that would end the quoted text or the header.
    static std::string Attachment(const std::string& name);
    /// Asks the front end to close the connection after this reply.
    void closeConnection() { close_ = true; }
    /// True when the connection must not be kept alive.
    bool closesConnection() const { return close_; }

private:
    // Appends straight into body_, so the page is built once and never copied.
    class BodyBuffer : public std::streambuf {
    public:
        explicit BodyBuffer(std::string& target) : target_(target) {}

    protected:
        int_type overflow(int_type ch) override;
        std::streamsize xsputn(const char* s, std::streamsize n) override;

    private:
        std::string& target_;
    };

    int status_ = 200;
    std::string contentType_ = "text/html; charset=utf-8";
    std::vector<std::pair<std::string, std::string>> headers_;
    std::string body_;
    BodyBuffer buffer_;
    std::ostream out_;
    std::string file_;
    bool removeFile_ = false;
    bool close_ = false;
};

}  // namespace panelkit::web
