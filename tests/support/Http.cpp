// panelkit tests: a small HTTP client for talking to the server under test.
#include "Http.h"

#include <Poco/Net/HTTPClientSession.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/StreamCopier.h>
#include <Poco/String.h>
#include <Poco/URI.h>

namespace panelkit::test {

std::string HttpReply::header(const std::string& name) const
{
    for (const auto& [key, value] : headers)
        if (Poco::icompare(key, name) == 0)
            return value;
    return "";
}

HttpReply Http(int port, const std::string& method, const std::string& path, const std::string& body,
               const std::string& contentType, const std::map<std::string, std::string>& headers)
{
    Poco::Net::HTTPClientSession session("127.0.0.1", static_cast<Poco::UInt16>(port));
    session.setTimeout(Poco::Timespan(30, 0));
    Poco::Net::HTTPRequest request(method, path, Poco::Net::HTTPMessage::HTTP_1_1);
    if (!contentType.empty())
        request.setContentType(contentType);
    for (const auto& [name, value] : headers)
        request.set(name, value);
    if (!body.empty() || method == "POST")
        request.setContentLength(static_cast<std::streamsize>(body.size()));
    session.sendRequest(request) << body;
    Poco::Net::HTTPResponse response;
    std::istream& in = session.receiveResponse(response);
    HttpReply reply;
    reply.status = response.getStatus();
    for (const auto& [name, value] : response)
        reply.headers[name] = value;
    Poco::StreamCopier::copyToString(in, reply.body);
    return reply;
}

FormToken OpenForm(int port, const std::string& path)
{
    const std::string setCookie = Get(port, path).header("Set-Cookie");
    const std::string name = "panelkit_csrf=";
    const auto at = setCookie.find(name);
    if (at == std::string::npos)
        return {};
    const std::string token = setCookie.substr(at + name.size(), setCookie.find(';', at) - at - name.size());
    return {name + token, token};
}

HttpReply PostForm(int port, const std::string& path, const std::vector<std::pair<std::string, std::string>>& fields,
                   const std::vector<FormFile>& files, bool multipart)
{
    const FormToken form = OpenForm(port, path);
    auto all = fields;
    all.emplace_back("_csrf", form.token);
    std::string body;
    if (!multipart && files.empty()) {
        for (const auto& [name, value] : all) {
            std::string encoded;
            Poco::URI::encode(value, "&=+;", encoded);
            body += (body.empty() ? "" : "&") + name + "=" + encoded;
        }
        return Http(port, "POST", path, body, "application/x-www-form-urlencoded", form.headers());
    }
    const std::string boundary = "----panelkitFormBoundary";
    for (const auto& [name, value] : all)
        body += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
    for (const auto& file : files)
        body += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + file.field + "\"; filename=\"" +
                file.filename + "\"\r\nContent-Type: " + file.mime + "\r\n\r\n" + file.content + "\r\n";
    body += "--" + boundary + "--\r\n";
    return Http(port, "POST", path, body, "multipart/form-data; boundary=" + boundary, form.headers());
}

HttpReply Get(int port, const std::string& path)
{
    return Http(port, "GET", path);
}

HttpReply Rpc(int port, const std::string& path, const std::string& method, const std::string& params,
              const std::string& id)
{
    const std::string body = R"({"method":")" + method + R"(","params":)" + params + R"(,"id":)" + id + "}";
    return Http(port, "POST", path, body, "application/json");
}

}  // namespace panelkit::test
