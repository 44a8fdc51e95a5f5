// panelkit web layer: one HTTP request as the pages see it, whichever front end received it.
#pragma once

#include "web/UploadedFile.h"

#include <Poco/Net/NameValueCollection.h>

#include <string>
#include <vector>

namespace panelkit::web {

/// Method, path, headers, query and posted values, uploaded files and a bounded body.
class Request {
public:
    Request() = default;
    /// Removes the temporary files of uploads that nobody moved away.
    ~Request();
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    /// "GET", "POST", ...
    const std::string& method() const { return method_; }
    /// The script name followed by the path info, percent-decoded.
    const std::string& path() const { return path_; }
    /// The undecoded query string, without "?".
    const std::string& queryString() const { return queryString_; }
    /// The media type of the body without parameters, lower case ("application/json").
    const std::string& contentType() const { return contentType_; }
    /// The peer's address as text.
    const std::string& remoteAddress() const { return remoteAddress_; }
    /// A request header, "" when absent; names are case-insensitive.
    std::string header(const std::string& name) const;
    /// All request headers.
    const Poco::Net::NameValueCollection& headers() const { return headers_; }
    /// The first query value of a name, "" when absent.
    std::string get(const std::string& name) const;
    /// The first posted value of a name, "" when absent.
    std::string post(const std::string& name) const;
    /// Every posted value of a name, in order (multiple selections).
    std::vector<std::string> postAll(const std::string& name) const;
    /// True when the name was posted at all.
    bool posted(const std::string& name) const;
    /// All query values.
    const Poco::Net::NameValueCollection& getValues() const { return query_; }
    /// All posted values.
    const Poco::Net::NameValueCollection& postValues() const { return form_; }
    /// The uploaded files, in the order received.
    const std::vector<UploadedFile>& files() const { return files_; }
    /// The first file posted in a field, or nullptr.
    const UploadedFile* file(const std::string& field) const;
    /// The raw body of a request that is not a form (JSON, text), bounded by the configured limit.
    const std::string& body() const { return body_; }

    /// Sets the request line and headers; used by the front ends.
    void setHead(std::string method, std::string path, std::string queryString, std::string remoteAddress);
    /// Mutable headers, filled by the front ends.
    Poco::Net::NameValueCollection& mutableHeaders() { return headers_; }

private:
    friend class RequestParser;

    std::string method_;
    std::string path_;
    std::string queryString_;
    std::string contentType_;
    std::string remoteAddress_;
    Poco::Net::NameValueCollection headers_;
    Poco::Net::NameValueCollection query_;
    Poco::Net::NameValueCollection form_;
    std::vector<UploadedFile> files_;
    std::string body_;
};

}  // namespace panelkit::web
