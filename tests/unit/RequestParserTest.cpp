// The one body parser: query and form values, streamed uploads, limits and malformed input.
#include "TempDir.h"
#include "web/Request.h"
#include "web/RequestParser.h"

#include <gtest/gtest.h>

#include <Poco/File.h>

#include <sstream>

using namespace panelkit::web;
using panelkit::test::TempDir;

namespace {

class Parser : public ::testing::Test {
protected:
    Parser()
    {
        limits_.contentLength = 64;
        limits_.multipart = 512;
        limits_.uploadDirectory = uploads_.path();
    }

    int Parse(Request& request, const std::string& method, const std::string& query, const std::string& type,
              const std::string& body, bool withLength = true)
    {
        request.setHead(method, "/config/x", query, "127.0.0.1");
        if (!type.empty())
            request.mutableHeaders().add("Content-Type", type);
        std::istringstream in(body);
        return RequestParser::Parse(request, in, withLength ? static_cast<std::int64_t>(body.size()) : -1, limits_,
                                    problem_);
    }

    std::size_t FilesLeft() const
    {
        std::vector<std::string> names;
        Poco::File(uploads_.path()).list(names);
        return names.size();
    }

    static std::string Upload(const std::string& content)
    {
        return "--XyZ\r\nContent-Disposition: form-data; name=\"note\"\r\n\r\nhello\r\n"
               "--XyZ\r\nContent-Disposition: form-data; name=\"image\"; filename=\"fw.bin\"\r\n"
               "Content-Type: application/x-firmware\r\n\r\n" +
               content + "\r\n--XyZ--\r\n";
    }

    TempDir uploads_;
    Limits limits_;
    std::string problem_;
};

}  // namespace

TEST_F(Parser, QueryAndFormValues)
{
    Request request;
    ASSERT_EQ(0, Parse(request, "POST", "tab=2&x=%20y", "application/x-www-form-urlencoded", "a=1&s=x&s=y"));
    EXPECT_EQ("2", request.get("tab"));
    EXPECT_EQ(" y", request.get("x"));
    EXPECT_EQ("1", request.post("a"));
    EXPECT_EQ((std::vector<std::string>{"x", "y"}), request.postAll("s"));
    EXPECT_EQ("", request.post("tab")) << "query values are not posted values";
    EXPECT_TRUE(request.posted("a"));
    EXPECT_FALSE(request.posted("b"));
}

TEST_F(Parser, UploadsAreStreamedToAFileThatGoesWithTheRequest)
{
    std::string path;
    {
        Request request;
        ASSERT_EQ(0, Parse(request, "POST", "", "multipart/form-data; boundary=XyZ", Upload("0123456789"))) << problem_;
        EXPECT_EQ("hello", request.post("note"));
        const UploadedFile* file = request.file("image");
        ASSERT_NE(nullptr, file);
        EXPECT_EQ("fw.bin", file->filename);
        EXPECT_EQ("application/x-firmware", file->mime);
        EXPECT_EQ(10u, file->size);
        EXPECT_EQ("84d89877f0d4041efb6bf91a16f0248f2fd573e6af05c19f96bedb9f882f7882", file->sha256);
        EXPECT_EQ(0u, file->path.rfind(uploads_.path() + "/", 0));
        path = file->path;
        EXPECT_EQ("0123456789", uploads_.read(path.substr(uploads_.path().size() + 1)));
    }
    EXPECT_EQ(0u, FilesLeft()) << "the temporary file leaves with the request";
}

TEST_F(Parser, DeclaredLengthOverTheLimitIs413)
{
    Request request;
    EXPECT_EQ(413, Parse(request, "POST", "", "application/x-www-form-urlencoded", "a=" + std::string(100, 'x')));
    Request upload;
    EXPECT_EQ(413, Parse(upload, "POST", "", "multipart/form-data; boundary=XyZ", Upload(std::string(600, 'f'))));
    EXPECT_EQ(0u, FilesLeft());
}

TEST_F(Parser, UndeclaredLengthOverTheLimitIs413AndStoresNothing)
{
    Request form;
    EXPECT_EQ(413, Parse(form, "POST", "", "application/x-www-form-urlencoded", "a=" + std::string(100, 'x'), false));
    Request raw;
    EXPECT_EQ(413, Parse(raw, "POST", "", "application/json", std::string(100, ' '), false));
    EXPECT_EQ("", raw.body());
    Request upload;
    EXPECT_EQ(413, Parse(upload, "POST", "", "multipart/form-data; boundary=XyZ", Upload(std::string(600, 'f')), false));
    EXPECT_TRUE(upload.files().empty());
    EXPECT_EQ(0u, FilesLeft());
}

TEST_F(Parser, LargeFieldInAMultipartBodyIsBoundByTheContentLengthLimit)
{
    const std::string body = "--XyZ\r\nContent-Disposition: form-data; name=\"note\"\r\n\r\n" + std::string(100, 'n') +
                             "\r\n" + Upload("abc");
    Request request;
    EXPECT_EQ(413, Parse(request, "POST", "", "multipart/form-data; boundary=XyZ", body));
    EXPECT_EQ("The form field \"note\" is larger than the limit of 64 bytes", problem_);
    EXPECT_TRUE(request.files().empty());
    EXPECT_EQ("", request.post("note"));
    EXPECT_EQ(0u, FilesLeft());
}

TEST_F(Parser, BrokenOffUploadIsMalformedAndLeavesNoFile)
{
    const std::string body = Upload(std::string(300, 'f'));
    for (const std::size_t cut : {body.size() / 2, body.size() - 3}) {
        Request request;
        EXPECT_EQ(400, Parse(request, "POST", "", "multipart/form-data; boundary=XyZ", body.substr(0, cut), false));
        EXPECT_EQ("Malformed request body: the body ends before its closing boundary", problem_);
        EXPECT_TRUE(request.files().empty());
        EXPECT_EQ(0u, FilesLeft());
    }
}

TEST_F(Parser, BodyExactlyAtTheLimitIsAccepted)
{
    Request request;
    const std::string body = "a=" + std::string(62, 'x');
    ASSERT_EQ(64u, body.size());
    EXPECT_EQ(0, Parse(request, "POST", "", "application/x-www-form-urlencoded", body, false));
    EXPECT_EQ(std::string(62, 'x'), request.post("a"));
}

TEST_F(Parser, MalformedInputIs400)
{
    Request multipart;
    EXPECT_EQ(400, Parse(multipart, "POST", "", "multipart/form-data; boundary=XyZ", "no boundary here"));
    Request encoding;
    EXPECT_EQ(400, Parse(encoding, "POST", "", "application/x-www-form-urlencoded", "a=%zz"));
    Request query;
    EXPECT_EQ(400, Parse(query, "GET", "a=%g1", "", ""));
    Request truncated;
    EXPECT_EQ(400, Parse(truncated, "POST", "", "multipart/form-data; boundary=XyZ", Upload("abc").substr(0, 120)));
    EXPECT_EQ(0u, FilesLeft());
}

TEST_F(Parser, JsonBodyIsKeptWithItsMediaType)
{
    Request request;
    ASSERT_EQ(0, Parse(request, "POST", "", "Application/JSON; charset=utf-8", R"({"method":"reload"})"));
    EXPECT_EQ("application/json", request.contentType());
    EXPECT_EQ(R"({"method":"reload"})", request.body());
}

TEST_F(Parser, UploadFolderThatCannotBeWrittenIsAServerError)
{
    limits_.uploadDirectory = uploads_.path() + "/missing";
    Request request;
    EXPECT_EQ(500, Parse(request, "POST", "", "multipart/form-data; boundary=XyZ", Upload("abc")));
    EXPECT_NE(std::string::npos, problem_.find("cannot create an upload file"));
}
