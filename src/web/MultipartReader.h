// panelkit web layer: reads a multipart/form-data body in large blocks: fields into the posted values,
// files streamed to temporary files with their SHA-256 taken on the way.
#pragma once

#include "web/Limits.h"
#include "web/UploadedFile.h"

#include <Poco/Net/NameValueCollection.h>

#include <cstddef>
#include <functional>
#include <istream>
#include <string>
#include <vector>

namespace panelkit::web {

/// One pass over a multipart/form-data body of at most limits.multipart bytes, read a block at a time.
/// Not copyable.
class MultipartReader {
public:
    /// Bytes asked of the body stream at a time.
    static constexpr std::size_t kBlock = 64 * 1024;

    /// A reader of parts separated by the boundary; files go to limits.uploadDirectory, a field may
    /// hold limits.contentLength bytes. block is the read size (tests make it small).
    MultipartReader(const std::string& boundary, const Limits& limits, std::size_t block = kBlock);
    MultipartReader(const MultipartReader&) = delete;
    MultipartReader& operator=(const MultipartReader&) = delete;

    /// Reads the body to its end: fields are added to `fields`, each file to `files` as soon as its
    /// temporary file exists (so that the caller can remove it whatever happens). Returns 0, or the
    /// HTTP status to answer with (400 malformed, 413 too large, 500 upload not stored) and a message.
    int Read(std::istream& body, Poco::Net::NameValueCollection& fields, std::vector<UploadedFile>& files,
             std::string& message);

private:
    using Sink = std::function<void(const char*, std::size_t)>;

    void _SkipPreamble();
    bool _ClosingDelimiter();
    void _ReadPart(Poco::Net::NameValueCollection& fields, std::vector<UploadedFile>& files);
    std::string _ReadHeaders();
    void _ReadFile(UploadedFile file, std::vector<UploadedFile>& files);
    void _ReadField(const std::string& name, Poco::Net::NameValueCollection& fields);
    void _ReadContent(const Sink& sink);
    bool _ReadToDelimiter(const Sink& sink);
    void _SkipEpilogue();
    bool _Need(std::size_t count);
    bool _Fill();

    std::string boundary_;
    // "\r\n--" and the boundary: what ends every part.
    std::string delimiter_;
    Limits limits_;
    std::size_t block_;
    std::vector<char> buffer_;
    // The bytes read but not yet taken: buffer_[begin_, end_).
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::istream* body_ = nullptr;
};

}  // namespace panelkit::web
