// panelkit tests: pages served in-process on a simulated device: render a page, post a form, call a status method.
#include "PageFixture.h"

#include "Process.h"
#include "apps/Panelkit.h"
#include "util/DevicePath.h"
#include "util/Pardb.h"
#include "web/Request.h"
#include "web/RequestParser.h"
#include "web/Response.h"
#include "web/Service.h"
#include "web/Settings.h"

#include <Poco/URI.h>

#include <sstream>

namespace panelkit::test {

namespace {

// A well-formed form token; the page accepts a post whose field repeats the cookie.
const char kToken[] = "0123456789abcdef0123456789abcdef";


}  // namespace

std::string SectionText(const std::string& page, const std::string& title)
{
    const std::string start = "<h3>" + title + "</h3><div class=\"command_output\"><pre>";
    const auto at = page.find(start);
    if (at == std::string::npos)
        return "";
    const auto from = at + start.size();
    return page.substr(from, page.find("</pre>", from) - from);
}

Json::Value PageConfig(const std::string& mediaRoot)
{
    Json::Value config;
    config["service"]["api"] = "http";
    config["panelkit"]["root"]["sync"] = "config";
    config["panelkit"]["root"]["async"] = "async";
    config["panelkit"]["root"]["rpc"] = "rpc";
    config["panelkit"]["media_root"] = mediaRoot;
    return config;
}

PageFixture::PageFixture()
{
    const std::string device = root_ / "device";
    SimulateDevice(root_, device);
    util::SetDeviceRoot(device);
    util::Pardb::FlushReadCache();
    service_ = std::make_unique<web::Service>(web::Settings(PageConfig()));
    apps::Panelkit::Mount(*service_);
}

PageFixture::~PageFixture() = default;

PageReply PageFixture::_Serve(const std::string& method, const std::string& path, const std::string& contentType,
                              const std::string& body)
{
    web::Request request;
    const auto query = path.find('?');
    request.setHead(method, path.substr(0, query), query == std::string::npos ? "" : path.substr(query + 1),
                    "127.0.0.1");
    request.mutableHeaders().set("Cookie", std::string("panelkit_csrf=") + kToken);
    if (!contentType.empty())
        request.mutableHeaders().set("Content-Type", contentType);
    std::istringstream stream(body);
    std::string message;
    web::Response response;
    const int refused = web::RequestParser::Parse(request, stream, static_cast<std::int64_t>(body.size()),
                                                  service_->limits(), message);
    EXPECT_EQ(0, refused) << message;
    service_->handle(request, response);
    PageReply reply{response.status(), response.body(), response.contentType(), response.headers(), response.file()};
    // Read while the reply lives, as a front end sends it: a file removed after sending is gone afterwards.
    if (!reply.file.empty())
        reply.body = ReadFile(reply.file);
    return reply;
}

std::string PageReply::header(const std::string& name) const
{
    for (const auto& [key, value] : headers)
        if (key == name)
            return value;
    return "";
}

PageReply PageFixture::Get(const std::string& path)
{
    return _Serve("GET", path, "", "");
}

PageReply PageFixture::Post(const std::string& path, const Fields& fields)
{
    std::string body = std::string("_csrf=") + kToken;
    for (const auto& [name, value] : fields) {
        std::string encoded;
        Poco::URI::encode(value, "&=+;", encoded);
        body += "&" + name + "=" + encoded;
    }
    return _Serve("POST", path, "application/x-www-form-urlencoded", body);
}

PageReply PageFixture::PostMultipart(const std::string& path, const Fields& fields,
                                     const std::vector<UploadField>& files)
{
    const std::string boundary = "panelkitTestBoundary7MA4YWxkTrZu0gW";
    std::string body = "--" + boundary + "\r\nContent-Disposition: form-data; name=\"_csrf\"\r\n\r\n" + kToken + "\r\n";
    for (const auto& [name, value] : fields)
        body += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
    for (const auto& file : files)
        body += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + file.name + "\"; filename=\"" +
                file.filename + "\"\r\nContent-Type: text/plain\r\n\r\n" + file.content + "\r\n";
    body += "--" + boundary + "--\r\n";
    return _Serve("POST", path, "multipart/form-data; boundary=" + boundary, body);
}

Json::Value PageFixture::Rpc(const std::string& method, const Json::Value& params)
{
    Json::Value call;
    call["method"] = method;
    call["params"] = params;
    call["id"] = 1;
    const PageReply reply = _Serve("POST", "/async/rpc", "application/json", Json::FastWriter().write(call));
    Json::Value answer;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    EXPECT_TRUE(reader->parse(reply.body.data(), reply.body.data() + reply.body.size(), &answer, &errors))
        << reply.body;
    return answer;
}

Json::Value PageFixture::Call(const std::string& method)
{
    const Json::Value answer = Rpc(method);
    EXPECT_TRUE(answer["error"].isNull()) << answer.toStyledString();
    return answer["result"];
}

std::string PageFixture::StoreGet(const std::string& key)
{
    std::string value;
    PARDB_PAR_T type{};
    return util::Pardb::Get(key, value, type) ? value : "<missing>";
}

void PageFixture::StoreSet(const std::string& key, const std::string& value)
{
    ASSERT_TRUE(util::Pardb::Set(key, value));
}

void PageFixture::StoreRefuse(const std::string& key)
{
    const auto refused = RunTool(root_, {PANELKIT_PARDB, "--root", root_ / "device", "refuse", key});
    ASSERT_EQ(0, refused.first) << refused.second;
}

std::string PageFixture::CommandLog() const
{
    return ReadFile(root_ / "device/var/log/sim-commands.log");
}

bool PageFixture::RebootMarked() const
{
    return root_.exists("device/tmp/panelkit_reboot_flag");
}

void PageFixture::WriteDeviceFile(const std::string& path, const std::string& content, bool executable)
{
    root_.write("device" + path, content, executable);
}

}  // namespace panelkit::test
