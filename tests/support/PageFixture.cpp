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

// A body made as it is read: pieces of text, each followed by a run of filler bytes.
class GeneratedBody : public std::streambuf {
public:
    struct Piece {
        std::string text;
        std::uint64_t filler;
    };

    explicit GeneratedBody(std::vector<Piece> pieces) : pieces_(std::move(pieces)) {}
    std::uint64_t length() const
    {
        std::uint64_t total = 0;
        for (const auto& piece : pieces_)
            total += piece.text.size() + piece.filler;
        return total;
    }

protected:
    int_type underflow() override
    {
        std::size_t n = 0;
        while (n < sizeof buffer_ && piece_ < pieces_.size())
            n += _Fill(buffer_ + n, sizeof buffer_ - n);
        if (n == 0)
            return traits_type::eof();
        setg(buffer_, buffer_, buffer_ + n);
        return traits_type::to_int_type(buffer_[0]);
    }

private:
    // Copies what follows within the current piece's text or filler; moves to the next piece at its end.
    std::size_t _Fill(char* to, std::size_t room)
    {
        const Piece& piece = pieces_[piece_];
        std::size_t n = 0;
        if (offset_ < piece.text.size()) {
            n = std::min<std::uint64_t>(room, piece.text.size() - offset_);
            std::memcpy(to, piece.text.data() + offset_, n);
        } else {
            n = std::min<std::uint64_t>(room, piece.text.size() + piece.filler - offset_);
            std::memset(to, 'f', n);
        }
        offset_ += n;
        if (offset_ == piece.text.size() + piece.filler) {
            ++piece_;
            offset_ = 0;
        }
        return n;
    }

    std::vector<Piece> pieces_;
    std::size_t piece_ = 0;
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
                                     const std::vector<UploadPart>& files)
{
    const std::string boundary = "----panelkitTestBoundary7MA4YWxkTrZu0gW";
    std::string text;
    auto part = [&](const std::string& name, const std::string& value) {
        text += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
    };
    part("_csrf", kToken);
    for (const auto& [name, value] : fields)
        part(name, value);
    std::vector<GeneratedBody::Piece> pieces;
    for (const auto& file : files) {
        text += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + file.field + "\"; filename=\"" +
                file.filename + "\"\r\nContent-Type: " + file.mime + "\r\n\r\n" + file.head;
        pieces.push_back({std::move(text), file.size > file.head.size() ? file.size - file.head.size() : 0});
        text = "\r\n";
    }
    pieces.push_back({text + "--" + boundary + "--\r\n", 0});
    GeneratedBody generated(std::move(pieces));
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
