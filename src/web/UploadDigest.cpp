// panelkit web layer: the SHA-256 of an upload, taken on a thread of its own while the upload streams
// in, so that hashing and storing the bytes fall on two cores.
#include "web/UploadDigest.h"

#include "web/Error.h"

#include <Poco/DigestEngine.h>

#include <algorithm>
#include <cstring>
#include <sys/mman.h>

namespace panelkit::web {

namespace {

char* MapRing()
{
    void* ring = ::mmap(nullptr, UploadDigest::kRing, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (ring == MAP_FAILED)
        throw Error("no memory for the digest of an upload");
    return static_cast<char*>(ring);
}

}  // namespace

void UploadDigest::Unmap::operator()(char* ring) const
{
    ::munmap(ring, kRing);
}

UploadDigest::UploadDigest() : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free), ring_(MapRing())
{
    if (!context_ || EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) != 1)
        throw Error("no SHA-256 from OpenSSL");
    thread_ = std::thread([this] { _Run(); });
}

UploadDigest::~UploadDigest()
{
    _Close();
}

void UploadDigest::Update(const char* data, std::size_t size)
{
    while (size > 0) {
        std::unique_lock<std::mutex> guard(lock_);
        room_.wait(guard, [this] { return given_ - taken_ < kRing; });
        const std::size_t at = given_ % kRing;
        const std::size_t count = std::min({size, static_cast<std::size_t>(kRing - (given_ - taken_)), kRing - at});
        // The thread reads only what was handed over before: this stretch is free.
        guard.unlock();
        std::memcpy(ring_.get() + at, data, count);
        guard.lock();
        given_ += count;
        // Woken for a batch, the thread costs a switch per batch rather than per piece.
        const bool batch = given_ - taken_ >= kBatch;
        guard.unlock();
        if (batch)
            more_.notify_one();
        data += count;
        size -= count;
    }
}

std::string UploadDigest::Finish()
{
    _Close();
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(context_.get(), digest, &length);
    return Poco::DigestEngine::digestToHex(Poco::DigestEngine::Digest(digest, digest + length));
}

void UploadDigest::_Run()
{
    for (;;) {
        std::unique_lock<std::mutex> guard(lock_);
        more_.wait(guard, [this] { return given_ - taken_ >= kBatch || closed_; });
        if (given_ == taken_)
            return;
        const std::size_t at = taken_ % kRing;
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(given_ - taken_, kRing - at));
        guard.unlock();
        EVP_DigestUpdate(context_.get(), ring_.get() + at, count);
        guard.lock();
        taken_ += count;
        guard.unlock();
        room_.notify_one();
    }
}

void UploadDigest::_Close()
{
    if (!thread_.joinable())
        return;
    {
        std::lock_guard<std::mutex> guard(lock_);
        closed_ = true;
    }
    more_.notify_one();
    thread_.join();
}

}  // namespace panelkit::web
