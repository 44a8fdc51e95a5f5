// panelkit tests: a small HTTP client for talking to the server under test.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace panelkit::test {

/// What the server answered.
struct HttpReply {
    int status = 0;
    std::string body;
    std::map<std::string, std::string> headers;
    /// A header's value, "" when absent (names as the server sent them).
    std::string header(const std::string& name) const;
};

/// Sends one request to the loopback port and reads the whole reply.
HttpReply Http(int port, const std::string& method, const std::string& path, const std::string& body = "",
               const std::string& contentType = "", const std::map<std::string, std::string>& headers = {});
/// The form token a page hands out: the cookie to send back and the field value to post.
struct FormToken {
    std::string cookie;
    std::string token;
    /// The headers that carry the cookie.
    std::map<std::string, std::string> headers() const { return {{"Cookie", cookie}}; }
};

/// GETs a page and takes the form token from its cookie; empty when none was set.
FormToken OpenForm(int port, const std::string& path);

/// A file sent with a multipart form.
struct FormFile {
    std::string field;
    std::string filename;
    std::string content;
    std::string mime = "application/octet-stream";
};

/// GETs the page for its form token, then posts the fields (and files) as a browser sends the page's
/// form: multipart when asked or when there are files, URL-encoded otherwise.
HttpReply PostForm(int port, const std::string& path, const std::vector<std::pair<std::string, std::string>>& fields,
                   const std::vector<FormFile>& files = {}, bool multipart = false);

/// A GET request.
HttpReply Get(int port, const std::string& path);
/// A JSON-RPC call of a method with parameters given as JSON text ("[]").
HttpReply Rpc(int port, const std::string& path, const std::string& method, const std::string& params = "[]",
              const std::string& id = "1");

}  // namespace panelkit::test
