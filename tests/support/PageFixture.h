// panelkit tests: pages served in-process on a simulated device: render a page, post a form, call a status method.
#pragma once

#include "TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <cstdint>
#include <istream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace panelkit::web {
class Service;
}

namespace panelkit::test {

/// The posted fields of a form, in order (a name may come several times).
using Fields = std::vector<std::pair<std::string, std::string>>;

/// The configuration of the pages under test: "/config", "/async", "/async/rpc", the media root given.
Json::Value PageConfig(const std::string& mediaRoot = "/media");

/// True when the text holds the part.
inline bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// The text of the pre block under a section heading of a page, "" when the page has none.
std::string SectionText(const std::string& page, const std::string& title);

/// A file posted with a multipart form: its content `head`, or `size` bytes that begin with `head`
/// (the rest is filler) when size is larger.
struct UploadPart {
    std::string field;
    std::string filename;
    std::string mime = "application/octet-stream";
    std::string head;
    std::uint64_t size = 0;
};

/// What the service answered.
struct PageReply {
    int status = 0;
    /// The body, or the bytes of the file the reply streams.
    std::string body;
    /// The content type.
    std::string contentType;
    /// The headers besides the content type, in the order set.
    std::vector<std::pair<std::string, std::string>> headers;
    /// A header's value, "" when absent (the name as the page set it).
    std::string header(const std::string& name) const;
    /// The file the reply streams, "" when the body was built in memory.
    std::string file;
};

/// A simulated device root and panelkit's trees mounted on a service that is not listening:
/// requests go through the same parser, dispatcher, controllers and views as on the device.
class PageFixture : public ::testing::Test {
protected:
    PageFixture();
    ~PageFixture() override;

    /// GETs a path.
    PageReply Get(const std::string& path);
    /// POSTs the fields as a browser submits the page's form, with a valid form token.
    PageReply Post(const std::string& path, const Fields& fields);
    /// POSTs the fields and files as a browser submits a multipart form, with a valid form token; the
    /// files' bytes are made while they are read, so a large one costs no memory.
    PageReply PostMultipart(const std::string& path, const Fields& fields, const std::vector<UploadPart>& files = {});
    /// The whole JSON-RPC answer of a method called with the parameters.
    Json::Value Rpc(const std::string& method, const Json::Value& params = Json::Value(Json::arrayValue));
    /// The result of a method that must answer without error.
    Json::Value Call(const std::string& method);

    /// A value of the store, "<missing>" when it has none.
    std::string StoreGet(const std::string& key);
    /// Stores a text value.
    void StoreSet(const std::string& key, const std::string& value);
    /// Makes every later write of the key fail, as a full or broken store would.
    void StoreRefuse(const std::string& key);
    /// The programs the device ran, one line each.
    std::string CommandLog() const;
    /// Whether a save asked for a reboot.
    bool RebootMarked() const;
    /// A device path inside the device root.
    std::string DevicePath(const std::string& path) const { return root_ / ("device" + path); }
    /// Writes a file of the device.
    void WriteDeviceFile(const std::string& path, const std::string& content, bool executable = false);

    TempDir root_;

private:
    PageReply _Serve(const std::string& method, const std::string& path, const std::string& contentType,
                     const std::string& body);
    PageReply _Serve(const std::string& method, const std::string& path, const std::string& contentType,
                     std::istream& body, std::uint64_t length);

    std::unique_ptr<web::Service> service_;
};

}  // namespace panelkit::test
