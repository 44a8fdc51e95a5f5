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

#include <algorithm>
#include <cstring>
#include <sstream>

namespace panelkit::test {

namespace {

// A well-formed form token; the page accepts a post whose field repeats the cookie.
const char kToken[] = "0123456789abcdef0123456789abcdef";

// A body made as it is read: a prefix, `size` bytes starting with `head` then filler, a suffix.
class GeneratedBody : public std::streambuf {
public:
    GeneratedBody(std::string prefix, std::string head, std::uint64_t size, std::string suffix)
        : prefix_(std::move(prefix)), head_(std::move(head)), size_(size), suffix_(std::move(suffix))
    {
    }
    std::uint64_t length() const { return prefix_.size() + size_ + suffix_.size(); }

protected:
    int_type underflow() override
    {
        const std::uint64_t total = length();
        if (offset_ >= total)
            return traits_type::eof();
        std::size_t n = 0;
        while (n < sizeof buffer_ && offset_ < total)
            n += Fill(buffer_ + n, sizeof buffer_ - n);
        setg(buffer_, buffer_, buffer_ + n);
        return traits_type::to_int_type(buffer_[0]);
    }

private:
    // Copies what follows the offset within one piece (prefix, head, filler, suffix).
    std::size_t Fill(char* to, std::size_t room)
    {
        auto copy = [&](const std::string& from, std::uint64_t at) {
            const std::size_t n = std::min<std::uint64_t>(room, from.size() - at);
            std::memcpy(to, from.data() + at, n);
            return n;
        };
        std::size_t n = 0;
        const std::uint64_t body = offset_ - std::min<std::uint64_t>(offset_, prefix_.size());
        if (offset_ < prefix_.size())
            n = copy(prefix_, offset_);
        else if (body < head_.size() && body < size_)
            n = std::min<std::uint64_t>(copy(head_, body), size_ - body);
        else if (body < size_)
            std::memset(to, 'f', n = std::min<std::uint64_t>(room, size_ - body));
        else
            n = copy(suffix_, body - size_);
        offset_ += n;
        return n;
    }

    std::string prefix_;
    std::string head_;
    std::uint64_t size_;
    std::string suffix_;
    std::uint64_t offset_ = 0;
    char buffer_[64 * 1024];
};


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
    service_->uploadDirectory(device + "/tmp");
    apps::Panelkit::Mount(*service_);
}

PageFixture::~PageFixture() = default;

PageReply PageFixture::_Serve(const std::string& method, const std::string& path, const std::string& contentType,
                              const std::string& body)
{
    std::istringstream stream(body);
    return _Serve(method, path, contentType, stream, body.size());
}

PageReply PageFixture::_Serve(const std::string& method, const std::string& path, const std::string& contentType,
                              std::istream& body, std::uint64_t length)
{
    web::Request request;
    const auto query = path.find('?');
    request.setHead(method, path.substr(0, query), query == std::string::npos ? "" : path.substr(query + 1),
                    "127.0.0.1");
    request.mutableHeaders().set("Cookie", std::string("panelkit_csrf=") + kToken);
    if (!contentType.empty())
        request.mutableHeaders().set("Content-Type", contentType);
    std::string message;
    web::Response response;
    const int refused = web::RequestParser::Parse(request, body, static_cast<std::int64_t>(length),
                                                  service_->limits(), message);
    EXPECT_EQ(0, refused) << message;
    service_->handle(request, response);
    return {response.status(), response.body(), response.headers()};
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

PageReply PageFixture::PostFile(const std::string& path, const Fields& fields, const UploadPart& file)
{
    const std::string boundary = "----panelkitTestBoundary7MA4YWxkTrZu0gW";
    std::string prefix;
    auto part = [&](const std::string& name, const std::string& value) {
        prefix += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
    };
    part("_csrf", kToken);
    for (const auto& [name, value] : fields)
        part(name, value);
    prefix += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + file.field + "\"; filename=\"" +
              file.filename + "\"\r\nContent-Type: " + file.mime + "\r\n\r\n";
    GeneratedBody generated(prefix, file.head, file.size, "\r\n--" + boundary + "--\r\n");
    std::istream body(&generated);
    return _Serve("POST", path, "multipart/form-data; boundary=" + boundary, body, generated.length());
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
