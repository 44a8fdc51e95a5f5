// The request body's stream buffer: an upload's blocks reach the reader in one receive each, a form's
// bytes read one by one come through the buffer.
#include "web/RequestBodyBuffer.h"

#include <gtest/gtest.h>

#include <istream>
#include <string>
#include <vector>

using panelkit::web::RequestBodyBuffer;

namespace {

// A source of `total` bytes that notes the size of every receive asked of it.
class Recording : public RequestBodyBuffer {
public:
    explicit Recording(std::size_t total) : left_(total) {}
    std::vector<std::streamsize> asked;

protected:
    std::streamsize Receive(char* to, std::streamsize count) override
    {
        asked.push_back(count);
        const auto got = std::min<std::streamsize>(count, static_cast<std::streamsize>(left_));
        std::fill(to, to + got, 'b');
        left_ -= static_cast<std::size_t>(got);
        return got;
    }

private:
    std::size_t left_;
};

}  // namespace

TEST(RequestBodyBuffer, LargeReadsGoStraightToTheReader)
{
    Recording source(200 * 1024);
    std::istream in(&source);
    std::vector<char> block(64 * 1024);
    ASSERT_TRUE(in.read(block.data(), static_cast<std::streamsize>(block.size())));
    ASSERT_TRUE(in.read(block.data(), static_cast<std::streamsize>(block.size())));
    EXPECT_EQ((std::vector<std::streamsize>{64 * 1024, 64 * 1024}), source.asked);
}

TEST(RequestBodyBuffer, SmallReadsAreBufferedAndWhatIsBufferedComesFirst)
{
    Recording source(10000);
    std::istream in(&source);
    EXPECT_EQ('b', in.get());
    EXPECT_EQ((std::vector<std::streamsize>{8192}), source.asked);
    std::string rest(20000, '\0');
    in.read(&rest[0], static_cast<std::streamsize>(rest.size()));
    EXPECT_EQ(9999, in.gcount()) << "the buffered bytes, then the rest of the source";
    EXPECT_EQ((std::vector<std::streamsize>{8192, 20000 - 8191, 20000 - 9999}), source.asked);
}
