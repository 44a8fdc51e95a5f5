// The multipart reader: parts split at every block edge, names as browsers quote them, broken and
// oversized bodies, and the SHA-256 of every file against OpenSSL's one-shot digest.
#include "Digests.h"
#include "TempDir.h"
#include "web/MultipartReader.h"

#include <gtest/gtest.h>


#include <Poco/File.h>

#include <random>
#include <sstream>
#include <unistd.h>

using namespace panelkit::web;
using panelkit::test::Sha256Hex;
using panelkit::test::TempDir;

namespace {

const std::string kBoundary = "----panelkitFormBoundary7MA4YWxkTrZu0gW";

// Gives its text at most `step` bytes per refill, as a socket gives what has arrived.
class Trickle : public std::streambuf {
public:
    Trickle(std::string text, std::size_t step) : text_(std::move(text)), step_(step) {}

protected:
    int_type underflow() override
    {
        if (at_ >= text_.size())
            return traits_type::eof();
        const std::size_t count = std::min(step_, text_.size() - at_);
        char* begin = &text_[at_];
        setg(begin, begin, begin + count);
        at_ += count;
        return traits_type::to_int_type(*begin);
    }

private:
    std::string text_;
    std::size_t step_;
    std::size_t at_ = 0;
};

std::string RandomBytes(std::size_t size, unsigned seed)
{
    std::mt19937 generator(seed);
    std::string bytes(size, '\0');
    for (auto& byte : bytes)
        byte = static_cast<char>(generator());
    return bytes;
}

std::string Field(const std::string& name, const std::string& value)
{
    return "--" + kBoundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
}

std::string File(const std::string& name, const std::string& filename, const std::string& content,
                 const std::string& type = "application/octet-stream")
{
    return "--" + kBoundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"; filename=\"" + filename +
           "\"\r\nContent-Type: " + type + "\r\n\r\n" + content + "\r\n";
}

std::string Closing()
{
    return "--" + kBoundary + "--\r\n";
}

class MultipartRead : public ::testing::Test {
protected:
    MultipartRead()
    {
        limits_.contentLength = 64;
        limits_.uploadDirectory = uploads_.path();
    }

    ~MultipartRead() override { Forget(); }

    // Reads the body in blocks of `block` bytes from a stream giving `step` bytes at a time.
    int Read(const std::string& body, std::size_t block = MultipartReader::kBlock, std::size_t step = 1 << 20)
    {
        Forget();
        Trickle source(body, step);
        std::istream in(&source);
        return MultipartReader(kBoundary, limits_, block).Read(in, fields_, files_, message_);
    }

    // The stored content of a received file.
    std::string Content(const UploadedFile& file) const
    {
        return uploads_.read(file.path.substr(uploads_.path().size() + 1));
    }

    std::size_t FilesLeft() const
    {
        std::vector<std::string> names;
        Poco::File(uploads_.path()).list(names);
        return names.size();
    }

    void Forget()
    {
        for (const auto& file : files_)
            ::unlink(file.path.c_str());
        files_.clear();
        fields_.clear();
        message_.clear();
    }

    TempDir uploads_;
    Limits limits_;
    Poco::Net::NameValueCollection fields_;
    std::vector<UploadedFile> files_;
    std::string message_;
};

}  // namespace

TEST_F(MultipartRead, PartsSplitAtEveryBlockEdgeReadTheSame)
{
    // Line breaks, a lone "--", and the delimiter but for its last character, also at the end.
    const std::string lookalike = "\r\n--" + kBoundary.substr(0, kBoundary.size() - 1);
    const std::string content = "\r\n\r\n--\r" + lookalike + "x\n" + RandomBytes(40, 1) + lookalike;
    const std::string body = Field("note", "a\r\nb") + File("image", "fw.bin", content) + Field("tab", "") + Closing();
    for (std::size_t block = 1; block <= body.size() + 1; ++block) {
        for (std::size_t step : {std::size_t{1}, std::size_t{3}, std::size_t{7}, body.size()}) {
            ASSERT_EQ(0, Read(body, block, step)) << "block " << block << ", step " << step << ": " << message_;
            EXPECT_EQ("a\r\nb", fields_.get("note", "<none>")) << "block " << block << ", step " << step;
            EXPECT_EQ("", fields_.get("tab", "<none>")) << "block " << block << ", step " << step;
            ASSERT_EQ(1u, files_.size()) << "block " << block << ", step " << step;
            EXPECT_EQ(content.size(), files_[0].size) << "block " << block << ", step " << step;
            EXPECT_EQ(content, Content(files_[0])) << "block " << block << ", step " << step;
            EXPECT_EQ(Sha256Hex(content), files_[0].sha256) << "block " << block << ", step " << step;
        }
    }
}

TEST_F(MultipartRead, SeveralFilesAndFieldsArriveInOrder)
{
    const std::string body = Field("mode", "static") + File("first", "a.bin", "AAA", "application/x-a") +
                             Field("dns", "10.0.0.1") + File("second", "b.txt", "BB\r\n", "text/plain") +
                             Field("dns", "10.0.0.2") + Closing();
    ASSERT_EQ(0, Read(body)) << message_;
    EXPECT_EQ("static", fields_.get("mode"));
    std::vector<std::string> dns;
    for (auto it = fields_.find("dns"); it != fields_.end() && it->first == "dns"; ++it)
        dns.push_back(it->second);
    EXPECT_EQ((std::vector<std::string>{"10.0.0.1", "10.0.0.2"}), dns);
    ASSERT_EQ(2u, files_.size());
    EXPECT_EQ("first", files_[0].field);
    EXPECT_EQ("a.bin", files_[0].filename);
    EXPECT_EQ("application/x-a", files_[0].mime);
    EXPECT_EQ("AAA", Content(files_[0]));
    EXPECT_EQ("second", files_[1].field);
    EXPECT_EQ("text/plain", files_[1].mime);
    EXPECT_EQ("BB\r\n", Content(files_[1]));
    EXPECT_EQ(Sha256Hex("BB\r\n"), files_[1].sha256);
    EXPECT_NE(files_[0].path, files_[1].path);
}

TEST_F(MultipartRead, QuotedNamesKeepTheirQuotesAndSemicolons)
{
    // Browsers write a quote as %22; older ones and command-line clients escape it with a backslash.
    const std::string body =
        File("fw;upload", "my \\\"best\\\"; image=1.bin", "x") + File("second", "a%22b%22;c.itb", "y") + Closing();
    ASSERT_EQ(0, Read(body)) << message_;
    ASSERT_EQ(2u, files_.size());
    EXPECT_EQ("fw;upload", files_[0].field);
    EXPECT_EQ("my \"best\"; image=1.bin", files_[0].filename);
    EXPECT_EQ("a\"b\";c.itb", files_[1].filename);
}

TEST_F(MultipartRead, PartWithoutContentTypeIsOctetStream)
{
    const std::string body = "--" + kBoundary +
                             "\r\ncontent-disposition: form-data; name=fw; filename=plain.bin\r\n\r\nz\r\n" + Closing();
    ASSERT_EQ(0, Read(body)) << message_;
    ASSERT_EQ(1u, files_.size());
    EXPECT_EQ("fw", files_[0].field);
    EXPECT_EQ("plain.bin", files_[0].filename);
    EXPECT_EQ("application/octet-stream", files_[0].mime);
}

TEST_F(MultipartRead, EmptyFileInputStillPostsAPart)
{
    ASSERT_EQ(0, Read(Field("a", "1") + File("fwupload", "", "") + Closing())) << message_;
    ASSERT_EQ(1u, files_.size());
    EXPECT_EQ("fwupload", files_[0].field);
    EXPECT_EQ("", files_[0].filename);
    EXPECT_EQ(0u, files_[0].size);
    EXPECT_EQ("", Content(files_[0]));
    EXPECT_EQ("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855", files_[0].sha256);
}

TEST_F(MultipartRead, FileOfManyBlocksIsStoredWholeWithItsDigest)
{
    // Larger than several blocks and than the digest's ring, and not a multiple of either.
    const std::string content = RandomBytes(3 * 1024 * 1024 + 12345, 7);
    ASSERT_EQ(0, Read(File("fwupload", "big.bin", content) + Closing(), MultipartReader::kBlock, 5000)) << message_;
    ASSERT_EQ(1u, files_.size());
    EXPECT_EQ(content.size(), files_[0].size);
    EXPECT_TRUE(content == Content(files_[0])) << "the stored file differs from what was sent";
    EXPECT_EQ(Sha256Hex(content), files_[0].sha256);
}

TEST_F(MultipartRead, PreambleAndEpilogueAreSkipped)
{
    const std::string body = "This is a preamble.\r\n--" + kBoundary.substr(0, 8) + "\r\n" + Field("a", "1") +
                             Closing() + "and an epilogue\r\n--" + kBoundary + "\r\n";
    Trickle source(body, 10);
    std::istream in(&source);
    ASSERT_EQ(0, MultipartReader(kBoundary, limits_).Read(in, fields_, files_, message_)) << message_;
    EXPECT_EQ("1", fields_.get("a"));
    EXPECT_EQ(std::char_traits<char>::eof(), source.sgetc()) << "the epilogue is read to the end";
}

TEST_F(MultipartRead, BodyOpeningWithoutALineBreakBeforeTheFirstBoundaryIsRead)
{
    ASSERT_EQ(0, Read("\r\n" + Field("a", "1") + Closing())) << message_;
    EXPECT_EQ("1", fields_.get("a"));
    ASSERT_EQ(0, Read(Field("b", "2") + Closing())) << message_;
    EXPECT_EQ("2", fields_.get("b"));
}

TEST_F(MultipartRead, PaddingAfterABoundaryIsAllowed)
{
    const std::string body =
        "--" + kBoundary + " \t\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\n1\r\n" + Closing();
    ASSERT_EQ(0, Read(body)) << message_;
    EXPECT_EQ("1", fields_.get("a"));
}

TEST_F(MultipartRead, PartWithoutHeadersIsAnUnnamedField)
{
    ASSERT_EQ(0, Read("--" + kBoundary + "\r\n\r\nvalue\r\n" + Closing())) << message_;
    EXPECT_EQ("value", fields_.get("", "<none>"));
}

TEST_F(MultipartRead, BodyWithoutBoundaryIsMalformed)
{
    EXPECT_EQ(400, Read("no boundary here, only text"));
    EXPECT_EQ("Malformed request body: No boundary line found", message_);
    EXPECT_EQ(400, Read(""));
}

TEST_F(MultipartRead, BodyEndingBeforeItsClosingBoundaryIsMalformed)
{
    const std::string whole = Field("a", "1") + File("fwupload", "fw.bin", RandomBytes(300, 3)) + Closing();
    // Cut anywhere: in a delimiter, in headers, in the content, or just before the final "--".
    for (std::size_t cut = 0; cut + 2 < whole.size(); ++cut) {
        const int status = Read(whole.substr(0, cut), 16);
        EXPECT_EQ(400, status) << "cut at " << cut;
        EXPECT_EQ(0u, message_.rfind("Malformed request body: ", 0)) << message_;
    }
    EXPECT_EQ(400, Read(Field("a", "1") + "--" + kBoundary));
    EXPECT_EQ("Malformed request body: the body ends before its closing boundary", message_);
}

TEST_F(MultipartRead, BrokenOffUploadIsListedSoThatItsFileCanBeRemoved)
{
    EXPECT_EQ(400, Read(File("fwupload", "fw.bin", RandomBytes(200000, 4))));
    ASSERT_EQ(1u, files_.size()) << "the caller removes the files of a refused body";
    EXPECT_EQ(1u, FilesLeft());
    Forget();
    EXPECT_EQ(0u, FilesLeft());
}

TEST_F(MultipartRead, BoundaryFollowedByOtherThanALineBreakIsMalformed)
{
    EXPECT_EQ(400, Read("--" + kBoundary + "xContent-Disposition: form-data; name=\"a\"\r\n\r\n1\r\n" + Closing()));
    EXPECT_EQ("Malformed request body: a boundary is followed by other than a line break", message_);
}

TEST_F(MultipartRead, OverlongPartHeadersAreMalformed)
{
    const std::string body = "--" + kBoundary + "\r\nX-Long: " + std::string(20000, 'h') + "\r\n" + Closing();
    EXPECT_EQ(400, Read(body, 1000));
    EXPECT_EQ("Malformed request body: the headers of a part are too long", message_);
}

TEST_F(MultipartRead, FieldOverTheContentLengthLimitIs413)
{
    ASSERT_EQ(0, Read(Field("a", std::string(64, 'x')) + Closing(), 10)) << message_;
    EXPECT_EQ(std::string(64, 'x'), fields_.get("a"));
    // A large field is refused as it grows, not after it was held whole.
    EXPECT_EQ(413, Read(Field("big", std::string(100000, 'x')) + Closing(), 10));
    EXPECT_EQ("The form field \"big\" is larger than the limit of 64 bytes", message_);
}

TEST_F(MultipartRead, FileIsNotBoundByTheFieldLimit)
{
    const std::string content(1000, 'f');
    ASSERT_EQ(0, Read(File("fwupload", "fw.bin", content) + Closing())) << message_;
    ASSERT_EQ(1u, files_.size());
    EXPECT_EQ(content.size(), files_[0].size);
}

TEST_F(MultipartRead, MoreThanAHundredPartsAreMalformed)
{
    std::string body;
    for (int i = 0; i < 100; ++i)
        body += Field("f" + std::to_string(i), "v");
    ASSERT_EQ(0, Read(body + Closing())) << message_;
    EXPECT_EQ("v", fields_.get("f99"));
    EXPECT_EQ(400, Read(body + Field("one_more", "v") + Closing()));
    EXPECT_EQ("Malformed request body: Too many form fields", message_);
}

TEST_F(MultipartRead, MissingOrOverlongBoundaryIsMalformed)
{
    std::istringstream in(Field("a", "1") + Closing());
    EXPECT_EQ(400, MultipartReader("", limits_).Read(in, fields_, files_, message_));
    EXPECT_EQ("Malformed request body: the multipart type names no usable boundary", message_);
    EXPECT_EQ(400, MultipartReader(std::string(129, 'b'), limits_).Read(in, fields_, files_, message_));
}

TEST_F(MultipartRead, UnwritableUploadFolderIs500)
{
    limits_.uploadDirectory = uploads_.path() + "/missing";
    EXPECT_EQ(500, Read(File("fwupload", "fw.bin", "abc") + Closing()));
    EXPECT_NE(std::string::npos, message_.find("cannot create an upload file in " + limits_.uploadDirectory))
        << message_;
    EXPECT_TRUE(files_.empty());
}
