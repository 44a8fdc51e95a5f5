// panelkit web layer: the SHA-256 of an upload, taken on a thread of its own while the upload streams
// in, so that hashing and storing the bytes fall on two cores.
#pragma once

#include <openssl/evp.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace panelkit::web {

/// A running SHA-256 (OpenSSL EVP) fed through a ring buffer to its own thread. Not copyable.
class UploadDigest {
public:
    /// Bytes the thread may be behind.
    static constexpr std::size_t kRing = 1024 * 1024;
    /// Bytes the thread waits for before it hashes, unless the digest is finishing.
    static constexpr std::size_t kBatch = kRing / 4;

    /// Starts the thread; throws web::Error without memory for the ring or a SHA-256 from OpenSSL.
    UploadDigest();
    /// Lets the thread take what it was given and ends it.
    ~UploadDigest();
    UploadDigest(const UploadDigest&) = delete;
    UploadDigest& operator=(const UploadDigest&) = delete;

    /// Hands bytes over: they are copied, waiting while the thread is a whole ring behind.
    void Update(const char* data, std::size_t size);
    /// Waits for the thread to take the last bytes; the digest as 64 lowercase hexadecimal digits.
    std::string Finish();

private:
    // Gives the ring back to the system at once, not to a thread's allocator arena to keep.
    struct Unmap {
        void operator()(char* ring) const;
    };

    void _Run();
    void _Close();

    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
    std::unique_ptr<char, Unmap> ring_;
    std::mutex lock_;
    // The thread waits for bytes or the end; Update waits for room.
    std::condition_variable more_;
    std::condition_variable room_;
    // Bytes handed over and bytes hashed so far; the ring holds the difference.
    std::uint64_t given_ = 0;
    std::uint64_t taken_ = 0;
    bool closed_ = false;
    std::thread thread_;
};

}  // namespace panelkit::web
